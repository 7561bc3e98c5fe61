#include "tracing/tracefil.h"

#include "cmnlib/errnokeeper.h"
#include "datetime.h"
#include "errornumbers.h"
#include "gettime.h"
#include "string/impl/format.h"
#include "taskid.h"
#include "traceprofile.h"
#include "tracing/tracecim.h"
#include "tracing/tracecreate.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <pthread.h>
#include <sys/stat.h>

namespace {

const size_t MAX_WAITING = 32 * 1024;   // bytes of lines; more are written before flush_freq says so

const TraceTimeT MICROSECONDS = 1000000;

unsigned long asCount(TraceTimeT value) { return static_cast<unsigned long>(value); }

}   // namespace

TraceConsumerFileC::~TraceConsumerFileC()
{
    writeLines();
    for (char* const wildcard : wildcards) std::free(wildcard);
}

// ---- settings ---------------------------------------------------------------------------------------

template <class T>
void TraceConsumerFileC::set(T& field, T value)
{
    const TraceSectionC section(m_controller);
    field = value;
}

void TraceConsumerFileC::enableTimestamp(BooleanT enable) { set(timestamp, enable); }

void TraceConsumerFileC::enableTimedeltas(BooleanT enable) { set(timedeltas, enable); }

void TraceConsumerFileC::enableRealTimers(BooleanT enable) { set(trace_times, enable); }

void TraceConsumerFileC::enableCounters(BooleanT enable) { set(trace_counters, enable); }

void TraceConsumerFileC::setFlushFreq(int lines) { set(flush_freq, lines); }

void TraceConsumerFileC::setMaxIndent(int depth) { set(max_indent, depth); }

void TraceConsumerFileC::setMaxDetail(int detail) { set(max_detail, detail); }

void TraceConsumerFileC::setShowProcess(BooleanT show) { set(show_process, show); }

void TraceConsumerFileC::setShowThreads(BooleanT show) { set(show_threads, show); }

void TraceConsumerFileC::getMaxDetail(int* detail)
{
    const TraceSectionC section(m_controller);
    if (detail != nullptr) *detail = max_detail;
}

void TraceConsumerFileC::setFilePattern(const char* pattern)
{
    if (pattern == nullptr) return;
    const TraceSectionC section(m_controller);
    writeLines();
    m_file.reset();
    m_lines.beginFile();
    file_pattern = pattern;
}

long TraceConsumerFileC::setAttr(const char* name, const char* value)
{
    const int attribute = TraceAttributeNamed(name);
    int number = 0;
    if (attribute == TRACE_ATTRIBUTES) return TVXERR_TRACE_UNKNOWN_ATTRIBUTE;
    if (attribute == TRACE_ATTR_FILENAME) {
        setFilePattern(value);
    } else if (ReadTraceValue(value, number)) {
        setNumber(attribute, number);
    }
    return 0;
}

void TraceConsumerFileC::setNumber(int attribute, int number)
{
    const BooleanT truth = number != 0;
    switch (attribute) {
    case TRACE_ATTR_TIMEOFDAY:
        set(timeofday, truth);
        if (truth) enableTimestamp(true);
        break;
    case TRACE_ATTR_TIMESTAMP: enableTimestamp(truth); break;
    case TRACE_ATTR_TIMEDELTAS: enableTimedeltas(truth); break;
    case TRACE_ATTR_TRACE_TIMERS: enableRealTimers(truth); break;
    case TRACE_ATTR_TRACE_COUNTERS: enableCounters(truth); break;
    case TRACE_ATTR_SHOW_PROCESS: setShowProcess(truth); break;
    case TRACE_ATTR_SHOW_THREADS: setShowThreads(truth); break;
    case TRACE_ATTR_SHOW_CLASS: set(show_class, truth); break;
    case TRACE_ATTR_FLUSH_FREQ: setFlushFreq(number); break;
    case TRACE_ATTR_MAX_INDENT: setMaxIndent(number); break;
    default: setMaxDetail(number); break;
    }
}

// ---- the profile ------------------------------------------------------------------------------------

long TraceConsumerFileC::loadProfile(const char* path)
{
    FdOwnerC fd(openFd(path, O_RDONLY | O_NONBLOCK));
    struct stat info = {};
    if (!fd.isOpen() || ::fstat(fd.fd(), &info) != 0) return ErrorOfErrno(errno);
    if (!S_ISREG(info.st_mode)) return ErrorOfErrno(S_ISDIR(info.st_mode) ? EISDIR : EINVAL);   // it may have no end
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(fdopen(fd.fd(), "r"), fclose);
    if (file == nullptr) return ErrorOfErrno(errno);
    (void)fd.release();
    const TraceSectionC section(m_controller);
    errno = 0;
    readProfile(file.get());
    return std::ferror(file.get()) != 0 ? ErrorOfErrno(errno) : 0;
}

void TraceConsumerFileC::readProfile(std::FILE* file)
{
    TraceProfileReaderC reader(file);
    while (reader.next()) {
        const TraceProfileItemT item = ParseTraceProfileLine(reader.line());
        switch (item.kind) {
        case TraceProfileItemT::ENABLE: m_controller.enable(this, item.name); break;
        case TraceProfileItemT::DISABLE: m_controller.disable(this, item.name); break;
        case TraceProfileItemT::WILDCARD: addWildcard(item.name); break;
        case TraceProfileItemT::SETTING: setAttr(item.name, item.value); break;
        default: break;
        }
    }
}

