// utf8.h: reading and writing one character of UTF-8.
//
// The form is the original one of up to six bytes a character, which holds every 31-bit value.
// Overlong forms and surrogate values are read like any other; the shortest form is written.
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_UTF8_H
#define TVXCMN_UTF8_H

#include "basetypes.h"

// True unless the byte continues a character.
inline bool UTF8Is1st(UTF8T byte) { return (byte & 0xC0) != 0x80; }

// How many bytes the character that begins at `p` announces: 1 to 6. Only the first byte is looked at;
// one that cannot begin a character (0x80 to 0xBF, 0xFE, 0xFF) announces 1.
inline size_t UTF8Len(const UTF8T* p)
{
    if (*p < 0xC0 || *p >= 0xFE) return 1;
    return static_cast<size_t>(__builtin_clz(~(static_cast<unsigned>(*p) << 24)));
}

// How many bytes UTF8Put writes.
// Requires: ch is at most 0x7FFFFFFF ("ch <= 0x7FFFFFFF"). Otherwise: 0.
size_t UTF8Len(UCS4 ch);

// UTF8Put and UTF8Get for everything but ASCII.
void UTF8PutLong(UTF8T*& p, UCS4 ch);
UCS4 UTF8GetLong(const UTF8T*& p);

// Writes the character at `p` and advances `p` past it. A value above 0x7FFFFFFF has no form: nothing
// is written.
inline void UTF8Put(UTF8T*& p, UCS4 ch)
{
    if (ch < 0x80) {
        *p++ = static_cast<UTF8T>(ch);
    } else {
        UTF8PutLong(p, ch);
    }
}

// Reads the character at `p` and advances `p` past it. Bytes are looked at in order, and none beyond the
// first that does not belong, so a terminated text is never left.
// Requires: a byte that begins a character ("non-utf8 in string") and as many continuation bytes as it
// announces ("!UTF8Is1st(cp[1]) && ..."). Otherwise: U+FFFD, and `p` stands after the bad byte, or after
// the first byte and the continuation bytes that do follow it.
inline UCS4 UTF8Get(const UTF8T*& p)
{
    if (*p < 0x80) return *p++;
    return UTF8GetLong(p);
}

#endif   // TVXCMN_UTF8_H
