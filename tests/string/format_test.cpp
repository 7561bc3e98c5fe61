#include "arglist.h"

#include "string/formathelpers.h"
#include "support/allocations.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstring>

namespace {

struct RowT {
    const char* format;
    ArgListC args;
    const char* expected;
};

// Directives over the ground that the C library and the engine share: no zero padding beside a precision
// or a '-', no '#' beside a precision of an octal number, and no value 0 with a precision of 0.
class DirectiveSourceC {
public:
    explicit DirectiveSourceC(unsigned seed) : m_random(seed) {}

    std::string directive(char conversion, bool isZero)
    {
        const bool isNumber = conversion != 's' && conversion != 'c';
        std::string text = "%";
        const bool hasPrecision = conversion != 'c' && one(3);
        const bool left = one(4);
        for (const char* flag = "+ #+"; *flag != 0; ++flag) {
            if (*flag == '#' && (!isNumber || (conversion == 'o' && hasPrecision))) continue;
            if (one(3)) text += *flag;
        }
        if (left) text += '-';
        if (!left && isNumber && !hasPrecision && one(2)) text += '0';
        if (one(2)) text += std::to_string(1 + m_random.below(60));
        if (hasPrecision) text += "." + std::to_string(m_random.below(isZero ? 20 : 21) + (isZero ? 1 : 0));
        return text;
    }
    char conversion() { return "dixXouscdx"[m_random.below(10)]; }
    // A number of any magnitude.
    long number()
    {
        const unsigned long bits =
            static_cast<unsigned long>(m_random.below(UINT_MAX)) << 32 | m_random.below(UINT_MAX);
        return static_cast<long>(bits >> m_random.below(64));
    }
    std::string word() { return std::string(m_random.below(30), static_cast<char>('a' + m_random.below(26))); }
    bool one(uint32_t in) { return m_random.below(in) == 0; }

private:
    TextSourceC m_random;
};

template <class ValueT>
std::string printed(const std::string& fmt, ValueT value)
{
    char text[512];
    std::snprintf(text, sizeof text, fmt.c_str(), value);
    return text;
}

}   // namespace

