#include "textencoding.h"

#include "string/textencoding_support.h"
#include "support/helpers.h"
#include "utf16.h"
#include "utf8.h"
#include "wchars.h"

#include <gtest/gtest.h>

namespace {

// Text of every sort for an encoding: runs of one length of character, so that each fast path is
// entered and left at every offset, and mixed stretches.
std::vector<uint32_t> sampleFor(const EncodingRowT& row, TextSourceC& source, size_t runs)
{
    const uint32_t starts[] = {0x20, 0xA1, 0x410, 0x4E00, 0x1F600, 0};
    std::vector<uint32_t> text;
    while (runs-- > 0) {
        const uint32_t start = starts[source.below(6)];
        for (uint32_t n = source.below(90); n > 0; --n) {
            const uint32_t ch = start == 0 ? source.codePoint() : start + source.below(90);
            text.push_back(ch > row.lastChar ? ch % (row.lastChar + 1) : ch);
        }
    }
    return text;
}

}   // namespace

TEST(TextEncoding, everyEncodingKnowsItselfItsUnitAndItsMark)
{
    for (const EncodingRowT& row : ENCODING_ROWS) {
        SCOPED_TRACE(row.name);
        TextEncodingI* const encoding = row.encoding();
        const std::unique_ptr<TextDecoderI> decoder(encoding->getDecoder());
        const std::unique_ptr<TextEncoderI> encoder(encoding->getEncoder());
        EXPECT_EQ(decoder->fromEncoding(), encoding);
        EXPECT_EQ(encoder->toEncoding(), encoding);
        EXPECT_EQ(encoding->getCodeUnitLength(), row.codeUnit);
        size_t length = 99;
        const U8BitT* mark = encoding->getPreamble(&length);
        EXPECT_EQ(length, row.preamble.size());
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(mark), length), row.preamble);
        EXPECT_EQ(encoding->getPreamble(nullptr), mark);
        for (const EncodingRowT& other : ENCODING_ROWS) EXPECT_EQ(&other == &row, other.encoding() == encoding);
        EXPECT_EQ(encodedWhole(row.format, std::string(1, 0)).size(), row.codeUnit);
    }
    EXPECT_EQ(UTF16EncodingNeedingSwab(), TextEncodingI::UTF16BE());
    EXPECT_EQ(UTF16EncodingNotNeedingSwab(), TextEncodingI::UTF16LE());
}

TEST(TextEncoding, firstUseFromManyThreadsGivesOneObject)
{
    const size_t encodings = std::size(ENCODING_ROWS);
    TextEncodingI* seen[8][encodings];
    inThreads(8, [&](int i) {
        for (size_t k = 0; k < encodings; ++k) {
            seen[i][k] = ENCODING_ROWS[k].encoding();
            delete seen[i][k]->getDecoder();
        }
    });
    for (auto& row : seen) EXPECT_TRUE(std::equal(row, row + encodings, seen[0]));
}

TEST(TextEncoding, allCodePointsAgreeWithIconv)
{
    std::string utf8;
    for (uint32_t ch = 0; ch <= 0x10FFFF; ++ch) {
        if (ch < 0xD800 || ch > 0xDFFF) utf8 += utf8Of(ch);
    }
    for (const EncodingRowT& row : ENCODING_ROWS) {
        if (row.encoding == TextEncodingI::SYS8 || row.encoding == TextEncodingI::UTF16) continue;   // seen already
        SCOPED_TRACE(row.name);
        const std::string text = utf8.substr(0, utf8.find(utf8Of(row.lastChar)) + utf8Of(row.lastChar).size());
        const std::string external = iconvText(text, "UTF-8", row.iconvName);
        bool lossy = true;
        EXPECT_TRUE(encodedWhole(row.format, text, &lossy) == external);
        EXPECT_FALSE(lossy);
        size_t chars = 0;
        EXPECT_TRUE(decodedWhole(row.format, external, &chars) == text);
        EXPECT_EQ(chars, row.lastChar + 1 - (row.lastChar > 0xFFFF ? 0x800 : 0));
    }
}

