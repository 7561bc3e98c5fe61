// What malformed and unrepresentable text becomes, and how often it is reported.
#include "textencoding.h"

#include "string/textencoding_support.h"
#include "support/helpers.h"
#include "utf16.h"
#include "utf8.h"

#include <gtest/gtest.h>

#include <cstdio>

using transcode::FormatT;

namespace {

// UTF-8 as the exact reader takes it, character by character.
std::string readOneByOne(const std::string& text, size_t* chars)
{
    std::string out;
    const UTF8T* p = bytesOf(text);
    const UTF8T* const end = p + text.size();
    for (*chars = 0; p < end && UTF8Len(p) <= static_cast<size_t>(end - p); ++*chars) {
        UTF8T bytes[6];
        UTF8T* last = bytes;
        UTF8Put(last, UTF8Get(p));
        out.append(reinterpret_cast<char*>(bytes), static_cast<size_t>(last - bytes));
    }
    return out;
}

// Text of an encoding with a few bits turned; one in four is random bytes.
std::string damagedText(TextSourceC& source, const EncodingRowT& row)
{
    if (source.below(4) == 0) return source.bytes(12);
    const std::string before(source.below(80), 'a');
    return source.damaged(iconvText(before + source.utf8(20), "UTF-8", row.iconvName), 2);
}

// How many assertions failed meanwhile. Empties the log, which is read from its start at each count.
template <class BodyT>
size_t assertionsOf(BodyT body)
{
    std::remove("assert.log");
    body();
    return assertCount();
}

// A byte-order mark anywhere in UTF-16 text, which counts by where a piece begins.
bool holdsMark(const std::string& text)
{
    return text.find("\xFF\xFE") != std::string::npos || text.find("\xFE\xFF") != std::string::npos;
}

}   // namespace

