#include "strtoken.h"

#include "string/stringmodel.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using stringmodel::TextT;

typedef std::vector<std::string> StringsT;

StringsT contents(StringArrayC* owned)
{
    const std::unique_ptr<StringArrayC> array(owned);
    StringsT strings;
    for (size_t n = 0; n < array->size(); ++n) strings.push_back(stringmodel::bytesOf((*array)[n]));
    return strings;
}

// What tokenizing means, one character after the other.
StringsT tokensOf(const TextT& text, const TextT& delimiters, bool stripWhite, bool allowEmpty, uint32_t escape)
{
    StringsT tokens;
    TextT token;
    const auto finish = [&] {
        std::string bytes = utf8Of(token);
        if (stripWhite) {
            bytes.erase(0, std::min(bytes.find_first_not_of(" \t"), bytes.size()));
            bytes.erase(bytes.find_last_not_of(" \t") + 1);
        }
        if (allowEmpty || !bytes.empty()) tokens.push_back(bytes);
        token.clear();
    };
    if (text.empty()) return tokens;
    for (size_t i = 0; i < text.size(); ++i) {
        if (stringmodel::contains(delimiters, text[i]) && (i == 0 || text[i - 1] != escape)) {
            finish();
        } else {
            token.push_back(text[i]);
        }
    }
    finish();
    return tokens;
}

}   // namespace

TEST(StringTokenizer, dividesAsCharacterByCharacter)
{
    static const uint32_t LETTERS[] = {'a', ',', ';', ' ', '\t', '\n', '\\', 0xE9, 0x20AC, 0x1F600};
    static const TextT DELIMITERS[] = {{','}, {',', ';'}, {}, {0x20AC, ','}, {' ', 0x1F600}, {'\\', ','}};
    static const uint32_t ESCAPES[] = {0xFFFF, 0xFFFE, '\\', ',', 0xE9};
    TextSourceC source(2602);
    for (int i = 0; i < 5000; ++i) {
        TextT text(source.below(20));
        for (uint32_t& ch : text) ch = LETTERS[source.below(std::size(LETTERS))];
        const TextT& delimiters = DELIMITERS[source.below(std::size(DELIMITERS))];
        const uint32_t escape = ESCAPES[source.below(std::size(ESCAPES))];
        const bool stripWhite = source.below(2) != 0;
        const bool allowEmpty = source.below(2) != 0;
        const StringC value = stringmodel::value(text);
        const StringC set = stringmodel::value(delimiters);
        SCOPED_TRACE(utf8Of(text) + " at " + utf8Of(delimiters) + " escaped by " + std::to_string(escape));
        const StringsT expected = tokensOf(text, delimiters, stripWhite, allowEmpty, escape);
        EXPECT_EQ(contents(value.split(set, stripWhite, allowEmpty, escape)), expected);
        EXPECT_EQ(contents(StringTokenizerC::PrefixEscapeTokenize(value, set, stripWhite, allowEmpty, escape)),
                  expected);
        EXPECT_EQ(contents(StringTokenizerC::Tokenize(value, set, stripWhite, allowEmpty)),
                  tokensOf(text, delimiters, stripWhite, allowEmpty, 0xFFFF));
    }
}

TEST(StringTokenizer, leavesOutEmptyPartsAndKeepsWhiteSpaceByDefault)
{
    EXPECT_EQ(contents(StringC("a,, b\n,").split(",")), (StringsT{"a", " b\n"}));
    EXPECT_EQ(contents(StringC("").split(",", false, true)), StringsT());
    EXPECT_EQ(contents(StringC("a,b\\,c\\\\,d").split(",", false, false, '\\')), (StringsT{"a", "b\\,c\\\\,d"}));
}

TEST(StringTokenizer, composeJoinsWithTheDelimiterBetween)
{
    StringArrayC parts;
    EXPECT_TRUE(StringTokenizerC::Compose(parts, ", ").isEmpty());
    parts << "a"
          << ""
          << "b,\\\xE2\x82\xAC";
    EXPECT_EQ(stringmodel::bytesOf(StringTokenizerC::Compose(parts, ", ")), "a, , b,\\\xE2\x82\xAC");
    EXPECT_EQ(stringmodel::bytesOf(StringTokenizerC::PrefixEscapeCompose(parts, ",", ',')), "a,,b\\,\\\\\xE2\x82\xAC");
    EXPECT_EQ(stringmodel::bytesOf(StringTokenizerC::PrefixEscapeCompose(parts, ",", 0x20AC)),
              "a,,b,\\\\\\\xE2\x82\xAC");
}

TEST(StringTokenizer, stripsTheGivenCharactersFromBothEnds)
{
    const auto strip = [](const char* text, const StringC& white) {
        return stringmodel::bytesOf(StringTokenizerC::StripWhite(text, white));
    };
    EXPECT_EQ(strip(" \t a b\t ", StringTokenizerC::m_whiteSpace), "a b");
    EXPECT_EQ(strip("\t \t", StringTokenizerC::m_whiteSpace), "");
    EXPECT_EQ(strip("\n a", StringTokenizerC::m_whiteSpace), "\n a");
    EXPECT_EQ(strip("", StringTokenizerC::m_whiteSpace), "");
    EXPECT_EQ(strip("xx\xE2\x82\xACyx", "yx"), "\xE2\x82\xAC");
}
