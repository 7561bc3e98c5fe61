#include "textcodecs.h"

using transcode::FormatT;
using transcode::ResultT;

namespace {

size_t lengthOfWholeChars(FormatT format, const UTF8T* in, size_t n, size_t* consumed)
{
    const ResultT result = transcode::fromUtf8Length(format, in, n);
    *consumed = result.consumed;
    return result.written;
}

size_t encodeWholeChars(FormatT format, const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool* wasLossy,
                        size_t* consumed)
{
    const ResultT result = transcode::fromUtf8(format, in, n, out, outSize);
    *consumed = result.consumed;
    *wasLossy |= result.lossy;
    return result.written;
}

}   // namespace

FromUTF8TextEncoderC::FromUTF8TextEncoderC() : UnusedByteBufferC(transcode::keptCapacity(FormatT::UTF8)) {}

size_t FromUTF8TextEncoderC::charLen(const U8BitT* p, size_t available)
{
    return transcode::charLen(FormatT::UTF8, p, available);
}

size_t FromUTF8TextEncoderC::encodedLength(const UTF8T* in, size_t n)
{
    size_t length = 0;
    saveUnusedBytes();
    takePiece(in, n, [&](const U8BitT* p, size_t count) {
        size_t consumed = 0;
        length += encodedLengthWithFullCharAtStart(p, count, &consumed);
        return consumed;
    });
    restoreUnusedBytes();
    return length;
}

size_t FromUTF8TextEncoderC::encode(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool* wasLossy)
{
    size_t written = 0;
    bool lossy = false;
    takePiece(in, n, [&](const U8BitT* p, size_t count) {
        size_t consumed = 0;
        written += encodeWithFullCharAtStart(p, count, out + written, outSize - written, &lossy, &consumed);
        return consumed;
    });
    if (wasLossy != nullptr) *wasLossy = lossy;
    return written;
}

template <FormatT FORMAT>
size_t FormatEncoderM<FORMAT>::encodedLengthWithFullCharAtStart(const UTF8T* in, size_t n, size_t* consumed)
{
    return lengthOfWholeChars(FORMAT, in, n, consumed);
}

template <FormatT FORMAT>
size_t FormatEncoderM<FORMAT>::encodeWithFullCharAtStart(const UTF8T* in, size_t n, U8BitT* out, size_t outSize,
                                                         bool* wasLossy, size_t* consumed)
{
    return encodeWholeChars(FORMAT, in, n, out, outSize, wasLossy, consumed);
}

template class FormatEncoderM<FormatT::ASCII>;
template class FormatEncoderM<FormatT::LATIN1>;
template class FormatEncoderM<FormatT::WIDE>;

FormatT UTF16TextEncoderC::format() const
{
    return encoding == UTF16EncodingNeedingSwab() ? FormatT::UTF16BE : FormatT::UTF16LE;
}

size_t UTF16TextEncoderC::encodedLengthWithFullCharAtStart(const UTF8T* in, size_t n, size_t* consumed)
{
    return lengthOfWholeChars(format(), in, n, consumed);
}

size_t UTF16TextEncoderC::encodeWithFullCharAtStart(const UTF8T* in, size_t n, U8BitT* out, size_t outSize,
                                                    bool* wasLossy, size_t* consumed)
{
    return encodeWholeChars(format(), in, n, out, outSize, wasLossy, consumed);
}

size_t UTF8TextEncoderC::encode(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool* wasLossy)
{
    if (wasLossy != nullptr) *wasLossy = false;
    return decoder->decodeBytes(in, n, out, outSize, nullptr);
}
