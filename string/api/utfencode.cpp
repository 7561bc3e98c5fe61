// To UTF-8. The bytes of each character are made in a lane of fixed width; then a permutation, found by the
// lengths of the characters, takes out what is not used.
#include "simd.h"
#include "utf16.h"
#include "utftables.h"
#include "utfvectors.h"

#if TVX_SIMD

namespace utfvectors {

namespace {

using simd::U16x8;
using simd::U32x8;
using simd::U8x16;
using simd::U8x32;

const size_t UNITS = VECTOR / sizeof(UTF16T);   // 16-bit units of a vector
const size_t ROOM = 4 * VECTOR;                 // what one step may write

TVX_SIMD_BEGIN

TVX_STEP size_t popCount(unsigned bits) { return static_cast<size_t>(__builtin_popcount(bits)); }

// Writes eight characters below 0x800 and returns their length. Writes a whole vector.
TVX_STEP size_t encodeEight(UTF8T* out, U16x8 chars)
{
    const U16x8 isOne = U16x8(chars < 0x80);
    const U16x8 two = (chars >> 6) | 0xC0 | (chars & 0x3F) << 8 | 0x8000;
    const unsigned ones = simd::laneBits(isOne);
    const U8x16 lanes = U8x16((chars & isOne) | (two & ~isOne));
    simd::store(out, simd::shuffled(lanes, simd::load<U8x16>(PERMUTATIONS.dropSecond[ones])));
    return VECTOR - popCount(ones);
}

// Writes the used bytes of four lanes and returns their number. Writes a whole vector.
TVX_STEP size_t putLanes(UTF8T* out, U8x16 lanes, unsigned more)
{
    const unsigned index = more * 0x01041040u >> 24;   // two bits of each byte of `more`, side by side
    simd::store(out, simd::shuffled(lanes, simd::load<U8x16>(PERMUTATIONS.keepLast[index])));
    return PERMUTATIONS.keepLastLength[index];
}

// Writes the values of eight lanes, below 0x200000, and returns their length. Writes up to 28 bytes. Where
// `isHalf` is set the value is half of a character: up to 12 bits in two bytes. `twoMarks` marks the bytes of
// all that have two. The last byte stands highest in its lane.
TVX_STEP size_t encodeLanes(UTF8T* out, U32x8 values, U32x8 isHalf, U32x8 twoMarks)
{
    const simd::S32x8 numbers = simd::S32x8(values);
    const U32x8 isTwo = U32x8(numbers > MASKS.lastOfOne) | isHalf;
    const U32x8 isThree = U32x8(numbers > MASKS.lastOfTwo) & ~isHalf;
    const U32x8 isFour = U32x8(numbers > MASKS.lastOfThree);
    const U32x8 bits = (values & MASKS.payload0) << 24 | (values << 10 & MASKS.payload1) |
                       (values >> 4 & MASKS.payload2) | values >> 18;
    const U32x8 marks = twoMarks ^ (isThree & MASKS.twoToThree) ^ (isFour & MASKS.threeToFour);
    const U8x32 lanes = U8x32(((bits | marks) & isTwo) | (values << 24 & ~isTwo));

    const U32x8 more = -(isTwo + isThree + isFour);   // bytes after the first
    const U32x8 packed = U32x8(simd::shuffled(U8x32(more), U8x16{0, 4, 8, 12}));
    const size_t length = putLanes(out, simd::lower(lanes), packed[0]);
    return length + putLanes(out + length, simd::upper(lanes), packed[4]);
}
TVX_STEP size_t encodeLanes(UTF8T* out, U32x8 chars) { return encodeLanes(out, chars, U32x8{}, MASKS.two); }

// Each lane's neighbour before it.
TVX_STEP U16x8 neighbours(U16x8 v) { return __builtin_shufflevector(U16x8{}, v, 7, 8, 9, 10, 11, 12, 13, 14); }

// How far a conversion has come.
struct CursorT {
    const U8BitT* in;
    const U8BitT* const inEnd;
    UTF8T* out;
    UTF8T* const outEnd;
    size_t chars = 0;

