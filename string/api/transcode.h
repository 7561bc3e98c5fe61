// transcode.h: conversion between UTF-8 and the other forms of text, without any state.
//
// Each conversion runs in turns: a kernel takes the longest stretch of well-formed text, then one
// character goes through the exact routines of utf8.h, utf16.h and wchars.h, which know what malformed
// text becomes and what asserts. So the fast way never decides what a result is.
//
// Two layers. fromUtf8 and toUtf8 convert whole characters only and tell how far they came: decoders
// and encoders, which keep what is cut, stand on them. encode and decode do at once what a fresh encoder
// or decoder of an encoding does with one piece, with the same results and the same assertions.
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_STRING_TRANSCODE_H
#define TVXCMN_STRING_TRANSCODE_H

#include "basetypes.h"

namespace transcode {

enum class FormatT {
    ASCII,
    LATIN1,
    UTF8,
    UTF16,   // the machine's order, which is little-endian; a decoder looks for a byte-order mark
    UTF16LE,
    UTF16BE,
    WIDE,
};

struct ResultT {
    size_t consumed = 0;   // bytes of the input
    size_t written = 0;    // bytes of the output
    size_t chars = 0;      // told where the output is UTF-8
    bool lossy = false;    // a character could not be represented
};

// The whole characters of UTF-8 in another format, or UTF-8 itself. Stops at a character that is cut or
// does not fit. The ...Length forms write nothing and have room for everything; they do not tell
// `lossy`.
ResultT fromUtf8Length(FormatT to, const UTF8T* in, size_t n);
ResultT fromUtf8(FormatT to, const UTF8T* in, size_t n, U8BitT* out, size_t outSize);

// The same the other way. UTF16 is taken as UTF16LE and a byte-order mark as a character.
// ASCII and LATIN1 report all of the input as consumed and counted, even when the output filled up.
ResultT toUtf8Length(FormatT from, const U8BitT* in, size_t n);
ResultT toUtf8(FormatT from, const U8BitT* in, size_t n, UTF8T* out, size_t outSize);

// How many bytes the character that begins at `p` needs. The full capacity of its decoder's buffer when
// less than a unit is available.
size_t charLen(FormatT format, const U8BitT* p, size_t available);

// A bound for the UTF-8 size of a piece of `n` bytes.
size_t maxDecodedLength(FormatT format, size_t n);
// How many bytes of a cut character a decoder of the format keeps. 0: nothing can be cut.
size_t keptCapacity(FormatT format);
// How many of `count` further bytes can be kept beside `kept` ones.
// Requires: all of them ("(numUnusedBytes + unusedCount) <= maxUnusedBytes"). Otherwise: as many as fit.
size_t storable(size_t kept, size_t count, size_t capacity);

// What a UTF-16 decoder finds at the front of a piece: its byte order (of FormatT::UTF16 settled by the
// first unit), and the size of a byte-order mark in that order, which is dropped.
struct Utf16StartT {
    FormatT order;
    size_t markSize;
};
// Requires: n is at least 2.
Utf16StartT utf16Start(FormatT format, const U8BitT* in);

// As a new encoder: encodedLength and encode of one piece. *lossy may be null.
size_t encodedLength(FormatT to, const UTF8T* in, size_t n);
size_t encode(FormatT to, const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool* lossy);

// As a new decoder: decodedLength and decodeBytes of one piece. *numChars may be null.
size_t decodedLength(FormatT from, const U8BitT* in, size_t n);
size_t decode(FormatT from, const U8BitT* in, size_t n, UTF8T* out, size_t outSize, size_t* numChars);

}   // namespace transcode

#endif   // TVXCMN_STRING_TRANSCODE_H
