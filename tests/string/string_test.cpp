#include "stringc.h"

#include "string/stringmodel.h"
#include "stringimpl.h"
#include "tvxcmn.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

using stringmodel::bytesOf;
using stringmodel::TextT;
using stringmodel::value;

int sign(int number) { return (number > 0) - (number < 0); }

// Short texts over few characters, so that parts repeat and searches hit.
class SmallTextsC {
public:
    explicit SmallTextsC(unsigned seed) : m_random(seed) {}
    TextT text(size_t maxChars)
    {
        static const uint32_t LETTERS[] = {'a', 'b', 'A', 0xE9, 0x416, 0x20AC, 0x1F600};
        TextT text(m_random.below(static_cast<uint32_t>(maxChars) + 1));
        for (uint32_t& ch : text) ch = LETTERS[m_random.below(m_isASCII ? 3 : uint32_t{std::size(LETTERS)})];
        return text;
    }
    void asciiOnly(bool isASCII) { m_isASCII = isASCII; }
    uint32_t below(uint32_t limit) { return m_random.below(limit); }

private:
    TextSourceC m_random;
    bool m_isASCII = false;
};

}   // namespace

TEST(StringC, sharesWhatIsShortest)
{
    EXPECT_EQ(&StringC().impl(), &StringC("", "ascii").impl());
    EXPECT_EQ(&StringC().impl(), &StringC(static_cast<const char*>(nullptr)).impl());
    EXPECT_EQ(&StringC("a", "ascii").impl(), &StringC("a", "ascii").impl());
    EXPECT_EQ(&StringC("a", "utf8").impl(), &StringC(UCS4{'a'}).impl());
    EXPECT_NE(&StringC("ab", "ascii").impl(), &StringC("ab", "ascii").impl());
    EXPECT_NE(&StringC("a", 1, "ascii").impl(), &StringC("a", 1, "ascii").impl());
    EXPECT_EQ(bytesOf(StringC("\xE9", "iso-8859-1")), "\xC3\xA9");
    EXPECT_EQ(StringC(UCS4{0}).length(), 1);
    EXPECT_TRUE(StringC().isEmpty());
    EXPECT_EQ(getStringFactory(1), StringC("ab").impl().getFactory());
}

TEST(StringC, isMadeFromEveryKindOfText)
{
    const std::string expected = "h\xC3\xA9\xF0\x9F\x98\x80";
    const char16_t utf16[] = u"h\u00E9\U0001F600";
    EXPECT_EQ(bytesOf(StringC(utf16)), expected);
    EXPECT_EQ(bytesOf(StringC(reinterpret_cast<const UTF16T*>(utf16))), expected);
    EXPECT_EQ(bytesOf(StringC(L"h\u00E9\U0001F600")), expected);
    EXPECT_EQ(bytesOf(StringC(L"h\u00E9\U0001F600 and more", 3)), expected);
    EXPECT_EQ(bytesOf(StringC(expected.c_str(), "UTF8")), expected);
    EXPECT_EQ(bytesOf(StringC(StringC(expected.c_str()), StringC("!"))), expected + "!");
    EXPECT_EQ(bytesOf(StringC(static_cast<const wchar_t*>(nullptr))), "");
    EXPECT_EQ(bytesOf(StringC(static_cast<const UTF16T*>(nullptr))), "");
    EXPECT_EQ(StringC("a\0b", 3, "utf8").length(), 3) << "a decoder counts zero bytes";
    EXPECT_EQ(StringC("a\0b", 3, "vutf8").length(), 1) << "counting later stops at one";
    EXPECT_EQ(bytesOf(StringC("ab\xC3", 3, "utf8")), "ab") << "a character cut at the end is dropped";
}

TEST(StringC, hashesAreFixed)
{
    EXPECT_EQ(StringC("abcd").hashCode(), 0x405C1009u);
    EXPECT_EQ(StringC("abc").hashCode(), 0x40AEFA67u);
    EXPECT_EQ(StringC().hashCode(), 0u);
    EXPECT_EQ(StringC("abc").hashCodeCI(), 0xED131F5Bu);
    EXPECT_EQ(StringC("\xC3\x84"
                      "Bc")
                  .hashCodeCI(),
              StringC("\xC3\xA4"
                      "bC")
                  .hashCodeCI());
}

