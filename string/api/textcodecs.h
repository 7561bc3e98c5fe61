// textcodecs.h: the decoders and encoders behind textencoding.h.
//
// What is common to all of them: whole characters are converted by transcode.h; what is cut at the end
// of a piece is kept in a small buffer and completed from the front of the next piece, so that a text
// gives the same result however it is cut.
//
// Thread safety: unlocked.
#ifndef TVXCMN_STRING_TEXTCODECS_H
#define TVXCMN_STRING_TEXTCODECS_H

#include "textencoding.h"
#include "transcode.h"

#include <memory>

// The bytes of one incomplete character.
//
// Invariants: numUnusedBytes <= maxUnusedBytes; savedUnusedBytes is null except while a length is
// computed.
class UnusedByteBufferC {
public:
    explicit UnusedByteBufferC(size_t capacity);
    virtual ~UnusedByteBufferC() = default;

protected:
    // How many bytes the character needs that starts at `p`; never more than the capacity.
    virtual size_t charLen(const U8BitT* p, size_t available) = 0;

    // Puts the front of a piece behind the kept bytes, without counting it yet, and returns how many of
    // its bytes belong to the character that the kept bytes begin: all, if it stays incomplete.
    size_t prepareFirstCharForDecoding(const U8BitT* in, size_t n);

    // Keeps further bytes; what does not fit is an assertion, and dropped.
    void storeUnusedBytes(const U8BitT* in, size_t unusedCount);
    void clearUnusedBytes() { numUnusedBytes = 0; }
    // Drops bytes from the front.
    // Requires: no more than there are ("count <= numUnusedBytes"). Otherwise: drops all.
    void consumeUnusedBytes(size_t count);

    // Set the state aside and put it back.
    // Requires: not set aside ("!savedUnusedBytes"); set aside ("savedUnusedBytes"). Otherwise: the
    // state that was set aside first stays; nothing.
    void saveUnusedBytes();
    void restoreUnusedBytes();

    // Takes one piece: convert(p, count) converts the whole characters at `p` and returns the number of
    // bytes that it consumed. First the character that was cut before, then the rest of the piece.
    template <class ConvertT>
    void takePiece(const U8BitT* in, size_t n, ConvertT convert)
    {
        while (numUnusedBytes > 0) {
            const size_t belonging = prepareFirstCharForDecoding(in, n);
            const size_t consumed = convert(unusedBytes.get(), numUnusedBytes + belonging);
            if (consumed == 0) break;   // still incomplete, or no room
            if (consumed < numUnusedBytes) {
                // Malformed: the bytes that are left begin another character.
                consumeUnusedBytes(consumed);
                continue;
            }
            in += consumed - numUnusedBytes;
            n -= consumed - numUnusedBytes;
            clearUnusedBytes();
        }
        const size_t consumed = numUnusedBytes == 0 ? convert(in, n) : 0;
        storeUnusedBytes(in + consumed, n - consumed);
    }

private:
    std::unique_ptr<U8BitT[]> unusedBytes;
    size_t numUnusedBytes;
    const size_t maxUnusedBytes;
    std::unique_ptr<U8BitT[]> savedUnusedBytes;
    size_t numSavedUnusedBytes;
};

// A decoder that can meet a cut character.
class TextDecoderWithUnusedBytesC : public UnusedByteBufferC, public TextDecoderI {
public:
    size_t decodedLength(const U8BitT* in, size_t n) override;
    size_t decodeBytes(const U8BitT* in, size_t n, UTF8T* out, size_t outSize, size_t* numChars) override;

protected:
    using UnusedByteBufferC::UnusedByteBufferC;

    // Decode whole characters only. *consumed gets the number of input bytes, *numChars that of characters.
    virtual size_t decodedLengthWithFullCharAtStart(const U8BitT* in, size_t n, size_t* consumed) = 0;
    virtual size_t decodeBytesWithFullCharAtStart(const U8BitT* in, size_t n, size_t* consumed, UTF8T* out,
                                                  size_t outSize, size_t* numChars) = 0;
};

// An encoder; its input is always UTF-8 and may be cut.
class FromUTF8TextEncoderC : public UnusedByteBufferC, public TextEncoderI {
public:
    size_t encodedLength(const UTF8T* in, size_t n) override;
    size_t encode(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool* wasLossy) override;

protected:
    FromUTF8TextEncoderC();
    size_t charLen(const U8BitT* p, size_t available) override;

    // Encode whole characters only. *consumed gets the number of input bytes; *wasLossy is set when a
    // character could not be represented.
    virtual size_t encodedLengthWithFullCharAtStart(const UTF8T* in, size_t n, size_t* consumed) = 0;
    virtual size_t encodeWithFullCharAtStart(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool* wasLossy,
                                             size_t* consumed) = 0;
};

