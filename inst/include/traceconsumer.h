// traceconsumer.h: who gets the messages of the tracer.
//
// Thread safety: the tracer calls a consumer inside its critical section, so never from two threads at
// once. A consumer may trace, report errors and call the controller from there; errors that it reports are
// recorded but not announced, and it must not call the configuration's registry. What it waits for, all
// threads that trace wait for.
// Ownership:     a consumer belongs to whoever registers it with the controller, and stays until it is
//                unregistered.
#ifndef TVXCMN_TRACECONSUMER_H
#define TVXCMN_TRACECONSUMER_H

#include "arglist.h"
#include "basetypes.h"

// All three return 0, or an error number.
class TraceConsumerI {
public:
    // One message of a class that is on for this consumer. `format` with `args` is the text
    // (StringC::format), `indent` the depth of the calls around it, which may be negative. A consumer that
    // returns an error number is unregistered.
    virtual long message(const char* traceClass, int indent, const char* format, ArgListC args) = 0;
    // The counter or the timer of a class has changed. All consumers are told, whatever is on for them.
    virtual long valueChange(const char* traceClass, int indent) = 0;
    // A class has come into being. All consumers are told.
    virtual long newClass(const char* traceClass) = 0;

protected:
    ~TraceConsumerI() = default;   // not a slot
};

// The consumer that comes with the tracer: it writes each message as a line of a file. Its settings may be
// changed at any time, by any thread.
//
//     attribute        default             meaning
//     timestamp        no                  time since the first line with a prefix, "12.3456"
//     timeofday        no                  local date and time instead; turns timestamp on
//     timedeltas       no                  time since the previous line, "+0.0012"
//     show_process     no                  "pid 4242"
//     show_threads     no                  "thread 0x7f..."
//     show_class       no                  "(net/socket)", if one of the above is on
//     trace_counters   no                  lines about counters
//     trace_timers     no                  lines about timers
//     filename         /tmp/%p%t.trc       pattern of the file's name
//     flush_freq       1                   lines that are written to the file at once
//     max_indent       16                  indents are taken modulo this; 0: no limit
//     max_detail       9                   detail that registerTask gives the consumer
//
// In the file's name %p is the task's id, %t the local time as 130509, %d the date as 20240229, %u the
// number of the attempt to create the file, nothing on the first one; with %u the file must not exist,
// and up to 100 numbers are tried. %_ puts a "_" in front of the following directive from the second attempt
// on. Any other character behind a percent sign stands for itself. Lines are appended.
//
// The file has the permissions that the process's umask leaves of 0666. In a directory where everybody may
// create files (mode 1777, as /tmp) it must be a regular file of the process's own user with no other
// name; a link that somebody has put there is refused. A message with line breaks makes several lines,
// and the file grows without limit. What cannot be written (disk full) is dropped;
// a line that was cut by that is ended before the next one.
class TraceDefaultConsumerI : public TraceConsumerI {
public:
    // Sets an attribute by its name, in any case. Numbers are decimal; a truth value is a number, or begins
    // with T, Y, F or N in any case; other values are ignored. TVXERR_TRACE_UNKNOWN_ATTRIBUTE for
    // an unknown name, or a null one.
    virtual long setAttr(const char* name, const char* value) = 0;
    virtual void enableTimestamp(BooleanT enable) = 0;
    virtual void enableTimedeltas(BooleanT enable) = 0;
    virtual void enableRealTimers(BooleanT enable) = 0;   // trace_timers
    virtual void enableCounters(BooleanT enable) = 0;     // trace_counters
    // The next message opens a file of the new name. A null pattern is ignored.
    virtual void setFilePattern(const char* pattern) = 0;
    virtual void setFlushFreq(int lines) = 0;   // below 1: as 1
    virtual void setMaxIndent(int depth) = 0;
    virtual void setMaxDetail(int detail) = 0;

protected:
    ~TraceDefaultConsumerI() = default;
};

#endif   // TVXCMN_TRACECONSUMER_H
