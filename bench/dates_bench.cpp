// Group "dates": day numbers, and times taken apart, written and read.
//
// The inputs are 1,000 times from 1970 to 2070, as seconds of POSIX time or as texts of them. Peers that know
// the format "2021-06-05T12:34:56Z" of ISO 8601 by themselves use that, others a format string of theirs.

#include "datetime.h"

#include "support/bench.h"
#include "support/workload.h"

#include <QDateTime>
#include <QTimeZone>
#include <absl/time/civil_time.h>
#include <absl/time/time.h>
#include <chrono>
#include <ctime>
#include <glib.h>
#include <string>
#include <vector>

namespace {

namespace chr = std::chrono;

const size_t COUNT = 1000;
const char* const ISO_FORMAT = "%Y-%m-%dT%H:%M:%SZ";

const std::vector<time_t>& times()
{
    static const std::vector<time_t> made = [] {
        workload::RandomC random(82);
        std::vector<time_t> list(COUNT);
        for (time_t& time : list) time = static_cast<time_t>(random.below(100UL * 365 * 86400));
        return list;
    }();
    return made;
}

const std::vector<std::string>& texts()
{
    static const std::vector<std::string> made = [] {
        std::vector<std::string> list;
        for (const time_t time : times()) {
            std::tm fields;
            char text[32];
            list.emplace_back(text, std::strftime(text, sizeof text, ISO_FORMAT, gmtime_r(&time, &fields)));
        }
        return list;
    }();
    return made;
}

DigestT digestOfDate(long year, long month, long day) { return static_cast<DigestT>(year * 400 + month * 32 + day); }

// Adds a row whose `op` gives a number for each of the inputs; the digest is their sum.
template <class ListT, class OpT>
void row(const std::string& workload, const std::string& library, const ListT& list, OpT op)
{
    addRow(workload, library, items(COUNT), [&list, op] {
        DigestT sum = 0;
        for (const auto& item : list) {
            DigestT one = op(item);
            keep(one);
            sum += one;
        }
        return sum;
    });
}

void dayNumberRows()
{
    struct DateT {
        int year, month, day;
    };
    static const std::vector<DateT> dates = [] {
        std::vector<DateT> list;
        for (const time_t time : times()) {
            const chr::year_month_day date{chr::sys_days(chr::days(time / 86400))};
            list.push_back({static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
                            static_cast<int>(static_cast<unsigned>(date.day()))});
        }
        return list;
    }();
    const std::string w = "date_to_day_number";
    row(w, "ours", dates, [](const DateT& d) { return static_cast<DigestT>(datol(d.year, d.month, d.day) - 719163); });
    row(w, "std::chrono", dates, [](const DateT& d) {
        const chr::year_month_day date(chr::year(d.year), chr::month(static_cast<unsigned>(d.month)),
                                       chr::day(static_cast<unsigned>(d.day)));
        return static_cast<DigestT>(chr::sys_days(date).time_since_epoch().count());
    });
    row(w, "Abseil", dates,
        [](const DateT& d) { return static_cast<DigestT>(absl::CivilDay(d.year, d.month, d.day) - absl::CivilDay()); });
    row(w, "Qt", dates,
        [](const DateT& d) { return static_cast<DigestT>(QDate(d.year, d.month, d.day).toJulianDay() - 2440588); });
    row(w, "GLib", dates, [](const DateT& d) {
        GDate date;
        g_date_clear(&date, 1);
        g_date_set_dmy(&date, static_cast<GDateDay>(d.day), static_cast<GDateMonth>(d.month),
                       static_cast<GDateYear>(d.year));
        return static_cast<DigestT>(g_date_get_julian(&date) - 719163);
    });
    row(w, "timegm", dates, [](const DateT& d) {
        std::tm fields = {};
        fields.tm_year = d.year - 1900;
        fields.tm_mon = d.month - 1;
        fields.tm_mday = d.day;
        return static_cast<DigestT>(timegm(&fields) / 86400);
    });
}

void dateRows()
{
    static const std::vector<long> days = [] {
        std::vector<long> list;
        for (const time_t time : times()) list.push_back(time / 86400);
        return list;
    }();
    const std::string w = "day_number_to_date";
    row(w, "ours", days, [](long day) {
        YMDDateT date;
        ltodate(day + 719163, date);
        return digestOfDate(date.year, date.month, date.day);
    });
    row(w, "std::chrono", days, [](long day) {
        const chr::year_month_day date{chr::sys_days(chr::days(day))};
        return digestOfDate(static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                            static_cast<unsigned>(date.day()));
    });
    row(w, "Abseil", days, [](long day) {
        const absl::CivilDay date = absl::CivilDay() + day;
        return digestOfDate(date.year(), date.month(), date.day());
    });
    row(w, "Qt", days, [](long day) {
        int year = 0, month = 0, dayOfMonth = 0;
        QDate::fromJulianDay(day + 2440588).getDate(&year, &month, &dayOfMonth);
        return digestOfDate(year, month, dayOfMonth);
    });
    row(w, "gmtime_r", days, [](long day) {
        const time_t time = day * 86400;
        std::tm fields;
        gmtime_r(&time, &fields);
        return digestOfDate(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday);
    });
}

// The first and last characters and the size.
DigestT digestOfTime(std::string_view text)
{
    return static_cast<DigestT>(text.size() << 16) + static_cast<DigestT>(text[3] << 8) +
           static_cast<DigestT>(text[text.size() - 2]);
}

void writeRows()
{
    const std::string w = "to_text";
    row(w, "ours", times(), [](time_t time) {
        const StringC text = YMDTimeC(IntervalC::fromTime_t(time)).toString(YMDTimeC::SEPARATORS);
        return digestOfTime({text.utf8(), text.utf8Bytes()});
    });
    row(w, "Abseil", times(), [](time_t time) {
        return digestOfTime(absl::FormatTime("%Y-%m-%d%ET%H:%M:%SZ", absl::FromTimeT(time), absl::UTCTimeZone()));
    });
    row(w, "GLib", times(), [](time_t time) {
        GDateTime* const value = g_date_time_new_from_unix_utc(time);
        char* const text = g_date_time_format_iso8601(value);
        const DigestT digest = digestOfTime(text);
        g_free(text);
        g_date_time_unref(value);
        return digest;
    });
    row(w, "Qt", times(), [](time_t time) {
        const QString text = QDateTime::fromSecsSinceEpoch(time, Qt::UTC).toString(Qt::ISODate);
        return static_cast<DigestT>(text.size() << 16) + static_cast<DigestT>(text[3].unicode() << 8) +
               static_cast<DigestT>(text[text.size() - 2].unicode());
    });
    row(w, "strftime", times(), [](time_t time) {
        std::tm fields;
        char text[32];
        return digestOfTime({text, std::strftime(text, sizeof text, ISO_FORMAT, gmtime_r(&time, &fields))});
    });
}

void readRows()
{
    const std::string w = "from_text";
    static const std::vector<StringC> ours = [] {
        std::vector<StringC> list;
        for (const std::string& text : texts()) list.emplace_back(text.c_str());
        return list;
    }();
    static const std::vector<QString> qt = [] {
        std::vector<QString> list;
        for (const std::string& text : texts()) list.push_back(QString::fromStdString(text));
        return list;
    }();
    row(w, "ours", ours,
        [](const StringC& text) { return static_cast<DigestT>(YMDTimeC::fromString(text).Interval().asTime_t()); });
    row(w, "Abseil", texts(), [](const std::string& text) {
        absl::Time time;
        absl::ParseTime(absl::RFC3339_full, text, &time, nullptr);
        return static_cast<DigestT>(absl::ToTimeT(time));
    });
    row(w, "GLib", texts(), [](const std::string& text) {
        GDateTime* const value = g_date_time_new_from_iso8601(text.c_str(), nullptr);
        const gint64 time = g_date_time_to_unix(value);
        g_date_time_unref(value);
        return static_cast<DigestT>(time);
    });
    row(w, "Qt", qt, [](const QString& text) {
        return static_cast<DigestT>(QDateTime::fromString(text, Qt::ISODate).toSecsSinceEpoch());
    });
    row(w, "strptime", texts(), [](const std::string& text) {
        std::tm fields = {};
        strptime(text.c_str(), ISO_FORMAT, &fields);
        return static_cast<DigestT>(timegm(&fields));
    });
}

}   // namespace

void registerRows()
{
    dayNumberRows();
    dateRows();
    writeRows();
    readRows();
}
