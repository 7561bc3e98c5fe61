// textencoding_support.h: every encoding with its names, and whole texts through decoders and encoders in
// pieces of given sizes.
#ifndef TVXCMN_TESTS_TEXTENCODING_SUPPORT_H
#define TVXCMN_TESTS_TEXTENCODING_SUPPORT_H

#include "string/api/transcode.h"
#include "textencoding.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

struct EncodingRowT {
    const char* name;
    TextEncodingI* (*encoding)();
    transcode::FormatT format;
    const char* iconvName;
    uint32_t lastChar;   // the largest code point that it can hold
    size_t codeUnit;
    std::string preamble;
};

inline const EncodingRowT ENCODING_ROWS[] = {
    {"ascii", TextEncodingI::ASCII, transcode::FormatT::ASCII, "ASCII", 0x7F, 1, ""},
    {"latin1", TextEncodingI::LATIN1, transcode::FormatT::LATIN1, "ISO-8859-1", 0xFF, 1, ""},
    {"sys8", TextEncodingI::SYS8, transcode::FormatT::UTF8, "UTF-8", 0x10FFFF, 1, ""},
    {"utf8", TextEncodingI::UTF8, transcode::FormatT::UTF8, "UTF-8", 0x10FFFF, 1, "\xEF\xBB\xBF"},
    {"utf16", TextEncodingI::UTF16, transcode::FormatT::UTF16, "UTF-16LE", 0x10FFFF, 2, "\xFF\xFE"},
    {"utf16le", TextEncodingI::UTF16LE, transcode::FormatT::UTF16LE, "UTF-16LE", 0x10FFFF, 2, "\xFF\xFE"},
    {"utf16be", TextEncodingI::UTF16BE, transcode::FormatT::UTF16BE, "UTF-16BE", 0x10FFFF, 2, "\xFE\xFF"},
    {"wchar", TextEncodingI::WCHAR, transcode::FormatT::WIDE, "UTF-32LE", 0x10FFFF, 4, ""},
};

inline const U8BitT* bytesOf(const std::string& text) { return reinterpret_cast<const U8BitT*>(text.data()); }
inline U8BitT* bytesOf(std::string& text) { return reinterpret_cast<U8BitT*>(text.data()); }

// Sizes of the pieces to come; a size beyond the end of the text takes the rest of it.
typedef std::function<size_t()> PieceSizesT;
inline PieceSizesT onePiece()
{
    return [] { return SIZE_MAX; };
}
inline PieceSizesT pieces(size_t size)
{
    return [size] { return size; };
}

// Hands each piece of `text`, in memory of its own, to `take`.
inline void cut(const std::string& text, const PieceSizesT& sizes, const std::function<void(const std::string&)>& take)
{
    size_t at = 0;
    do {
        const std::string piece = text.substr(at, sizes());
        take(piece);
        at += piece.size();
    } while (at < text.size());
}

inline std::string decoded(TextEncodingI* encoding, const std::string& text, const PieceSizesT& sizes,
                           size_t* chars = nullptr)
{
    const std::unique_ptr<TextDecoderI> decoder(encoding->getDecoder());
    std::string out;
    size_t sum = 0;
    cut(text, sizes, [&](const std::string& piece) {
        std::string part(decoder->decodedLength(bytesOf(piece), piece.size()), 0);
        size_t count = 0;
        EXPECT_EQ(decoder->decodeBytes(bytesOf(piece), piece.size(), bytesOf(part), part.size(), &count), part.size());
        out += part;
        sum += count;
    });
    if (chars != nullptr) *chars = sum;
    return out;
}

inline std::string encoded(TextEncodingI* encoding, const std::string& text, const PieceSizesT& sizes,
                           bool* lossy = nullptr)
{
    const std::unique_ptr<TextEncoderI> encoder(encoding->getEncoder());
    std::string out;
    bool anyLossy = false;
    cut(text, sizes, [&](const std::string& piece) {
        std::string part(encoder->encodedLength(bytesOf(piece), piece.size()), 0);
        bool isLossy = true;
        EXPECT_EQ(encoder->encode(bytesOf(piece), piece.size(), bytesOf(part), part.size(), &isLossy), part.size());
        out += part;
        anyLossy |= isLossy;
    });
    if (lossy != nullptr) *lossy = anyLossy;
    return out;
}

// The same in one piece without an object.
inline std::string decodedWhole(transcode::FormatT format, const std::string& text, size_t* chars = nullptr)
{
    std::string out(transcode::decodedLength(format, bytesOf(text), text.size()), 0);
    EXPECT_EQ(transcode::decode(format, bytesOf(text), text.size(), bytesOf(out), out.size(), chars), out.size());
    return out;
}
inline std::string encodedWhole(transcode::FormatT format, const std::string& text, bool* lossy = nullptr)
{
    std::string out(transcode::encodedLength(format, bytesOf(text), text.size()), 0);
    EXPECT_EQ(transcode::encode(format, bytesOf(text), text.size(), bytesOf(out), out.size(), lossy), out.size());
    return out;
}

#endif   // TVXCMN_TESTS_TEXTENCODING_SUPPORT_H
