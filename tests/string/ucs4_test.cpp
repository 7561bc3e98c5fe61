#include "ucs4.h"

#include <gtest/gtest.h>

#include <unicode/uchar.h>

namespace {

// What the frozen tables hold of the Unicode data that the oracle knows: mappings between characters
// of the plane that existed then.
bool isOfThen(UCS4 ch)
{
    UVersionInfo age;
    u_charAge(static_cast<UChar32>(ch), age);
    return ch <= 0xFFFF && age[0] != 0 && (age[0] < 3 || (age[0] == 3 && age[1] == 0));
}

UCS4 mappedThen(UCS4 ch, UChar32 (*map)(UChar32))
{
    const UCS4 to = static_cast<UCS4>(map(static_cast<UChar32>(ch)));
    return isOfThen(ch) && isOfThen(to) ? to : ch;
}

}   // namespace

TEST(Ucs4, caseMappingsAreThoseOfTheUnicodeDatabase)
{
    for (UCS4 ch = 0; ch <= 0x11000; ++ch) {
        SCOPED_TRACE(ch);
        ASSERT_EQ(UCS4ToLower(ch), mappedThen(ch, u_tolower));
        ASSERT_EQ(UCS4ToUpper(ch), ch == 0x3F2 ? 0x3A3 : mappedThen(ch, u_toupper));
        // U+10D0 and its like: letters of today's upper case only, whose title case differs from it.
        const bool titleDiffers = ch >= 0x1C4 && ch <= 0x1F3;
        ASSERT_EQ(UCS4ToTitle(ch), titleDiffers ? mappedThen(ch, u_totitle) : UCS4ToUpper(ch));
    }
    for (const UCS4 ch : {0x10041u, 0x10400u, 0x110000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        EXPECT_EQ(UCS4ToLower(ch), ch);
        EXPECT_EQ(UCS4ToUpper(ch), ch);
        EXPECT_EQ(UCS4ToTitle(ch), ch);
        EXPECT_FALSE(UCS4IsAlphabetic(ch)) << ch;
    }
}

TEST(Ucs4, alphabeticMeansALetterOfAScriptWithCase)
{
    int caseless = 0;
    for (UCS4 ch = 0; ch <= 0xFFFF; ++ch) {
        const bool hasCase = UCS4ToLower(ch) != ch || UCS4ToUpper(ch) != ch;
        ASSERT_TRUE(!hasCase || UCS4IsAlphabetic(ch)) << ch;
        caseless += UCS4IsAlphabetic(ch) && !hasCase;
    }
    EXPECT_EQ(caseless, 208);
    for (const UCS4 ch : {0xAAu, 0xDFu, 0x138u, 0x294u, 0x1E96u, 0xFB00u}) EXPECT_TRUE(UCS4IsAlphabetic(ch)) << ch;
    for (const UCS4 ch : {0x30u, 0x5D0u, 0x627u, 0x3042u, 0x10D0u, 0x4E00u, 0x2B0u}) {
        EXPECT_FALSE(UCS4IsAlphabetic(ch)) << ch;
    }
}

TEST(Ucs4, digitsHaveTheirValueInEveryScript)
{
    int digits = 0;
    for (UCS4 ch = 0; ch <= 0x1FFFF; ++ch) {
        const int value = UCS4Digit(ch);
        EXPECT_EQ(UCS4IsDecimal(ch), value >= 0);
        EXPECT_EQ(UCS4IsNumeric(ch), value >= 0);
        if (value < 0) continue;
        ++digits;
        EXPECT_EQ(value, u_getNumericValue(static_cast<UChar32>(ch))) << ch;
    }
    EXPECT_EQ(digits, 18 * 10 + 3 * 9 + 1);
    EXPECT_EQ(UCS4Digit(0x0BE6), -1);
    EXPECT_EQ(UCS4Digit(0x10030), -1);
    EXPECT_EQ(UCS4Digit('a'), -1);
}

TEST(Ucs4, ideographsAreKnownByRange)
{
    const UCS4 ends[][2] = {{0x3006, 0x3007}, {0x3021, 0x3029}, {0x3038, 0x303A},
                            {0x3400, 0x4DB5}, {0x4E00, 0x9FA5}, {0xF900, 0xFA2D}};
    for (const auto& end : ends) {
        EXPECT_TRUE(UCS4IsIdeographic(end[0]) && UCS4IsIdeographic(end[1])) << end[0];
        EXPECT_FALSE(UCS4IsIdeographic(end[0] - 1) || UCS4IsIdeographic(end[1] + 1)) << end[0];
    }
}