TEST(TextEncodingContinues, malformedCharactersAreReplaced)
{
    const struct {
        FormatT format;
        bool decodes;
        std::string in;
        std::string out;
        size_t inLength;    // assertions of the length pass
        size_t inWriting;   // and of the writing pass
        bool lossy;
    } rows[] = {
        {FormatT::UTF8, true, "a\x80z", "a\xEF\xBF\xBDz", 1, 1, false},
        {FormatT::UTF8, true, "\xE2\x82zz", "\xEF\xBF\xBDzz", 1, 1, false},
        {FormatT::UTF8, true, "\xC3zz", "\xEF\xBF\xBDzz", 1, 1, false},
        {FormatT::UTF8, true, "\xFE\xFF", "\xEF\xBF\xBD\xEF\xBF\xBD", 2, 2, false},
        {FormatT::UTF8, true, "\xFC\x80\x80\x80\x80z", "\xEF\xBF\xBDz", 1, 1, false},
        {FormatT::ASCII, true, "a\xE9z", "a\xEF\xBF\xBDz", 0, 1, false},
        {FormatT::UTF16LE, true, {"\x00\xDCz\0", 4}, "\xEF\xBF\xBDz", 1, 1, false},
        {FormatT::UTF16LE, true, {"\x00\xD8z\0", 4}, "\xEF\xBF\xBDz", 1, 1, false},
        {FormatT::UTF16BE, true, {"\xD8\x00\xD8\x00\xDC\x00", 6}, "\xEF\xBF\xBD\xF0\x90\x80\x80", 1, 1, false},
        {FormatT::WIDE, true, {"\0\0\0\x80z\0\0\0", 8}, "z", 1, 1, false},
        {FormatT::ASCII, false, "a\xC3\xA9z", "a~z", 0, 1, true},
        {FormatT::LATIN1, false, "\xC3\xA9\xE2\x82\xAC", "\xE9~", 0, 1, true},
        {FormatT::LATIN1, false, "a\x80", "a~", 1, 2, true},
        {FormatT::UTF16LE, false, "\xF4\x90\x80\x80z", {"\xFD\xFFz\0", 4}, 1, 1, true},
        {FormatT::UTF16LE, false, "\x80", "\xFD\xFF", 1, 1, false},
        {FormatT::UTF8, false, "\x80", "\xEF\xBF\xBD", 1, 1, false},
        {FormatT::WIDE, false, "\xFFz", {"\xFD\xFF\0\0z\0\0\0", 8}, 1, 1, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(hexOf(row.in));
        const U8BitT* const in = bytesOf(row.in);
        const size_t n = row.in.size();
        std::string out(row.out.size(), 0);
        bool lossy = false;
        size_t length = 0;
        EXPECT_EQ(assertionsOf([&] {
                      length = row.decodes ? transcode::decodedLength(row.format, in, n)
                                           : transcode::encodedLength(row.format, in, n);
                  }),
                  row.inLength);
        EXPECT_EQ(length, out.size());
        EXPECT_EQ(assertionsOf([&] {
                      length = row.decodes ? transcode::decode(row.format, in, n, bytesOf(out), out.size(), nullptr)
                                           : transcode::encode(row.format, in, n, bytesOf(out), out.size(), &lossy);
                  }),
                  row.inWriting);
        EXPECT_EQ(length, out.size());
        EXPECT_EQ(hexOf(out), hexOf(row.out));
        EXPECT_EQ(lossy, row.lossy);
    }
}

TEST(TextEncodingContinues, damagedUtf8BecomesWhatReadingItOneByOneGives)
{
    TextSourceC source(/*seed=*/2203);
    const EncodingRowT& utf8 = ENCODING_ROWS[3];
    for (int i = 0; i < 1500; ++i) {
        const std::string text = damagedText(source, utf8);
        SCOPED_TRACE(hexOf(text));
        std::string plain;
        std::string fast;
        size_t plainChars = 0;
        size_t chars = 0;
        const size_t asserted = assertionsOf([&] { plain = readOneByOne(text, &plainChars); });
        const size_t inTwoPasses = assertionsOf([&] { fast = decodedWhole(FormatT::UTF8, text, &chars); });
        ASSERT_EQ(hexOf(fast), hexOf(plain));
        ASSERT_EQ(chars, plainChars);
        ASSERT_EQ(inTwoPasses, 2 * asserted);
    }
}

TEST(TextEncodingContinues, damagedTextComesOutTheSameHoweverItIsCut)
{
    TextSourceC source(/*seed=*/2204);
    for (int i = 0; i < 400; ++i) {
        for (const EncodingRowT& row : ENCODING_ROWS) {
            const std::string text = damagedText(source, row);
            const std::string utf8 = damagedText(source, ENCODING_ROWS[3]);
            if (row.codeUnit == 2 && holdsMark(text)) continue;
            SCOPED_TRACE(std::string(row.name) + " " + hexOf(text) + "/ " + hexOf(utf8));
            const size_t size = 1 + source.below(9);
            std::string wholeIn, wholeOut, cutIn, cutOut;
            size_t wholeChars = 0, cutChars = 0;
            bool wholeLossy = false, cutLossy = false;
            const size_t asserted = assertionsOf([&] {
                wholeIn = decodedWhole(row.format, text, &wholeChars);
                wholeOut = encodedWhole(row.format, utf8, &wholeLossy);
            });
            const size_t assertedCut = assertionsOf([&] {
                cutIn = decoded(row.encoding(), text, pieces(size), &cutChars);
                cutOut = encoded(row.encoding(), utf8, pieces(size), &cutLossy);
            });
            ASSERT_EQ(hexOf(cutIn), hexOf(wholeIn));
            ASSERT_EQ(hexOf(cutOut), hexOf(wholeOut));
            ASSERT_EQ(cutChars, wholeChars);
            ASSERT_EQ(cutLossy, wholeLossy);
            ASSERT_EQ(assertedCut, asserted);
        }
    }
}

TEST(TextEncodingContinues, outputThatIsTooSmallHoldsWholeCharacters)
{
    const std::string utf8 = std::string(70, 'a') + "\xC3\xA9\xC3\xA9z\xE2\x82\xAC\xF0\x9F\x98\x80\xC3\xA9";
    for (const EncodingRowT& row : ENCODING_ROWS) {
        SCOPED_TRACE(row.name);
        const bool isSmall = row.lastChar < 0x10FFFF;
        const std::string text = isSmall ? std::string(70, 'a') + "\xC3\xA9zz" : utf8;
        const std::string external = encodedWhole(row.format, text);
        const std::string back = decodedWhole(row.format, external);
        for (size_t room = 0; room <= external.size(); ++room) {
            std::string out(room, 0);
            const size_t written =
                transcode::encode(row.format, bytesOf(text), text.size(), bytesOf(out), room, nullptr);
            ASSERT_EQ(out.substr(0, written), external.substr(0, written));
            ASSERT_EQ(written % row.codeUnit, 0u);
            ASSERT_LT(room - written, 4u) << "the next character would have fitted";
        }
        for (size_t room = 0; room <= back.size(); ++room) {
            std::string out(room, 0);
            size_t chars = 0;
            const size_t written =
                transcode::decode(row.format, bytesOf(external), external.size(), bytesOf(out), room, &chars);
            ASSERT_EQ(out.substr(0, written), back.substr(0, written));
            ASSERT_LT(room - written, 4u);
            size_t fitting = 0;
            readOneByOne(out.substr(0, written), &fitting);
            ASSERT_EQ(chars, row.codeUnit == 1 && isSmall ? external.size() : fitting);
        }
    }
}

TEST(TextEncodingContinues, inputThatFindsNoRoomIsKeptAsFarAsOneCharacterGoes)
{
    const std::unique_ptr<TextDecoderI> decoder(TextEncodingI::UTF8()->getDecoder());
    const std::string text = "abcdefghij";
    UTF8T out[16];
    size_t chars = 0;
    EXPECT_EQ(decoder->decodeBytes(bytesOf(text), 6, out, 0, &chars), 0u);
    EXPECT_EQ(assertCount(), 0u);
    EXPECT_EQ(decoder->decodeBytes(bytesOf(text) + 6, 1, out, 2, &chars), 2u);
    EXPECT_EQ(decoder->decodeBytes(bytesOf(text), 10, out, 0, &chars), 0u);
    EXPECT_EQ(assertCount("(numUnusedBytes + unusedCount) <= maxUnusedBytes"), 1u);
    EXPECT_EQ(decoder->decodeBytes(nullptr, 0, out, sizeof out, &chars), 6u);
    EXPECT_EQ(std::string(out, out + 6), "cdefga");
    EXPECT_EQ(chars, 6u);
}

TEST(CharacterPrimitivesContinue, badCharactersGiveTheReplacementAndAdvance)
{
    const struct {
        std::string in;
        size_t advance;
        const char* expr;
    } rows[] = {
        {"\x80", 1, "non-utf8 in string"},
        {"\xFF", 1, "non-utf8 in string"},
        {"\xC3z", 1, "!UTF8Is1st(cp[1])"},
        {"\xE2\x82z", 2, "!UTF8Is1st(cp[1]) && !UTF8Is1st(cp[2])"},
        {"\xF0z", 1, "!UTF8Is1st(cp[1]) && !UTF8Is1st(cp[2]) && !UTF8Is1st(cp[3])"},
        {"\xFD\x80\x80\x80\x80", 5,
         "!UTF8Is1st(cp[1]) && !UTF8Is1st(cp[2]) && !UTF8Is1st(cp[3]) && !UTF8Is1st(cp[4]) && !UTF8Is1st(cp[5])"},
    };
    for (const auto& row : rows) {
        const size_t before = assertCount(row.expr);
        const UTF8T* p = bytesOf(row.in);
        EXPECT_EQ(UTF8Get(p), 0xFFFDu);
        EXPECT_EQ(p, bytesOf(row.in) + row.advance) << hexOf(row.in);
        EXPECT_EQ(assertCount(row.expr), before + 1) << hexOf(row.in);
    }
    const size_t before = assertCount();
    EXPECT_EQ(UTF8Len(0x80000000u), 0u);
    EXPECT_EQ(UTF16Len(0x110000), 1u);
    UTF16T unit[2] = {};
    UTF16T* end = unit;
    UTF16Put(end, 0x110000);
    EXPECT_TRUE(end == unit + 1 && unit[0] == 0xFFFD);
    EXPECT_EQ(assertCount() - before, 3u);
}