TEST(StringC, copiesKeepTheirTextWhenOneChanges)
{
    const StringC original("h\xC3\xA9llo");
    const std::vector<std::pair<std::function<void(StringC&)>, std::string>> changes = {
        {[](StringC& s) { s += UCS4{'!'}; }, "h\xC3\xA9llo!"},
        {[](StringC& s) { s += StringC("!!"); }, "h\xC3\xA9llo!!"},
        {[](StringC& s) { s += s; }, "h\xC3\xA9lloh\xC3\xA9llo"},
        {[](StringC& s) { s.insert(2, s); }, "h\xC3\xA9h\xC3\xA9llollo"},
        {[](StringC& s) { s.remove(1, 2); }, "hlo"},
        {[](StringC& s) { s.toUpper(); }, "H\xC3\x89LLO"},
        {[](StringC& s) { s.ltrim("h"); }, "\xC3\xA9llo"},
        {[](StringC& s) { s.rtrim("lo"); }, "h\xC3\xA9"},
    };
    for (const auto& [change, expected] : changes) {
        SCOPED_TRACE(expected);
        StringC shared(original);
        change(shared);
        EXPECT_EQ(bytesOf(shared), expected);
        EXPECT_EQ(bytesOf(original), "h\xC3\xA9llo");
        StringC alone(original.utf8(), original.utf8Bytes(), "vutf8");
        change(alone);
        EXPECT_EQ(bytesOf(alone), expected);
    }
    StringC moved(original);
    const StringC target(std::move(moved));
    EXPECT_EQ(&target.impl(), &original.impl());
    moved = target;
    EXPECT_EQ(moved, original);
}

TEST(StringC, partsAndPositions)
{
    const StringC text("h\xC3\xA9llo");
    EXPECT_EQ(&text.substr(0, -1).impl(), &text.impl());
    EXPECT_EQ(bytesOf(text.head(2)), "h\xC3\xA9");
    EXPECT_EQ(bytesOf(text.tail(4)), "\xC3\xA9llo");
    EXPECT_EQ(text.find(StringC()), -1);
    EXPECT_EQ(text.rfind(StringC()), -1);
    EXPECT_EQ(text[1], 0xE9u);
    EXPECT_EQ(text[5], 0u);
    EXPECT_EQ(StringC("ab")[100], 0u) << "beyond a text that is known to be ASCII";
    EXPECT_EQ(StringC("abc").rfind('c', 10), 2);
    EXPECT_EQ(StringC("a\0b", 3, "utf8").find(UCS4{0}), 1) << "a zero byte inside is found";
    EXPECT_EQ(StringC("ab").find(UCS4{0}), -1) << "the terminator is not";
    EXPECT_EQ(StringC("ab").find(UCS4{0xFFFFFFFF}), -1);
    StringC removed("abc");
    removed.remove(1, LONG_MAX);
    EXPECT_EQ(removed.length(), 1);
}

TEST(StringC, positionsStayRightAfterEveryChange)
{
    StringC text("abcdefgh");
    text += UCS4{0xE9};
    EXPECT_EQ(text[6], 'g') << "leaves a memo at 6";
    text.insert(2, "\xC3\xA9\xC3\xA9");
    EXPECT_EQ(text.length(), 11);
    EXPECT_EQ(text[9], 'h');
    text.remove(0, 3);
    EXPECT_EQ(text[6], 'h');
    text.remove(2, 1);
    EXPECT_EQ(text[5], 'h');
}

TEST(StringC, zeroBytesCountTheSameWhetherAnyoneAskedBefore)
{
    StringC asked("a\0b", 3, "vutf8");
    StringC unasked("a\0b", 3, "vutf8");
    StringC counted("a\0b", 3, "utf8");
    EXPECT_EQ(asked.length(), 1);
    for (StringC* text : {&asked, &unasked, &counted}) {
        *text += StringC("cd");
        EXPECT_EQ(text->length(), 1);
    }
    EXPECT_EQ(asked, unasked);
    EXPECT_EQ(asked[1], unasked[1]);
    const StringC text("a\0\xC3\xA9z", 5, "utf8");
    EXPECT_EQ(text[3], UCS4{'z'}) << "found from behind, where the zero byte is not in the way";
}

