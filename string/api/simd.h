// simd.h: vectors of 16 and 32 bytes, with the few operations that the compilers' own vector types lack.
//
// Arithmetic, comparisons, constant permutations and conversions of lanes are written with the types
// themselves, which g++ and clang translate for every processor. TVX_SIMD is 1 where the rest is there.
// Code that uses it stands between TVX_SIMD_BEGIN and TVX_SIMD_END, after every #include, and is called
// only if simd::isAvailable(); everywhere else the portable code of its caller does the work. A build with
// TVX_SIMD defined as 0 has the portable code alone.
#ifndef TVXCMN_STRING_SIMD_H
#define TVXCMN_STRING_SIMD_H

#include "basetypes.h"

#if defined(TVX_SIMD)
static_assert(TVX_SIMD == 0, "vectors can be turned off, but not on");
#elif defined(__x86_64__)
#define TVX_SIMD 1
#include <immintrin.h>
#if defined(__clang__)
#define TVX_SIMD_BEGIN                                                                                                 \
    _Pragma("clang attribute push(__attribute__((target(\"avx2,bmi,bmi2,popcnt\"))), apply_to = function)")
#define TVX_SIMD_END _Pragma("clang attribute pop")
#else
#define TVX_SIMD_BEGIN _Pragma("GCC push_options") _Pragma("GCC target(\"avx2,bmi,bmi2,popcnt\")")
#define TVX_SIMD_END _Pragma("GCC pop_options")
#endif
#elif defined(__aarch64__)
#define TVX_SIMD 1
#include <arm_neon.h>
#define TVX_SIMD_BEGIN
#define TVX_SIMD_END
#else
#define TVX_SIMD 0
#endif

