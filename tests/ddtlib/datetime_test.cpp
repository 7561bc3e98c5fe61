#include "datetime.h"

#include "arglist.h"
#include "errorapi.h"
#include "support/helpers.h"
#include "support/timezone.h"
#include "tvxcmn.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>

namespace {

namespace chr = std::chrono;

const long DAYS_BEFORE_1970 = 719163;

std::string str(const StringC& text) { return {text.utf8(), text.utf8Bytes()}; }

// What has been reported since the last call, as numbers and texts.
std::string reported()
{
    ErrBufI& buffer = *getErrBuf(2);
    std::string all;
    for (unsigned long i = 0; i < buffer.count(); ++i) {
        char number[24];
        std::snprintf(number, sizeof number, "%lX ", buffer.get(i)->error());
        all += number + str(buffer.get(i)->message());
    }
    buffer.reset();
    return all;
}

std::string fieldsOf(const YMDTimeC& time)
{
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d %d", time.Year(), time.Month(), time.Day(),
                  time.Hour(), time.Minute(), time.Second(), time.DayOfWeek());
    return text;
}

YMDTimeC atUnits(long units, bool isLocal = false) { return YMDTimeC(IntervalC(units), isLocal); }

long fromText(const char* text) { return YMDTimeC::fromString(StringC(text)).Interval().get(); }

// The rule of a time zone whose summer time begins and ends at these moments of its own clocks.
std::string summerTime(time_t begin, time_t end)
{
    std::string rule;
    for (const time_t change : {begin, end}) {
        std::tm when;
        gmtime_r(&change, &when);
        char text[32];
        std::snprintf(text, sizeof text, ",%d/%02d:%02d:%02d", when.tm_yday, when.tm_hour, when.tm_min, when.tm_sec);
        rule += text;
    }
    return rule;
}

// The text form, put together by the format engine.
std::string formattedText(const YMDTimeC& time, int flags)
{
    const StringC date((flags & 8) != 0 ? "-" : "");
    const StringC clock((flags & 8) != 0 ? ":" : "");
    const int digits = (flags & 16) != 0 ? 0 : flags & 7;
    ArgListC args;
    StringC format("%02d%s%02d%s%02d");
    if (time.Year() != 0) {
        args << time.Year() << date << time.Month() << date << time.Day();
        format = StringC("%04d%s%02d%s%02d");
        if ((flags & 16) != 0) return str(format % args);
        args << ((flags & 32) != 0 ? " " : "T");
        format += StringC("%s%02d%s%02d%s%02d");
    }
    args << time.Hour() << clock << time.Minute() << clock << time.Second();
    if (digits > 0) {
        unsigned long divisor = 100000000;
        for (int i = 0; i < digits; ++i) divisor /= 10;
        const long second = time.Interval().get() % IntervalC::SECOND;
        const unsigned long fraction =
            static_cast<unsigned long>(second < 0 ? second + IntervalC::SECOND : second) + divisor / 2;
        args << "" << digits << fraction / divisor;
        format += StringC("%S%0.*lu");
    }
    return str(format % args) + (time.Year() != 0 && !time.IsLocal() ? "Z" : "");
}

}   // namespace

TEST(Calendar, isThatOfTheStandardLibrary)
{
    // Every day of four digits, and some of each month from year -32767 to 32767.
    const chr::sys_days first = chr::year(1) / 1 / 1;
    const chr::sys_days last = chr::year(9999) / 12 / 31;
    const chr::days step(7);
    long faults = 0;
    const chr::sys_days end = chr::year(32767) / 12 / 31;
    for (chr::sys_days day = chr::year(-32767) / 1 / 1; day <= end;
         day += day + step >= first && day <= last ? chr::days(1) : step) {
        const chr::year_month_day expected(day);
        const long n = day.time_since_epoch().count() + DAYS_BEFORE_1970;
        YMDDateT date;
        faults += ltodate(n, date) != static_cast<int>(chr::weekday(day).c_encoding());
        faults += date.year != static_cast<int>(expected.year()) ||
                  date.month != static_cast<int>(static_cast<unsigned>(expected.month())) ||
                  date.day != static_cast<int>(static_cast<unsigned>(expected.day()));
        // The day number is exact from 1 March of year 0; years before lose a leap day and a century's quarter.
        const long found = datol(date.year, date.month, date.day);
        faults += n >= -305 ? found != n : found < n || found > n + 2;
    }
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(datol(1, 1, 1), 1);
    EXPECT_EQ(datol(2023, 14, 31), datol(2024, 2, 31));
    EXPECT_EQ(datol(2023, 2, 29), datol(2023, 3, 1));
}