TEST(StringC, searchesAgreeWithTheModel)
{
    SmallTextsC source(1701);
    for (int round = 0; round < 4000; ++round) {
        source.asciiOnly(round % 2 == 0);
        const TextT text = source.text(60);
        const TextT part = source.text(3);
        const long size = static_cast<long>(text.size());
        const long from = static_cast<long>(source.below(static_cast<uint32_t>(size) + 1)) - 1;
        SCOPED_TRACE(hexOf(utf8Of(text)) + "/ " + hexOf(utf8Of(part)) + "/ " + std::to_string(from));
        const StringC s = value(text);
        const StringC p = value(part);
        for (int again = 0; again < 2; ++again) {   // once more with the memo that the first pass left
            ASSERT_EQ(s.find(p, from), stringmodel::find(text, part, from));
            ASSERT_EQ(s.rfind(p, from), stringmodel::rfind(text, part, from));
            ASSERT_EQ(s.findAny(p, from), stringmodel::findMember(text, part, from, true));
            ASSERT_EQ(s.findNot(p, from), stringmodel::findMember(text, part, from, false));
            ASSERT_EQ(s.rfindAny(p, from), stringmodel::rfindMember(text, part, from, true));
            ASSERT_EQ(s.rfindNot(p, from), stringmodel::rfindMember(text, part, from, false));
            if (!part.empty()) {
                ASSERT_EQ(s.find(UCS4{part[0]}, from), stringmodel::find(text, {part[0]}, from));
                ASSERT_EQ(s.rfind(UCS4{part[0]}, from), stringmodel::rfind(text, {part[0]}, from));
            }
            if (from >= 0) {
                ASSERT_EQ(s[from], text[static_cast<size_t>(from)]);
            }
        }
    }
}

TEST(StringC, longTextsWithManyFalseStartsAreSearchedRightly)
{
    const std::string hay = std::string(40000, 'a') + "b" + std::string(40000, 'a');
    const StringC text(hay.data(), hay.size(), StringC::CC_UTF8);
    for (const std::string& needle : {std::string(3000, 'a') + "b", "b" + std::string(3000, 'a'),
                                      std::string(1000, 'a') + "b" + std::string(1000, 'a'), std::string(50000, 'a')}) {
        const size_t first = hay.find(needle);
        const size_t last = hay.rfind(needle);
        const StringC part(needle.data(), needle.size(), StringC::CC_UTF8);
        EXPECT_EQ(text.find(part), first == std::string::npos ? -1 : static_cast<long>(first));
        EXPECT_EQ(text.rfind(part), last == std::string::npos ? -1 : static_cast<long>(last));
    }
}

TEST(StringC, editsAgreeWithTheModel)
{
    SmallTextsC source(1702);
    for (int round = 0; round < 3000; ++round) {
        source.asciiOnly(round % 3 == 0);
        const TextT text = source.text(20);
        const TextT from = source.text(2);
        const TextT to = source.text(3);
        const bool all = source.below(2) != 0;
        const long after = static_cast<long>(source.below(static_cast<uint32_t>(text.size()) + 1)) - 1;
        const size_t at = source.below(static_cast<uint32_t>(text.size()) + 1);
        const long len = static_cast<long>(source.below(6)) - 1;
        SCOPED_TRACE(hexOf(utf8Of(text)) + "/ " + hexOf(utf8Of(from)) + "/ " + hexOf(utf8Of(to)));
        const StringC s = value(text);

        ASSERT_EQ(bytesOf(s.substitute(value(from), value(to), all, after)),
                  utf8Of(stringmodel::substitute(text, from, to, all, after)));
        TextT target(to);
        target.resize(from.size(), 'x');
        ASSERT_EQ(bytesOf(s.transform(value(from), value(target), all, after)),
                  utf8Of(stringmodel::transform(text, from, target, all, after)));
        const StringC escaped = s.PrefixEscape(value(from), 'b');
        ASSERT_EQ(bytesOf(escaped), utf8Of(stringmodel::prefixEscape(text, from, 'b')));
        ASSERT_EQ(escaped.PrefixUnescape('b'), s);

        if (text.size() > 1) {
            ASSERT_EQ(bytesOf(s.substr(at, len)), utf8Of(stringmodel::substr(text, at, len)));
        }
        StringC changed(s);
        TextT expected(text);
        changed.insert(at, value(to));
        stringmodel::insert(expected, at, to);
        changed.remove(at, len);
        if (len != 0) stringmodel::remove(expected, at, len);
        ASSERT_EQ(bytesOf(changed), utf8Of(expected));
        ASSERT_EQ(changed.length(), static_cast<long>(expected.size()));
    }
}

