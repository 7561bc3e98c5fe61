// quicksort.h: the library's sort, of an array of elements of any size through a comparison.
//
// Thread safety: unlocked; it touches nothing but the array.
#ifndef TVXCMN_QUICKSORT_H
#define TVXCMN_QUICKSORT_H

#include <cstddef>

// Below 0 when `a` comes before `b`; any other value is "not before". `ctx` is what the caller of the
// sort gave. `a` and `b` point at elements, or at a copy of one that lasts for the call only.
typedef int (*SortCompareT)(void* ctx, const void* a, const void* b);

// Sorts `count` elements of `size` bytes at `base` in place. Elements are moved by copying their bytes.
// Equal elements end up in any order. Comparisons are in the order of count * log(count) for every
// input, and of count for one that is in order already, forwards or backwards. A comparison that
// contradicts itself leaves the elements in some order and does no other harm.
void quicksort(void* base, size_t count, size_t size, SortCompareT cmp, void* ctx);

#endif   // TVXCMN_QUICKSORT_H
