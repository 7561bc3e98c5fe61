// utfvectors.h: the kernels of utfkernels.h sixteen bytes at a time.
//
// Each does as much of its job as goes in whole vectors and stops at a character boundary, wherever it
// likes; the portable code goes on from there, and alone decides what is well-formed and what fits.
// They exist only where TVX_SIMD is 1 and may be called only if simd::isAvailable().
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_STRING_UTFVECTORS_H
#define TVXCMN_STRING_UTFVECTORS_H

#include "utfkernels.h"

namespace utfvectors {

using utfkernels::ProgressT;

const size_t BLOCK = 64;   // bytes of UTF-8 that are looked at together

// utfscan.cpp: looking at UTF-8.

// The number of bytes passed, all of them ASCII.
size_t asciiPrefix(const UTF8T* in, size_t n);
// The number of bytes passed, all of them ASCII and equal but for their case.
size_t equalCIPrefix(const UTF8T* a, const UTF8T* b, size_t n);
// The number of bytes above 0x7F, and of those that begin a character, in the first `at` bytes: all that
// make whole blocks, or for `advance` those before the block in which the count would pass `chars`.
struct CountT {
    size_t at = 0;
    size_t count = 0;
};
CountT countHigh(const UTF8T* in, size_t n);
CountT countChars(const UTF8T* in, size_t n);
CountT advance(const UTF8T* in, size_t n, size_t chars);
// `written` is the number of bytes that the prefix takes in UTF-16.
ProgressT validPrefix(const UTF8T* in, size_t n);
ProgressT utf8ToUtf16Length(const UTF8T* in, size_t n);

// utfdecode.cpp: from UTF-8.
ProgressT utf8ToLatin1(const UTF8T* in, size_t n, U8BitT* out, size_t outSize);
ProgressT utf8ToUtf16(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool swap);
ProgressT utf8ToWide(const UTF8T* in, size_t n, U8BitT* out, size_t outSize);

// utfencode.cpp: to UTF-8.
ProgressT latin1ToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize);
ProgressT utf16ToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize, bool swap);
ProgressT utf16ToUtf8Length(const U8BitT* in, size_t n, bool swap);
ProgressT wideToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize);
ProgressT wideToUtf8Length(const U8BitT* in, size_t n);

}   // namespace utfvectors

#endif   // TVXCMN_STRING_UTFVECTORS_H