TEST(Interval, wrapsAndRoundsDown)
{
    const IntervalC one(1), least(LONG_MIN);
    EXPECT_EQ((least - one).get(), LONG_MAX);
    EXPECT_TRUE(IntervalC(LONG_MAX) + one == least && least < one && one >= one && one != least && one > least);
    IntervalC sum(5);
    sum += one;
    sum -= IntervalC(8);
    EXPECT_EQ(sum.get(), -2);
    EXPECT_TRUE(sum <= sum);
    EXPECT_EQ(IntervalC(-250000000).asSeconds(), -2);
    EXPECT_EQ(IntervalC(-250000000).asMilliseconds(), -2500);

    EXPECT_EQ(IntervalC(6213568320000000000).asTime_t(), 0);
    const IntervalC before1970(6213568320000000000 - 50000001);
    EXPECT_EQ(before1970.asTime_t(), -1);
    EXPECT_EQ(before1970.asTimeVal().tv_usec, 499999);
    EXPECT_EQ(least.asTime_t(), -92233720369 - 62135683200);
    EXPECT_EQ(least.asTimeVal().tv_usec, 452241);
    EXPECT_EQ(IntervalC::fromTimeVal({-1, 500000}).get(), 6213568319950000000);
    EXPECT_EQ(IntervalC::fromTime_t(LONG_MAX).get(), 6213568320000000000 - 100000000);
}

TEST(DateTime, countsAndFieldsAgree)
{
    TextSourceC random(8201);
    for (int i = 0; i < 20000; ++i) {
        const long day = random.below(1067519);
        const long second = random.below(86400), fraction = random.below(100000000);
        const chr::sys_days date(chr::days(day - DAYS_BEFORE_1970));
        const chr::year_month_day ymd(date);
        const YMDTimeC counted = atUnits((day * 86400 + second) * 100000000 + fraction, true);
        char expected[64];
        std::snprintf(expected, sizeof expected, "%04d-%02u-%02u %02ld:%02ld:%02ld %u", static_cast<int>(ymd.year()),
                      static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()), second / 3600,
                      second / 60 % 60, second % 60, chr::weekday(date).c_encoding());
        ASSERT_EQ(fieldsOf(counted), expected);
        if (day < 61) continue;   // year 0
        const YMDTimeC made(counted.Year(), counted.Month(), counted.Day(), counted.Hour(), counted.Minute(),
                            counted.Second(), fraction, true);
        ASSERT_TRUE(made == counted && made.IsLocal());
        ASSERT_EQ(fieldsOf(made), expected);
    }
    EXPECT_EQ(reported(), "");

    YMDTimeC filled = atUnits(-1);
    filled.prepareYMDHMS();
    EXPECT_EQ(fieldsOf(filled), "0000-12-30 23:59:59 6");
    EXPECT_EQ(fieldsOf(atUnits(LONG_MIN)), "-2922-03-25 02:07:11 1");
    EXPECT_EQ(atUnits(LONG_MIN).toString(8 | 7).utf8(), std::string("-2922-03-25T02:07:114522419Z"));
    EXPECT_EQ(fieldsOf(atUnits(LONG_MAX)), "2923-10-08 21:52:48 5");
    EXPECT_EQ(filled.TimeOfDay().Interval().get(), 8640000000000 - 1);
    EXPECT_EQ(atUnits(LONG_MIN, true).TimeOfDay().toString(8).utf8(), std::string("02:07:11"));
    EXPECT_TRUE(YMDTimeC().isNull() && !YMDTimeC().IsLocal() && !filled.isNull());
    EXPECT_TRUE(filled < YMDTimeC() && filled <= filled && YMDTimeC() > filled && filled >= filled);
    EXPECT_TRUE(atUnits(5, true) == atUnits(5, false) && atUnits(5) != atUnits(6));
}

