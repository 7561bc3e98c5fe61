// utfblock.h: one block of UTF-8 as vectors: what it holds, and whether it is well-formed.
//
// Whether two neighbouring bytes can stand together is looked up in three small tables, by the two halves
// of the first byte and the upper half of the second. Each table gives the errors that its half byte is
// compatible with, one bit an error; an error is there if all three agree. Only "two continuation bytes"
// may be right: where the second one is the third or fourth of its character.
#ifndef TVXCMN_STRING_UTFBLOCK_H
#define TVXCMN_STRING_UTFBLOCK_H

#include "simd.h"
#include "utfvectors.h"

#if TVX_SIMD
namespace utfvectors {

TVX_SIMD_BEGIN

// All bits of a byte that continues a character, none of another one.
inline simd::U8x32 continues(simd::U8x32 v)
{
    const signed char last = -0x41;   // of the continuation bytes, as signed numbers
    return simd::U8x32(simd::S8x32(v) <= last);
}

struct BlockT {
    explicit BlockT(const UTF8T* in) : first(simd::load<simd::U8x32>(in)), second(simd::load<simd::U8x32>(in + 32)) {}

    // Is every byte below the limit?
    bool isBelow(unsigned char limit) const
    {
        const simd::U8x32 larger = first > second ? first : second;
        return !simd::any(simd::U8x32(larger >= limit));
    }
    bool isAscii() const { return simd::highBits(first | second) == 0; }

    // One bit a byte: is it above 0x7F, does it begin a character, does it begin one of four bytes.
    unsigned long high() const { return bits(first, second); }
    unsigned long firsts() const { return ~bits(continues(first), continues(second)); }
    unsigned long fours() const { return bits(simd::U8x32(first >= 0xF0), simd::U8x32(second >= 0xF0)); }

    simd::U8x32 first;
    simd::U8x32 second;

private:
    static unsigned long bits(simd::U8x32 a, simd::U8x32 b)
    {
        return simd::highBits(a) | static_cast<unsigned long>(simd::highBits(b)) << 32;
    }
};
static_assert(sizeof(BlockT) == BLOCK);

// Not zero where a byte of `v` cannot follow the bytes before it; `before` is the vector before `v`. A
// character that is cut at the end is no error. UNICODE: values above 0x10FFFF are errors too.
template <bool UNICODE>
inline simd::U8x32 errors(simd::U8x32 before, simd::U8x32 v)
{
    enum : unsigned char {
        TOO_SHORT = 0x01,     // a first byte before a byte that does not continue it
        TOO_LONG = 0x02,      // ASCII before a continuation byte
        OVERLONG_2 = 0x04,    // C0, C1
        OVERLONG_3 = 0x08,    // E0 80 to E0 9F
        OVERLONG_4 = 0x10,    // F0 80 to F0 8F
        TOO_LARGE = 0x20,     // the second byte is 90 or more
        TOO_LARGE_8 = 0x40,   // the second byte is 80 to 8F
        TWO_MORE = 0x80,      // two continuation bytes
        ANY = TOO_SHORT | TOO_LONG | TWO_MORE,
        F4 = ANY | (UNICODE ? TOO_LARGE : 0),
        F5 = ANY | (UNICODE ? TOO_LARGE | TOO_LARGE_8 : 0),
        F8 = ANY | TOO_LARGE | TOO_LARGE_8,
        SECOND = TOO_LONG | OVERLONG_2 | TWO_MORE,
    };
    const simd::U8x16 firstUpper = {TOO_LONG,
                                    TOO_LONG,
                                    TOO_LONG,
                                    TOO_LONG,
                                    TOO_LONG,
                                    TOO_LONG,
                                    TOO_LONG,
                                    TOO_LONG,
                                    TWO_MORE,
                                    TWO_MORE,
                                    TWO_MORE,
                                    TWO_MORE,
                                    TOO_SHORT | OVERLONG_2,
                                    TOO_SHORT,
                                    TOO_SHORT | OVERLONG_3,
                                    TOO_SHORT | OVERLONG_4 | TOO_LARGE | TOO_LARGE_8};
    const simd::U8x16 firstLower = {ANY | OVERLONG_2 | OVERLONG_3 | OVERLONG_4,
                                    ANY | OVERLONG_2,
                                    ANY,
                                    ANY,
                                    F4,
                                    F5,
                                    F5,
                                    F5,
                                    F8,
                                    F8,
                                    F8,
                                    F8,
                                    F8,
                                    F8,
                                    F8,
                                    F8};
    const simd::U8x16 secondUpper = {TOO_SHORT,
                                     TOO_SHORT,
                                     TOO_SHORT,
                                     TOO_SHORT,
                                     TOO_SHORT,
                                     TOO_SHORT,
                                     TOO_SHORT,
                                     TOO_SHORT,
                                     SECOND | OVERLONG_3 | OVERLONG_4 | TOO_LARGE_8,
                                     SECOND | OVERLONG_3 | TOO_LARGE,
                                     SECOND | TOO_LARGE,
                                     SECOND | TOO_LARGE,
                                     TOO_SHORT,
                                     TOO_SHORT,
                                     TOO_SHORT,
                                     TOO_SHORT};

    const simd::U8x32 one = simd::behind<1>(before, v);
    const simd::U8x32 two = simd::behind<2>(before, v);
    const simd::U8x32 three = simd::behind<3>(before, v);
    const simd::U8x32 found = simd::lookedUp(firstUpper, one >> 4) & simd::lookedUp(firstLower, one & 0x0F) &
                              simd::lookedUp(secondUpper, v >> 4);
    const simd::U8x32 isFirstOrSecond = simd::U8x32(two < 0xE0) & simd::U8x32(three < 0xF0);
    return found ^ (~isFirstOrSecond & static_cast<unsigned char>(TWO_MORE));
}

// Is the block well-formed that follows `before`?
template <bool UNICODE>
inline bool isWellFormed(simd::U8x32 before, const BlockT& block)
{
    return !simd::any(errors<UNICODE>(before, block.first) | errors<UNICODE>(block.first, block.second));
}

TVX_SIMD_END

}   // namespace utfvectors
#endif   // TVX_SIMD

#endif   // TVXCMN_STRING_UTFBLOCK_H
