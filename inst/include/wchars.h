// wchars.h: reading and writing one wide character, which is one 4-byte unit holding the character's
// value, whatever it is.
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_WCHARS_H
#define TVXCMN_WCHARS_H

#include "basetypes.h"

static_assert(sizeof(wchar_t) == sizeof(UCS4), "a wide character is one character");

// How many units the character takes: always 1.
inline size_t WCharLen(UCS4) { return 1; }
inline size_t WCharLen(const wchar_t*) { return 1; }

// Write or read the character at `p` and advance `p` past it. wchar_t is signed on some machines; the
// value is taken as unsigned everywhere.
inline void WCharPut(wchar_t*& p, UCS4 ch) { *p++ = static_cast<wchar_t>(ch); }
inline UCS4 WCharGet(const wchar_t*& p) { return static_cast<UCS4>(*p++); }

#endif   // TVXCMN_WCHARS_H