TEST(DateTime, fieldsOutOfRangeRollOverAndAreReported)
{
    const struct {
        int year, month, day, hour, minute, second;
        long fraction;
        const char* result;
    } rows[] = {
        {2023, 2, 29, 0, 0, 0, 0, "2023-03-01 00:00:00 3"},
        {2023, 13, 1, 0, 0, 0, 0, "2024-01-01 00:00:00 1"},
        {2023, 0, 1, 0, 0, 0, 0, "2022-12-01 00:00:00 4"},
        {2023, 4, 31, 25, 61, -1, 0, "2023-05-02 02:00:59 2"},
        {2023, 1, 1, 0, 0, 60, 0, "2023-01-01 00:01:00 0"},
        {2023, 1, 1, 0, 0, 0, -1, "2022-12-31 23:59:59 6"},
        {0, 0, 0, 12, 0, 0, 0, "-001-12-01 12:00:00 3"},
        {65536 + 2023, 1, 1, 0, 0, 0, 0, "2023-01-01 00:00:00 0"},
        {INT_MIN, INT_MAX, INT_MIN, INT_MAX, INT_MIN, INT_MAX, LONG_MAX, nullptr},
        {32767, 32767, 32767, 32767, 32767, 32767, LONG_MIN, nullptr},
    };
    for (const auto& row : rows) {
        const YMDTimeC time(row.year, row.month, row.day, row.hour, row.minute, row.second, row.fraction, false);
        if (row.result != nullptr) {
            EXPECT_EQ(fieldsOf(time), row.result);
        }
        char text[128];
        std::snprintf(text, sizeof text, "E3E80065 Invalid date/time %04d/%02d/%02d %02d:%02d:%02d", row.year,
                      row.month, row.day, row.hour, row.minute, row.second);
        EXPECT_EQ(reported(), text);
    }
    EXPECT_TRUE(YMDTimeC(2024, 2, 29, 23, 59, 59, true).IsLocal());
    EXPECT_EQ(reported(), "");
}

TEST(DateTime, textIsWhatTheFormatsSay)
{
    const YMDTimeC june(2021, 6, 5, 12, 34, 56, 78900000, false);
    EXPECT_EQ(str(june.toString(8 | 4)), "2021-06-05T12:34:567890Z");
    EXPECT_EQ(str(june.toString(16 | 8 | 4)), "2021-06-05");
    EXPECT_EQ(str(atUnits(june.Interval().get(), true).toString(0)), "20210605T123456");
    EXPECT_EQ(str(june.toSQLTime()), "2021-06-05 12:34:56");
    EXPECT_EQ(str(atUnits(99999999).toString(1)), "00000010");

    TextSourceC random(8202);
    for (int i = 0; i < 20000; ++i) {
        const long bits = static_cast<long>(random.below(UINT_MAX)) << 32 | random.below(UINT_MAX);
        const YMDTimeC time = atUnits(i % 4 == 0 ? bits % IntervalC::DAY : bits, random.below(2) != 0);
        const int flags = static_cast<int>(random.below(64));
        ASSERT_EQ(str(time.toString(flags)), formattedText(time, flags)) << time.Interval().get() << " " << flags;
    }
}

TEST(DateTime, textReadsBackWhateverTheFlags)
{
    TextSourceC random(8203);
    const long POWERS[] = {100000000, 10000000, 1000000, 100000, 10000, 1000, 100, 10};
    for (int i = 0; i < 20000; ++i) {
        const bool isTimeOfDay = i % 4 == 0, isLocal = random.below(2) != 0;
        const int flags = static_cast<int>(random.below(64));
        const long unit =
            (flags & 16) != 0 && !isTimeOfDay ? IntervalC::DAY : POWERS[(flags & 16) != 0 ? 0 : flags & 7];
        if (isTimeOfDay && (flags & 8) == 0 && unit != IntervalC::SECOND) continue;   // a date, or nothing
        const long day = isTimeOfDay ? 0 : 366 + random.below(1000000);
        const long second = random.below(86400);
        const long count = (day * 86400 + second) * IntervalC::SECOND + random.below(100000000);
        const YMDTimeC time = atUnits(count / unit * unit, isLocal);
        const YMDTimeC back = YMDTimeC::fromString(time.toString(flags));
        ASSERT_TRUE(back == time) << str(time.toString(flags));
        ASSERT_EQ(back.IsLocal(), !isTimeOfDay && (isLocal || (flags & 16) != 0));
    }
    EXPECT_EQ(reported(), "");
}

