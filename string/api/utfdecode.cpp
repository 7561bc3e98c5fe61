// From UTF-8, a block at a time, without a branch on what the characters are. Each byte is taken for the
// last one of its character, and the character's value is made of it and the three bytes before it; then a
// permutation keeps the values at those places where a character does end. In UTF-16 a character of four
// bytes leaves two values: the high surrogate at its third byte, the low one at its last.
#include "simd.h"
#include "utfblock.h"
#include "utftables.h"
#include "utfvectors.h"

#if TVX_SIMD

namespace utfvectors {

namespace {

using simd::U16x8;
using simd::U32x4;
using simd::U8x16;
using simd::U8x32;

TVX_SIMD_BEGIN

inline size_t popCount(unsigned bits) { return static_cast<size_t>(__builtin_popcount(bits)); }
inline U16x8 keptEight(U16x8 lanes, unsigned kept)
{
    return U16x8(simd::shuffled(U8x16(lanes), simd::load<U8x16>(PERMUTATIONS.keepOfEight[kept])));
}
inline U32x4 keptFour(U32x4 lanes, unsigned kept)
{
    return U32x4(simd::shuffled(U8x16(lanes), simd::load<U8x16>(PERMUTATIONS.keepOfFour[kept])));
}

// Bytes and those before them.
struct BytesT {
    U8x32 last;
    U8x32 one;   // one place before
    U8x32 two;
    U8x32 three;