TEST(TextEncoding, randomTextAgreesWithIconv)
{
    TextSourceC source(/*seed=*/2201);
    for (int i = 0; i < 300; ++i) {
        for (const EncodingRowT& row : ENCODING_ROWS) {
            const std::vector<uint32_t> text = sampleFor(row, source, source.below(8));
            const std::string utf8 = utf8Of(text);
            SCOPED_TRACE(std::string(row.name) + " " + hexOf(utf8));
            const std::string external = iconvText(utf8, "UTF-8", row.iconvName);
            size_t chars = 0;
            bool lossy = true;
            ASSERT_TRUE(encodedWhole(row.format, utf8, &lossy) == external);
            ASSERT_FALSE(lossy);
            ASSERT_TRUE(decodedWhole(row.format, external, &chars) == utf8);
            ASSERT_EQ(chars, text.size());
        }
    }
}

TEST(TextEncoding, everyCutGivesWhatOnePieceGives)
{
    TextSourceC source(/*seed=*/2202);
    for (const EncodingRowT& row : ENCODING_ROWS) {
        SCOPED_TRACE(row.name);
        const std::vector<uint32_t> text = sampleFor(row, source, 12);
        const std::string utf8 = utf8Of(text);
        const std::string external = encodedWhole(row.format, utf8);
        const auto expectSame = [&](const PieceSizesT& sizes) {
            size_t chars = 0;
            EXPECT_TRUE(decoded(row.encoding(), external, sizes, &chars) == utf8);
            EXPECT_EQ(chars, text.size());
            EXPECT_TRUE(encoded(row.encoding(), utf8, sizes) == external);
        };
        for (size_t size = 1; size <= 9; ++size) expectSame(pieces(size));
        for (int i = 0; i < 50; ++i) expectSame([&] { return source.below(200); });
    }
}

TEST(TextEncoding, valuesBeyondUnicodePassWhereTheFormHasRoom)
{
    // One character of each length, and overlong forms, which come out short.
    const std::string utf8 = "\xF7\xBF\xBF\xBF\xFB\xBF\xBF\xBF\xBF\xFD\xBF\xBF\xBF\xBF\xBF\xED\xA0\x80";
    const std::string wide("\xFF\xFF\x1F\x00\xFF\xFF\xFF\x03\xFF\xFF\xFF\x7F\x00\xD8\x00\x00", 16);
    EXPECT_EQ(hexOf(encodedWhole(transcode::FormatT::WIDE, utf8)), hexOf(wide));
    EXPECT_EQ(hexOf(decodedWhole(transcode::FormatT::WIDE, wide)), hexOf(utf8));
    EXPECT_EQ(hexOf(decodedWhole(transcode::FormatT::UTF8, utf8)), hexOf(utf8));
    EXPECT_EQ(decodedWhole(transcode::FormatT::UTF8, "\xC1\x81\xE0\x81\x82\xFC\x80\x80\x80\x81\x83"), "ABC");
    EXPECT_EQ(decodedWhole(transcode::FormatT::UTF8, "\xC0\x80"), std::string(1, 0));
    EXPECT_EQ(encodedWhole(transcode::FormatT::UTF16LE, "\xED\xA0\x80"), std::string("\x00\xD8", 2));
}

TEST(TextEncoding, aCutCharacterWaitsForTheNextPiece)
{
    const std::unique_ptr<TextDecoderI> decoder(TextEncodingI::UTF8()->getDecoder());
    const std::string text = "\xE2\x82\xAC";
    UTF8T out[8];
    size_t chars = 99;
    EXPECT_EQ(decoder->decodeBytes(bytesOf(text), 2, out, sizeof out, &chars), 0u);
    EXPECT_EQ(chars, 0u);
    EXPECT_EQ(decoder->decodedLength(bytesOf(text) + 2, 1), 3u);
    EXPECT_EQ(decoder->decodedLength(bytesOf(text) + 2, 1), 3u) << "a length changes nothing";
    EXPECT_EQ(decoder->decodeBytes(bytesOf(text) + 2, 1, out, sizeof out, &chars), 3u);
    EXPECT_EQ(chars, 1u);
    // At the end of the input it is dropped, with whatever stands in the place of its missing bytes.
    EXPECT_EQ(decodedWhole(transcode::FormatT::UTF8, "ab\xC3"), "ab");
    EXPECT_EQ(decodedWhole(transcode::FormatT::UTF8, "\xE2"
                                                     "A"),
              "");
}

