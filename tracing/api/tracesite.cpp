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

bool TraceSiteC::lookUp() { return tracer().enabled(m_class, &m_net) != 0; }

void TraceSiteC::send(const char* format, ArgListC args) { tracer().trace(m_class, &m_net, format, std::move(args)); }

bool TraceSiteC::indent() { return tracer().indent(m_class, &m_net) != 0; }

void TraceSiteC::outdent() { tracer().outdent(); }

void TraceSiteC::count(int by) { tracer().increment(m_class, &m_net, by); }

void TraceSiteC::timerStart() { tracer().realTimerStart(m_class, &m_net); }

void TraceSiteC::timerEnd() { tracer().realTimerEnd(m_class, &m_net); }