TEST(Format, followsItsOwnRules)
{
    const OSAGuidT guid = {0x12345678, 0, 0xABC, {0, 1, 2, 0xFF}};
    ArgListC guidArg;
    guidArg.add(new ArgGuidC(guid));
    const RowT rows[] = {
        {"no directive at all \xE2\x82\xAC", ArgListNull, "no directive at all \xE2\x82\xAC"},
        {"", ArgListNull, ""},
        {"%5%|%-3%|%.0%|%05%", ArgListNull, "    %|%  ||0000%"},
        {"%05d|%+05d|%-05d|%08.3d", ArgList << 42 << 42 << 42 << 42, "00042|+0042|42   |     042"},
        {"%0-5d|%05.d|%05.0d|%0100d", ArgList << 42 << 42 << 42 << 7,
         "00042|00042|   42|                                    "
         "0000000000000000000000000000000000000000000000000000000000000007"},
        {"%.0d|%.100d", ArgList << 0 << -1, "0|-0000000000000000000000000000000000000000000000000000000000000001"},
        {"%#x|%#x|%#o|%#.3o|%#b|%#06x|%#X", ArgList << 0 << 255 << 8 << 8 << 5 << 255 << 255,
         "0|0xff|010|0010|0b101|0x00ff|0XFF"},
        {"%p|%20p|%-20.3p|%+p",
         ArgList << ArgObjRefC(nullptr) << ArgObjRefC(nullptr) << ArgObjRefC(nullptr)
                 << ArgObjRefC(reinterpret_cast<void*>(0xABCDEF)),
         "0x0000000000000000|  0x0000000000000000|0x0000000000000000  |+0x0000000000ABCDEF"},
        {"%05s|%.1s|%-4s|%3.5s|%2S",
         ArgList << "ab"
                 << "ab"
                 << "ab"
                 << "ab" << StringC("abc"),
         "000ab|a|ab  | ab|abc"},
        {"%4.2s|%-5S|%.3S",
         ArgList << "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"
                 << "\xE2\x82\xAC" << StringC("\xC3\xA9"),
         "  \xC3\xA9\xE2\x82\xAC|\xE2\x82\xAC    |\xC3\xA9"},
        {"%2$s %1$s",
         ArgList << "a"
                 << "b",
         "b a"},
        {"%2$s %s",
         ArgList << "a"
                 << "b"
                 << "c",
         "b c"},
        {"%2$*1$d|%*3$d|%1$.*d", ArgList << 4 << 7 << 5, "   7|    5|0007"},
        {"%*d|%.*d|%-*d|%.*s", ArgList << -5 << 3 << -1 << 3 << 4 << 3 << 2 << "abc", "3    |3|3   |ab"},
        {"%0*d|%0*s", ArgList << -5 << 3 << -4 << "ab", "00003|ab00"},
        {"%+ d|% +d|% d|% d|%+u", ArgList << 1 << 1 << 1 << -1 << 1, "+1|+1| 1|-1|1"},
        {"%hhd %lld %jd %zqLlu", ArgList << 300 << 300 << 300 << 300, "300 300 300 300"},
        {"%c%C%5.0c%-3c|%S", ArgList << 0x141 << 0x141u << ArgUCS4C(0x20AC) << 'x' << ArgUCS4C(0x1F600),
         "A\xC5\x81    \xE2\x82\xACx  |\xF0\x9F\x98\x80"},
        {"%S|%40S", guidArg << "\xE2\x82\xAC",
         "{12345678-0000-0ABC-0001-02FF00000000}|                                       \xE2\x82\xAC"},
        {"%i %i", ArgList << LONG_MIN << INT_MIN, "-9223372036854775808 -2147483648"},
        {"%b", ArgList << ~0UL, "1111111111111111111111111111111111111111111111111111111111111111"},
    };
    for (const RowT& row : rows) EXPECT_EQ(formatted(row.format, row.args), row.expected) << row.format;
}

TEST(Format, agreesWithTheCLibraryOnCommonDirectives)
{
    DirectiveSourceC source(2501);
    for (int i = 0; i < 20000; ++i) {
        const char conversion = source.conversion();
        const long number = source.number();
        const std::string start = "<" + source.directive(conversion, number == 0 || static_cast<int>(number) == 0);
        const std::string end = std::string(1, conversion) + ">";
        SCOPED_TRACE(start + end + " of " + std::to_string(number));
        if (conversion == 's') {
            const std::string word = source.word();
            EXPECT_EQ(formatted(start + end, ArgList << word.c_str()), printed(start + end, word.c_str()));
        } else if (conversion == 'c') {
            const int letter = 'A' + static_cast<int>(number & 15);
            EXPECT_EQ(formatted(start + end, ArgList << letter), printed(start + end, letter));
        } else if (source.one(2)) {
            EXPECT_EQ(formatted(start + "l" + end, ArgList << number), printed(start + "l" + end, number));
        } else {
            const int small = static_cast<int>(number);
            EXPECT_EQ(formatted(start + end, ArgList << small), printed(start + end, small));
        }
    }
}

TEST(Format, takesNumbersOfEveryWidthAsTheyAreMeant)
{
    ArgListC odd;
    odd.add(new ArgRealC(-2.9)).add(new ArgRealC(1e30)).add(new ArgRealC(-1e30)).add(new ArgRealC(std::nan("")));
    const RowT rows[] = {
        {"%d %u", ArgListC() << static_cast<unsigned short>(65535) << short{-1}, "-1 65535"},
        {"%d %u", ArgList << ~0u << -1, "-1 4294967295"},
        {"%d %u", ArgList << ~0UL << -1L, "-1 18446744073709551615"},
        {"%d %d %d %d", odd, "-2 9223372036854775807 -9223372036854775808 0"},
        {"%u %u %u %u", odd, "18446744073709551614 18446744073709551615 9223372036854775808 0"},
    };
    for (const RowT& row : rows) EXPECT_EQ(formatted(row.format, row.args), row.expected) << row.format;
}