TEST(StringC, substitutesWithoutRegardToCase)
{
    const StringC text("stra\xC3\x9F"
                       "e \xC3\x84rger \xC3\xA4RGER");
    EXPECT_EQ(bytesOf(text.substitute("\xC3\xA4rger", "x", true, -1, true)), "stra\xC3\x9F"
                                                                             "e x x");
    EXPECT_EQ(bytesOf(text.substitute("\xC3\xA4RGER", "", false, -1, true)), "stra\xC3\x9F"
                                                                             "e  \xC3\xA4RGER");
    EXPECT_EQ(bytesOf(StringC("aaaa").substitute("aa", "b")), "bb");
    EXPECT_EQ(bytesOf(StringC("a\\\\b\\").PrefixUnescape('\\')), "a\\b");
}

TEST(StringC, substitutesBytesThatAreNoCharacters)
{
    const StringC zeros("a\0b\0c", 5, "vutf8");
    EXPECT_EQ(bytesOf(zeros.substitute(StringC("\0", 1, "vutf8"), "?")), "a?b?c");
    EXPECT_EQ(bytesOf(zeros.substitute(StringC("\0c", 2, "vutf8"), "?")), std::string("a\0b?", 4));
    const StringC degrees("20\xB0K, 30\xB0K", 10, "vutf8");
    const StringC degree("\xB0", 1, "vutf8");
    EXPECT_EQ(bytesOf(degrees.substitute(degree, " deg ")), "20 deg K, 30 deg K");
    EXPECT_EQ(bytesOf(degrees.substitute(degree, "", false, 4)), "20\xB0K, 30K");
}

TEST(StringC, encodedTextIsTerminatedAlsoAfterACutCharacter)
{
    for (const std::string cut : {"\xE2", "\xF0\x9F", "\xFC\x80"}) {
        SCOPED_TRACE(hexOf(cut));
        const std::string bytes = "ab" + cut;
        const StringC text(bytes.data(), bytes.size(), StringC::CC_VALID_UTF8);
        const char* const sys8 = text.sys8();
        EXPECT_STREQ(sys8, "ab\xEF\xBF\xBD");
        text.sys8Release(sys8);
        const wchar_t* const wide = text.wchart();
        EXPECT_STREQ(wide, L"ab\uFFFD");
        text.wchartRelease(wide);
        for (size_t room : {8u, 3u}) {
            U8BitT buffer[9] = "########";
            size_t size = room;
            EXPECT_FALSE(text.convertTo(buffer, size, "utf16"));
            EXPECT_EQ(size, 6u);
            EXPECT_EQ(std::memcmp(buffer, "a\0b\0\xFD\xFF\0\0#", room), 0);
            EXPECT_EQ(buffer[room], room < 8 ? '#' : 0);
        }
    }
}

TEST(StringC, comparisonsOrderAsStated)
{
    TextSourceC source(1703);
    std::vector<TextT> texts = {{}, {'a'}, {'a', 'b'}, {0xFFFD}, {0x10000}};
    for (int i = 0; i < 40; ++i) texts.push_back(source.codePoints(3));
    for (const TextT& a : texts) {
        for (const TextT& b : texts) {
            const int expected = a < b ? -1 : a == b ? 0 : 1;
            EXPECT_EQ(sign(value(a).compare(value(b))), expected) << hexOf(utf8Of(a)) << "/ " << hexOf(utf8Of(b));
            EXPECT_EQ(value(a) == value(b), a == b);
        }
    }
    EXPECT_EQ(StringC("abc").compare("abd"), 'c' - 'd') << "the difference of the bytes";
    EXPECT_EQ(StringC("abcdef").compare("ab"), 4) << "the difference of the sizes";

    struct RowT {
        const char* a;
        const char* b;
        int collate;
        int natural;
        int naturalCI;
    };
    const RowT rows[] = {{"", "", 0, 0, 0},
                         {"ABCDEFGHIJ", "abcdefghij", 0, -1, 0},
                         {"file9", "file10", 1, -1, -1},
                         {"file010", "file10", -1, 0, 0},
                         {"a1b", "a1B", 0, 1, 0},
                         {"1", "a", -1, -1, -1},
                         {"\xE2\x84\xAA", "k", 1, 1, 0},   // KELVIN SIGN: longer in bytes
                         {"\xC3\x89tat", "\xC3\xA9TAT", 0, -1, 0},
                         {"0", "00", -1, 0, 0}};
    for (const RowT& row : rows) {
        const StringC a(row.a);
        const StringC b(row.b);
        EXPECT_EQ(sign(a.collate(b)), row.collate) << row.a << " " << row.b;
        EXPECT_EQ(sign(b.collate(a)), -row.collate) << row.a << " " << row.b;
        EXPECT_EQ(a.equalCI(b), row.collate == 0);
        EXPECT_EQ(a.compareNat(b), row.natural) << row.a << " " << row.b;
        EXPECT_EQ(a.compareNat(b, true), row.naturalCI) << row.a << " " << row.b;
    }
}

