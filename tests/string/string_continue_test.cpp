#include "stringc.h"

#include "string/stringmodel.h"

#include <gtest/gtest.h>

using stringmodel::bytesOf;

TEST(StringContinues, badPositionsGiveNeutralValues)
{
    StringC text("h\xC3\xA9llo");
    EXPECT_EQ(text[-1], 0u);
    EXPECT_EQ(text[9], 0u);
    EXPECT_EQ(text[4], UCS4{'o'}) << "a bad index leaves no memo behind";
    EXPECT_EQ(text.find('h', -5), -1);
    EXPECT_TRUE(text.substr(0, -2).isEmpty());
    EXPECT_TRUE(text.substr(9).isEmpty());
    EXPECT_TRUE(text.tail(9).isEmpty());
    EXPECT_TRUE(StringC().head(1).isEmpty());
    EXPECT_EQ(StringC()[1], 0u);
    text.remove(1, -2);
    text.remove(9, 1);
    EXPECT_EQ(bytesOf(text), "h\xC3\xA9llo");
    text.insert(9, "!");
    EXPECT_EQ(bytesOf(text), "h\xC3\xA9llo!") << "at the end that was reached";
    EXPECT_EQ(assertCount("n >= 0"), 3u);
    EXPECT_EQ(assertCount("len >= -1"), 2u);
    EXPECT_EQ(assertCount("!nchar"), 4u);
}

TEST(StringContinues, sharedBodiesStayAsTheyAre)
{
    const StringC text("abc");
    const StringC other(text);
    StringImplI& body = text.impl();
    body += UCS4{'d'};
    body += body;
    body.insert(0, body);
    body.remove(0, 1);
    body.toUpper();
    body.toLower();
    EXPECT_EQ(bytesOf(text), "abc");
    EXPECT_EQ(assertCount("!isShared()"), 6u);
}

TEST(StringContinues, unknownEncodingsGiveNothing)
{
    const StringC text("abc", 3, "koi8-r");
    EXPECT_EQ(bytesOf(text), "");
    EXPECT_EQ(text[0], 0u);
    EXPECT_EQ(assertCount("encoding"), 1u);

    const StringC abc("abc");
    const U8BitT* out = reinterpret_cast<const U8BitT*>("x");
    EXPECT_FALSE(abc.impl().encoded(&out, "vutf8"));
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(abc.impl().encodedBytes(nullptr), 0u);
    U8BitT buffer[4] = "xyz";
    size_t size = sizeof buffer;
    EXPECT_FALSE(abc.convertTo(buffer, size, "koi8-r"));
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(buffer[0], 'x');
    EXPECT_EQ(assertCount("e"), 3u);
}

TEST(StringContinues, badConstructionStillGivesAText)
{
    EXPECT_TRUE(StringC(static_cast<const char*>(nullptr), 3, "utf8").isEmpty());
    EXPECT_TRUE(StringC(UCS4{0xFFFFFFFF}).isEmpty());
    EXPECT_EQ(bytesOf(StringC("\x80", 1, "utf8")), "\xEF\xBF\xBD");
    EXPECT_EQ(bytesOf(StringC("a\xC3z", 3, "utf8")), "a\xEF\xBF\xBDz");
    EXPECT_EQ(bytesOf(StringC("\xC0\x80", 2, "utf8")), std::string(1, 0)) << "overlong, and so in shortest form";
    StringC grown("x");
    grown += UCS4{0x80000000};
    EXPECT_EQ(grown.length(), 1);
}

TEST(StringContinues, lossesAreReportedAndMarked)
{
    const StringC text("a\xC3\xA9\xE2\x82\xAC");
    const U8BitT* out = nullptr;
    EXPECT_FALSE(text.impl().encoded(&out, StringC::CC_ASCII));
    EXPECT_STREQ(reinterpret_cast<const char*>(out), "a~~");
    text.impl().encodedRelease(out, StringC::CC_ASCII);
    EXPECT_FALSE(text.impl().encoded(&out, StringC::CC_LATIN1));
    EXPECT_STREQ(reinterpret_cast<const char*>(out), "a\xE9~");
    text.impl().encodedRelease(out, StringC::CC_LATIN1);
}

// Text that only its maker vouched for: nothing may be read or written beyond it.
TEST(StringContinues, falselyVouchedTextIsHandledWithinItsBytes)
{
    for (const std::string& bytes : {std::string("a\xE2"), std::string("\xE2z"), std::string("\xF0\x9F"),
                                     std::string(100, '\xFF'), std::string("\x80\x80"), std::string("\xFC\x80")}) {
        SCOPED_TRACE(hexOf(bytes));
        StringC text(bytes.data(), bytes.size(), StringC::CC_VALID_UTF8);
        (void)text.length();
        for (long i = 0; i < 4; ++i) (void)text[i];
        (void)text.substr(1, 1);
        (void)text.rfindAny("x");
        (void)text.rfind('x', 1);
        const StringC upper = text.asUpper();
        EXPECT_LE(upper.length(), 100);
        for (const char* encoding : {"system-8", "utf16", "wchar_t"}) {
            U8BitT room[500];
            size_t size = sizeof room;
            room[0] = 1;
            (void)text.convertTo(room, size, encoding);
            ASSERT_LT(size, sizeof room);
            EXPECT_EQ(room[size], 0) << encoding;
        }
        text.remove(0, 1);
        text.insert(0, "z");
        EXPECT_EQ(text[0], UCS4{'z'});
    }
    EXPECT_EQ(StringC(std::string(100, '\xFF').c_str(), 100, StringC::CC_VALID_UTF8).asLower().utf8Bytes(), 300u);
}

TEST(StringContinues, transformCutsTheLongerList)
{
    EXPECT_EQ(bytesOf(StringC("abc").transform("ab", "x")), "xbc");
    EXPECT_EQ(bytesOf(StringC("abc").transform("ab", "")), "abc");
    EXPECT_EQ(assertCount("to_chars.length() == from_chars.length()"), 2u);
}