TEST(TextEncoding, utf16OrderIsTakenFromTheMark)
{
    const struct {
        const char* name;
        TextEncodingI* encoding;
        std::string in;
        const char* out;
        TextEncodingI* after;
    } rows[] = {
        {"mark, big-endian", TextEncodingI::UTF16(), {"\xFE\xFF\x20\xAC", 4}, "\xE2\x82\xAC", TextEncodingI::UTF16BE()},
        {"mark, little", TextEncodingI::UTF16(), {"\xFF\xFE\xAC\x20", 4}, "\xE2\x82\xAC", TextEncodingI::UTF16LE()},
        {"no mark", TextEncodingI::UTF16(), {"\xAC\x20", 2}, "\xE2\x82\xAC", TextEncodingI::UTF16LE()},
        {"the mark alone", TextEncodingI::UTF16(), {"\xFE\xFF", 2}, "", TextEncodingI::UTF16BE()},
        {"half a unit", TextEncodingI::UTF16(), {"\xFE", 1}, "", TextEncodingI::UTF16()},
        {"own mark",
         TextEncodingI::UTF16BE(),
         {"\xFE\xFF\x00"
          "A",
          4},
         "A",
         TextEncodingI::UTF16BE()},
        {"other mark",
         TextEncodingI::UTF16BE(),
         {"\xFF\xFE\x00"
          "A",
          4},
         "\xEF\xBF\xBE"
         "A",
         TextEncodingI::UTF16BE()},
    };
    for (const auto& row : rows) {
        for (const size_t size : {1UL, 2UL, 3UL, 9UL}) {
            SCOPED_TRACE(std::string(row.name) + " in pieces of " + std::to_string(size));
            const std::unique_ptr<TextDecoderI> decoder(row.encoding->getDecoder());
            std::string out;
            cut(row.in, pieces(size), [&](const std::string& piece) {
                TextEncodingI* const before = decoder->fromEncoding();
                UTF8T part[32];
                const size_t length = decoder->decodedLength(bytesOf(piece), piece.size());
                EXPECT_EQ(decoder->fromEncoding(), before) << "a length decides nothing";
                EXPECT_EQ(decoder->decodeBytes(bytesOf(piece), piece.size(), part, sizeof part, nullptr), length);
                out.append(reinterpret_cast<char*>(part), length);
            });
            EXPECT_EQ(out, row.out);
            EXPECT_EQ(decoder->fromEncoding(), row.after);
        }
    }
}

TEST(TextEncoding, utf16MarkIsDroppedAtTheFrontOfEveryPiece)
{
    const std::string text("A\0\xFF\xFE\xFF\xFE", 6);
    EXPECT_EQ(decoded(TextEncodingI::UTF16(), text, onePiece()), "A\xEF\xBB\xBF\xEF\xBB\xBF");
    EXPECT_EQ(decoded(TextEncodingI::UTF16(), text, pieces(2)), "A");
    // The second piece begins with the kept byte, so the mark in it is not at the front.
    EXPECT_EQ(decoded(TextEncodingI::UTF16(), text, pieces(1)), "A");
    size_t sizes[] = {1, 3, 2};
    size_t* next = sizes;
    EXPECT_EQ(decoded(TextEncodingI::UTF16(), text, [&] { return *next++; }), "A\xEF\xBB\xBF");
}

TEST(TextEncoding, oddAddressesAreFine)
{
    const std::string utf8 = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    for (const EncodingRowT& row : ENCODING_ROWS) {
        if (row.lastChar < 0x10FFFF) continue;
        SCOPED_TRACE(row.name);
        const std::string external = "x" + encodedWhole(row.format, utf8);
        std::string out(external.size(), 0);
        const size_t length = external.size() - 1;
        EXPECT_EQ(transcode::encode(row.format, bytesOf(utf8), utf8.size(), bytesOf(out) + 1, length, nullptr), length);
        EXPECT_EQ(out.substr(1), external.substr(1));
        std::string back(utf8.size(), 0);
        EXPECT_EQ(transcode::decode(row.format, bytesOf(external) + 1, length, bytesOf(back), back.size(), nullptr),
                  back.size());
        EXPECT_EQ(back, utf8);
    }
}