    bool has(size_t bytes, size_t room = ROOM) const
    {
        return static_cast<size_t>(inEnd - in) >= bytes && static_cast<size_t>(outEnd - out) >= room;
    }
    void took(size_t bytes, size_t count)
    {
        in += bytes;
        chars += count;
    }
    template <class VectorT>
    void putAscii(VectorT bytes)
    {
        simd::store(out, bytes);
        out += sizeof bytes;
    }
    ProgressT progress(const U8BitT* inStart, const UTF8T* outStart) const
    {
        return {static_cast<size_t>(in - inStart), static_cast<size_t>(out - outStart), chars};
    }
};

// Eight units, some of them surrogates, except a high one at the end, whose pair is not whole. The halves of
// a pair make two bytes each. False if a surrogate is alone.
TVX_STEP bool encodeSurrogates(CursorT& cursor, U16x8 units)
{
    const U16x8 isHigh = U16x8((units & MASKS.kind) == MASKS.high);
    const U16x8 isLow = U16x8((units & MASKS.kind) == MASKS.low);
    if (simd::any(U8x16(neighbours(isHigh) ^ isLow))) return false;
    const U16x8 isHalf = isHigh | isLow;
    const U16x8 payload = units & MASKS.payload;
    const U16x8 upper = payload + MASKS.beyond;   // of a high one: the upper 11 bits of the character
    const U16x8 lowValue = (neighbours(upper) << 14 >> 4) | payload;
    const U16x8 values = (upper >> 2 & isHigh) | (lowValue & isLow) | (units & ~isHalf);
    const U16x8 firsts = (MASKS.firstOfHigh & isHigh) | (MASKS.firstOfLow & isLow) | (MASKS.firstOfTwo & ~isHalf);
    const U32x8 twoMarks = simd::widened(firsts) << 16 | 0x80000000;

    cursor.out += encodeLanes(cursor.out, simd::widened(values), U32x8(simd::widened(isHalf) != 0), twoMarks);
    const size_t open = isHigh[UNITS - 1] & 1;
    cursor.out -= 2 * open;
    cursor.took(VECTOR - open * sizeof(UTF16T), UNITS - open - popCount(simd::laneBits(isLow)));
    return true;
}

template <bool SWAP, class VectorT = U16x8>
TVX_STEP VectorT loadUnits(const U8BitT* p)
{
    const VectorT v = simd::load<VectorT>(p);
    return SWAP ? v << 8 | v >> 8 : v;
}

// Sources convert the next characters of a text. Each has
//   UNIT, SPAN   the bytes of a unit, and those that one step looks at
//   step         converts some of them; false if it cannot
//   passAscii    goes on as long as there is nothing but ASCII

struct Latin1SourceC {
    static constexpr size_t UNIT = 1;
    static constexpr size_t SPAN = VECTOR;
    static bool step(CursorT& cursor)
    {
        const U8x16 bytes = simd::load<U8x16>(cursor.in);
        cursor.out += encodeEight(cursor.out, simd::mixedLow(bytes, U8x16{}));
        cursor.out += encodeEight(cursor.out, simd::mixedHigh(bytes, U8x16{}));
        cursor.took(VECTOR, VECTOR);
        return true;
    }
    static void passAscii(CursorT& cursor)
    {
        for (; cursor.has(VECTOR, VECTOR); cursor.took(VECTOR, VECTOR)) {
            const U8x16 bytes = simd::load<U8x16>(cursor.in);
            if (simd::highBits(bytes) != 0) return;
            cursor.putAscii(bytes);
        }
    }
};

template <bool SWAP>
struct Utf16SourceM {
    static constexpr size_t UNIT = sizeof(UTF16T);
    static constexpr size_t SPAN = 2 * VECTOR;
    TVX_STEP static bool step(CursorT& cursor)
    {
        const U16x8 units = loadUnits<SWAP>(cursor.in);
        const U16x8 next = loadUnits<SWAP>(cursor.in + VECTOR);
        if (simd::any(U8x16((units & 0xF800) == 0xD800) | U8x16((next & 0xF800) == 0xD800))) {
            return encodeSurrogates(cursor, units) && encodeSurrogates(cursor, loadUnits<SWAP>(cursor.in));
        }
        if (!simd::any(U8x16((units | next) & 0xF800))) {
            cursor.out += encodeEight(cursor.out, units);
            cursor.out += encodeEight(cursor.out, next);
        } else {
            cursor.out += encodeLanes(cursor.out, simd::widened(units));
            cursor.out += encodeLanes(cursor.out, simd::widened(next));
        }
        cursor.took(SPAN, 2 * UNITS);
        return true;
    }
    TVX_STEP static void passAscii(CursorT& cursor)
    {
        for (; cursor.has(2 * SPAN, SPAN); cursor.took(2 * SPAN, 4 * UNITS)) {
            const simd::U16x16 units = loadUnits<SWAP, simd::U16x16>(cursor.in);
            const simd::U16x16 next = loadUnits<SWAP, simd::U16x16>(cursor.in + SPAN);
            if (simd::any(U8x32((units | next) & 0xFF80))) break;
            cursor.putAscii(simd::narrowed(units, next));
        }
        for (; cursor.has(SPAN, VECTOR); cursor.took(SPAN, 2 * UNITS)) {
            const U16x8 units = loadUnits<SWAP>(cursor.in);
            const U16x8 next = loadUnits<SWAP>(cursor.in + VECTOR);
            if (simd::any(U8x16((units | next) & 0xFF80))) return;
            cursor.putAscii(simd::narrowed(units, next));
        }
    }
};

struct WideSourceC {
    static constexpr size_t UNIT = sizeof(UCS4);
    static constexpr size_t SPAN = 2 * VECTOR;
    static bool step(CursorT& cursor)
    {
        const U32x8 chars = simd::load<U32x8>(cursor.in);
        if (simd::any(U8x32(chars & 0xFFE00000))) return false;
        const bool isShort = !simd::any(U8x32(chars & 0xFFFFF800));
        cursor.out += isShort ? encodeEight(cursor.out, simd::narrowed(chars)) : encodeLanes(cursor.out, chars);
        cursor.took(SPAN, UNITS);
        return true;
    }
    static void passAscii(CursorT& cursor)
    {
        for (; cursor.has(2 * SPAN, VECTOR); cursor.took(2 * SPAN, 2 * UNITS)) {
            const U32x8 chars = simd::load<U32x8>(cursor.in);
            const U32x8 next = simd::load<U32x8>(cursor.in + SPAN);
            if (simd::any(U8x32((chars | next) & 0xFFFFFF80))) return;
            cursor.putAscii(simd::narrowed(simd::narrowed(chars), simd::narrowed(next)));
        }
    }
};

// One step where fewer bytes than it looks at, or less room than it may use, are left: beside the two, and
// copied.
template <class SourceC>
bool stepAtEnd(CursorT& cursor)
{
    const size_t left = static_cast<size_t>(cursor.inEnd - cursor.in) / SourceC::UNIT * SourceC::UNIT;
    U8BitT padded[SourceC::SPAN] = {};
    UTF8T bytes[ROOM];
    std::memcpy(padded, cursor.in, left < SourceC::SPAN ? left : SourceC::SPAN);
    CursorT aside = {padded, padded + SourceC::SPAN, bytes, bytes + ROOM};
    if (left == 0 || !SourceC::step(aside)) return false;
    ProgressT done = aside.progress(padded, bytes);
    if (done.consumed > left) {   // zeros, of one byte each
        const size_t beyond = (done.consumed - left) / SourceC::UNIT;
        done = {left, done.written - beyond, done.chars - beyond};
    }
    if (done.written > static_cast<size_t>(cursor.outEnd - cursor.out)) return false;
    std::memcpy(cursor.out, bytes, done.written);
    cursor.out += done.written;
    cursor.took(done.consumed, done.chars);
    return true;
}

template <class SourceC>
ProgressT encode(const U8BitT* in, size_t n, UTF8T* out, size_t outSize)
{
    CursorT cursor = {in, in + n, out, out + outSize};
    do {
        SourceC::passAscii(cursor);
    } while (cursor.has(SourceC::SPAN) ? SourceC::step(cursor) : stepAtEnd<SourceC>(cursor));
    return cursor.progress(in, out);
}

template <bool SWAP>
ProgressT measureUtf16(const U8BitT* in, size_t n)
{
    ProgressT done;
    unsigned open = 0;   // 1: a high surrogate stands at the end
    for (; n - done.consumed >= 2 * VECTOR; done.consumed += 2 * VECTOR) {
        const U16x8 a = loadUnits<SWAP>(in + done.consumed);
        const U16x8 b = loadUnits<SWAP>(in + done.consumed + VECTOR);
        if (open == 0 && !simd::any(U8x16((a | b) & 0xFF80))) {
            done.written += 2 * UNITS;
            done.chars += 2 * UNITS;
            continue;
        }
        const auto bits = [](U16x8 x, U16x8 y) { return simd::highBits(simd::narrowed(x, y)); };
        const unsigned highs = bits(U16x8((a & 0xFC00) == 0xD800), U16x8((b & 0xFC00) == 0xD800));
        const unsigned lows = bits(U16x8((a & 0xFC00) == 0xDC00), U16x8((b & 0xFC00) == 0xDC00));
        if (((highs << 1 | open) & 0xFFFF) != lows) break;
        open = highs >> 15;
        // A surrogate counts as three bytes first, and is half of four.
        const size_t twos = popCount(bits(U16x8(a >= 0x80), U16x8(b >= 0x80)));
        const size_t threes = popCount(bits(U16x8(a >= 0x800), U16x8(b >= 0x800)));
        done.written += 2 * UNITS + twos + threes - popCount(highs | lows);
        done.chars += 2 * UNITS - popCount(lows);
    }
    if (open != 0) {
        done.consumed -= sizeof(UTF16T);
        done.written -= 2;
        --done.chars;
    }
    return done;
}

}   // namespace

ProgressT latin1ToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize)
{
    return encode<Latin1SourceC>(in, n, out, outSize);
}

