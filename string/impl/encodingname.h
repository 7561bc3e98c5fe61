// encodingname.h: what the names of the encodings stand for.
#ifndef TVXCMN_STRING_IMPL_ENCODINGNAME_H
#define TVXCMN_STRING_IMPL_ENCODINGNAME_H

#include "string/api/transcode.h"
#include "stringc.h"

#include <cstddef>

class TextEncodingI;

enum EncodingNameT : unsigned char {
    ENCODING_ASCII,
    ENCODING_SYS8,
    ENCODING_LATIN1,
    ENCODING_UTF8,
    ENCODING_VALID_UTF8,   // the last of the five that hold ASCII as single bytes
    ENCODING_UTF16,
    ENCODING_UTF16BE,
    ENCODING_UTF16LE,
    ENCODING_WCHART,
    ENCODING_UNKNOWN
};

// Whether two names stand for one encoding: equal but for the case bit. Null names none. The end is
// tested before the case bit is masked: a space must not pass for the terminator.
inline bool isSameEncoding(const char* a, const char* b)
{
    if (a == b) return true;
    if (a == nullptr || b == nullptr) return false;
    for (; *a != 0 && *b != 0; ++a, ++b) {
        if (((*a ^ *b) & ~0x20) != 0) return false;
    }
    return *a == *b;
}

// The same for "utf8", which is by far the most frequent.
inline bool isUTF8Name(const char* name)
{
    const auto isSame = [](char a, char b) { return ((a ^ b) & ~0x20) == 0; };
    return name != nullptr && isSame(name[0], 'u') && isSame(name[1], 't') && isSame(name[2], 'f') &&
           isSame(name[3], '8') && name[4] == 0;
}

// The encoding of a name; null is an unknown one.
EncodingNameT encodingNamed(const char* name);

inline bool holdsASCIIAsBytes(EncodingNameT encoding) { return encoding <= ENCODING_VALID_UTF8; }
inline bool isCheckedUTF8(EncodingNameT encoding) { return encoding == ENCODING_UTF8 || encoding == ENCODING_SYS8; }

// Whether there is something to convert: false for ENCODING_VALID_UTF8, which is copied, and for
// ENCODING_UNKNOWN.
inline bool isConvertible(EncodingNameT encoding)
{
    return encoding != ENCODING_VALID_UTF8 && encoding != ENCODING_UNKNOWN;
}

// What follows takes convertible encodings only.
transcode::FormatT formatOf(EncodingNameT encoding);
size_t codeUnitLength(EncodingNameT encoding);   // in bytes; also the terminator's
TextEncodingI* encodingObject(EncodingNameT encoding);

#endif   // TVXCMN_STRING_IMPL_ENCODINGNAME_H
