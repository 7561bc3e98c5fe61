#include "datetime.h"

#include "cmnlib/errnokeeper.h"
#include "ipc/localtime.h"
#include "localei.h"
#include "tvxcmn.h"

#include <algorithm>

namespace {

// What the locale writes in front of a fraction.
StringC decimalSeparator()
{
    LocaleIdT name;
    return getLocale(name)->numbers(2)->decimal();
}

// Rounded down, for a positive divisor.
long floorDivide(long a, long b) { return a / b - (a % b < 0 ? 1 : 0); }

// What a count has beyond its last full second.
long fractionOf(long count)
{
    const long rest = count % IntervalC::SECOND;
    return rest < 0 ? rest + IntervalC::SECOND : rest;
}

long wrappingMultiply(long a, long b)
{
    return static_cast<long>(static_cast<unsigned long>(a) * static_cast<unsigned long>(b));
}

// How far local time is ahead of UTC at present. Most systems leave the zone of gettimeofday empty.
IntervalC zoneOffset()
{
    const ErrnoKeeperC errnoKeeper;
    timeval now = {0, 0};
    struct timezone zone = {0, 0};
    gettimeofday(&now, &zone);
    if (zone.tz_minuteswest != 0 || zone.tz_dsttime != 0) {
        const long minutes = (zone.tz_dsttime != 0 ? 60 : 0) - zone.tz_minuteswest;
        return IntervalC(minutes * 60 * IntervalC::SECOND);
    }
    std::tm local = {};
    localTimeOf(now.tv_sec, local);
    return IntervalC(local.tm_gmtoff * IntervalC::SECOND);
}

// Writes at least `width` digits, and the sign of a negative number as the first of them.
char* putNumber(char* at, long number, int width)
{
    if (number < 0) {
        *at++ = '-';
        number = -number;
        --width;
    }
    char digits[20];
    int count = 0;
    do {
        digits[count++] = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number != 0 || count < width);
    return std::reverse_copy(digits, digits + count, at);
}

char* putPair(char* at, int number)
{
    at[0] = static_cast<char>('0' + number / 10);
    at[1] = static_cast<char>('0' + number % 10);
    return at + 2;
}

// Three fields, the first of which is a year or an hour.
char* putFields(char* at, int first, int width, int second, int third, char separator)
{
    at = width == 2 ? putPair(at, first) : putNumber(at, first, width);
    if (separator != 0) *at++ = separator;
    at = putPair(at, second);
    if (separator != 0) *at++ = separator;
    return putPair(at, third);
}

// The rounded fraction of a count, in `digits` digits or, when rounding gives 1, in one more.
char* putFraction(char* at, long count, int digits)
{
    const long DIVISORS[] = {100000000, 10000000, 1000000, 100000, 10000, 1000, 100, 10};
    const long divisor = DIVISORS[digits];
    return putNumber(at, (fractionOf(count) + divisor / 2) / divisor, digits);
}

}   // namespace

// ---- spans ------------------------------------------------------------------------------------------

IntervalC IntervalC::fromTime_t(time_t time) noexcept
{
    return IntervalC(wrappingMultiply(time, SECOND)) + IntervalC(START_OF_1970);
}

IntervalC IntervalC::fromTimeVal(const timeval& time) noexcept
{
    return fromTime_t(time.tv_sec) + IntervalC(wrappingMultiply(time.tv_usec, SECOND / 1000000));
}

time_t IntervalC::asTime_t() const noexcept { return floorDivide(interval, SECOND) - START_OF_1970 / SECOND; }

timeval IntervalC::asTimeVal() const noexcept { return {asTime_t(), fractionOf(interval) / (SECOND / 1000000)}; }

// ---- times ------------------------------------------------------------------------------------------

YMDTimeC YMDTimeC::now(bool local)
{
    const YMDTimeC utc(IntervalC::fromTime_t(time(nullptr)), false);
    return local ? utc.asLocal() : utc;
}

YMDTimeC YMDTimeC::asLocal() const
{
    if (IsLocal()) return *this;
    return YMDTimeC(interval + zoneOffset(), true);
}

YMDTimeC YMDTimeC::asUTC() const
{
    if (!IsLocal()) return *this;
    return YMDTimeC(interval - zoneOffset(), true);
}

int YMDTimeC::DayOfWeek() const noexcept
{
    if (ymdhms_valid != 0) return wday;
    YMDDateT date;
    return ltodate(floorDivide(interval.get(), IntervalC::DAY), date);
}

YMDTimeC YMDTimeC::TimeOfDay() const noexcept
{
    const long day = floorDivide(interval.get(), IntervalC::DAY);
    return YMDTimeC(interval - IntervalC(wrappingMultiply(day, IntervalC::DAY)), IsLocal());
}

void YMDTimeC::prepareInterval() noexcept
{
    if (interval_has_ymdhms != 0) return;
    const long days = datol(ymdhms.year, ymdhms.month, ymdhms.day);
    const long seconds = days * 86400 + ymdhms.hour * 3600 + ymdhms.minute * 60 + ymdhms.second;
    interval += IntervalC(wrappingMultiply(seconds, IntervalC::SECOND));
    interval_has_ymdhms = true;
}

YMDTimeC::FieldsT YMDTimeC::computed() const noexcept
{
    const long day = floorDivide(interval.get(), IntervalC::DAY);
    const int second =
        static_cast<int>((interval - IntervalC(wrappingMultiply(day, IntervalC::DAY))).get() / IntervalC::SECOND);
    YMDDateT date;
    ltodate(day, date);
    FieldsT result;
    result.year = static_cast<short>(date.year);
    result.month = static_cast<short>(date.month);
    result.day = static_cast<short>(date.day);
    result.hour = static_cast<short>(second / 3600);
    result.minute = static_cast<short>(second / 60 % 60);
    result.second = static_cast<short>(second % 60);
    return result;
}

void YMDTimeC::prepareYMDHMS() noexcept
{
    if (ymdhms_valid != 0) return;
    ymdhms = computed();
    wday = static_cast<signed char>(DayOfWeek());
    ymdhms_valid = true;
}

StringC YMDTimeC::toString(int flags) const
{
    const FieldsT f = fields();
    const bool isTimeOfDay = f.year == 0;
    const bool hasTime = isTimeOfDay || (flags & DATE_ONLY) == 0;
    const int digits = (flags & DATE_ONLY) == 0 ? flags & FRACTION_DIGITS : 0;
    const bool isSeparated = (flags & SEPARATORS) != 0;

    char text[48];
    char* end = text;
    if (!isTimeOfDay) end = putFields(end, f.year, 4, f.month, f.day, isSeparated ? '-' : '\0');
    if (!isTimeOfDay && hasTime) *end++ = (flags & BLANK) != 0 ? ' ' : 'T';
    if (hasTime) end = putFields(end, f.hour, 2, f.minute, f.second, isSeparated ? ':' : '\0');
    const char* const second = end;
    if (digits > 0) end = putFraction(end, interval.get(), digits);
    if (!isTimeOfDay && hasTime && !IsLocal()) *end++ = 'Z';

    StringC result(text, static_cast<size_t>(end - text), StringC::CC_VALID_UTF8);
    if (digits > 0) {
        const StringC separator = decimalSeparator();
        if (!separator.isEmpty()) result.insert(static_cast<size_t>(second - text), separator);
    }
    return result;
}

// Neither a mark of the zone nor a fraction.
StringC YMDTimeC::toSQLTime() const { return YMDTimeC(interval, true).toString(SEPARATORS | BLANK); }