// A decoder of a format that needs to know nothing else.
template <transcode::FormatT FORMAT>
class FormatDecoderM : public TextDecoderWithUnusedBytesC {
public:
    explicit FormatDecoderM(TextEncodingI* from)
        : TextDecoderWithUnusedBytesC(transcode::keptCapacity(FORMAT)), encoding(from)
    {
    }
    TextEncodingI* fromEncoding() override { return encoding; }
    size_t maxDecodedLength(size_t n) override { return transcode::maxDecodedLength(FORMAT, n); }

protected:
    size_t charLen(const U8BitT* p, size_t available) override { return transcode::charLen(FORMAT, p, available); }
    size_t decodedLengthWithFullCharAtStart(const U8BitT* in, size_t n, size_t* consumed) override;
    size_t decodeBytesWithFullCharAtStart(const U8BitT* in, size_t n, size_t* consumed, UTF8T* out, size_t outSize,
                                          size_t* numChars) override;

private:
    TextEncodingI* const encoding;
};

typedef FormatDecoderM<transcode::FormatT::UTF8> UTF8TextDecoderC;
typedef FormatDecoderM<transcode::FormatT::WIDE> WCharTextDecoderC;

class UTF16TextDecoderC : public TextDecoderWithUnusedBytesC {
public:
    explicit UTF16TextDecoderC(TextEncodingI* from);
    // UTF16LE() or UTF16BE() once the first unit has settled the order.
    TextEncodingI* fromEncoding() override { return encoding; }
    size_t maxDecodedLength(size_t n) override { return transcode::maxDecodedLength(transcode::FormatT::UTF16, n); }
    size_t decodedLength(const U8BitT* in, size_t n) override;
    size_t decodeBytes(const U8BitT* in, size_t n, UTF8T* out, size_t outSize, size_t* numChars) override;

protected:
    size_t charLen(const U8BitT* p, size_t available) override;
    size_t decodedLengthWithFullCharAtStart(const U8BitT* in, size_t n, size_t* consumed) override;
    size_t decodeBytesWithFullCharAtStart(const U8BitT* in, size_t n, size_t* consumed, UTF8T* out, size_t outSize,
                                          size_t* numChars) override;

private:
    transcode::FormatT format() const;
    // At the front of a piece, settles the order and returns the size of the byte-order mark; else 0.
    size_t skipPreamble(const U8BitT* in, size_t n);

    TextEncodingI* encoding;
    bool m_atFront = false;   // no unit of the piece has been looked at yet
};

// A decoder of a format of single bytes: nothing can be cut, so a piece is a whole text.
template <transcode::FormatT FORMAT>
class ByteDecoderM : public TextDecoderI {
public:
    explicit ByteDecoderM(TextEncodingI* from) : encoding(from) {}
    TextEncodingI* fromEncoding() override { return encoding; }
    size_t maxDecodedLength(size_t n) override { return transcode::maxDecodedLength(FORMAT, n); }
    size_t decodedLength(const U8BitT* in, size_t n) override { return transcode::decodedLength(FORMAT, in, n); }
    size_t decodeBytes(const U8BitT* in, size_t n, UTF8T* out, size_t outSize, size_t* numChars) override
    {
        return transcode::decode(FORMAT, in, n, out, outSize, numChars);
    }

private:
    TextEncodingI* const encoding;
};

typedef ByteDecoderM<transcode::FormatT::ASCII> ASCIITextDecoderC;
typedef ByteDecoderM<transcode::FormatT::LATIN1> Latin1TextDecoderC;

// An encoder of a format that needs to know nothing else.
template <transcode::FormatT FORMAT>
class FormatEncoderM : public FromUTF8TextEncoderC {
public:
    explicit FormatEncoderM(TextEncodingI* to) : encoding(to) {}
    TextEncodingI* toEncoding() override { return encoding; }

protected:
    size_t encodedLengthWithFullCharAtStart(const UTF8T* in, size_t n, size_t* consumed) override;
    size_t encodeWithFullCharAtStart(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool* wasLossy,
                                     size_t* consumed) override;

private:
    TextEncodingI* const encoding;
};

typedef FormatEncoderM<transcode::FormatT::ASCII> ASCIITextEncoderC;
typedef FormatEncoderM<transcode::FormatT::LATIN1> Latin1TextEncoderC;
typedef FormatEncoderM<transcode::FormatT::WIDE> WCharTextEncoderC;

class UTF16TextEncoderC : public FromUTF8TextEncoderC {
public:
    explicit UTF16TextEncoderC(TextEncodingI* to) : encoding(to) {}
    TextEncodingI* toEncoding() override { return encoding; }

protected:
    size_t encodedLengthWithFullCharAtStart(const UTF8T* in, size_t n, size_t* consumed) override;
    size_t encodeWithFullCharAtStart(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool* wasLossy,
                                     size_t* consumed) override;

private:
    transcode::FormatT format() const;

    TextEncodingI* const encoding;
};

// UTF-8 to UTF-8 is what the decoder does: it checks, and writes shortest forms.
class UTF8TextEncoderC : public TextEncoderI {
public:
    explicit UTF8TextEncoderC(TextEncodingI* to) : decoder(new UTF8TextDecoderC(to)) {}
    TextEncodingI* toEncoding() override { return decoder->fromEncoding(); }
    size_t encodedLength(const UTF8T* in, size_t n) override { return decoder->decodedLength(in, n); }
    size_t encode(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool* wasLossy) override;

private:
    const std::unique_ptr<UTF8TextDecoderC> decoder;
};

#endif   // TVXCMN_STRING_TEXTCODECS_H
