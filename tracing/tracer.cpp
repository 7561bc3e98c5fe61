#include "assertfatal.h"
#include "cmnlib/errnokeeper.h"
#include "stringc.h"
#include "tracing/tracefil.h"
#include "tracing/tracerc.h"

#include <algorithm>
#include <utility>

namespace {

const int FULL_DETAIL = 9;

// The values whose first word a trace point keeps the address of; null before its first use.
TraceValuesT* cachedValues(const unsigned int** enabled_pp)
{
    const unsigned int* const net = enabled_pp != nullptr ? __atomic_load_n(enabled_pp, __ATOMIC_ACQUIRE) : nullptr;
    return reinterpret_cast<TraceValuesT*>(const_cast<unsigned int*>(net));
}

}   // namespace

TracerC::TracerC() : tfc_p(new TraceConsumerFileC(*this)), m_forkGuard(*this, m_Latch)
{
    registerConsumer(tfc_p.get(), 0, FULL_DETAIL);
}

TracerC::~TracerC() = default;

void TracerC::ForkGuardC::inChild()
{
    m_tracer.tfc_p->dropLines();
    LatchForkGuardM::inChild();
}

void TracerC::beginExit() { tfc_p->beginExit(); }

long TracerC::registerTask(const char* programName, const char* profile, const char* traceDescriptionFile)
{
    const TraceSectionC section(*this);
    setTask(programName, traceDescriptionFile);
    if (profile == nullptr) return 0;
    if (!isRegistered(tfc_p.get())) registerConsumer(tfc_p.get(), 0, FULL_DETAIL);
    tfc_p->loadProfile(profile);
    int detail = FULL_DETAIL;
    tfc_p->getMaxDetail(&detail);
    setDetail(tfc_p.get(), detail);
    return 0;
}

TraceDefaultConsumerI* TracerC::getDefaultConsumer() { return tfc_p.get(); }

// Null when there is no such class. A class's values never move, so the address may be kept.
TraceValuesT* TracerC::lookUp(const char* traceClass, const unsigned int** enabled_pp)
{
    TraceValuesT* values = cachedValues(enabled_pp);
    if (values != nullptr) return values;
    if (getValues(traceClass, &values) != 0) return nullptr;
    if (enabled_pp != nullptr) __atomic_store_n(enabled_pp, &values->net, __ATOMIC_RELEASE);
    return values;
}

unsigned int TracerC::enabled(const char* traceClass, const unsigned int** enabled_pp)
{
    const TraceValuesT* const values = lookUp(traceClass, enabled_pp);
    return values != nullptr ? relaxed(values->net) : 0;
}

BooleanT TracerC::trace(const char* traceClass, const unsigned int** enabled_pp, const char* format, ArgListC args)
{
    if (!TVX_CHECK(enabled_pp != nullptr, "enabled_pp != 0")) return false;
    const unsigned int net = enabled(traceClass, enabled_pp);
    if (net == 0) return false;
    deliver(net, traceClass, m_indent, format, args);
    return true;
}

// A class that is off costs no look at the format.
BooleanT TracerC::trace(const char* traceClass, const unsigned int** enabled_pp, const char* format, std::va_list ap)
{
    if (!TVX_CHECK(enabled_pp != nullptr, "enabled_pp != 0")) return false;
    if (enabled(traceClass, enabled_pp) == 0) return false;
    const ErrnoKeeperC keeper;
    ArgListC args = StringC::formatArgs(StringC(format, StringC::CC_SYS8), ap);
    keeper.restore();
    return trace(traceClass, enabled_pp, format, std::move(args));
}

BooleanT TracerC::indent(const char* traceClass, const unsigned int** enabled_pp)
{
    if (enabled(traceClass, enabled_pp) == 0) return false;
    m_indent.incr();
    return true;
}

void TracerC::outdent() { m_indent.decr(); }

BooleanT TracerC::increment(const char* traceClass, const unsigned int** enabled_pp, int by)
{
    TraceValuesT* const values = lookUp(traceClass, enabled_pp);
    if (values == nullptr) return false;
    __atomic_fetch_add(&values->count, static_cast<long>(by), __ATOMIC_RELAXED);
    announceValueChange(traceClass, m_indent);
    return false;   // also after success: what it has always been
}

// A timer that runs has a start other than 0.
BooleanT TracerC::realTimerStart(const char* traceClass, const unsigned int** enabled_pp)
{
    TraceValuesT* const values = lookUp(traceClass, enabled_pp);
    TraceTimeT now = 0;
    if (values == nullptr || getTimer(&now) != 0) return false;
    setRelaxed(values->last_start, std::max(now, TraceTimeT{1}));
    return true;
}

void TracerC::realTimerEnd(const char* traceClass, const unsigned int** enabled_pp)
{
    TraceValuesT* const values = cachedValues(enabled_pp);
    if (values == nullptr) return;
    const TraceTimeT start = relaxed(values->last_start);
    TraceTimeT now = 0;
    if (start == 0 || getTimer(&now) != 0) return;
    __atomic_fetch_add(&values->total, std::max(now - start, TraceTimeT{0}), __ATOMIC_RELAXED);
    announceValueChange(traceClass, m_indent);
    setRelaxed(values->last_start, TraceTimeT{0});
}

BooleanT TracerC::getCounters(const char* traceClass, const unsigned int** enabled_pp, long* counter, long long* total,
                              long long* frequency)
{
    const TraceValuesT* const values = lookUp(traceClass, enabled_pp);
    if (values == nullptr) return false;
    if (counter != nullptr) *counter = relaxed(values->count);
    if (total != nullptr) *total = relaxed(values->total);
    if (frequency != nullptr) getTimerFrequency(frequency);
    return true;
}
