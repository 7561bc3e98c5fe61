// tracedelivery.h: tells a thread that is inside a consumer from others.
//
// What a consumer reports while it is called is recorded, but not announced on the tracer: it would come back
// to the same consumer without end.
//
// Thread safety: per-thread.
#ifndef TVXCMN_TRACING_TRACEDELIVERY_H
#define TVXCMN_TRACING_TRACEDELIVERY_H

// The length of a call of one consumer or more.
class TraceDeliveryC {
public:
    TraceDeliveryC() noexcept { ++depth; }
    ~TraceDeliveryC() { --depth; }
    TraceDeliveryC(const TraceDeliveryC&) = delete;
    TraceDeliveryC& operator=(const TraceDeliveryC&) = delete;

    // Whether the calling thread is inside one.
    static bool isRunning() noexcept { return depth > 0; }

private:
    static constinit thread_local int depth __attribute__((tls_model("initial-exec")));
};

#endif   // TVXCMN_TRACING_TRACEDELIVERY_H
