// utfkernels.h: the fast scans and conversions that decoders, encoders and string bodies share.
//
// "Well-formed" UTF-8 means: characters of 1 to 4 bytes in their shortest form, surrogate values
// included. That is what a read with UTF8Get and a write with UTF8Put leave as it is, without an
// assertion. Nothing outside the given bytes is read, and no byte outside the given room is written.
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_STRING_UTFKERNELS_H
#define TVXCMN_STRING_UTFKERNELS_H

#include "basetypes.h"

namespace utfkernels {

// The length in bytes of the longest well-formed prefix of whole characters; *chars (may be null) gets
// the number of its characters.
size_t validPrefix(const UTF8T* in, size_t n, size_t* chars);

// The number of bytes that begin a character. In well-formed text: the number of characters.
size_t countChars(const UTF8T* in, size_t n);

// The byte offset of the character that follows the first `chars` characters of well-formed text; `n`
// when there are no more. *missing (may be null) gets the number of characters that were missing.
size_t advance(const UTF8T* in, size_t n, size_t chars, size_t* missing);

// The number of bytes before the first one above 0x7F, and the number of those above it.
size_t asciiPrefix(const UTF8T* in, size_t n);
size_t countHigh(const UTF8T* in, size_t n);
// The number of bytes before the first place where two texts of `n` bytes are not both ASCII, or differ by
// more than case.
size_t equalCIPrefix(const UTF8T* a, const UTF8T* b, size_t n);

// How far a kernel came.
struct ProgressT {
    size_t consumed = 0;   // bytes of the input
    size_t written = 0;    // bytes of the output
    size_t chars = 0;      // characters; told where the output is UTF-8
};

// Each converts as many whole characters as are well-formed in both forms and fit, and leaves what comes
// then to the caller, who knows what it means. Well-formed UTF-16 has no lone surrogate, except where
// it is written from UTF-8 that holds one; a wide character is below 0x200000. Neither needs alignment.
// `swap` stands for UTF-16 in the other byte order than the machine's. The ...Length forms write nothing.
ProgressT utf8ToLatin1(const UTF8T* in, size_t n, U8BitT* out, size_t outSize);
ProgressT utf8ToUtf16(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool swap);
ProgressT utf8ToUtf16Length(const UTF8T* in, size_t n);
ProgressT utf8ToWide(const UTF8T* in, size_t n, U8BitT* out, size_t outSize);
ProgressT latin1ToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize);
ProgressT utf16ToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize, bool swap);
ProgressT utf16ToUtf8Length(const U8BitT* in, size_t n, bool swap);
ProgressT wideToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize);
ProgressT wideToUtf8Length(const U8BitT* in, size_t n);

}   // namespace utfkernels

#endif   // TVXCMN_STRING_UTFKERNELS_H
