#include "error/impl/traceerror.h"

#include "arglist.h"
#include "cmnlib/errnokeeper.h"
#include "tracer.h"
#include "tracing/tracedelivery.h"
#include "tvxcmn.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <string>
#include <string_view>

namespace {

const char SEPARATOR = static_cast<char>(ERR_TEXT_SEPARATOR);

// The class of one action on one failure. Immutable, and never freed once it is known.
struct AnnouncedT {
    const char* action;   // compared by its address
    unsigned number;      // see numberOf
    char traceClass[64];
    const unsigned* net;      // the class's mask
    const AnnouncedT* next;   // in its bucket
};

// Classes that have been asked for before, so that a failure that nobody wants to see costs neither a text nor
// a look-up in the tracer. Two threads may both add one; the older one is not found any more. There is room
// for the failures that a program really has: when numbers come without end, the tracer's look-up is faster
// than long buckets, and it knows all of them anyway.
constinit std::atomic<const AnnouncedT*> knownClasses[1024];
const size_t KNOWN_CLASSES = 4 * std::size(knownClasses);   // more or less: threads may add one each
constinit std::atomic<size_t> knownCount;

ErrSevT shownSeverity(ErrSevT sev) { return std::clamp(sev, ERR_SEV_NONE, ERR_SEV_FATAL); }

const char* severityName(ErrSevT sev)
{
    static const char* const NAMES[] = {"None", "Monitor", "Information", "Warning", "Error", "Fatal"};
    return NAMES[shownSeverity(sev)];
}

// What tells the failures of one action apart: bits 0-15 message, 16-27 set, 28-30 severity.
unsigned numberOf(ErrorT err, ErrSevT sev)
{
    return static_cast<unsigned>(shownSeverity(sev)) << 28 | ErrorSetOf(err) << 16 | ErrorMessageOf(err);
}

std::atomic<const AnnouncedT*>& bucketOf(unsigned number)
{
    return knownClasses[(number ^ number >> 16) % std::size(knownClasses)];
}

const AnnouncedT* knownClass(const char* action, unsigned number)
{
    const AnnouncedT* known = bucketOf(number).load(std::memory_order_acquire);
    while (known != nullptr && (known->number != number || known->action != action)) known = known->next;
    return known;
}

// Its `net` is null when the tracer cannot look the class up.
AnnouncedT lookedUp(const char* action, ErrorT err, ErrSevT sev)
{
    AnnouncedT found = {action, numberOf(err, sev), "", nullptr, nullptr};
    std::snprintf(found.traceClass, sizeof found.traceClass, "0,Error/%s/%s/%u/%u", action, severityName(sev),
                  ErrorSetOf(err), ErrorMessageOf(err));
    getTracer(2)->enabled(found.traceClass, &found.net);
    return found;
}

void remember(const AnnouncedT& found)
{
    if (found.net == nullptr || knownCount.load(std::memory_order_relaxed) >= KNOWN_CLASSES) return;
    knownCount.fetch_add(1, std::memory_order_relaxed);
    std::atomic<const AnnouncedT*>& bucket = bucketOf(found.number);
    AnnouncedT* const made = new AnnouncedT(found);
    made->next = bucket.load();
    while (!bucket.compare_exchange_weak(made->next, made, std::memory_order_acq_rel)) {
    }
}

bool isOff(const AnnouncedT& announced)
{
    return announced.net == nullptr || __atomic_load_n(announced.net, __ATOMIC_RELAXED) == 0;
}

// The text with its parts named. Without a solution's separator the reason is left out: the announcement of
// such a failure is its problem.
StringC shownText(const StringC& str)
{
    std::string_view rest(str.utf8(), str.utf8Bytes());
    const size_t problem = rest.find(SEPARATOR);
    if (problem == std::string_view::npos) return str;

    std::string shown;
    if (problem > 0) shown.append("Problem: ").append(rest.substr(0, problem));
    rest.remove_prefix(problem + 1);
    const size_t reason = rest.find(SEPARATOR);
    if (reason != std::string_view::npos) {
        if (!shown.empty()) shown += ", ";
        if (reason > 0) shown.append("Reason: ").append(rest.substr(0, reason));
        rest.remove_prefix(reason + 1);
        if (!rest.empty() && reason > 0) shown += ", ";
        if (!rest.empty()) shown.append("Solution: ").append(rest);
    }
    return {shown.data(), shown.size(), StringC::CC_VALID_UTF8};
}

}   // namespace

void TraceError(const char* action, ErrorT err, ErrSevT sev, const StringC& str)
{
    if (TraceDeliveryC::isRunning()) return;
    const AnnouncedT* const known = knownClass(action, numberOf(err, sev));
    if (known != nullptr && isOff(*known)) return;   // mostly so; nothing up to here changes errno

    const ErrnoKeeperC keeper;
    const AnnouncedT announced = known != nullptr ? *known : lookedUp(action, err, sev);
    if (known == nullptr) remember(announced);
    if (isOff(announced)) return;
    const unsigned* net = announced.net;
    getTracer(2)->trace(announced.traceClass, &net, "%s %s (s%dm%d): %S",
                        ArgListC() << severityName(sev) << action << static_cast<int>(ErrorSetOf(err))
                                   << static_cast<int>(ErrorMessageOf(err)) << shownText(str));
}