TEST(Format, writesLongTextsAndWidthsWhole)
{
    const std::string word(3000, 'w');
    const StringC format(("<%s>" + word + "%2500d|%S").c_str());
    const StringC text = format % (ArgList << word.c_str() << 7 << "\xE2\x82\xAC");
    const std::string expected = "<" + word + ">" + word + std::string(2499, ' ') + "7|\xE2\x82\xAC";
    EXPECT_EQ(stringmodel::bytesOf(text), expected);
    EXPECT_EQ(text.length(), static_cast<long>(expected.size() - 2));
    EXPECT_EQ(formatted(format.utf8(), ArgList << word.c_str() << 7 << "\xE2\x82\xAC"), expected);
}

TEST(Format, endsAtAZeroInTheFormatButKeepsZerosOfArguments)
{
    const StringC format("a%db\0c%d", 8, StringC::CC_UTF8);
    EXPECT_EQ(stringmodel::bytesOf(format % (ArgList << 1)), "a1b");
    EXPECT_EQ(formatted("%c%S|", ArgList << 0 << StringC("x\0y", 3, StringC::CC_UTF8)), std::string("\0x\0y|", 5));
    EXPECT_EQ(StringC("%c"
                      "b")
                  .
                  operator%(ArgList << 0)
                  .length(),
              2);
}

TEST(Format, datesAndTimesAreLocal)
{
    const TimeZoneC zone;
    TextSourceC random(2502);
    for (int i = 0; i < 2000; ++i) {
        // Every year that a date-time can tell, and usual ones.
        const long span = i % 2 == 0 ? 184000000000 : 4102444800;
        const long start = i % 2 == 0 ? -154369000000 : 0;
        const timeval time = {start + (static_cast<long>(random.below(INT_MAX)) << 31 | random.below(INT_MAX)) % span,
                              static_cast<long>(random.below(1000000))};
        std::tm local;
        localtime_r(&time.tv_sec, &local);
        char date[64];
        std::snprintf(date + std::strftime(date, sizeof date, "%Y/%m/%d %H:%M:%S.", &local), 8, "%06ld", time.tv_usec);
        const std::string expected = date;
        const int precision = static_cast<int>(random.below(30));
        EXPECT_EQ(formatted("%.*t", ArgList << precision << time), expected.substr(0, static_cast<size_t>(precision)));

        ArgListC dateTime;
        const unsigned long seconds = 62135683200 + static_cast<unsigned long>(time.tv_sec);
        dateTime.add(new ArgDateTimeC(seconds * 100000000 + static_cast<unsigned long>(time.tv_usec) * 100 + 99));
        EXPECT_EQ(formatted("%.30t", dateTime), expected);
        EXPECT_EQ(formatted("%25t|%-25t|", dateTime << time),
                  "      " + expected.substr(0, 19) + "|" + expected.substr(0, 19) + "      |");
    }
    EXPECT_EQ(formatted("<%5t>", ArgList << timeval{LONG_MAX, 0}), "<     >") << "a year beyond any calendar";
}

