// Times that are made of fields and of texts, which may be wrong and is then reported.

#include "datetime.h"
#include "errorapi.h"

#include <string_view>

namespace {

int digitAt(const char* p) { return *p >= '0' && *p <= '9' ? *p - '0' : -1; }

// Reads a text from its front. Once something was missing, all further numbers are 0 and isValid is false.
class DateReaderC {
public:
    explicit DateReaderC(std::string_view text) : m_at(text.data()), m_end(m_at + text.size()) {}

    bool isValid() const { return m_isValid; }
    bool atEnd() const { return m_at == m_end; }
    // The next character; 0 at the end.
    char peek() const { return atEnd() ? '\0' : *m_at; }
    void skip(char separator) { skip(separator, separator); }
    void skip(char separator, char other)
    {
        if (!atEnd() && (*m_at == separator || *m_at == other)) ++m_at;
    }
    // Exactly `count` decimal digits, for a number from `lowest` to `highest`.
    short number(int count, int lowest, int highest);
    // Units of 10 nanoseconds.
    long fraction();

private:
    const char* m_at;
    const char* const m_end;
    bool m_isValid = true;
};

short DateReaderC::number(int count, int lowest, int highest)
{
    int value = 0;
    if (m_end - m_at < count) m_isValid = false;
    for (int i = 0; i < count && m_isValid; ++i, ++m_at) {
        const int digit = digitAt(m_at);
        m_isValid = digit >= 0;
        value = value * 10 + digit;
    }
    m_isValid = m_isValid && value >= lowest && value <= highest;
    return static_cast<short>(m_isValid ? value : 0);
}

// A locale without a separator writes the digits directly. Behind a separator nothing else may stand.
long DateReaderC::fraction()
{
    if (peek() == '.' || peek() == ',') {
        ++m_at;
        m_isValid = m_isValid && (atEnd() || digitAt(m_at) >= 0);
    }
    long value = 0;
    for (long unit = IntervalC::SECOND / 10; !atEnd() && digitAt(m_at) >= 0; ++m_at, unit /= 10) {
        value += digitAt(m_at) * unit;
    }
    return value;
}

bool isTimeOfDay(std::string_view text)
{
    if (text.size() < 6) return false;
    return text[0] == 'T' || text[2] == ':' ||
           (text.size() == 6 && text.find_first_not_of("0123456789") == std::string_view::npos);
}

struct ClockT {
    short hour;
    short minute;
    short second;
    long fraction;
};

ClockT readClock(DateReaderC& reader)
{
    ClockT clock;
    clock.hour = reader.number(2, 0, 23);
    reader.skip(':');
    clock.minute = reader.number(2, 0, 59);
    reader.skip(':');
    clock.second = reader.number(2, 0, 60);
    clock.fraction = reader.fraction();
    return clock;
}

}   // namespace

YMDTimeC::YMDTimeC(int year, int month, int day, int hour, int minute, int second, bool isLocalTime)
    : YMDTimeC(year, month, day, hour, minute, second, 0, isLocalTime)
{
}

YMDTimeC::YMDTimeC(int year, int month, int day, int hour, int minute, int second, long fraction, bool isLocalTime)
    : interval(fraction), isLocal(isLocalTime), interval_has_ymdhms(false)
{
    ymdhms = {static_cast<short>(year), static_cast<short>(month),  static_cast<short>(day),
              static_cast<short>(hour), static_cast<short>(minute), static_cast<short>(second)};
    prepareInterval();
    prepareYMDHMS();
    if (ymdhms.year == year && ymdhms.month == month && ymdhms.day == day && ymdhms.hour == hour &&
        ymdhms.minute == minute && ymdhms.second == second)
        return;
    Error(TVXERR_TIME_BAD_FIELDS, "Invalid date/time %04d/%02d/%02d %02d:%02d:%02d",
          ArgList << year << month << day << hour << minute << second);
}

YMDTimeC YMDTimeC::fromString(const StringC& text)
{
    const std::string_view bytes(text.utf8(), text.utf8Bytes());
    DateReaderC reader(bytes);
    if (isTimeOfDay(bytes)) {
        reader.skip('T');
        const ClockT clock = readClock(reader);
        const long seconds = clock.hour * 3600 + clock.minute * 60 + clock.second;
        if (reader.isValid()) return YMDTimeC(IntervalC(seconds * IntervalC::SECOND + clock.fraction), false);
    } else {
        const short year = reader.number(4, 0, 9999);
        reader.skip('-');
        const short month = reader.number(2, 1, 12);
        reader.skip('-');
        const short day = reader.number(2, 1, 31);
        reader.skip('T', ' ');
        const ClockT clock = reader.atEnd() ? ClockT{} : readClock(reader);
        const bool isLocalTime = reader.peek() != 'Z';
        if (reader.isValid())
            return YMDTimeC(year, month, day, clock.hour, clock.minute, clock.second, clock.fraction, isLocalTime);
    }
    Error(TVXERR_TIME_BAD_TEXT, "Invalid date/time string: '%S'", ArgList << text);
    return YMDTimeC();
}
