// utftables.h: the permutations and masks of the kernels that use vectors.
//
// The masks are kept here, where no kernel sees their values: g++ 12 makes a mask that it knows anew from a
// general register wherever it is used, which costs more than what is done with it.
#ifndef TVXCMN_STRING_UTFTABLES_H
#define TVXCMN_STRING_UTFTABLES_H

#include "simd.h"

#if TVX_SIMD
namespace utfvectors {

const size_t VECTOR = sizeof(simd::U8x16);

// Of vectors of sixteen bytes. What they leave behind the last byte that they keep does not matter.
struct PermutationsT {
    // Keep the lanes whose bits are set: eight lanes of two bytes, four of four.
    alignas(VECTOR) unsigned char keepOfEight[256][VECTOR];
    alignas(VECTOR) unsigned char keepOfFour[16][VECTOR];
    // Drop the second bytes of those of eight lanes whose bits are set.
    alignas(VECTOR) unsigned char dropSecond[256][VECTOR];
    // Keep the last bytes of four lanes: two bits a lane, the first lowest, tell how many, less one. And how
    // many that is in all.
    alignas(VECTOR) unsigned char keepLast[256][VECTOR];
    unsigned char keepLastLength[256];
};
extern const PermutationsT PERMUTATIONS;

struct MasksT {
    // Lanes of four bytes that become UTF-8: the largest characters of one, two and three bytes; the payload
    // of the last byte, of the last but one and the one before it, where they stand; and what changes in
    // the marks of the bytes from two to three, and from three to four.
    simd::S32x8 lastOfOne;
    simd::S32x8 lastOfTwo;
    simd::S32x8 lastOfThree;
    simd::U32x8 payload0;
    simd::U32x8 payload1;
    simd::U32x8 payload2;
    simd::U32x8 twoToThree;
    simd::U32x8 threeToFour;
    simd::U32x8 two;
    // UTF-16 units: what makes a surrogate, the two kinds, and its payload; 0x10000 as an upper half.
    simd::U16x8 kind;
    simd::U16x8 high;
    simd::U16x8 low;
    simd::U16x8 payload;
    simd::U16x8 beyond;
    // Marks of the first of two bytes, which are a character or the first or second half of one of four.
    simd::U16x8 firstOfTwo;
    simd::U16x8 firstOfHigh;
    simd::U16x8 firstOfLow;
};
extern const MasksT MASKS;

}   // namespace utfvectors
#endif   // TVX_SIMD

#endif   // TVXCMN_STRING_UTFTABLES_H
