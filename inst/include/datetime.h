// datetime.h: calendar dates and times, and spans of time.
//
// A time is a signed 64-bit count of units of 10 nanoseconds from day 0 of the proleptic Gregorian calendar
// (ISO 8601), the day before 1 January of year 1. The count reaches from year -2922 to 2923 and wraps around
// beyond. Leap seconds are not counted, as in POSIX time. A value is either UTC or local time; it only carries
// a mark of which, so what is added, subtracted or compared is the bare count.
//
// Thread safety: values; one object unlocked, const operations at the same time.
#ifndef TVXCMN_DATETIME_H
#define TVXCMN_DATETIME_H

#include "basetypes.h"
#include "stringc.h"

#include <ctime>
#include <sys/time.h>

// ---- the calendar -----------------------------------------------------------------------------------

struct YMDDateT {
    int year;    // 0 is the year before year 1
    int month;   // 1 to 12
    int day;     // 1 to 31
};

// The number of a date's day: 1 for 0001-01-01, 719163 for 1970-01-01. A day beyond the end of its month counts
// on into the next ones, and so does a month of 13 or 14. Other months beyond 12, and dates before 1 March of
// year 0, may be some days off.
long datol(int year, int month, int day) noexcept;

// Sets `out` to the date of day number `n`, any that gives a year which an int holds. Returns the day of the
// week, 0 Sunday to 6 Saturday.
int ltodate(long n, YMDDateT& out) noexcept;

// ---- spans ------------------------------------------------------------------------------------------

// A count of units of 10 nanoseconds. Sums and differences wrap around.
class IntervalC {
public:
    static constexpr long SECOND = 100000000;
    static constexpr long DAY = 86400 * SECOND;
    static constexpr long START_OF_1970 = 719163 * DAY;   // the count of 1970-01-01T00:00:00

    IntervalC() noexcept = default;
    explicit IntervalC(long units) noexcept : interval(units) {}

    // The count of a time that POSIX tells.
    static IntervalC fromTime_t(time_t time) noexcept;
    static IntervalC fromTimeVal(const timeval& time) noexcept;

    long get() const noexcept { return interval; }
    // Whole seconds and milliseconds of a span, rounded towards zero.
    long asSeconds() const noexcept { return interval / SECOND; }
    long asMilliseconds() const noexcept { return interval / (SECOND / 1000); }
    // The POSIX time of a count that stands for a time, rounded down; microseconds are 0 to 999999.
    time_t asTime_t() const noexcept;
    timeval asTimeVal() const noexcept;

    IntervalC operator+(const IntervalC& other) const noexcept { return IntervalC(sum(interval, other.interval)); }
    IntervalC operator-(const IntervalC& other) const noexcept { return IntervalC(difference(other)); }
    IntervalC& operator+=(const IntervalC& other) noexcept { return *this = *this + other; }
    IntervalC& operator-=(const IntervalC& other) noexcept { return *this = *this - other; }

    bool operator==(const IntervalC& other) const noexcept { return interval == other.interval; }
    bool operator!=(const IntervalC& other) const noexcept { return interval != other.interval; }
    bool operator<(const IntervalC& other) const noexcept { return interval < other.interval; }
    bool operator<=(const IntervalC& other) const noexcept { return interval <= other.interval; }
    bool operator>(const IntervalC& other) const noexcept { return interval > other.interval; }
    bool operator>=(const IntervalC& other) const noexcept { return interval >= other.interval; }

private:
    static long sum(long a, long b) noexcept;
    long difference(const IntervalC& other) const noexcept;

    long interval = 0;
};

// ---- times ------------------------------------------------------------------------------------------

// A time, held as its count and, if it was made from fields, as these too. A time within year 0, and so any
// count from 0 to below one day, is a time of day without a date.
class YMDTimeC {
public:
    // Flags of toString.
    enum : int {
        FRACTION_DIGITS = 7,   // mask of their number
        SEPARATORS = 8,        // "-" between the parts of the date, ":" between those of the time
        DATE_ONLY = 16,
        BLANK = 32   // between date and time, instead of "T"
    };

    // The count 0 of UTC: isNull.
    YMDTimeC() noexcept = default;
    explicit YMDTimeC(const IntervalC& count, bool isLocalTime = false) noexcept : interval(count), isLocal(isLocalTime)
    {
    }
    // A time from its fields; `fraction` is added in units of 10 nanoseconds. Fields that make no time, like
    // a 31st of April or a second of 60, roll over into the next ones, which is reported
    // (TVXERR_TIME_BAD_FIELDS); so is a time that the count cannot hold.
    YMDTimeC(int year, int month, int day, int hour, int minute, int second, bool isLocalTime = false);
    YMDTimeC(int year, int month, int day, int hour, int minute, int second, long fraction, bool isLocalTime);

    // The present second.
    static YMDTimeC now(bool local);

    // The time that a text tells, in any form that toString writes, with "." or "," or nothing in front of a
    // fraction; further digits than 8 of it, and whatever follows, are ignored. "Z" behind it makes a UTC time,
    // anything else a local one: an offset like "+01:00" is not applied. A time of day is known by a "T" in
    // front, by its ":", or by being six digits long; eight digits are a date.
    // What cannot be read is reported (TVXERR_TIME_BAD_TEXT) and gives the null value.
    static YMDTimeC fromString(const StringC& text);