ProgressT utf16ToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize, bool swap)
{
    return swap ? encode<Utf16SourceM<true>>(in, n, out, outSize) : encode<Utf16SourceM<false>>(in, n, out, outSize);
}

ProgressT utf16ToUtf8Length(const U8BitT* in, size_t n, bool swap)
{
    return swap ? measureUtf16<true>(in, n) : measureUtf16<false>(in, n);
}

ProgressT wideToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize)
{
    return encode<WideSourceC>(in, n, out, outSize);
}

ProgressT wideToUtf8Length(const U8BitT* in, size_t n)
{
    ProgressT done;
    const size_t limit = 0x10000000;   // chars; what the lanes of `more` can count
    U32x8 more = {};
    while (n - done.consumed >= sizeof more && done.chars < limit) {
        const U32x8 chars = simd::load<U32x8>(in + done.consumed);
        if (simd::any(U8x32(chars & 0xFFE00000))) break;
        more -= U32x8(chars >= 0x80) + U32x8(chars >= 0x800) + U32x8(chars >= 0x10000);
        done.consumed += sizeof more;
        done.chars += UNITS;
    }
    done.written = done.chars;
    for (size_t i = 0; i < UNITS; ++i) done.written += more[i];
    return done;
}

TVX_SIMD_END

}   // namespace utfvectors

#endif   // TVX_SIMD
