// tracefil.h: the consumer that writes to a file. What it writes and how it is set stands in traceconsumer.h.
//
// Thread safety: latched, by the controller's critical section.
// Ownership:     the controller must outlive it. Lines that wait in its buffer are written when the file is
//                closed or the process exits.
#ifndef TVXCMN_TRACING_TRACEFIL_H
#define TVXCMN_TRACING_TRACEFIL_H

#include "cmnlib/syscall.h"
#include "contemplate.h"
#include "traceconsumer.h"
#include "tracecontroller.h"
#include "tracing/tracelines.h"

#include <ctime>
#include <string>

class TraceControllerC;

class TraceConsumerFileC final : public TraceDefaultConsumerI {
public:
    explicit TraceConsumerFileC(TraceControllerC& controller) : m_controller(controller) {}
    ~TraceConsumerFileC();
    TraceConsumerFileC(const TraceConsumerFileC&) = delete;
    TraceConsumerFileC& operator=(const TraceConsumerFileC&) = delete;

    long message(const char* traceClass, int indent, const char* format, ArgListC args) override;
    // The arguments are read as StringC::formatArgs does.
    long message(const char* traceClass, int indent, const char* format, ...);
    long valueChange(const char* traceClass, int indent) override;
    long newClass(const char* traceClass) override;

    long setAttr(const char* name, const char* value) override;
    void enableTimestamp(BooleanT enable) override;
    void enableTimedeltas(BooleanT enable) override;
    void enableRealTimers(BooleanT enable) override;
    void enableCounters(BooleanT enable) override;
    void setFilePattern(const char* pattern) override;
    void setFlushFreq(int lines) override;
    void setMaxIndent(int depth) override;
    void setMaxDetail(int detail) override;
    void setShowProcess(BooleanT show);
    void setShowThreads(BooleanT show);

    // Takes settings and classes from a file. Returns 0, or why it cannot be read.
    long loadProfile(const char* path);
    void getMaxDetail(int* detail);

    // The process is about to exit: writes what waits, and from now on each line at once.
    void beginExit();
    // In the child of a fork: the lines that wait are the parent's.
    void dropLines() { m_lines.drop(); }

private:
    template <class T>
    void set(T& field, T value);
    void setNumber(int attribute, int number);
    void readProfile(std::FILE* file);
    void addWildcard(const char* component);
    void writeLines();

    void putPrefix(const char* traceClass);
    void putTimestamp(TraceTimeT time);
    void putTimeOfDay();
    void putSeconds(TraceTimeT time);
    void putText(const char* text);

    FdOwnerC m_file;   // where a stream would stand
    std::string file_pattern = "/tmp/%p%t.trc";
    BooleanT timeofday = false;
    BooleanT timestamp = false;
    BooleanT timedeltas = false;
    BooleanT trace_counters = false;
    BooleanT trace_times = false;
    BooleanT show_class = false;
    TraceTimeT started = 0;   // timer at the first line with a prefix
    TraceTimeT last = 0;      // the previous such line, since `started`
    TraceTimeT freq = 0;      // ticks in a second; 0: not asked for yet
    int flush_freq = 1;
    int flush_count = 0;
    int max_indent = 16;
    int max_detail = 9;
    BooleanT show_process = false;
    BooleanT show_threads = false;
    ArrayM<char*> wildcards;   // owned
    // From here on what a stream would do for us.
    TraceControllerC& m_controller;
    TraceLinesC m_lines;
    bool m_isStarted = false;   // `started` may be any time, 0 included
    bool m_isExiting = false;
};

#endif   // TVXCMN_TRACING_TRACEFIL_H
