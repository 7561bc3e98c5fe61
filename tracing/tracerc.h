// tracerc.h: the tracer, which is also the trace controller. There is one in a process (getTracer).
//
// Thread safety: latched, see tracer.h.
#ifndef TVXCMN_TRACING_TRACERC_H
#define TVXCMN_TRACING_TRACERC_H

#include "atomicm.h"
#include "ipc/forkguard.h"
#include "tracer.h"
#include "tracing/tracecim.h"

#include <memory>

class TraceConsumerFileC;

class TracerC final : public TracerI, public TraceControllerC, public TracerV1I {
public:
    TracerC();
    ~TracerC() override;

    TracerV1I* TracerV1() { return this; }
    // Makes forks wait for the critical section; for the one tracer of the process.
    void guardForks() { guardOverForks(FORK_RANK_TRACER, m_forkGuard); }
    // The process is about to exit.
    void beginExit();

    long registerTask(const char* programName, const char* profile, const char* traceDescriptionFile) override;
    long unregisterTask() override { return 0; }
    TraceDefaultConsumerI* getDefaultConsumer() override;
    void showControlPanel() override {}

    unsigned int enabled(const char* traceClass, const unsigned int** enabled_pp) override;
    BooleanT trace(const char* traceClass, const unsigned int** enabled_pp, const char* format, ArgListC args) override;
    BooleanT trace(const char* traceClass, const unsigned int** enabled_pp, const char* format,
                   std::va_list ap) override;
    BooleanT indent(const char* traceClass, const unsigned int** enabled_pp) override;
    void outdent() override;
    BooleanT increment(const char* traceClass, const unsigned int** enabled_pp, int by) override;
    BooleanT realTimerStart(const char* traceClass, const unsigned int** enabled_pp) override;
    void realTimerEnd(const char* traceClass, const unsigned int** enabled_pp) override;
    BooleanT getCounters(const char* traceClass, const unsigned int** enabled_pp, long* count, long long* total,
                         long long* frequency) override;

private:
    class ForkGuardC final : public LatchForkGuardM<CountingLatchC> {
    public:
        ForkGuardC(TracerC& tracer, CountingLatchC& latch) : LatchForkGuardM(latch), m_tracer(tracer) {}
        void inChild() override;

    private:
        TracerC& m_tracer;
    };

    TraceValuesT* lookUp(const char* traceClass, const unsigned int** enabled_pp);

    AtomicM<int> m_indent{0};
    const std::unique_ptr<TraceConsumerFileC> tfc_p;
    ForkGuardC m_forkGuard;
};

#endif   // TVXCMN_TRACING_TRACERC_H
