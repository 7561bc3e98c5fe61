// traceprofile.h: how a trace profile is read, for who uses one and for who checks one. What the items of a
// profile do stands in tracer.h, what the attributes mean in traceconsumer.h.
//
// Thread safety: any thread; a reader is unlocked.
#ifndef TVXCMN_TRACEPROFILE_H
#define TVXCMN_TRACEPROFILE_H

#include "cstrings.h"

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// ---- attributes ---------------------------------------------------------------------------------------

enum TraceAttributeT {
    TRACE_ATTR_TIMEOFDAY,
    TRACE_ATTR_TIMESTAMP,
    TRACE_ATTR_TIMEDELTAS,
    TRACE_ATTR_TRACE_TIMERS,
    TRACE_ATTR_TRACE_COUNTERS,
    TRACE_ATTR_SHOW_PROCESS,
    TRACE_ATTR_SHOW_THREADS,
    TRACE_ATTR_SHOW_CLASS,
    TRACE_ATTR_FLUSH_FREQ,   // from here on: numbers that are no truth values
    TRACE_ATTR_MAX_INDENT,
    TRACE_ATTR_MAX_DETAIL,
    TRACE_ATTR_FILENAME,   // takes its value as a text
    TRACE_ATTRIBUTES       // how many there are
};

inline const char* TraceAttributeName(int attribute)
{
    static const char* const NAMES[TRACE_ATTRIBUTES] = {
        "timeofday",    "timestamp",  "timedeltas", "trace_timers", "trace_counters", "show_process",
        "show_threads", "show_class", "flush_freq", "max_indent",   "max_detail",     "filename"};
    return NAMES[attribute];
}

// The attribute of that name, in any case; TRACE_ATTRIBUTES for an unknown name or null.
inline int TraceAttributeNamed(const char* name)
{
    int attribute = 0;
    while (attribute < TRACE_ATTRIBUTES &&
           (name == nullptr || StrCompareCI(name, TraceAttributeName(attribute)) != 0)) {
        ++attribute;
    }
    return attribute;
}

// Reads the value of an attribute other than the file's name: a decimal number, brought into the range of an
// int, or a word that begins with F or N (0), T or Y (1) in any case. False for anything else.
inline bool ReadTraceValue(const char* value, int& number)
{
    if (value == nullptr || *value == 0) return false;
    if (*value >= '0' && *value <= '9') {
        const int error = errno;
        const long read = std::strtol(value, nullptr, 10);
        errno = error;
        number = read < INT_MAX ? static_cast<int>(read) : INT_MAX;
        return true;
    }
    if (std::strchr("FNfnTYty", *value) == nullptr) return false;
    number = std::strchr("TYty", *value) != nullptr;
    return true;
}

// ---- lines --------------------------------------------------------------------------------------------

struct TraceProfileItemT {
    enum KindT { NOTHING, ENABLE, DISABLE, WILDCARD, SETTING };

    KindT kind;
    const char* name;    // of the class, the component or the attribute
    const char* value;   // of the attribute
};

inline char* TrimmedTraceText(char* text)
{
    static const char WHITE[] = " \t\n\v\f\r";
    text += std::strspn(text, WHITE);
    size_t size = std::strlen(text);
    while (size > 0 && std::strchr(WHITE, text[size - 1]) != nullptr) --size;
    text[size] = 0;
    return text;
}

// Takes a terminated line apart, and changes it on the way: the texts of the item lie in it.
inline TraceProfileItemT ParseTraceProfileLine(char* line)
{
    line[std::strcspn(line, "#")] = 0;
    line = TrimmedTraceText(line);
    if (*line == 0) return {TraceProfileItemT::NOTHING, line, nullptr};
    if (*line == '-') return {TraceProfileItemT::DISABLE, TrimmedTraceText(line + 1), nullptr};
    if (*line == '+') {
        line = TrimmedTraceText(line + 1);
    } else if (char* const equals = std::strchr(line, '=')) {
        *equals = 0;
        return {TraceProfileItemT::SETTING, TrimmedTraceText(line), TrimmedTraceText(equals + 1)};
    }
    if (*line != '*') return {TraceProfileItemT::ENABLE, line, nullptr};
    return {TraceProfileItemT::WILDCARD, line + (line[1] == '/' ? 2 : 1), nullptr};
}

// Reads the lines of a profile one after the other. Of a longer one only the first 255 bytes count.
class TraceProfileReaderC {
public:
    static const size_t MAX_LINE = 255;

    // The file stays the caller's.
    explicit TraceProfileReaderC(std::FILE* file) : m_file(file) {}

    // Goes on to the next line; false at the end of the file, and when it cannot be read (ferror).
    bool next()
    {
        m_size = 0;
        int ch = std::getc(m_file);
        if (ch == EOF) return false;
        for (; ch != EOF && ch != '\n'; ch = std::getc(m_file)) {
            if (m_size < MAX_LINE) m_line[m_size] = static_cast<char>(ch);
            ++m_size;
        }
        m_line[m_size < MAX_LINE ? m_size : MAX_LINE] = 0;
        ++m_number;
        return true;
    }
    // The line without its end, terminated; the caller may change it.
    char* line() noexcept { return m_line; }
    bool isCut() const noexcept { return m_size > MAX_LINE; }
    int number() const noexcept { return m_number; }   // from 1

private:
    std::FILE* const m_file;
    int m_number = 0;
    size_t m_size = 0;   // of the whole line
    char m_line[MAX_LINE + 1];
};

// ---- wildcards ----------------------------------------------------------------------------------------

// Whether a wildcard equals a component of the class's name, which may have a detail prefix.
inline bool TraceWildcardMatches(const char* wildcard, const char* traceClass)
{
    if (*traceClass >= '0' && *traceClass <= '9') traceClass += traceClass[1] == ',' ? 2 : 1;
    const size_t size = std::strlen(wildcard);
    for (;;) {
        const size_t component = std::strcspn(traceClass, "/");
        if (component == size && std::memcmp(traceClass, wildcard, size) == 0) return true;
        if (traceClass[component] == 0) return false;
        traceClass += component + 1;
    }
}

#endif   // TVXCMN_TRACEPROFILE_H
