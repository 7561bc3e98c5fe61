#include "arglist.h"

#include "string/formathelpers.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

const char MISSING[] = "a != 0";
const char MISMATCH[] = "Type mismatch in string formatting";
const char INVALID[] = "Invalid conversion specifier in StringImplC::format()!";

const ArgBoolC TRUTH(true);
const ArgUserC OWN;

}   // namespace

TEST(FormatContinues, everyConversionTakesItsKindsAndIsNeutralToOthers)
{
    const TimeZoneC zone;
    const timeval time = {86400 * 59, 0};   // 1970/03/01 05:30 in that zone
    const struct {
        const ArgC* arg;
        const char* expected;   // of the format below; "~" where the kind is refused
    } rows[] = {
        {nullptr, "~0,~0,~ ,~,~,~0,~"},
        {&TRUTH, "1,1,\x01,~,~,~0,~"},
        {new ArgInt16C(-321), "-321,65215,\xC2\xBF,~,~,~0,~"},
        {new ArgInt32C(321), "321,321,A,~,~,~0,~"},
        {new ArgInt64C(321), "321,321,A,~,~,~0,~"},
        {new ArgUnsigned16C(65345), "-191,65345,A,~,~,~0,~"},
        {new ArgUnsigned32C(321), "321,321,\xC5\x81,~,~,~0,~"},
        {new ArgUnsigned64C(321), "321,321,A,~,~,~0,~"},
        {new ArgRealC(321.9), "321,321,~ ,~,~,~0,~"},
        {new ArgUCS4C(321), "321,321,\xC5\x81,~,\xC5\x81,~0,~"},
        {new ArgStringC("str"), "~0,~0,~ ,str,str,~0,~"},
        {new ArgDateTimeC(6213568320000000000 + 86400 * 59 * 100000000L), "~0,~0,~ ,~,~,~0,1970/03/01"},
        {new ArgObjRefC(nullptr), "~0,~0,~ ,~,~,0,~"},
        {new ArgGuidC(OSAGuidT{1, 2, 3, {4}}), "~0,~0,~ ,~,{00000001-0002-0003-0400-000000000000},~0,~"},
        {new ArgArgListC(ArgList << 1), "~0,~0,~ ,~,~,~0,~"},
        {new ArgTimeValC(time), "~0,~0,~ ,~,~,~0,1970/03/01"},
        {&OWN, "~0,~0,~ ,~,~,~0,~"},
        {new ArgNullC, "~0,~0,~ ,~,~,~0,~"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arg != nullptr ? row.arg->typeName() : "missing");
        ArgListC args;
        if (row.arg != nullptr) args.add(row.arg);
        std::string text;
        for (const char* fmt : {"%d,", "%u,", "%c,", "%s,", "%S,", "%p,", "%.10t"}) {
            const size_t before = assertCount(row.arg != nullptr ? MISMATCH : MISSING);
            std::string part = stringmodel::bytesOf(StringC(fmt) % args);
            const bool isRefused = assertCount(row.arg != nullptr ? MISMATCH : MISSING) == before + 1;
            if (part.substr(0, 2) == "0x") part = "0" + part.substr(18);
            if (isRefused && fmt[1] == '.') part = part == "1970/01/01" ? "" : "a neutral time: " + part;
            text += (isRefused ? "~" : "") + part;
        }
        EXPECT_EQ(text, row.expected);
    }
    const StringC pointer = StringC("%p") % (ArgList << "text");
    EXPECT_NE(stringmodel::bytesOf(pointer), "0x0000000000000000");
    EXPECT_EQ(assertCount(), assertCount(MISSING) + assertCount(MISMATCH));
}

TEST(FormatContinues, starsTakeIntegersAndRealsOnly)
{
    ArgListC widths;
    widths.add(new ArgRealC(3.9)).add(&TRUTH).add(new ArgInt64C(0x100000003)).add(new ArgUCS4C(3));
    EXPECT_EQ(formatted("%*1$s|%*2$s|%*3$s|%*4$s", ArgListC(widths) << "a"
                                                                    << "b"
                                                                    << "c"
                                                                    << "d")
                  .size(),
              3u + 2u + 4u + 4u);
    EXPECT_EQ(assertCount(MISMATCH), 2u * 4u) << "the texts, as the running index stays on the widths";
    EXPECT_EQ(formatted("%*d|%.*d|%*3$d", ArgList << "no" << 7 << 5), "7|00000|    0");
    EXPECT_EQ(formatted("%*0$d|%0$d|%00$d", ArgList << 7), "7|$d|0");
}

TEST(FormatContinues, whatIsNoConversionStandsForItself)
{
    EXPECT_EQ(formatted("%y|%5y|%-3\xE2\x82\xAC|%.0y|%$|%5-d", ArgListNull), "y|    y|\xE2\x82\xAC  ||$|    -d");
    EXPECT_EQ(assertCount(INVALID), 2u * 6u);
    for (const char* fmt : {"50%", "50%5", "50%-+#.3ll"}) EXPECT_EQ(formatted(fmt, ArgListNull).substr(0, 2), "50");
    EXPECT_EQ(formatted("%d%", ArgList << 7), "7");
}

TEST(FormatContinues, malformedArgumentTextIsRepaired)
{
    EXPECT_EQ(formatted("%s|%5.3S|", ArgList << "caf\xE9 lait"
                                             << "\xFF"),
              "caf\xEF\xBF\xBD lait|    \xEF\xBF\xBD|");
    EXPECT_GE(assertCount(), 2u);
}

TEST(FormatContinues, aCharacterWithoutAFormIsEmpty)
{
    EXPECT_EQ(formatted("<%3c|%S>", ArgList << 0x80000000u << ArgUCS4C(0x80000000u)), "<   |>");
    EXPECT_EQ(assertCount("ch <= 0x7FFFFFFF"), 2u * 2u);
}

TEST(FormatArgsContinues, illegalConversionsReadNothing)
{
    const struct {
        const char* format;
        size_t failures;
        long size;
    } rows[] = {
        {"%y %d", 1, 1},        {"%zd %jd %qd %Ld", 4, 0},
        {"%lc%ls%hs%lS", 4, 0}, {"%llld%hhhd%hld", 3, 0},
        {"%hp%hhp", 2, 0},      {"%", 1, 0},
        {"%5.", 1, 0},          {"%*y", 1, 1},
        {"%z%d", 1, 1},
    };
    for (const auto& row : rows) {
        const size_t before = assertCount("Illegal formatting character in formatArgs()");
        EXPECT_EQ(argsOf(row.format, 1, 2, 3).size(), row.size) << row.format;
        EXPECT_EQ(assertCount("Illegal formatting character in formatArgs()") - before, row.failures) << row.format;
    }
}

TEST(FormatArgsContinues, positionsThatNobodyNamesAreInts)
{
    const ArgListC args = argsOf("%3$s", 1, 2, "three");
    ASSERT_EQ(args.size(), 3);
    EXPECT_EQ(args[0]->asInt32() + args[1]->asInt32(), 3);
    EXPECT_STREQ(args[2]->asCharStar(), "three");
    EXPECT_EQ(assertCount("Missing parameter in positional StringC::formatArgs, assuming int"), 2u);

    EXPECT_EQ(argsOf("%00$d%*0$d", 7).size(), 1) << "no position in front of the first";
    for (const char* fmt : {"%129$d%d", "%99999999999999999999$d%d", "%2147483647$d%d"}) {
        EXPECT_EQ(argsOf(fmt).size(), 0) << fmt;
    }
    EXPECT_EQ(assertCount(), 2u);
}
