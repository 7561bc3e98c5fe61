// textencoding.h: conversion between UTF-8, the form of all text inside the library, and the external
// encodings, in pieces of any size.
//
// An encoding hands out decoders (external bytes to UTF-8) and encoders (UTF-8 to external bytes). Both
// keep a character that is cut at the end of a piece and complete it with the next piece. What an
// output buffer cannot hold is not an error: conversion stops at the last whole character that fits,
// and no more is kept of the rest than one character's bytes ("(numUnusedBytes + unusedCount) <=
// maxUnusedBytes" when that is too little), so size the output by decodedLength or encodedLength.
//
// Malformed input and characters that an encoding cannot hold are assertions. When assertions continue,
// each becomes U+FFFD; in "ascii" and "iso-8859-1" output it becomes "~".
//
// Thread safety: encodings are immutable, any thread, first call included. Decoders and encoders are
// unlocked.
// Ownership: encodings live for ever; each linked image has its own, so they are not to be compared
// across images. Decoders and encoders belong to whoever asked for them.
#ifndef TVXCMN_TEXTENCODING_H
#define TVXCMN_TEXTENCODING_H

#include "basetypes.h"

class TextDecoderI;
class TextEncoderI;

class TextEncodingI {
public:
    static TextEncodingI* ASCII();
    static TextEncodingI* SYS8();   // the system's 8-bit encoding: UTF-8 without a byte-order mark
    static TextEncodingI* LATIN1();
    static TextEncodingI* UTF8();
    // UTF-16 in the machine's byte order. Its decoder takes the order from a byte-order mark, if one
    // comes first, and is from then on a decoder of UTF16LE or UTF16BE.
    static TextEncodingI* UTF16();
    static TextEncodingI* UTF16BE();
    static TextEncodingI* UTF16LE();
    static TextEncodingI* WCHAR();   // 4-byte wide characters in the machine's byte order

    virtual ~TextEncodingI() = default;

    // A new decoder or encoder, which the caller deletes.
    [[nodiscard]] virtual TextDecoderI* getDecoder() = 0;
    [[nodiscard]] virtual TextEncoderI* getEncoder() = 0;
    // The byte-order mark that files in this encoding may begin with, or null; *length (may be null) is
    // set to its size in bytes.
    virtual const U8BitT* getPreamble(size_t* length) = 0;
    // The size in bytes of one code unit, which is also that of the terminator of an encoded text.
    virtual size_t getCodeUnitLength() = 0;
};

// The UTF-16 encodings whose byte order is not, and is, the machine's.
TextEncodingI* UTF16EncodingNeedingSwab();
TextEncodingI* UTF16EncodingNotNeedingSwab();

class TextDecoderI {
public:
    virtual ~TextDecoderI() = default;

    // The encoding that is decoded.
    virtual TextEncodingI* fromEncoding() = 0;
    // A bound for the UTF-8 size of a piece of `n` bytes. What was kept of the piece before adds to it: a
    // character of up to 6 bytes, or up to 18 bytes when it proves malformed.
    virtual size_t maxDecodedLength(size_t n) = 0;
    // The number of bytes that decodeBytes would write for this piece, given room. Changes nothing.
    virtual size_t decodedLength(const U8BitT* in, size_t n) = 0;
    // Decodes the next piece into `out` of `outSize` bytes and returns the number of bytes written;
    // *numChars (may be null) is set to the number of characters. "ascii" and "iso-8859-1" count the
    // whole piece, also when the output filled up first. A UTF-16 decoder drops a byte-order mark in its
    // own order at the front of every piece.
    virtual size_t decodeBytes(const U8BitT* in, size_t n, UTF8T* out, size_t outSize, size_t* numChars) = 0;
};

class TextEncoderI {
public:
    virtual ~TextEncoderI() = default;

    // The encoding that is written.
    virtual TextEncodingI* toEncoding() = 0;
    // The number of bytes that encode would write for this piece, given room. Changes nothing.
    virtual size_t encodedLength(const UTF8T* in, size_t n) = 0;
    // Encodes the next piece into `out` of `outSize` bytes and returns the number of bytes written, whole
    // code units only; *wasLossy (may be null) tells whether a character could not be represented.
    virtual size_t encode(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool* wasLossy) = 0;
};

#endif   // TVXCMN_TEXTENCODING_H