    BytesT(U8x32 before, U8x32 v)
        : last(v), one(simd::behind<1>(before, v)), two(simd::behind<2>(before, v)), three(simd::behind<3>(before, v))
    {
    }
};

// The values of the characters that end at the places: bits 0 to 7, 8 to 15, and 16 to 20.
struct ValuesT {
    U8x32 low;
    U8x32 middle;
    U8x32 top;
};

// Of characters of up to three bytes.
inline ValuesT shortValues(const BytesT& bytes)
{
    const U8x32 isTwoOrMore = continues(bytes.last);
    const U8x32 isThree = continues(bytes.one);
    return {(bytes.last & 0x7F) | (isTwoOrMore & bytes.one << 6),
            isTwoOrMore & ((bytes.one >> 2 & 0x0F) | (isThree & bytes.two << 4)), U8x32{}};
}

// Of characters of up to four bytes.
inline ValuesT longValues(const BytesT& bytes)
{
    ValuesT values = shortValues(bytes);
    values.top = U8x32(bytes.three >= 0xF0) & ((bytes.two >> 4 & 0x03) | (bytes.three & 0x07) << 2);
    return values;
}

// The same as UTF-16. `highs` gets the places of high surrogates: the third bytes of four.
inline ValuesT surrogateValues(const BytesT& bytes, unsigned& highs)
{
    const ValuesT values = shortValues(bytes);
    const U8x32 isThird = U8x32(bytes.two >= 0xF0);
    const U8x32 isFourth = U8x32(bytes.three >= 0xF0);
    // A high surrogate is 0xD800 - 0x40 and the upper 11 bits of the character.
    const U8x32 upper = bytes.one << 2 | (bytes.last >> 4 & 0x03);
    const U8x32 carry = U8x32(upper >= 0x40);   // all bits: -1
    const U8x32 highMiddle = 0xD7 + (bytes.two & 0x07) - carry;
    const U8x32 lowMiddle = 0xDC | (bytes.one >> 2 & 0x03);
    highs = simd::highBits(isThird);
    return {((upper + 0xC0) & isThird) | (values.low & ~isThird),
            (highMiddle & isThird) | (lowMiddle & isFourth) | (values.middle & ~(isThird | isFourth)), U8x32{}};
}

// Sinks write the values of the places whose bits are set, and advance `out`. They may write up to a vector
// further than they advance. putShort is for characters of up to three bytes, putLong for longer ones too;
// that may use other places up to `end`.

struct Latin1SinkC {
    static constexpr size_t UNIT = 1;
    static constexpr bool UNICODE = false;
    static bool canHold(const BlockT& block) { return block.isBelow(0xC4); }
    static void putAscii(U8BitT*& out, const UTF8T* in)
    {
        simd::store(out, simd::load<U8x16>(in));
        out += VECTOR;
    }
    static void putShort(U8BitT*& out, const BytesT& bytes, unsigned places)
    {
        const ValuesT values = shortValues(bytes);
        putSixteen(out, simd::lower(values.low), places & 0xFFFF);
        putSixteen(out, simd::upper(values.low), places >> 16);
    }
    static void putLong(U8BitT*&, const BytesT&, unsigned, unsigned) {}   // none that it can hold

private:
    static void putSixteen(U8BitT*& out, U8x16 values, unsigned places)
    {
        putEight(out, simd::mixedLow(values, U8x16{}), places & 0xFF);
        putEight(out, simd::mixedHigh(values, U8x16{}), places >> 8);
    }
    static void putEight(U8BitT*& out, U16x8 values, unsigned places)
    {
        const U16x8 kept = keptEight(values, places);
        const unsigned long bytes = simd::U64x2(simd::narrowed(kept, kept))[0];
        std::memcpy(out, &bytes, sizeof bytes);
        out += popCount(places);
    }
};

template <bool SWAP>
struct Utf16SinkM {
    static constexpr size_t UNIT = sizeof(UTF16T);
    static constexpr bool UNICODE = true;
    static bool canHold(const BlockT&) { return true; }
    static void putAscii(U8BitT*& out, const UTF8T* in)
    {
        const simd::U16x16 units = simd::widened(simd::load<U8x16>(in));
        simd::store(out, SWAP ? units << 8 : units);
        out += sizeof units;
    }
    static void putShort(U8BitT*& out, const BytesT& bytes, unsigned places) { put(out, shortValues(bytes), places); }
    static void putLong(U8BitT*& out, const BytesT& bytes, unsigned places, unsigned end)
    {
        unsigned highs;
        const ValuesT values = surrogateValues(bytes, highs);
        put(out, values, places | (highs & end));
    }

private:
    static void put(U8BitT*& out, const ValuesT& values, unsigned places)
    {
        const U8x32 first = SWAP ? values.middle : values.low;
        const U8x32 second = SWAP ? values.low : values.middle;
        putSixteen(out, simd::lower(first), simd::lower(second), places & 0xFFFF);
        putSixteen(out, simd::upper(first), simd::upper(second), places >> 16);
    }
    static void putSixteen(U8BitT*& out, U8x16 first, U8x16 second, unsigned places)
    {
        putEight(out, simd::mixedLow(first, second), places & 0xFF);
        putEight(out, simd::mixedHigh(first, second), places >> 8);
    }
    static void putEight(U8BitT*& out, U16x8 units, unsigned places)
    {
        simd::store(out, keptEight(units, places));
        out += UNIT * popCount(places);
    }
};

struct WideSinkC {
    static constexpr size_t UNIT = sizeof(UCS4);
    static constexpr bool UNICODE = false;
    static bool canHold(const BlockT&) { return true; }
    static void putAscii(U8BitT*& out, const UTF8T* in)
    {
        const U8x16 bytes = simd::load<U8x16>(in);
        putUnits(out, simd::mixedLow(bytes, U8x16{}), VECTOR / 2);
        putUnits(out, simd::mixedHigh(bytes, U8x16{}), VECTOR / 2);
    }
    static void putShort(U8BitT*& out, const BytesT& bytes, unsigned places)
    {
        const ValuesT values = shortValues(bytes);
        putSixteen(out, simd::lower(values.low), simd::lower(values.middle), places & 0xFFFF);
        putSixteen(out, simd::upper(values.low), simd::upper(values.middle), places >> 16);
    }
    static void putLong(U8BitT*& out, const BytesT& bytes, unsigned places, unsigned)
    {
        const ValuesT values = longValues(bytes);
        putLongSixteen(out, simd::lower(values.low), simd::lower(values.middle), simd::lower(values.top),
                       places & 0xFFFF);
        putLongSixteen(out, simd::upper(values.low), simd::upper(values.middle), simd::upper(values.top), places >> 16);
    }

private:
    static void putUnits(U8BitT*& out, U16x8 units, size_t count)
    {
        simd::store(out, simd::widened(units));
        out += UNIT * count;
    }
    static void putSixteen(U8BitT*& out, U8x16 low, U8x16 middle, unsigned places)
    {
        putEight(out, simd::mixedLow(low, middle), places & 0xFF);
        putEight(out, simd::mixedHigh(low, middle), places >> 8);
    }
    static void putEight(U8BitT*& out, U16x8 units, unsigned places)
    {
        putUnits(out, keptEight(units, places), popCount(places));
    }
    static void putLongSixteen(U8BitT*& out, U8x16 low, U8x16 middle, U8x16 top, unsigned places)
    {
        putLongEight(out, simd::mixedLow(low, middle), simd::mixedLow(top, U8x16{}), places & 0xFF);
        putLongEight(out, simd::mixedHigh(low, middle), simd::mixedHigh(top, U8x16{}), places >> 8);
    }
    static void putLongEight(U8BitT*& out, U16x8 units, U16x8 top, unsigned places)
    {
        putFour(out, simd::mixedLow(units, top), places & 0xF);
        putFour(out, simd::mixedHigh(units, top), places >> 4);
    }
    static void putFour(U8BitT*& out, U32x4 values, unsigned places)
    {
        simd::store(out, keptFour(values, places));
        out += UNIT * popCount(places);
    }
};

template <class SinkC, bool LONG>
inline void putPlaces(U8BitT*& out, U8x32 before, U8x32 v, unsigned long places, unsigned long end)
{
    const BytesT bytes(before, v);
    if (LONG) {
        SinkC::putLong(out, bytes, static_cast<unsigned>(places), static_cast<unsigned>(end));
    } else {
        SinkC::putShort(out, bytes, static_cast<unsigned>(places));
    }
}

// Writes the characters of a well-formed block and returns the number of bytes consumed: all but the last
// character, which may be cut, if it is not ASCII.
template <class SinkC, bool LONG>
inline size_t decodeWellFormed(const UTF8T* in, const BlockT& block, U8BitT*& out)
{
    const unsigned long firsts = block.firsts();
    const bool endsWhole = in[BLOCK - 1] < 0x80;
    const size_t lastFirst = BLOCK - 1 - static_cast<size_t>(__builtin_clzl(firsts));
    const unsigned long places = firsts >> 1 | static_cast<unsigned long>(endsWhole) << (BLOCK - 1);
    const unsigned long end = endsWhole ? ~0ul : (1ul << lastFirst) - 1;
    putPlaces<SinkC, LONG>(out, U8x32{}, block.first, places & 0xFFFFFFFF, end & 0xFFFFFFFF);
    putPlaces<SinkC, LONG>(out, block.first, block.second, places >> 32, end >> 32);
    return endsWhole ? BLOCK : lastFirst;
}

// Decodes a block that begins with a character. Returns the number of bytes consumed, 0 if the block is not
// well-formed or the sink cannot hold it. Needs room for BLOCK units.
template <class SinkC>
inline size_t decodeBlock(const UTF8T* in, U8BitT*& out)
{
    const BlockT block(in);
    if (!isWellFormed<SinkC::UNICODE>(U8x32{}, block) || !SinkC::canHold(block)) return 0;
    return block.isBelow(0xF0) ? decodeWellFormed<SinkC, false>(in, block, out)
                               : decodeWellFormed<SinkC, true>(in, block, out);
}

// The same where fewer than BLOCK bytes or units are left, but VECTOR bytes: beside the two, and copied.
template <class SinkC>
size_t decodeEnd(const UTF8T* in, size_t n, U8BitT*& out, size_t room)
{
    if (room >= VECTOR * SinkC::UNIT && simd::highBits(simd::load<U8x16>(in)) == 0) {
        SinkC::putAscii(out, in);
        return VECTOR;
    }
    UTF8T padded[BLOCK] = {};
    if (n > BLOCK) n = BLOCK;
    for (size_t at = 0; n - at >= VECTOR; at += VECTOR) simd::store(padded + at, simd::load<U8x16>(in + at));
    simd::store(padded + n - VECTOR, simd::load<U8x16>(in + n - VECTOR));
    U8BitT units[BLOCK * SinkC::UNIT];
    U8BitT* end = units;
    const size_t consumed = decodeBlock<SinkC>(padded, end);
    const size_t beyond = consumed > n ? consumed - n : 0;   // zeros, of one unit each
    const size_t made = static_cast<size_t>(end - units) - beyond * SinkC::UNIT;
    if (made > room) return 0;
    std::memcpy(out, units, made);
    out += made;
    return consumed - beyond;
}

template <class SinkC>
ProgressT decode(const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
{
    U8BitT* const outEnd = out + outSize;
    U8BitT* end = out;
    size_t at = 0;
    const auto hasBlock = [&] { return n - at >= BLOCK && static_cast<size_t>(outEnd - end) >= BLOCK * SinkC::UNIT; };
    while (n - at >= VECTOR) {
        for (; hasBlock() && BlockT(in + at).isAscii(); at += BLOCK) {
            for (size_t i = 0; i < BLOCK; i += VECTOR) SinkC::putAscii(end, in + at + i);
        }
        if (n - at < VECTOR) break;
        U8BitT* next = end;   // not `end` itself, which would then be kept in memory
        const size_t consumed = hasBlock() ? decodeBlock<SinkC>(in + at, next)
                                           : decodeEnd<SinkC>(in + at, n - at, next, static_cast<size_t>(outEnd - end));
        if (consumed == 0) break;
        end = next;
        at += consumed;
    }
    return {at, static_cast<size_t>(end - out), 0};
}

}   // namespace

ProgressT utf8ToLatin1(const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
{
    return decode<Latin1SinkC>(in, n, out, outSize);
}

ProgressT utf8ToUtf16(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool swap)
{
    return swap ? decode<Utf16SinkM<true>>(in, n, out, outSize) : decode<Utf16SinkM<false>>(in, n, out, outSize);
}

ProgressT utf8ToWide(const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
{
    return decode<WideSinkC>(in, n, out, outSize);
}

TVX_SIMD_END

}   // namespace utfvectors

#endif   // TVX_SIMD