TEST(TextEncoding, maxDecodedLengthIsBoundForWholePieces)
{
    const struct {
        TextEncodingI* encoding;
        size_t bound[6];   // of 0 to 5 bytes
    } rows[] = {{TextEncodingI::ASCII(), {0, 3, 6, 9, 12, 15}}, {TextEncodingI::LATIN1(), {0, 2, 4, 6, 8, 10}},
                {TextEncodingI::SYS8(), {0, 3, 6, 9, 12, 15}},  {TextEncodingI::UTF16(), {0, 0, 4, 4, 8, 8}},
                {TextEncodingI::UTF16BE(), {0, 0, 4, 4, 8, 8}}, {TextEncodingI::WCHAR(), {0, 0, 0, 0, 6, 6}}};
    for (const auto& row : rows) {
        const std::unique_ptr<TextDecoderI> decoder(row.encoding->getDecoder());
        for (size_t n = 0; n < 6; ++n) EXPECT_EQ(decoder->maxDecodedLength(n), row.bound[n]);
    }
}

TEST(CharacterPrimitives, readBackWhatTheyWrite)
{
    for (UCS4 ch = 1; ch != 0x80000000;
         ch = ch < 0x11000 ? ch + 1 : std::min(ch + ch / 7, 0x7FFFFFFFu) + (ch == 0x7FFFFFFF)) {
        UTF8T bytes[7] = {};
        UTF8T* end = bytes;
        UTF8Put(end, ch);
        const size_t len = static_cast<size_t>(end - bytes);
        ASSERT_TRUE(len == UTF8Len(ch) && len == UTF8Len(bytes)) << ch;
        const UTF8T* p = bytes;
        ASSERT_EQ(UTF8Get(p), ch);
        ASSERT_EQ(p, end);

        wchar_t unit = 0;
        wchar_t* unitEnd = &unit;
        WCharPut(unitEnd, ch);
        const wchar_t* wide = &unit;
        ASSERT_EQ(WCharGet(wide), ch);
        if (ch > 0x10FFFF || UTF16IsSurrogate(ch)) continue;
        for (const bool swap : {false, true}) {
            UTF16T units[2] = {};
            UTF16T* last = units;
            UTF16Put(last, ch, swap);
            ASSERT_EQ(static_cast<size_t>(last - units), UTF16Len(ch));
            ASSERT_EQ(UTF16Len(units, swap), UTF16Len(ch));
            const UTF16T* q = units;
            ASSERT_EQ(UTF16Get(q, swap), ch);
            ASSERT_EQ(q, last);
        }
    }
    const UTF8T notFirst[] = {0x80, 0xBF, 0xFE, 0xFF};
    for (const UTF8T& byte : notFirst) EXPECT_EQ(UTF8Len(&byte), 1u);
}

TEST(TextEncodingDeathTest, malformedTextEndsTheProcess)
{
    using transcode::FormatT;
    const struct {
        FormatT format;
        bool decodes;
        std::string text;
        const char* expr;
    } rows[] = {
        {FormatT::UTF8, true, "a\x80", "non-utf8 in string"},
        {FormatT::UTF8, true, "\xE2\x82z", "!UTF8Is1st\\(cp\\[1\\]\\) && !UTF8Is1st\\(cp\\[2\\]\\)"},
        {FormatT::ASCII, true, "\x80", "!\\(ch & 0x80\\)"},
        {FormatT::UTF16LE, true, {"\x00\xDC", 2}, "UTF16Is1st\\(c1\\)"},
        {FormatT::UTF16LE, true, {"\x00\xD8z\0", 4}, "UTF16Is2nd\\(c2\\)"},
        {FormatT::WIDE, true, {"\xFF\xFF\xFF\xFF", 4}, "ch <= 0x7FFFFFFF"},
        {FormatT::ASCII, false, "\xC2\x80", "UCS4IsASCII\\(ch\\)"},
        {FormatT::LATIN1, false, "\xC4\x80", "UCS4IsLatin1\\(ch\\)"},
        {FormatT::UTF16LE, false, "\xF4\x90\x80\x80", "UCS4IsUnicode\\(ch\\)"},
    };
    for (const auto& row : rows) {
        const std::string failed = std::string("Assertion \\(") + row.expr + "\\) failed";
        EXPECT_EXIT(row.decodes ? decodedWhole(row.format, row.text) : encodedWhole(row.format, row.text),
                    testing::ExitedWithCode(1), failed);
    }
}
