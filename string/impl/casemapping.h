// casemapping.h: the two simple case mappings, character by character and for eight ASCII bytes at once.
#ifndef TVXCMN_STRING_IMPL_CASEMAPPING_H
#define TVXCMN_STRING_IMPL_CASEMAPPING_H

#include "string/api/ucs4_tables.h"

#include <cstdint>
#include <cstring>

// Eight bytes of text in one word.
inline uint64_t loadEight(const UTF8T* p)
{
    uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}
inline void storeEight(UTF8T* p, uint64_t word) { std::memcpy(p, &word, sizeof word); }

const uint64_t EACH_BYTE = 0x0101010101010101;
inline bool areASCII(uint64_t word) { return (word & 0x80 * EACH_BYTE) == 0; }

// 0x20 in each of eight ASCII bytes that lies in the range of letters `first` to `last`, 0 elsewhere. No sum
// carries into the next byte, because every byte is below 0x80.
inline uint64_t caseBits(uint64_t word, uint64_t first, uint64_t last)
{
    const uint64_t notBelow = word + (0x80 - first) * EACH_BYTE;
    const uint64_t above = word + (0x7F - last) * EACH_BYTE;
    return ((notBelow ^ above) & 0x80 * EACH_BYTE) >> 2;
}

struct LowerCaseT {
    static UCS4 map(UCS4 ch) { return ucs4tables::toLower(ch); }
    static uint64_t mapASCII(uint64_t word) { return word ^ caseBits(word, 'A', 'Z'); }
};
struct UpperCaseT {
    static UCS4 map(UCS4 ch) { return ucs4tables::toUpper(ch); }
    static uint64_t mapASCII(uint64_t word) { return word ^ caseBits(word, 'a', 'z'); }
};

// Whether two times eight bytes are ASCII and equal but for their case.
inline bool areEqualASCIIButForCase(uint64_t a, uint64_t b)
{
    return areASCII(a | b) && (a == b || LowerCaseT::mapASCII(a) == LowerCaseT::mapASCII(b));
}

#endif   // TVXCMN_STRING_IMPL_CASEMAPPING_H
