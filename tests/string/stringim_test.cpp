// Sharing, growth and assertions of string bodies.

#include "string/impl/stringim.h"

#include "stringc.h"
#include "support/helpers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::string mixedText(size_t chars)
{
    TextSourceC source(1901);
    std::string text;
    for (size_t i = 0; i < chars; ++i) text += utf8Of(source.codePoint());
    return text;
}

}   // namespace

TEST(StringImplC, encodingNamesIgnoreOnlyTheCaseBit)
{
    EXPECT_TRUE(StringImplC::IsEncoding("UTF8", "utf8"));
    EXPECT_TRUE(StringImplC::IsEncoding("System-8", "system-8"));
    EXPECT_FALSE(StringImplC::IsEncoding("utf8 ", "utf8"));
    EXPECT_FALSE(StringImplC::IsEncoding("utf8", "utf"));
    EXPECT_FALSE(StringImplC::IsEncoding(nullptr, "utf8"));
    EXPECT_TRUE(StringImplC::IsEncoding(nullptr, nullptr));
    EXPECT_EQ(StringImplC::GetTextEncoding("vutf8"), nullptr);
    EXPECT_EQ(StringImplC::GetTextEncoding("koi8-r"), nullptr);
    EXPECT_NE(StringImplC::GetTextEncoding("WCHAR_T"), nullptr);
}

TEST(StringImplC, copiesTakeTextAndCountButNotTheHolders)
{
    const StringC text("h\xC3\xA9llo");
    const StringC other(text);
    const StringImplC copy(dynamic_cast<const StringImplC&>(text.impl()));
    EXPECT_EQ(copy.GetRefCount(), 0);
    EXPECT_EQ(copy.compare(text.impl()), 0);
    EXPECT_EQ(copy.length(), 5);
}

TEST(StringImplC, readersOfOneBodySeeOneText)
{
    const std::string bytes = mixedText(2000);
    const StringC text(bytes.data(), bytes.size(), StringC::CC_VALID_UTF8);
    std::vector<UCS4> expected;
    const StringC reference(bytes.data(), bytes.size(), StringC::CC_UTF8);
    for (long i = 0; i < 2000; ++i) expected.push_back(reference[i]);

    inThreads(4, [&](int thread) {
        const StringC mine(text);
        TextSourceC random(static_cast<unsigned>(thread));
        for (int i = 0; i < 20000; ++i) {
            const long index = random.below(2000);
            ASSERT_EQ(mine[index], expected[static_cast<size_t>(index)]);
        }
        ASSERT_EQ(mine.length(), 2000);
    });
}

TEST(StringImplC, sharedCharactersAreMadeOnceByAllThreads)
{
    const StringImplI* seen[4][127];
    inThreads(4, [&](int thread) {
        for (UCS4 ch = 1; ch <= 127; ++ch) seen[thread][ch - 1] = &StringC(ch).impl();
    });
    for (int thread = 1; thread < 4; ++thread) {
        for (size_t i = 0; i < 127; ++i) EXPECT_EQ(seen[thread][i], seen[0][i]);
    }
}

TEST(StringImplCDeathTest, brokenPreconditionsEndTheProcess)
{
    const auto ends = testing::ExitedWithCode(1);
    const StringC text("h\xC3\xA9llo");
    const StringC other(text);
    EXPECT_EXIT(text.impl().remove(0, 1), ends, "Assertion \\(!isShared\\(\\)\\) failed");
    EXPECT_EXIT(text[-1], ends, "Assertion \\(n >= 0\\) failed");
    EXPECT_EXIT(text[6], ends, "Assertion \\(!nchar\\) failed");
    EXPECT_EXIT(StringC("ab", 2, "vutf8")[3], ends, "!nchar") << "an ASCII text that nobody has counted";
    EXPECT_EXIT(text.substr(0, -2), ends, "len >= -1");
    EXPECT_EXIT(StringC(static_cast<const char*>(nullptr), 3, "utf8"), ends, "p_data != __null");
    EXPECT_EXIT(StringC("ab", 2, "koi8-r"), ends, "Assertion \\(encoding\\) failed");
    EXPECT_EXIT(StringC("ab", "utf16"), ends, "single-byte");
    EXPECT_EXIT(StringC().head(1), ends, "\\(at == 0\\) && \\(\\(len == -1\\) \\|\\| len == 0\\)");
    EXPECT_EXIT(StringC()[1], ends, "index == 0");
    EXPECT_EXIT(text.transform("ab", "c"), ends, "to_chars.length\\(\\) == from_chars.length\\(\\)");
    EXPECT_EXIT(StringC(UCS4{0x80000000}), ends, "ch <= 0x7FFFFFFF");
}
