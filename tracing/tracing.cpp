// The one tracer of the process, and the two exports that hand it out.

#include "assertfatal.h"
#include "atomicm.h"
#include "cmnlib/neverdestroyed.h"
#include "ipc/forkguard.h"
#include "latch.h"
#include "tracing/tracerc.h"
#include "tvxcmn.h"

#include <cstdlib>

namespace {

constinit NeverDestroyedM<LatchC> creationLatch;
constinit LatchForkGuardM<LatchC> creationGuard(*creationLatch);
constinit AtomicM<TracerC*> theTracer{nullptr};

void beginExit() { static_cast<TracerC*>(theTracer)->beginExit(); }

TracerC* makeTracer()
{
    guardOverForks(FORK_RANK_CREATE_TRACER, creationGuard);
    const LatchGuardM<LatchC> guard(*creationLatch);
    if (theTracer == nullptr) {
        TracerC* const tracer = new TracerC;
        tracer->guardForks();
        theTracer = tracer;
        std::atexit(beginExit);
    }
    return theTracer;
}

TracerC* tracerOfVersion(int version)
{
    (void)TVX_CHECK(version == 2, "Tracer version not supported");
    TracerC* const tracer = theTracer;
    return tracer != nullptr ? tracer : makeTracer();
}

}   // namespace

extern "C" TracerI* getTracer(int version)
{
    if (version == 1) return reinterpret_cast<TracerI*>(tracerOfVersion(2)->TracerV1());
    return tracerOfVersion(version);
}

extern "C" TraceControllerI* getTraceController(int version)
{
    (void)TVX_CHECK(version == 2, "Trace Controller version not supported");
    return tracerOfVersion(version);
}