TEST(Format, theCurrentDateAndTimeHaveTheirDefaultsAndLimits)
{
    const TimeZoneC zone;
    const auto clock = [](const char* pattern) {
        const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());   // time lags
        std::tm local;
        char text[64];
        std::strftime(text, sizeof text, pattern, localtime_r(&now, &local));
        return std::string(text);
    };
    std::string before, text;
    do {   // again when the second changes meanwhile
        before = clock("%Y/%m/%d|%Y/%m/%d|%Y|%H:%M:%S|%H:%M:%S.|000%H:%M|");
        text = formatted("%D|%.30D|%.4D|%T|%.9T|%08.5T|", ArgListNull);
    } while (before != clock("%Y/%m/%d|%Y/%m/%d|%Y|%H:%M:%S|%H:%M:%S.|000%H:%M|"));
    EXPECT_EQ(text, before.replace(before.find("000"), 3, "   "));
    EXPECT_EQ(stringmodel::bytesOf(StringC("%.12T") % ArgListNull).size(), 12u);
    EXPECT_EQ(stringmodel::bytesOf(StringC("%.99T") % ArgListNull).size(), 15u);
}

TEST(Format, theSystemsErrorIsTheOneOfTheBeginning)
{
    for (const int error : {ENOENT, EACCES, 9999}) {
        errno = error;
        const StringC text = StringC("%!|%.3!|%d") % (ArgList << 5);
        const std::string expected = std::strerror(error);
        EXPECT_EQ(stringmodel::bytesOf(text), expected + "|" + expected.substr(0, 3) + "|5");
    }
}

TEST(Format, malformedTextOfTheSystemIsRepaired)
{
    const StringC latin("caf\xE9!", 5, StringC::CC_VALID_UTF8);
    EXPECT_EQ(stringmodel::bytesOf(StringC("%S|") % (ArgList << latin)), "caf\xE9!|") << "vouched for, not looked at";
    EXPECT_EXIT((void)(StringC("%s") % (ArgList << "caf\xE9 lait")), testing::ExitedWithCode(1), "UTF8Is1st");
}

TEST(Format, asksTheHeapForTheResultOnly)
{
    if (!countsAllocations()) GTEST_SKIP() << "the sanitizer has a heap of its own";
    const StringC numbers("%d %5u %#x %-40o %b %p %c %C %5% %!");
    const StringC times("%D %T %.23t %30t");
    const ArgListC numberArgs = ArgList << INT_MIN << 7u << 255L << 8UL << ~0UL << ArgObjRefC(nullptr) << 'c' << 0x20AC;
    const ArgListC timeArgs = ArgList << timeval{1700000000, 123456} << timeval{0, 0};
    const StringC message("%s: error %d in %S (0x%08x)");
    const StringC file("somewhere.cpp");
    const auto nowhere = [](void*, UCS4) {};
    (void)(times % timeArgs);   // the C library reads its time zone
    EXPECT_EQ(allocationsOf([&] { StringC::format(nowhere, nullptr, numbers, numberArgs); }), 0);
    EXPECT_EQ(allocationsOf([&] { StringC::format(nowhere, nullptr, times, timeArgs); }), 0);
    EXPECT_EQ(allocationsOf([&] { (void)(numbers % numberArgs); }), 1);
    EXPECT_EQ(allocationsOf([&] { (void)(message % (ArgList << "inventory" << 1234 << file << 0xE0CB0010u)); }), 2)
        << "the list, and the text";
}

TEST(FormatDeathTest, misuseEndsTheProcessAfterWhatStandsBeforeIt)
{
    const auto put = [](void*, UCS4 ch) { std::fputc(static_cast<int>(ch), stderr); };
    const auto emit = [&](const char* fmt, const ArgListC& args) { StringC::format(put, nullptr, StringC(fmt), args); };
    EXPECT_EXIT(emit("begin %d", ArgListNull), testing::ExitedWithCode(1), "begin Assertion \\(a != 0\\)");
    EXPECT_EXIT(emit("a%s %d", ArgList << "b"
                                       << "c"),
                testing::ExitedWithCode(1), "ab Assertion \\(Type mismatch in string formatting\\)");
    EXPECT_EXIT(emit("50%", ArgListNull), testing::ExitedWithCode(1),
                "50Assertion \\(Invalid conversion specifier in StringImplC::format\\(\\)!\\)");
}
