// tracesite.h: what a module writes at a trace point.
//
//     TVX_TRACE("net/socket", "%d bytes from %S", size, name);
//
// Each point keeps the address of its class's mask. While the class is off, a point costs two loads and a
// branch: its arguments are not even evaluated. So an argument must not have effects that the program needs.
//
// Arguments are what can be streamed into an argument list (arglist.h), or one list that is ready. The
// format is that of StringC::format.
//
// Thread safety: latched. Indentation and timers belong to the class or the whole process, not to a thread:
// what several threads do to them at the same time adds up.
#ifndef TVXCMN_TRACESITE_H
#define TVXCMN_TRACESITE_H

#include "arglist.h"

#include <utility>

// A trace point, or what several points of one class share. Constant-initialised, so one at namespace
// scope may be used before any static constructor has run.
class TraceSiteC {
public:
    // The name must live as long as the site.
    explicit constexpr TraceSiteC(const char* traceClass) noexcept : m_class(traceClass) {}
    TraceSiteC(const TraceSiteC&) = delete;
    TraceSiteC& operator=(const TraceSiteC&) = delete;

    bool isEnabled()
    {
        const unsigned* const net = __atomic_load_n(&m_net, __ATOMIC_ACQUIRE);
        if (__builtin_expect(__atomic_load_n(net, __ATOMIC_RELAXED) == 0, 1)) return false;
        return net != &UNKNOWN || lookUp();
    }

    // Sends a message, if the class is on. The macros test that first, so that arguments are not evaluated in
    // vain.
    void trace(const char* format) { send(format, ArgListC()); }
    void trace(const char* format, ArgListC args) { send(format, std::move(args)); }
    template <class... ArgT>
    void trace(const char* format, const ArgT&... args)
    {
        ArgListC list;
        (list << ... << args);
        send(format, std::move(list));
    }

    // TracerI's operations on the class of this site.
    bool indent();
    void outdent();
    void count(int by);
    void timerStart();
    void timerEnd();

private:
    class CellC;

    // The mask of classes that have not been looked up yet: on, so that their points take the long way.
    static const unsigned UNKNOWN;

    bool lookUp();
    void send(const char* format, ArgListC args);

    const char* const m_class;
    const unsigned* m_net = &UNKNOWN;   // the class's mask, once it has been looked up; an atomic word
};

// Indents messages until the end of a scope, if the class is on at its begin.
class TraceIndentC {
public:
    explicit TraceIndentC(TraceSiteC& site) : m_site(site), m_isIndented(site.isEnabled() && site.indent()) {}
    ~TraceIndentC()
    {
        if (m_isIndented) m_site.outdent();
    }
    TraceIndentC(const TraceIndentC&) = delete;
    TraceIndentC& operator=(const TraceIndentC&) = delete;

private:
    TraceSiteC& m_site;
    const bool m_isIndented;
};

// Runs the class's timer until the end of a scope, whether the class is on or not.
class TraceTimerC {
public:
    explicit TraceTimerC(TraceSiteC& site) : m_site(site) { m_site.timerStart(); }
    ~TraceTimerC() { m_site.timerEnd(); }
    TraceTimerC(const TraceTimerC&) = delete;
    TraceTimerC& operator=(const TraceTimerC&) = delete;

private:
    TraceSiteC& m_site;
};

// TVX_TRACE(class, format, arguments...) sends a message. The class is a constant text.
#define TVX_TRACE(traceClass, ...)                                                                                     \
    do {                                                                                                               \
        static TraceSiteC tvx_site(traceClass);                                                                        \
        if (__builtin_expect(tvx_site.isEnabled(), 0)) tvx_site.trace(__VA_ARGS__);                                    \
    } while (0)

// TVX_TRACE_COUNT(class, by) adds to the class's counter, whether the class is on or not.
#define TVX_TRACE_COUNT(traceClass, by)                                                                                \
    do {                                                                                                               \
        static TraceSiteC tvx_site(traceClass);                                                                        \
        tvx_site.count(by);                                                                                            \
    } while (0)

// TVX_TRACE_INDENT(class); and TVX_TRACE_TIMER(class); last until the end of the block that they stand in.
#define TVX_TRACE_INDENT(traceClass) TVX_TRACE_SCOPE(TraceIndentC, traceClass, __LINE__)
#define TVX_TRACE_TIMER(traceClass) TVX_TRACE_SCOPE(TraceTimerC, traceClass, __LINE__)

// ---- nothing of interest to users below --------------------------------------------------------------

#define TVX_TRACE_SCOPE(scopeClass, traceClass, line) TVX_TRACE_SCOPE_AT(scopeClass, traceClass, line)
#define TVX_TRACE_SCOPE_AT(scopeClass, traceClass, line)                                                               \
    static TraceSiteC tvx_site_##line(traceClass);                                                                     \
    const scopeClass tvx_scope_##line(tvx_site_##line)

#endif   // TVXCMN_TRACESITE_H