void TraceConsumerFileC::addWildcard(const char* component)
{
    for (const char* const wildcard : wildcards) {
        if (std::strcmp(wildcard, component) == 0) return;
    }
    wildcards << strdup(component);
}

long TraceConsumerFileC::newClass(const char* traceClass)
{
    if (traceClass == nullptr || *traceClass == 0) return 0;
    const TraceSectionC section(m_controller);
    for (const char* const wildcard : wildcards) {
        if (TraceWildcardMatches(wildcard, traceClass)) return m_controller.enable(this, traceClass);
    }
    return 0;
}

// ---- lines ------------------------------------------------------------------------------------------

long TraceConsumerFileC::message(const char* traceClass, int indent, const char* format, ArgListC args)
{
    const ErrnoKeeperC keeper;
    const int error = errno;
    const TraceSectionC section(m_controller);
    const ErrorT failure = m_file.isOpen() ? 0 : createTraceFile(file_pattern.c_str(), m_file);
    if (failure != 0) return failure;
    m_lines.beginLine();
    putPrefix(traceClass);
    m_lines.fill(' ', max_indent > 0 ? indent % max_indent : indent);
    formatTo(m_lines, format != nullptr ? format : "", args, error);
    m_lines.endLine();
    if (++flush_count >= flush_freq || m_isExiting || m_lines.bytes() > MAX_WAITING) writeLines();
    return 0;
}

long TraceConsumerFileC::message(const char* traceClass, int indent, const char* format, ...)
{
    const ErrnoKeeperC keeper;
    std::va_list parameters;
    va_start(parameters, format);
    ArgListC args = StringC::formatArgs(StringC(format), parameters);
    va_end(parameters);
    keeper.restore();
    return message(traceClass, indent, format, std::move(args));
}

void TraceConsumerFileC::writeLines()
{
    if (m_file.isOpen()) m_lines.write(m_file.fd());
    flush_count = 0;
}

void TraceConsumerFileC::beginExit()
{
    const TraceSectionC section(m_controller);
    m_isExiting = true;
    writeLines();
}

void TraceConsumerFileC::putText(const char* text)
{
    m_lines.append(reinterpret_cast<const UTF8T*>(text), std::strlen(text));
}

// "12.3456 (+0.0012), pid 4242, thread 0x7f0123456789 (net/socket): "
void TraceConsumerFileC::putPrefix(const char* traceClass)
{
    if (!(timestamp || timedeltas || show_threads || show_process)) return;
    if (freq == 0) m_controller.getTimerFrequency(&freq);
    TraceTimeT time = 0;
    m_controller.getTimer(&time);
    if (!m_isStarted) started = time;
    m_isStarted = true;
    time -= started;

    const char* comma = "";   // once something precedes
    char text[64];
    if (timestamp && freq != 0) {
        putTimestamp(time);
        comma = ", ";
    }
    if (timedeltas && freq != 0) {
        if (*comma != 0) putText(" ");
        putText(timestamp ? "(+" : "+");
        putSeconds(time - last);
        if (timestamp) putText(")");
        comma = ", ";
    }
    if (show_process) {
        std::snprintf(text, sizeof text, "%spid %lu", comma, static_cast<unsigned long>(GetTaskId()));
        putText(text);
        comma = ", ";
    }
    if (show_threads) {
        std::snprintf(text, sizeof text, "%sthread 0x%llx", comma, static_cast<unsigned long long>(pthread_self()));
        putText(text);
        comma = ", ";
    }
    if (show_class) {
        putText(*comma != 0 ? " (" : "(");
        putText(traceClass != nullptr ? traceClass : "");
        putText(")");
    }
    putText(": ");
    last = time;
}

void TraceConsumerFileC::putTimestamp(TraceTimeT time)
{
    if (timeofday) {
        putTimeOfDay();
    } else {
        putSeconds(time);
    }
}

// "20210605T1234567890": the local time, with four digits of its fraction.
void TraceConsumerFileC::putTimeOfDay()
{
    const int FOUR_DIGITS = 4;
    timeval now = {0, 0};
    GetTimeOfDay(&now);
    const StringC text = YMDTimeC(IntervalC::fromTimeVal(now)).asLocal().toString(FOUR_DIGITS);
    m_lines.append(reinterpret_cast<const UTF8T*>(text.utf8()), text.utf8Bytes());
}

// "12.3456"
void TraceConsumerFileC::putSeconds(TraceTimeT time)
{
    char text[48];
    std::snprintf(text, sizeof text, "%lu.%04lu", asCount(time / freq), asCount(time % freq * 10000 / freq));
    putText(text);
}

// ---- counters and timers ----------------------------------------------------------------------------

long TraceConsumerFileC::valueChange(const char* traceClass, int indent)
{
    const TraceSectionC section(m_controller);
    if (!trace_times && !trace_counters) return 0;
    TraceValuesT* values = nullptr;
    const long failure = m_controller.getValues(traceClass, &values);
    if (failure != 0) return failure;

    const long count = relaxed(values->count);
    const TraceTimeT total = relaxed(values->total);
    if (total == 0) {
        return trace_counters ? message(traceClass, indent, "counter %s now %ld", traceClass, count) : 0;
    }
    if (!trace_times) return 0;
    if (freq == 0) m_controller.getTimerFrequency(&freq);
    const TraceTimeT second = freq != 0 ? freq : MICROSECONDS;
    return message(traceClass, indent, "timer %s interval %ld, total %ld.%06ld", traceClass, count,
                   static_cast<long>(total / second), static_cast<long>(total % second));
}
