#include "utftables.h"

#if TVX_SIMD

namespace utfvectors {

namespace {

constexpr void keepLanes(unsigned char* permutation, unsigned kept, unsigned laneSize)
{
    unsigned to = 0;
    for (unsigned byte = 0; byte < VECTOR; ++byte) {
        if ((kept >> byte / laneSize & 1) != 0) permutation[to++] = static_cast<unsigned char>(byte);
    }
}

constexpr void dropSecondBytes(unsigned char* permutation, unsigned dropped)
{
    unsigned to = 0;
    for (unsigned byte = 0; byte < VECTOR; ++byte) {
        const bool isDropped = byte % 2 == 1 && (dropped >> byte / 2 & 1) != 0;
        if (!isDropped) permutation[to++] = static_cast<unsigned char>(byte);
    }
}

constexpr unsigned char keepLastBytes(unsigned char* permutation, unsigned lengths)
{
    unsigned char to = 0;
    for (unsigned byte = 0; byte < VECTOR; ++byte) {
        const unsigned more = lengths >> byte / 4 * 2 & 3;
        if (byte % 4 >= 3 - more) permutation[to++] = static_cast<unsigned char>(byte);
    }
    return to;
}

constexpr PermutationsT makePermutations()
{
    PermutationsT tables = {};
    for (unsigned bits = 0; bits < 256; ++bits) {
        keepLanes(tables.keepOfEight[bits], bits, 2);
        dropSecondBytes(tables.dropSecond[bits], bits);
        tables.keepLastLength[bits] = keepLastBytes(tables.keepLast[bits], bits);
    }
    for (unsigned bits = 0; bits < 16; ++bits) keepLanes(tables.keepOfFour[bits], bits, 4);
    return tables;
}

TVX_SIMD_BEGIN

constexpr simd::S32x8 ints(int v) { return simd::S32x8{v, v, v, v, v, v, v, v}; }
constexpr simd::U32x8 words(unsigned v) { return simd::U32x8{v, v, v, v, v, v, v, v}; }
constexpr simd::U16x8 units(UTF16T v) { return simd::U16x8{v, v, v, v, v, v, v, v}; }

TVX_SIMD_END

// Bytes stand from the highest down, the last one first.
const unsigned TWO = 0x80C00000;
const unsigned THREE = 0x8080E000;
const unsigned FOUR = 0x808080F0;

}   // namespace

constexpr PermutationsT PERMUTATIONS = makePermutations();

constexpr MasksT MASKS = {ints(0x7F),    ints(0x7FF),        ints(0xFFFF),        words(0x3F), words(0x3F0000),
                          words(0x3F00), words(TWO ^ THREE), words(THREE ^ FOUR), words(TWO),  units(0xFC00),
                          units(0xD800), units(0xDC00),      units(0x3FF),        units(0x40), units(0xC0),
                          units(0xF0),   units(0x80)};

}   // namespace utfvectors

#endif   // TVX_SIMD