    // The same moment in the other kind of time, by the time zone as it is now, not as it was then. A value
    // that is of that kind already comes back as it is; but asUTC leaves the mark of local time on its result,
    // so that a second asUTC shifts it again.
    YMDTimeC asLocal() const;
    YMDTimeC asUTC() const;

    // "20210605T1234567890Z": separators and the rest as `flags` say, the locale's decimal separator in front
    // of the fraction, "Z" behind a UTC time. A fraction is rounded without a carry: .99999999 with one digit
    // is 10. A time of day has no "T" and no "Z".
    StringC toString(int flags) const;
    // "2021-06-05 12:34:56"
    StringC toSQLTime() const;

    const IntervalC& Interval() const noexcept { return interval; }
    bool IsLocal() const noexcept { return isLocal != 0; }
    bool isNull() const noexcept { return interval.get() == 0; }
    int Year() const noexcept { return fields().year; }
    int Month() const noexcept { return fields().month; }
    int Day() const noexcept { return fields().day; }
    int Hour() const noexcept { return fields().hour; }
    int Minute() const noexcept { return fields().minute; }
    int Second() const noexcept { return fields().second; }
    int DayOfWeek() const noexcept;   // 0 Sunday to 6 Saturday
    // Without the date.
    YMDTimeC TimeOfDay() const noexcept;

    // By the count alone.
    bool operator==(const YMDTimeC& other) const noexcept { return interval == other.interval; }
    bool operator!=(const YMDTimeC& other) const noexcept { return interval != other.interval; }
    bool operator<(const YMDTimeC& other) const noexcept { return interval < other.interval; }
    bool operator<=(const YMDTimeC& other) const noexcept { return interval <= other.interval; }
    bool operator>(const YMDTimeC& other) const noexcept { return interval > other.interval; }
    bool operator>=(const YMDTimeC& other) const noexcept { return interval >= other.interval; }

    // Fills in the fields of a value that was made from a count, so that reading many of them takes the count
    // apart only once. A const operation never does it by itself, because another thread may be reading.
    void prepareYMDHMS() noexcept;

private:
    struct FieldsT {
        short year;
        short month;
        short day;
        short hour;
        short minute;
        short second;
    };

    void prepareInterval() noexcept;
    FieldsT fields() const noexcept { return ymdhms_valid != 0 ? ymdhms : computed(); }
    FieldsT computed() const noexcept;

    IntervalC interval;
    FieldsT ymdhms = {};
    BooleanT isLocal = false;
    BooleanT interval_has_ymdhms = true;
    BooleanT ymdhms_valid = false;
    signed char wday = 0;   // good with ymdhms
};

static_assert(sizeof(YMDTimeC) == 24, "fields without gaps");

// ---- nothing of interest to users below --------------------------------------------------------------

// Years begin in March here, so that the day that may be missing is the last one. All divisions drop their rest.
inline long datol(int year, int month, int day) noexcept
{
    const long y = month < 3 ? year - 1L : year;
    const long m = month < 3 ? month + 9L : month - 3L;
    const long century = y / 100;
    return (153 * m + 2) / 5 + y * 1461 / 4 - century + century / 4 + day - 306;
}

// As datol. 400 years have 146097 days, so days that are beyond the small ones, or negative, are taken back by
// whole cycles of them.
inline int ltodate(long n, YMDDateT& out) noexcept
{
    const long CYCLE = 146097;
    const unsigned long SMALL = 1 << 29;
    unsigned long days = static_cast<unsigned long>(n) + 305;   // from 1 March of year 0
    long cycles = 0;
    if (__builtin_expect(days >= SMALL, 0)) {
        const long signedDays = static_cast<long>(days);
        const long rest = signedDays % CYCLE;
        cycles = signedDays / CYCLE - (rest < 0 ? 1 : 0);
        days = static_cast<unsigned long>(rest < 0 ? rest + CYCLE : rest);
    }
    const unsigned quarters = static_cast<unsigned>(days) * 4 + 3;
    const unsigned century = quarters / 146097;
    // Products with scaled reciprocals hold quotient and rest in their halves: of 1461 quarter days a year ...
    const unsigned long yearAndRest = 2939745UL * (quarters % 146097 | 3);
    const unsigned dayOfYear = static_cast<unsigned>(yearAndRest) / 2939745 / 4;
    // ... and of 153 days in five months, the third month being the first.
    const unsigned monthAndRest = 2141 * dayOfYear + 197913;
    const bool isNextYear = dayOfYear >= 306;   // January and February
    out.day = static_cast<int>((monthAndRest & 0xFFFF) / 2141 + 1);
    out.month = static_cast<int>((monthAndRest >> 16) - (isNextYear ? 12 : 0));
    const unsigned year = century * 100 + static_cast<unsigned>(yearAndRest >> 32) + (isNextYear ? 1 : 0);
    out.year = static_cast<int>(cycles * 400 + year);
    return static_cast<int>((n % 7 + 7) % 7);
}

inline long IntervalC::sum(long a, long b) noexcept
{
    return static_cast<long>(static_cast<unsigned long>(a) + static_cast<unsigned long>(b));
}

inline long IntervalC::difference(const IntervalC& other) const noexcept
{
    return static_cast<long>(static_cast<unsigned long>(interval) - static_cast<unsigned long>(other.interval));
}

#endif   // TVXCMN_DATETIME_H
