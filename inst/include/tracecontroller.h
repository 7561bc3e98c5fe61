// tracecontroller.h: which trace classes flow to which consumers.
//
// Classes form a tree by their names: "net/socket/read" is below "net/socket", which is below "net". They
// come into being when they are first named, and live as long as the process. A name may begin with a
// decimal digit and an optional comma, "3,net/socket": the digit is the class's detail increment and no
// part of its name. Without it the increment is 1. A name with the same class behind another digit
// changes the increment. The empty name is a class like any other.
//
// A consumer turns classes on and off by name. A class that it has not set follows its parent, as far down
// as the consumer's detail reaches: 0 to 9, less the increment of each class from the one that was set.
//
// Consumers sit in slots; the number of the slot is the consumer's bit in the masks of all classes.
// Only the first 32 consumers have one: on the others enable, disable and inherit change nothing.
//
// Thread safety: latched, by one recursive critical section that also covers delivery. A consumer may
// call back into the controller while it gets a message.
// Ownership:     consumers belong to whoever registers them and stay until they are unregistered.
#ifndef TVXCMN_TRACECONTROLLER_H
#define TVXCMN_TRACECONTROLLER_H

#include <type_traits>

class TraceConsumerI;

typedef unsigned int TraceEnabledT;   // a bit for each consumer, bit i for the one in slot i
typedef long long TraceTimeT;         // timer ticks

// The values of one class, shared by the controller, the tracer and the trace points. All words are read
// and written as relaxed atomics: trace points look at `net` without a lock.
struct TraceValuesT {
    TraceEnabledT net;         // who gets messages of this class; 0: nobody, the class is off
    TraceEnabledT self;        // who was set to get them
    TraceEnabledT specified;   // who was set at all; for the others the class follows its parent
    short detail_incr;         // 0 to 9
    long count;                // the counter
    TraceTimeT total;          // the timer's sum
    TraceTimeT last_start;     // when the timer was started; 0: it is not running
};

static_assert(std::is_standard_layout<TraceValuesT>::value && sizeof(TraceValuesT) == 40,
              "a pointer to the values is a pointer to net");

// All operations return 0, or an error number (errornumbers.h): TVXERR_TRACE_UNKNOWN_CONSUMER for a
// consumer that is null or not registered, EINVAL as a system error for a class name or a result pointer
// that is null.
class TraceControllerI {
public:
    // Gives `consumer` the first free slot and sets its detail, see setDetail. Nothing is on for it yet. A
    // consumer that registers twice has two slots; what is said of it afterwards means the first.
    virtual long registerConsumer(TraceConsumerI* consumer, int flags, int detail) = 0;   // flags: ignored
    // Frees the slot. Its bit stays in the masks until another consumer gets the slot.
    virtual long unregisterConsumer(TraceConsumerI* consumer) = 0;
    // How far down classes follow: 0 to 9, other values are brought into that range.
    virtual long setDetail(TraceConsumerI* consumer, int detail) = 0;

    // Turn a class on or off for a consumer, or let it follow its parent again.
    virtual long enable(TraceConsumerI* consumer, const char* traceClass) = 0;
    virtual long disable(TraceConsumerI* consumer, const char* traceClass) = 0;
    virtual long inherit(TraceConsumerI* consumer, const char* traceClass) = 0;

    // The values of a class, which stay where they are for good.
    virtual long getValues(const char* traceClass, TraceValuesT** values) = 0;
    // Sets `self`, `specified`, `detail_incr` (brought into 0 to 9), `count` and `total` of a class.
    virtual long setValues(const char* traceClass, const TraceValuesT* values) = 0;

    // The classes right below one, in the order in which they came into being; a null or empty name asks
    // for those without a parent. A name is the full one without the increment and lives as long as the
    // process. EINVAL for an index that is out of range.
    virtual long getChildCount(const char* traceClass, int* count) = 0;
    virtual long getChild(const char* traceClass, int index, const char** child) = 0;

    // The time since the first call of this operation, in ticks, and how many ticks make a second. It
    // follows no change of the system's clock. TVXERR_TRACE_NO_TIME if the clock could not be read then.
    virtual long getTimer(long long* ticks) = 0;
    virtual long getTimerFrequency(long long* ticksPerSecond) = 0;

    // What TracerI::registerTask has been told; before, two empty texts and the id of this process. The
    // texts live as long as the process.
    virtual long programName(const char** name) = 0;
    virtual long taskId(int* id) = 0;
    virtual long traceDescriptionFile(const char** path) = 0;

protected:
    ~TraceControllerI() = default;   // not a slot
};

#endif   // TVXCMN_TRACECONTROLLER_H
