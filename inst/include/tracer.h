// tracer.h: the object that modules call at their trace points.
//
// All operations on a class take, besides its name, the address of a pointer that the caller keeps at the
// trace point, null at first. The first call looks the class up and stores the address of the class's mask
// there; from then on the trace point sees by one load whether anybody wants its messages, also after
// the mask has changed. Trace points are best written with the macros of tracesite.h, which do just that.
//
// The pointer is read and written as an atomic word (acquire, release), so several threads may use one
// trace point. A null address means that nothing is kept; trace does not allow it.
//
// Thread safety: latched. The test whether a class is on takes no lock once the pointer is set. The depth
// of indentation is one for the whole process.
// Ownership:     there is one tracer (getTracer in tvxcmn.h), which lives until the process ends. Names and
//                formats are copied or used before the call returns.
#ifndef TVXCMN_TRACER_H
#define TVXCMN_TRACER_H

#include "arglist.h"
#include "basetypes.h"

#include <cstdarg>

class TraceDefaultConsumerI;

class TracerI {
public:
    // Tells the tracer who is running. A null text keeps the former one. `profile`, if not null, is a
    // file with settings and classes for the default consumer, which is registered again if it has been
    // dropped. Returns 0, also when the profile cannot be read, or is no regular file, which may have no end.
    //
    // A profile has one item a line, of at most 255 bytes; "#" begins a comment.
    //     timestamp = yes     an attribute (traceconsumer.h)
    //     net/socket          a class to turn on; also +net/socket
    //     -net/socket/read    a class to turn off
    //     */socket            a wildcard: turns on each class with a component "socket" that comes into being
    //                         from now on
    virtual long registerTask(const char* programName, const char* profile, const char* traceDescriptionFile) = 0;
    virtual long unregisterTask() = 0;   // does nothing, returns 0
    // The consumer that writes to a file.
    virtual TraceDefaultConsumerI* getDefaultConsumer() = 0;
    virtual void showControlPanel() = 0;   // does nothing: there is none on this system

    // The class's mask, a bit for each consumer that wants its messages; 0 when it is off.
    virtual unsigned int enabled(const char* traceClass, const unsigned int** enabled_pp) = 0;
    // Hands a message to the consumers that want it; whether there was one. Requires: enabled_pp is not null
    // ("enabled_pp != 0"). Otherwise: false.
    virtual BooleanT trace(const char* traceClass, const unsigned int** enabled_pp, const char* format,
                           ArgListC args) = 0;
    // Indents all messages by one more if the class is on; whether it is. Each success needs an outdent.
    virtual BooleanT indent(const char* traceClass, const unsigned int** enabled_pp) = 0;
    virtual void outdent() = 0;

    // Adds to the class's counter and tells the consumers, whether the class is on or not. False, always.
    virtual BooleanT increment(const char* traceClass, const unsigned int** enabled_pp, int by) = 0;
    virtual BooleanT decrement(const char* traceClass, const unsigned int** enabled_pp, int by)
    {
        return increment(traceClass, enabled_pp, static_cast<int>(0U - static_cast<unsigned>(by)));
    }

    // Starts the class's timer, also when it is running. realTimerEnd adds the time since to the class's sum
    // and tells the consumers; it needs a pointer that is set, and does nothing when the timer is not running.
    virtual BooleanT realTimerStart(const char* traceClass, const unsigned int** enabled_pp) = 0;
    virtual void realTimerEnd(const char* traceClass, const unsigned int** enabled_pp) = 0;

    // The class's counter, the sum of its timer in ticks, and the ticks in a second, each where asked for.
    virtual BooleanT getCounters(const char* traceClass, const unsigned int** enabled_pp, long* count, long long* total,
                                 long long* frequency) = 0;

protected:
    ~TracerI() = default;   // not a slot
};

// The first version of the interface, for modules that were built with it: no getCounters, and the
// arguments of a message are those of printf as StringC::formatArgs reads them.
class TracerV1I {
public:
    virtual long registerTask(const char* programName, const char* profile, const char* traceDescriptionFile) = 0;
    virtual long unregisterTask() = 0;
    virtual TraceDefaultConsumerI* getDefaultConsumer() = 0;
    virtual void showControlPanel() = 0;
    virtual unsigned int enabled(const char* traceClass, const unsigned int** enabled_pp) = 0;
    virtual BooleanT trace(const char* traceClass, const unsigned int** enabled_pp, const char* format,
                           std::va_list ap) = 0;
    virtual BooleanT indent(const char* traceClass, const unsigned int** enabled_pp) = 0;
    virtual void outdent() = 0;
    virtual BooleanT increment(const char* traceClass, const unsigned int** enabled_pp, int by) = 0;
    virtual BooleanT decrement(const char* traceClass, const unsigned int** enabled_pp, int by)
    {
        return increment(traceClass, enabled_pp, static_cast<int>(0U - static_cast<unsigned>(by)));
    }
    virtual BooleanT realTimerStart(const char* traceClass, const unsigned int** enabled_pp) = 0;
    virtual void realTimerEnd(const char* traceClass, const unsigned int** enabled_pp) = 0;

protected:
    ~TracerV1I() = default;   // not a slot
};

#endif   // TVXCMN_TRACER_H
