#include "textencoding.h"

#include "textcodecs.h"

namespace {

const U8BitT UTF8_MARK[] = {0xEF, 0xBB, 0xBF};
const U8BitT UTF16LE_MARK[] = {0xFF, 0xFE};
const U8BitT UTF16BE_MARK[] = {0xFE, 0xFF};

// An encoding made of its decoder, its encoder, the size of a code unit and that of the byte-order mark.
template <class DecoderT, class EncoderT, int CODE_UNIT_LENGTH, int PREAMBLE_LENGTH>
class TextEncodingM : public TextEncodingI {
public:
    explicit TextEncodingM(const U8BitT* mark) : preamble(mark) {}

    TextDecoderI* getDecoder() override { return new DecoderT(this); }
    TextEncoderI* getEncoder() override { return new EncoderT(this); }
    const U8BitT* getPreamble(size_t* length) override
    {
        if (length != nullptr) *length = PREAMBLE_LENGTH;
        return preamble;
    }
    size_t getCodeUnitLength() override { return CODE_UNIT_LENGTH; }

private:
    const U8BitT* const preamble;   // static storage, or null
};

typedef TextEncodingM<UTF8TextDecoderC, UTF8TextEncoderC, 1, 0> Sys8EncodingT;
typedef TextEncodingM<UTF8TextDecoderC, UTF8TextEncoderC, 1, sizeof UTF8_MARK> Utf8EncodingT;
typedef TextEncodingM<ASCIITextDecoderC, ASCIITextEncoderC, 1, 0> AsciiEncodingT;
typedef TextEncodingM<Latin1TextDecoderC, Latin1TextEncoderC, 1, 0> Latin1EncodingT;
typedef TextEncodingM<UTF16TextDecoderC, UTF16TextEncoderC, sizeof(UTF16T), sizeof UTF16LE_MARK> Utf16EncodingT;
typedef TextEncodingM<WCharTextDecoderC, WCharTextEncoderC, sizeof(wchar_t), 0> WCharEncodingT;

}   // namespace

TextEncodingI* TextEncodingI::ASCII()
{
    static TextEncodingI* const encoding = new AsciiEncodingT(nullptr);
    return encoding;
}

TextEncodingI* TextEncodingI::SYS8()
{
    static TextEncodingI* const encoding = new Sys8EncodingT(nullptr);
    return encoding;
}

TextEncodingI* TextEncodingI::LATIN1()
{
    static TextEncodingI* const encoding = new Latin1EncodingT(nullptr);
    return encoding;
}

TextEncodingI* TextEncodingI::UTF8()
{
    static TextEncodingI* const encoding = new Utf8EncodingT(UTF8_MARK);
    return encoding;
}

TextEncodingI* TextEncodingI::UTF16()
{
    static TextEncodingI* const encoding = new Utf16EncodingT(UTF16LE_MARK);
    return encoding;
}

TextEncodingI* TextEncodingI::UTF16BE()
{
    static TextEncodingI* const encoding = new Utf16EncodingT(UTF16BE_MARK);
    return encoding;
}

TextEncodingI* TextEncodingI::UTF16LE()
{
    static TextEncodingI* const encoding = new Utf16EncodingT(UTF16LE_MARK);
    return encoding;
}

TextEncodingI* TextEncodingI::WCHAR()
{
    static TextEncodingI* const encoding = new WCharEncodingT(nullptr);
    return encoding;
}

// Big-endian machines are not supported.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the machine's byte order is taken as little-endian");

TextEncodingI* UTF16EncodingNeedingSwab() { return TextEncodingI::UTF16BE(); }
TextEncodingI* UTF16EncodingNotNeedingSwab() { return TextEncodingI::UTF16LE(); }