TEST(DateTime, readsTheFormsThatOthersWrite)
{
    const long june = YMDTimeC(2021, 6, 5, 12, 34, 56).Interval().get();
    for (const char* text : {"2021-06-05T12:34:56", "20210605T123456Z", "2021-0605 1234:56Z", "20210605123456+0100",
                             "20210605123456.", "2021-06-05T12:34:56,0000000009", "20210605123456 UTC"})
        EXPECT_EQ(fromText(text), june) << text;
    EXPECT_EQ(fromText("2021-06-05T12:34:56.5-01:00"), june + 50000000);
    EXPECT_EQ(fromText("2021-06-05T12:34:56,123456789123456789123Z"), june + 12345678);
    EXPECT_EQ(fromText("2021-06-05T"), june / IntervalC::DAY * IntervalC::DAY);
    EXPECT_FALSE(YMDTimeC::fromString(StringC("20210605T123456.7Z")).IsLocal());
    EXPECT_TRUE(YMDTimeC::fromString(StringC("20210605T123456.7")).IsLocal());
    for (const char* text : {"T012345", "01:23:45", "01:2345", "012345", "T01:23:45.0 and so on"})
        EXPECT_EQ(fromText(text), 5025 * IntervalC::SECOND) << text;
    EXPECT_EQ(fromText("T01234505"), 5025 * IntervalC::SECOND + 5000000);
    EXPECT_EQ(reported(), "");
    EXPECT_EQ(fromText("2021-06-05T12:34:60"), june + 4 * IntervalC::SECOND);
    EXPECT_EQ(reported(), "E3E80065 Invalid date/time 2021/06/05 12:34:60");
    fromText("9999-12-31");
    EXPECT_EQ(reported(), "E3E80065 Invalid date/time 9999/12/31 00:00:00");
}

TEST(DateTime, whatCannotBeReadIsReportedAndNull)
{
    for (const std::string text : {"",
                                   "12345",
                                   "T1234",
                                   "2021-13-05",
                                   "2021-06-32",
                                   "2021-00-05",
                                   "2021-06-00",
                                   "202106051",
                                   "20210605T12:34",
                                   "2021-06-05T24:00:00",
                                   "2021-06-05T00:60:00",
                                   "2021-06-05T00:00:61",
                                   "2021-06-05T00:00:00.Z",
                                   "24:00:00",
                                   "2021/06/05",
                                   "T123456.-5",
                                   "2021060\xD9\xA5T123456",
                                   "-021-06-05",
                                   " 2021-06-05",
                                   "2021-06-05Z"}) {
        EXPECT_EQ(fromText(text.c_str()), 0) << text;
        EXPECT_EQ(reported(), "E3E80064 Invalid date/time string: '" + text + "'");
    }
}

TEST(DateTime, zonesAreThoseOfThePresent)
{
    const long noon = YMDTimeC(2021, 6, 5, 12, 0, 0).Interval().get();
    const long NOW = time(nullptr), HOUR = 3600, LONG_TIME = 100 * 24 * HOUR;
    const struct {
        std::string zone;
        long minutes;
    } rows[] = {{"UTC0", 0},
                {"IST-5:30", 330},
                {"EST5EDT" + summerTime(NOW - 5 * HOUR + 100, NOW + LONG_TIME), -300},   // not yet
                {"EST5EDT" + summerTime(NOW - 5 * HOUR - 100, NOW + LONG_TIME), -240},
                {"EST5EDT" + summerTime(NOW - LONG_TIME, NOW - 4 * HOUR + 100), -240},
                {"EST5EDT" + summerTime(NOW - LONG_TIME, NOW - 4 * HOUR - 100), -300}};   // no more
    for (const auto& row : rows) {
        const TimeZoneC zone(row.zone);
        const YMDTimeC local = atUnits(noon).asLocal();
        EXPECT_EQ(local.Interval().get() - noon, row.minutes * 60 * IntervalC::SECOND) << row.zone;
        EXPECT_TRUE(local.IsLocal() && local.asLocal() == local);
        const YMDTimeC utc = local.asUTC();
        EXPECT_TRUE(utc == atUnits(noon) && utc.IsLocal()) << "marked local all the same";
        EXPECT_EQ(utc.asUTC().Interval().get(), noon - row.minutes * 60 * IntervalC::SECOND);
        EXPECT_TRUE(atUnits(noon).asUTC() == atUnits(noon));

        const time_t before = time(nullptr);
        const YMDTimeC now = YMDTimeC::now(true);
        EXPECT_TRUE(now.IsLocal() && !YMDTimeC::now(false).IsLocal());
        EXPECT_GE(now.Interval().asTime_t(), before + row.minutes * 60);
        EXPECT_LE(now.Interval().asTime_t(), time(nullptr) + row.minutes * 60);
        EXPECT_EQ(now.Interval().get() % IntervalC::SECOND, 0);
    }
}

TEST(DateTime, isReadByManyThreadsAtOnce)
{
    const YMDTimeC time = YMDTimeC(IntervalC(IntervalC::START_OF_1970), true);
    inThreads(4, [&](int) {
        for (int i = 0; i < 1000; ++i) {
            EXPECT_EQ(time.Year() + time.DayOfWeek(), 1974);
            EXPECT_EQ(str(YMDTimeC(time).toString(0)), "19700101T000000");
            EXPECT_TRUE(time.asUTC().IsLocal());
        }
    });
}
