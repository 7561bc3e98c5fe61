#include "tracesite.h"

#include "atomicm.h"
#include "tracer.h"
#include "tvxcmn.h"

namespace {

// Asked for once an image.
TracerI& tracer()
{
    constinit static AtomicM<TracerI*> known{nullptr};
    TracerI* theTracer = known;
    if (theTracer == nullptr) known = theTracer = getTracer(2);
    return *theTracer;
}

}   // namespace

constinit const unsigned TraceSiteC::UNKNOWN = 1;

// The site's pointer as the tracer wants it, null before the first look-up, for one call.
class TraceSiteC::CellC {
public:
    explicit CellC(TraceSiteC& site)
        : m_site(site),
          m_before(__atomic_load_n(&site.m_net, __ATOMIC_ACQUIRE)),
          m_net(m_before != &UNKNOWN ? m_before : nullptr)
    {
    }
    ~CellC()
    {
        if (m_net != nullptr && m_net != m_before) __atomic_store_n(&m_site.m_net, m_net, __ATOMIC_RELEASE);
    }
    CellC(const CellC&) = delete;
    CellC& operator=(const CellC&) = delete;

    operator const unsigned**() noexcept { return &m_net; }

private:
    TraceSiteC& m_site;
    const unsigned* const m_before;
    const unsigned* m_net;
};

bool TraceSiteC::lookUp() { return tracer().enabled(m_class, CellC(*this)) != 0; }

void TraceSiteC::send(const char* format, ArgListC args)
{
    tracer().trace(m_class, CellC(*this), format, std::move(args));
}

bool TraceSiteC::indent() { return tracer().indent(m_class, CellC(*this)) != 0; }

void TraceSiteC::outdent() { tracer().outdent(); }

void TraceSiteC::count(int by) { tracer().increment(m_class, CellC(*this), by); }

void TraceSiteC::timerStart() { tracer().realTimerStart(m_class, CellC(*this)); }

void TraceSiteC::timerEnd() { tracer().realTimerEnd(m_class, CellC(*this)); }