#if TVX_SIMD
namespace simd {

typedef unsigned char U8x16 __attribute__((vector_size(16)));
typedef unsigned char U8x32 __attribute__((vector_size(32)));
typedef signed char S8x32 __attribute__((vector_size(32)));
typedef unsigned short U16x8 __attribute__((vector_size(16)));
typedef unsigned short U16x16 __attribute__((vector_size(32)));
typedef unsigned int U32x4 __attribute__((vector_size(16)));
typedef unsigned int U32x8 __attribute__((vector_size(32)));
typedef int S32x8 __attribute__((vector_size(32)));
typedef unsigned long U64x2 __attribute__((vector_size(16)));

inline bool isAvailable()
{
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2");
#else
    return true;
#endif
}

TVX_SIMD_BEGIN

// For steps of a loop that must not become calls, which would keep its state in memory.
#define TVX_STEP __attribute__((always_inline)) inline

template <class VectorT>
inline VectorT load(const U8BitT* p)
{
    VectorT v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class VectorT>
inline void store(U8BitT* p, VectorT v)
{
    std::memcpy(p, &v, sizeof v);
}

// The halves of a vector.
inline U8x16 lower(U8x32 v)
{
    return __builtin_shufflevector(v, v, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}
inline U8x16 upper(U8x32 v)
{
    return __builtin_shufflevector(v, v, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31);
}

// Lane i of the result is byte index[i] of `v`, or 0 where index[i] is above 0x7F. Other indexes are
// below 16.
inline U8x16 shuffled(U8x16 v, U8x16 index)
{
#if defined(__x86_64__)
    return U8x16(_mm_shuffle_epi8(__m128i(v), __m128i(index)));
#else
    return U8x16(vqtbl1q_u8(uint8x16_t(v), uint8x16_t(index)));
#endif
}
inline U8x32 joined(U8x16 a, U8x16 b)
{
    return __builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
                                   22, 23, 24, 25, 26, 27, 28, 29, 30, 31);
}
// The same with one vector of bytes for either half of the indexes, and with one of indexes for either half.
inline U8x32 lookedUp(U8x16 table, U8x32 index)
{
#if defined(__x86_64__)
    return U8x32(_mm256_shuffle_epi8(_mm256_broadcastsi128_si256(__m128i(table)), __m256i(index)));
#else
    return joined(shuffled(table, lower(index)), shuffled(table, upper(index)));
#endif
}
inline U8x32 shuffled(U8x32 v, U8x16 index)
{
#if defined(__x86_64__)
    return U8x32(_mm256_shuffle_epi8(__m256i(v), _mm256_broadcastsi128_si256(__m128i(index))));
#else
    return joined(shuffled(lower(v), index), shuffled(upper(v), index));
#endif
}

// One bit for each lane, from its highest bit.
inline unsigned highBits(U8x16 v)
{
#if defined(__x86_64__)
    return static_cast<unsigned>(_mm_movemask_epi8(__m128i(v)));
#else
    const uint8x16_t place = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const uint8x16_t bits = vandq_u8(vreinterpretq_u8_s8(vshrq_n_s8(int8x16_t(v), 7)), place);
    return vaddv_u8(vget_low_u8(bits)) | static_cast<unsigned>(vaddv_u8(vget_high_u8(bits))) << 8;
#endif
}
inline unsigned highBits(U8x32 v)
{
#if defined(__x86_64__)
    return static_cast<unsigned>(_mm256_movemask_epi8(__m256i(v)));
#else
    return highBits(lower(v)) | highBits(upper(v)) << 16;
#endif
}

// Is any bit set?
inline bool any(U8x16 v) { return highBits(U8x16(v == 0)) != 0xFFFF; }
inline bool any(U8x32 v) { return highBits(U8x32(v == 0)) != 0xFFFFFFFF; }

// The bytes `N` places before those of `v`, which follows `before`.
template <int N>
inline U8x32 behind(U8x32 before, U8x32 v)
{
    return __builtin_shufflevector(before, v, 32 - N, 33 - N, 34 - N, 35 - N, 36 - N, 37 - N, 38 - N, 39 - N, 40 - N,
                                   41 - N, 42 - N, 43 - N, 44 - N, 45 - N, 46 - N, 47 - N, 48 - N, 49 - N, 50 - N,
                                   51 - N, 52 - N, 53 - N, 54 - N, 55 - N, 56 - N, 57 - N, 58 - N, 59 - N, 60 - N,
                                   61 - N, 62 - N, 63 - N);
}

// Lanes of twice the width.
inline U16x16 widened(U8x16 v)
{
#if defined(__x86_64__)
    return U16x16(_mm256_cvtepu8_epi16(__m128i(v)));
#else
    return __builtin_convertvector(v, U16x16);
#endif
}
inline U32x8 widened(U16x8 v)
{
#if defined(__x86_64__)
    return U32x8(_mm256_cvtepu16_epi32(__m128i(v)));
#else
    return __builtin_convertvector(v, U32x8);
#endif
}
// The same from the lower or the upper lanes of two vectors; `a` gives the lower halves.
inline U16x8 mixedLow(U8x16 a, U8x16 b)
{
    return U16x8(__builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}
inline U16x8 mixedHigh(U8x16 a, U8x16 b)
{
    return U16x8(__builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
}
inline U32x4 mixedLow(U16x8 a, U16x8 b) { return U32x4(__builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11)); }
inline U32x4 mixedHigh(U16x8 a, U16x8 b) { return U32x4(__builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15)); }

// Lanes of half the width: their low halves.
inline U8x16 narrowed(U16x8 a, U16x8 b)
{
    return __builtin_shufflevector(U8x16(a), U8x16(b), 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
}
// Of values up to 0xFF.
inline U8x32 narrowed(U16x16 a, U16x16 b)
{
#if defined(__x86_64__)
    return U8x32(_mm256_permute4x64_epi64(_mm256_packus_epi16(__m256i(a), __m256i(b)), 0xD8));
#else
    return __builtin_convertvector(__builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
                                                           16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30,
                                                           31),
                                   U8x32);
#endif
}
inline U16x8 narrowed(U32x8 v)
{
    return __builtin_shufflevector(U16x8(lower(U8x32(v))), U16x8(upper(U8x32(v))), 0, 2, 4, 6, 8, 10, 12, 14);
}

// A comparison's result as one bit for each lane.
inline unsigned laneBits(U16x8 isTrue) { return highBits(narrowed(isTrue, isTrue)) & 0xFF; }

TVX_SIMD_END

}   // namespace simd
#endif   // TVX_SIMD

#endif   // TVXCMN_STRING_SIMD_H
