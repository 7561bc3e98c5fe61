// Any bytes through the decoders, and the text that comes out through the encoders: in pieces as in one.

#include "string/api/utfkernels.h"
#include "textencoding.h"

#include "fuzz.h"

#include <memory>
#include <vector>

namespace {

const UTF8T* bytesOf(std::string_view text) { return reinterpret_cast<const UTF8T*>(text.data()); }

// The lengths of the pieces that a text is cut into, taken in turn; the last piece is what is left.
class CutsC {
public:
    explicit CutsC(FuzzInputC& input)
    {
        for (unsigned count = 1 + input.below(6); count > 0; --count) m_lengths.push_back(input.below(20));
        m_lengths.push_back(1);   // so that every text comes to its end
    }
    template <class TakeT>
    void cut(std::string_view text, TakeT take) const
    {
        for (size_t i = 0; !text.empty(); ++i) {
            const std::string_view piece = text.substr(0, m_lengths[i % m_lengths.size()]);
            text.remove_prefix(piece.size());
            take(piece);
        }
    }

private:
    std::vector<size_t> m_lengths;
};

std::string decoded(TextDecoderI& decoder, std::string_view piece, size_t* chars)
{
    std::string out(decoder.maxDecodedLength(piece.size()) + 18, '\0');
    const size_t announced = decoder.decodedLength(bytesOf(piece), piece.size());
    const size_t written =
        decoder.decodeBytes(bytesOf(piece), piece.size(), reinterpret_cast<UTF8T*>(out.data()), out.size(), chars);
    FUZZ_REQUIRE(written == announced);
    out.resize(written);
    return out;
}

std::string encoded(TextEncoderI& encoder, std::string_view piece, bool* isLossy)
{
    std::string out(encoder.encodedLength(bytesOf(piece), piece.size()), '\0');
    const size_t written =
        encoder.encode(bytesOf(piece), piece.size(), reinterpret_cast<U8BitT*>(out.data()), out.size(), isLossy);
    FUZZ_REQUIRE(written == out.size());
    return out;
}

// A UTF-16 decoder drops a byte-order mark at the front of every piece, so cuts show in such a text.
bool hasMark(std::string_view bytes)
{
    return bytes.find("\xFF\xFE") != std::string_view::npos || bytes.find("\xFE\xFF") != std::string_view::npos;
}

// Surrogates go through UTF-8 as characters; as UTF-16 they are no longer characters alone.
bool hasSurrogate(std::string_view text)
{
    for (size_t at = text.find('\xED'); at != std::string_view::npos; at = text.find('\xED', at + 1)) {
        if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) >= 0xA0) return true;
    }
    return false;
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    TextEncodingI* const encodings[] = {TextEncodingI::ASCII(),   TextEncodingI::SYS8(),  TextEncodingI::LATIN1(),
                                        TextEncodingI::UTF8(),    TextEncodingI::UTF16(), TextEncodingI::UTF16BE(),
                                        TextEncodingI::UTF16LE(), TextEncodingI::WCHAR()};
    FuzzInputC input(data, size);
    TextEncodingI& from = *encodings[input.below(8)];
    TextEncodingI& to = *encodings[input.below(8)];
    const CutsC cuts(input);
    const std::string_view bytes = input.rest();

    size_t chars = 0;
    const std::unique_ptr<TextDecoderI> decoder(from.getDecoder());
    const std::string text = decoded(*decoder, bytes, &chars);
    // UTF-8 and wide units may hold what UTF-8 once had beyond four bytes.
    const bool isBeyond =
        &from == TextEncodingI::UTF8() || &from == TextEncodingI::SYS8() || &from == TextEncodingI::WCHAR();
    const bool isValid = utfkernels::validPrefix(bytesOf(text), text.size(), nullptr) == text.size();
    FUZZ_REQUIRE(isValid || isBeyond);
    if (!hasMark(bytes)) {
        const std::unique_ptr<TextDecoderI> inPieces(from.getDecoder());
        std::string joined;
        size_t joinedChars = 0;
        cuts.cut(bytes, [&](std::string_view piece) {
            size_t count = 0;
            joined += decoded(*inPieces, piece, &count);
            joinedChars += count;
        });
        FUZZ_REQUIRE(joined == text);
        FUZZ_REQUIRE(joinedChars == chars);
    }
    if (!isValid) return 0;

    bool isLossy = false;
    const std::unique_ptr<TextEncoderI> encoder(to.getEncoder());
    const std::string outside = encoded(*encoder, text, &isLossy);
    const std::unique_ptr<TextEncoderI> inPieces(to.getEncoder());
    std::string joined;
    bool isAnyLossy = false;
    cuts.cut(text, [&](std::string_view piece) {
        bool isPieceLossy = false;
        joined += encoded(*inPieces, piece, &isPieceLossy);
        isAnyLossy |= isPieceLossy;
    });
    FUZZ_REQUIRE(joined == outside);
    FUZZ_REQUIRE(isAnyLossy == isLossy);

    if (!isLossy && !hasMark(outside) && !hasSurrogate(text)) {
        size_t backChars = 0;
        const std::unique_ptr<TextDecoderI> back(to.getDecoder());
        FUZZ_REQUIRE(decoded(*back, outside, &backChars) == text);
        FUZZ_REQUIRE(backChars == utfkernels::countChars(bytesOf(text), text.size()));
    }
    return 0;
}
