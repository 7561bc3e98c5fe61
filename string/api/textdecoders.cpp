#include "textcodecs.h"

#include "assertfatal.h"

#include <algorithm>

using transcode::FormatT;
using transcode::ResultT;

UnusedByteBufferC::UnusedByteBufferC(size_t capacity)
    : unusedBytes(new U8BitT[capacity]), numUnusedBytes(0), maxUnusedBytes(capacity), numSavedUnusedBytes(0)
{
}

size_t UnusedByteBufferC::prepareFirstCharForDecoding(const U8BitT* in, size_t n)
{
    const size_t added = std::min(n, maxUnusedBytes - numUnusedBytes);
    std::copy_n(in, added, unusedBytes.get() + numUnusedBytes);
    const size_t length = charLen(unusedBytes.get(), numUnusedBytes + added);
    return length > numUnusedBytes ? std::min(length - numUnusedBytes, added) : 0;
}

void UnusedByteBufferC::storeUnusedBytes(const U8BitT* in, size_t unusedCount)
{
    const size_t stored = transcode::storable(numUnusedBytes, unusedCount, maxUnusedBytes);
    std::copy_n(in, stored, unusedBytes.get() + numUnusedBytes);
    numUnusedBytes += stored;
}

void UnusedByteBufferC::consumeUnusedBytes(size_t count)
{
    if (!TVX_CHECK(count <= numUnusedBytes, "count <= numUnusedBytes")) count = numUnusedBytes;
    std::copy(unusedBytes.get() + count, unusedBytes.get() + numUnusedBytes, unusedBytes.get());
    numUnusedBytes -= count;
}

void UnusedByteBufferC::saveUnusedBytes()
{
    if (!TVX_CHECK(!savedUnusedBytes, "!savedUnusedBytes")) return;
    savedUnusedBytes.reset(new U8BitT[maxUnusedBytes]);
    std::copy_n(unusedBytes.get(), numUnusedBytes, savedUnusedBytes.get());
    numSavedUnusedBytes = numUnusedBytes;
}

void UnusedByteBufferC::restoreUnusedBytes()
{
    if (!TVX_CHECK(savedUnusedBytes, "savedUnusedBytes")) return;
    unusedBytes = std::move(savedUnusedBytes);
    numUnusedBytes = numSavedUnusedBytes;
}

size_t TextDecoderWithUnusedBytesC::decodedLength(const U8BitT* in, size_t n)
{
    size_t length = 0;
    saveUnusedBytes();
    takePiece(in, n, [&](const U8BitT* p, size_t count) {
        size_t consumed = 0;
        length += decodedLengthWithFullCharAtStart(p, count, &consumed);
        return consumed;
    });
    restoreUnusedBytes();
    return length;
}

size_t TextDecoderWithUnusedBytesC::decodeBytes(const U8BitT* in, size_t n, UTF8T* out, size_t outSize,
                                                size_t* numChars)
{
    size_t written = 0;
    size_t chars = 0;
    takePiece(in, n, [&](const U8BitT* p, size_t count) {
        size_t consumed = 0;
        size_t decoded = 0;
        written += decodeBytesWithFullCharAtStart(p, count, &consumed, out + written, outSize - written, &decoded);
        chars += decoded;
        return consumed;
    });
    if (numChars != nullptr) *numChars = chars;
    return written;
}

// Formats that need no state of their own

namespace {

size_t lengthOfWholeChars(FormatT format, const U8BitT* in, size_t n, size_t* consumed)
{
    const ResultT result = transcode::toUtf8Length(format, in, n);
    *consumed = result.consumed;
    return result.written;
}

size_t decodeWholeChars(FormatT format, const U8BitT* in, size_t n, size_t* consumed, UTF8T* out, size_t outSize,
                        size_t* numChars)
{
    const ResultT result = transcode::toUtf8(format, in, n, out, outSize);
    *consumed = result.consumed;
    *numChars = result.chars;
    return result.written;
}

}   // namespace

template <FormatT FORMAT>
size_t FormatDecoderM<FORMAT>::decodedLengthWithFullCharAtStart(const U8BitT* in, size_t n, size_t* consumed)
{
    return lengthOfWholeChars(FORMAT, in, n, consumed);
}

template <FormatT FORMAT>
size_t FormatDecoderM<FORMAT>::decodeBytesWithFullCharAtStart(const U8BitT* in, size_t n, size_t* consumed, UTF8T* out,
                                                              size_t outSize, size_t* numChars)
{
    return decodeWholeChars(FORMAT, in, n, consumed, out, outSize, numChars);
}

template class FormatDecoderM<FormatT::UTF8>;
template class FormatDecoderM<FormatT::WIDE>;

// UTF-16

UTF16TextDecoderC::UTF16TextDecoderC(TextEncodingI* from)
    : TextDecoderWithUnusedBytesC(transcode::keptCapacity(FormatT::UTF16)), encoding(from)
{
}

FormatT UTF16TextDecoderC::format() const
{
    if (encoding == TextEncodingI::UTF16()) return FormatT::UTF16;
    return encoding == UTF16EncodingNeedingSwab() ? FormatT::UTF16BE : FormatT::UTF16LE;
}

size_t UTF16TextDecoderC::skipPreamble(const U8BitT* in, size_t n)
{
    if (!m_atFront || n < sizeof(UTF16T)) return 0;
    m_atFront = false;
    const transcode::Utf16StartT start = transcode::utf16Start(format(), in);
    if (encoding == TextEncodingI::UTF16()) {
        encoding = start.order == FormatT::UTF16BE ? UTF16EncodingNeedingSwab() : UTF16EncodingNotNeedingSwab();
    }
    return start.markSize;
}

size_t UTF16TextDecoderC::decodedLength(const U8BitT* in, size_t n)
{
    TextEncodingI* const before = encoding;
    m_atFront = true;
    const size_t length = TextDecoderWithUnusedBytesC::decodedLength(in, n);
    encoding = before;
    return length;
}

size_t UTF16TextDecoderC::decodeBytes(const U8BitT* in, size_t n, UTF8T* out, size_t outSize, size_t* numChars)
{
    m_atFront = true;
    return TextDecoderWithUnusedBytesC::decodeBytes(in, n, out, outSize, numChars);
}

size_t UTF16TextDecoderC::charLen(const U8BitT* p, size_t available)
{
    const bool isKnown = available >= sizeof(UTF16T);
    return transcode::charLen(isKnown ? transcode::utf16Start(format(), p).order : FormatT::UTF16, p, available);
}

size_t UTF16TextDecoderC::decodedLengthWithFullCharAtStart(const U8BitT* in, size_t n, size_t* consumed)
{
    const size_t skipped = skipPreamble(in, n);
    const size_t length = lengthOfWholeChars(format(), in + skipped, n - skipped, consumed);
    *consumed += skipped;
    return length;
}

size_t UTF16TextDecoderC::decodeBytesWithFullCharAtStart(const U8BitT* in, size_t n, size_t* consumed, UTF8T* out,
                                                         size_t outSize, size_t* numChars)
{
    const size_t skipped = skipPreamble(in, n);
    const size_t written = decodeWholeChars(format(), in + skipped, n - skipped, consumed, out, outSize, numChars);
    *consumed += skipped;
    return written;
}
