// cstrings.h: small helpers for NUL-terminated texts. They look at ASCII only, whatever the locale.
#ifndef TVXCMN_CSTRINGS_H
#define TVXCMN_CSTRINGS_H

#include <cstddef>

// A copy of `text` in a new array that the caller deletes with delete[]; of null, null.
[[nodiscard]] char* StrDuplicate(const char* text);

// Compares without regard to the case of A to Z: below 0, 0 or above 0, as strcmp. StrCompareCIN looks
// at the first `n` bytes at most. Null is taken as the empty text.
[[nodiscard]] int StrCompareCI(const char* a, const char* b);
[[nodiscard]] int StrCompareCIN(const char* a, const char* b, size_t n);

// Removes white space (space, \t, \n, \v, \f, \r) in place from the front, the end or both, and returns
// `text`. Null gives null.
char* StrTrimLeft(char* text);
char* StrTrimRight(char* text);
char* StrTrim(char* text);

#endif   // TVXCMN_CSTRINGS_H