TEST(StringC, caseChangesCharacterByCharacter)
{
    TextSourceC source(1704);
    for (int round = 0; round < 500; ++round) {
        const TextT text = source.codePoints(80);
        const StringC s = value(text);
        const StringC lower = s.asLower();
        const StringC upper = s.asUpper();
        ASSERT_EQ(lower.length(), static_cast<long>(text.size()));
        for (size_t i = 0; i < text.size(); ++i) {
            const StringC one(UCS4{text[i]});
            ASSERT_EQ(lower[static_cast<long>(i)], one.asLower()[0]);
            ASSERT_EQ(upper[static_cast<long>(i)], one.asUpper()[0]);
        }
        ASSERT_TRUE(s.equalCI(lower) || lower.utf8Bytes() != s.utf8Bytes());
        ASSERT_EQ(s.hashCodeCI(), lower.hashCodeCI());
    }
    EXPECT_EQ(bytesOf(StringC("@AZ[`az{ \xC4\xB0 \xE2\x84\xAA").asLower()), "@az[`az{ i k") << "and shorter in place";
}

TEST(StringC, encodedFormsAreTerminatedAndGivenBack)
{
    const StringC text("h\xC3\xA9");
    const char* const latin1 = text.latin1();
    EXPECT_STREQ(latin1, "h\xE9");
    text.latin1Release(latin1);
    const UTF16T* const utf16 = text.utf16();
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(utf16)), u"h\u00E9");
    text.utf16Release(utf16);
    const wchar_t* const wide = text.wchart();
    EXPECT_STREQ(wide, L"h\u00E9");
    text.wchartRelease(wide);
    const char* const system = text.sys8();
    EXPECT_STREQ(system, "h\xC3\xA9");
    text.sys8Release(system);
    EXPECT_EQ(text.utf16Bytes(), 4u);
    EXPECT_EQ(text.wchartBytes(), 8u);
    EXPECT_EQ(text.latin1Bytes(), 2u);
    EXPECT_EQ(text.sys8Bytes(), 3u);

    U8BitT buffer[16] = "zzzzzzzzzzzzzzz";
    size_t size = 4;
    EXPECT_TRUE(StringC("0123456789").convertTo(buffer, size, "ascii"));
    EXPECT_EQ(size, 10u);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 5), "0123z") << "cut short, and not one byte more";
    size = sizeof buffer;
    EXPECT_TRUE(text.convertTo(buffer, size, "utf16be"));
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(hexOf(std::string(reinterpret_cast<char*>(buffer), 6)), "00 68 00 E9 00 00 ");
    size = 0;
    EXPECT_TRUE(text.convertTo(nullptr, size, "utf8"));
    EXPECT_EQ(size, 3u);
}

TEST(StringC, booleanWords)
{
    for (const char* word : {"TRUE", "t", "1", "Yes", "oN", "ok", "enabled", "ACTIVE"})
        EXPECT_TRUE(StringC(word).asBoolean());
    for (const char* word : {"", "y", "0", "truE ", "2", "no"}) EXPECT_FALSE(StringC(word).asBoolean());
    EXPECT_FALSE(StringC("on\0", 3, "utf8").asBoolean());
}
