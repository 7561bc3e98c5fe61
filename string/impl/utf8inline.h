// utf8inline.h: reading and writing one character of UTF-8 inside the loops of this folder.
//
// Characters of up to four bytes are done in place; everything else, malformed text above all, goes
// through the exact routines of utf8.h.
#ifndef TVXCMN_STRING_IMPL_UTF8INLINE_H
#define TVXCMN_STRING_IMPL_UTF8INLINE_H

#include "utf8.h"

#include <cstddef>

// Reads the character at p, which lies before `end`, and moves p behind it.
inline UCS4 readChar(const UTF8T*& p, const UTF8T* end)
{
    const UTF8T first = p[0];
    if (first < 0x80) return *p++;
    if (first >= 0xC0 && first < 0xE0 && end - p >= 2 && !UTF8Is1st(p[1])) {
        const UCS4 ch = (first & 0x1Fu) << 6 | (p[1] & 0x3Fu);
        p += 2;
        return ch;
    }
    if (first >= 0xE0 && first < 0xF0 && end - p >= 3 && !UTF8Is1st(p[1]) && !UTF8Is1st(p[2])) {
        const UCS4 ch = (first & 0xFu) << 12 | (p[1] & 0x3Fu) << 6 | (p[2] & 0x3Fu);
        p += 3;
        return ch;
    }
    if (first >= 0xF0 && first < 0xF8 && end - p >= 4 && !UTF8Is1st(p[1]) && !UTF8Is1st(p[2]) && !UTF8Is1st(p[3])) {
        const UCS4 ch = (first & 0x7u) << 18 | (p[1] & 0x3Fu) << 12 | (p[2] & 0x3Fu) << 6 | (p[3] & 0x3Fu);
        p += 4;
        return ch;
    }
    return UTF8Get(p);
}

// The size of a character in bytes.
inline size_t charSize(UCS4 ch)
{
    return ch < 0x80 ? 1 : ch < 0x800 ? 2 : ch < 0x10000 ? 3 : ch < 0x200000 ? 4 : UTF8Len(ch);
}

// Writes a character and moves p behind it.
inline void writeChar(UTF8T*& p, UCS4 ch)
{
    if (ch < 0x80) {
        *p++ = static_cast<UTF8T>(ch);
    } else if (ch < 0x800) {
        *p++ = static_cast<UTF8T>(0xC0 | ch >> 6);
        *p++ = static_cast<UTF8T>(0x80 | (ch & 0x3F));
    } else if (ch < 0x10000) {
        *p++ = static_cast<UTF8T>(0xE0 | ch >> 12);
        *p++ = static_cast<UTF8T>(0x80 | (ch >> 6 & 0x3F));
        *p++ = static_cast<UTF8T>(0x80 | (ch & 0x3F));
    } else if (ch < 0x200000) {
        *p++ = static_cast<UTF8T>(0xF0 | ch >> 18);
        *p++ = static_cast<UTF8T>(0x80 | (ch >> 12 & 0x3F));
        *p++ = static_cast<UTF8T>(0x80 | (ch >> 6 & 0x3F));
        *p++ = static_cast<UTF8T>(0x80 | (ch & 0x3F));
    } else {
        UTF8Put(p, ch);
    }
}

#endif   // TVXCMN_STRING_IMPL_UTF8INLINE_H
