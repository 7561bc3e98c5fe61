// utf16.h: reading and writing one character of UTF-16.
//
// Units are in the machine's byte order, or in the other one where `swap` is true. Pointers must be
// aligned to a unit.
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_UTF16_H
#define TVXCMN_UTF16_H

#include "basetypes.h"

// The unit with its two bytes exchanged.
inline UTF16T OSASwap16(UTF16T unit) { return __builtin_bswap16(unit); }

// Any surrogate; a high one, which begins a pair; a low one, which ends it.
inline bool UTF16IsSurrogate(UCS4 unit) { return (unit & 0xF800) == 0xD800; }
inline bool UTF16Is1st(UCS4 unit) { return (unit & 0xFC00) == 0xD800; }
inline bool UTF16Is2nd(UCS4 unit) { return (unit & 0xFC00) == 0xDC00; }

// How many units the character takes.
// Requires: ch is at most 0x10FFFF ("UCS4IsUnicode(ch)"). Otherwise: 1, that of U+FFFD.
size_t UTF16Len(UCS4 ch);
// How many units the character that begins at `p` announces: 2 for a high surrogate, else 1.
inline size_t UTF16Len(const UTF16T* p, bool swap = false) { return UTF16Is1st(swap ? OSASwap16(*p) : *p) ? 2 : 1; }

// Writes the character at `p` and advances `p` past it. Lone surrogate values pass through.
// Requires: ch is at most 0x10FFFF ("UCS4IsUnicode(ch)"). Otherwise: writes U+FFFD.
void UTF16Put(UTF16T*& p, UCS4 ch, bool swap = false);

// Reads the character at `p` and advances `p` past it. The unit after a high surrogate is looked at.
// Requires: a low surrogate only after a high one ("UTF16Is1st(c1)"), a high one only before a low one
// ("UTF16Is2nd(c2)"). Otherwise: U+FFFD, one unit further.
UCS4 UTF16Get(const UTF16T*& p, bool swap = false);

#endif   // TVXCMN_UTF16_H
