// ucs4.h: what one character is: its range, digit value, class and case.
//
// A character is any 31-bit value; code points are those up to 0x10FFFF. Case and classes are those of
// Unicode 3.0, frozen so that no result changes with the machine's Unicode data, and know the Basic
// Multilingual Plane only.
//
// Thread safety: pure functions on constant tables, any thread.
#ifndef TVXCMN_UCS4_H
#define TVXCMN_UCS4_H

#include "basetypes.h"

inline bool UCS4IsASCII(UCS4 ch) { return ch <= 0x7F; }
inline bool UCS4IsLatin1(UCS4 ch) { return ch <= 0xFF; }
inline bool UCS4IsUnicode(UCS4 ch) { return ch <= 0x10FFFF; }
// A wide character holds any value.
inline bool UCS4IsWChar(UCS4) { return true; }

// The value 0 to 9 of a decimal digit of any script, -1 for every other character.
int UCS4Digit(UCS4 ch);
// Both mean: UCS4Digit is not -1.
bool UCS4IsDecimal(UCS4 ch);
bool UCS4IsNumeric(UCS4 ch);

// A letter of a script that knows case. Letters of other scripts (Hebrew, Arabic, kana) and ideographs
// are none.
bool UCS4IsAlphabetic(UCS4 ch);
bool UCS4IsIdeographic(UCS4 ch);

// The simple mapping to another case; a character without one comes back unchanged.
UCS4 UCS4ToLower(UCS4 ch);
UCS4 UCS4ToUpper(UCS4 ch);
UCS4 UCS4ToTitle(UCS4 ch);

#endif   // TVXCMN_UCS4_H
