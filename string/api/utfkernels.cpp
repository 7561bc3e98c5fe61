#include "utfkernels.h"

#include "simd.h"
#include "utf16.h"
#include "utf8.h"
#include "utfvectors.h"

namespace utfkernels {

namespace {

// What vectors do of a kernel's job, if there are any and enough bytes; nothing else.
#if TVX_SIMD
#define WITH_VECTORS(n, call) ((n) >= 16 && simd::isAvailable() ? utfvectors::call : decltype(utfvectors::call)())
#else
#define WITH_VECTORS(n, call) (decltype(utfvectors::call)())
#endif

typedef unsigned long WordT;
const WordT HIGH_BITS = 0x8080808080808080;

WordT loadWord(const UTF8T* p)
{
    WordT word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

// How many bytes have their high bit, of a word without other bits: their sum comes to stand in the top
// byte. The oldest processors that we build for have no instruction that counts bits.
size_t countHighBits(WordT highBits) { return (highBits >> 7) * 0x0101010101010101 >> 56; }

// One bit for each byte of the word that begins a character.
WordT firstBits(WordT word) { return (~word | word << 1) & HIGH_BITS; }

bool continues(UTF8T byte) { return !UTF8Is1st(byte); }

// Reads the well-formed character at `p`. Returns its length, or 0 if there is none within `n` bytes.
inline size_t readChar(const UTF8T* p, size_t n, UCS4& ch)
{
    const UCS4 first = *p;
    if (first < 0x80) {
        ch = first;
        return 1;
    }
    if (first < 0xE0) {
        if (first < 0xC2 || n < 2 || !continues(p[1])) return 0;
        ch = (first & 0x1F) << 6 | (p[1] & 0x3Fu);
        return 2;
    }
    if (first < 0xF0) {
        if (n < 3 || !continues(p[1]) || !continues(p[2])) return 0;
        ch = (first & 0x0F) << 12 | (p[1] & 0x3Fu) << 6 | (p[2] & 0x3Fu);
        return ch >= 0x800 ? 3 : 0;
    }
    if (first >= 0xF8 || n < 4 || !continues(p[1]) || !continues(p[2]) || !continues(p[3])) return 0;
    ch = (first & 0x07) << 18 | (p[1] & 0x3Fu) << 12 | (p[2] & 0x3Fu) << 6 | (p[3] & 0x3Fu);
    return ch >= 0x10000 ? 4 : 0;
}

// What UTF-8 is converted to: the unit, the largest character, and how one is written.
struct Latin1UnitsC {
    typedef U8BitT UnitT;
    static constexpr UCS4 LIMIT = 0xFF;
    static size_t count(UCS4) { return 1; }
    static void put(U8BitT* out, UCS4 ch) { *out = static_cast<U8BitT>(ch); }
};

template <bool SWAP>
struct Utf16UnitsM {
    typedef UTF16T UnitT;
    static constexpr UCS4 LIMIT = 0x10FFFF;
    static size_t count(UCS4 ch) { return ch > 0xFFFF ? 2 : 1; }
    static void put(U8BitT* out, UCS4 ch)
    {
        if (ch > 0xFFFF) {
            putUnit(out, 0xD800 + ((ch - 0x10000) >> 10));
            out += sizeof(UTF16T);
            ch = 0xDC00 + (ch & 0x3FF);
        }
        putUnit(out, ch);
    }
    static void putUnit(U8BitT* out, UCS4 value)
    {
        UTF16T unit = static_cast<UTF16T>(value);
        if (SWAP) unit = OSASwap16(unit);
        std::memcpy(out, &unit, sizeof unit);
    }
};

struct WideUnitsC {
    typedef UCS4 UnitT;
    static constexpr UCS4 LIMIT = 0x1FFFFF;
    static size_t count(UCS4) { return 1; }
    static void put(U8BitT* out, UCS4 ch) { std::memcpy(out, &ch, sizeof ch); }
};

template <class UnitsC>
ProgressT fromUtf8(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, ProgressT done)
{
    const size_t unit = sizeof(typename UnitsC::UnitT);
    while (done.consumed < n) {
        const UTF8T* p = in + done.consumed;
        if (n - done.consumed >= sizeof(WordT) && outSize - done.written >= sizeof(WordT) * unit &&
            (loadWord(p) & HIGH_BITS) == 0) {
            for (size_t i = 0; i < sizeof(WordT); ++i) UnitsC::put(out + done.written + i * unit, p[i]);
            done.consumed += sizeof(WordT);
            done.written += sizeof(WordT) * unit;
            continue;
        }
        UCS4 ch;
        const size_t len = readChar(p, n - done.consumed, ch);
        if (len == 0 || ch > UnitsC::LIMIT || UnitsC::count(ch) * unit > outSize - done.written) break;
        UnitsC::put(out + done.written, ch);
        done.consumed += len;
        done.written += UnitsC::count(ch) * unit;
    }
    return done;
}

// What UTF-8 is made from: the unit, and how a well-formed character is read. The length read is 0 when
// there is none within `n` bytes.
struct Latin1SourceC {
    typedef U8BitT UnitT;
    static size_t read(const U8BitT* p, size_t, UCS4& ch)
    {
        ch = *p;
        return 1;
    }
};

template <bool SWAP>
struct Utf16SourceM {
    typedef UTF16T UnitT;
    static UCS4 unit(const U8BitT* p)
    {
        UTF16T value;
        std::memcpy(&value, p, sizeof value);
        return SWAP ? OSASwap16(value) : value;
    }
    static size_t read(const U8BitT* p, size_t n, UCS4& ch)
    {
        ch = unit(p);
        if (!UTF16IsSurrogate(ch)) return sizeof(UTF16T);
        if (!UTF16Is1st(ch) || n < 2 * sizeof(UTF16T)) return 0;
        const UCS4 second = unit(p + sizeof(UTF16T));
        ch = ((ch & 0x3FF) << 10) + (second & 0x3FF) + 0x10000;
        return UTF16Is2nd(second) ? 2 * sizeof(UTF16T) : 0;
    }
};

struct WideSourceC {
    typedef UCS4 UnitT;
    static size_t read(const U8BitT* p, size_t, UCS4& ch)
    {
        std::memcpy(&ch, p, sizeof ch);
        return ch < 0x200000 ? sizeof ch : 0;
    }
};

inline size_t utf8Size(UCS4 ch) { return ch < 0x80 ? 1 : ch < 0x800 ? 2 : ch < 0x10000 ? 3 : 4; }

template <class SourceC>
ProgressT toUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize, ProgressT done)
{
    while (n - done.consumed >= sizeof(typename SourceC::UnitT)) {
        UCS4 ch;
        const size_t used = SourceC::read(in + done.consumed, n - done.consumed, ch);
        if (used == 0 || utf8Size(ch) > outSize - done.written) break;
        UTF8T* end = out + done.written;
        UTF8Put(end, ch);
        done.consumed += used;
        done.written += utf8Size(ch);
        ++done.chars;
    }
    return done;
}

template <class SourceC>
ProgressT toUtf8Length(const U8BitT* in, size_t n, ProgressT done)
{
    while (n - done.consumed >= sizeof(typename SourceC::UnitT)) {
        UCS4 ch;
        const size_t used = SourceC::read(in + done.consumed, n - done.consumed, ch);
        if (used == 0) break;
        done.consumed += used;
        done.written += utf8Size(ch);
        ++done.chars;
    }
    return done;
}

}   // namespace

size_t asciiPrefix(const UTF8T* in, size_t n)
{
    size_t at = WITH_VECTORS(n, asciiPrefix(in, n));
    while (n - at >= sizeof(WordT) && (loadWord(in + at) & HIGH_BITS) == 0) at += sizeof(WordT);
    while (at < n && in[at] < 0x80) ++at;
    return at;
}

size_t equalCIPrefix(const UTF8T* a, const UTF8T* b, size_t n)
{
    const auto lower = [](UTF8T byte) { return byte >= 'A' && byte <= 'Z' ? byte | 0x20 : byte; };
    size_t at = WITH_VECTORS(n, equalCIPrefix(a, b, n));
    while (at < n && (a[at] | b[at]) < 0x80 && lower(a[at]) == lower(b[at])) ++at;
    return at;
}

size_t countHigh(const UTF8T* in, size_t n)
{
    utfvectors::CountT done = WITH_VECTORS(n, countHigh(in, n));
    for (; n - done.at >= sizeof(WordT); done.at += sizeof(WordT)) {
        done.count += countHighBits(loadWord(in + done.at) & HIGH_BITS);
    }
    for (; done.at < n; ++done.at) done.count += in[done.at] >> 7;
    return done.count;
}

size_t validPrefix(const UTF8T* in, size_t n, size_t* chars)
{
    ProgressT done = WITH_VECTORS(n, validPrefix(in, n));
    while (done.consumed < n) {
        const size_t ascii = asciiPrefix(in + done.consumed, n - done.consumed);
        done.consumed += ascii;
        done.chars += ascii;
        UCS4 ch;
        const size_t len = done.consumed < n ? readChar(in + done.consumed, n - done.consumed, ch) : 0;
        if (len == 0) break;
        done.consumed += len;
        ++done.chars;
    }
    if (chars != nullptr) *chars = done.chars;
    return done.consumed;
}

size_t countChars(const UTF8T* in, size_t n)
{
    utfvectors::CountT done = WITH_VECTORS(n, countChars(in, n));
    for (; n - done.at >= sizeof(WordT); done.at += sizeof(WordT)) {
        done.count += countHighBits(firstBits(loadWord(in + done.at)));
    }
    for (; done.at < n; ++done.at) done.count += UTF8Is1st(in[done.at]);
    return done.count;
}

size_t advance(const UTF8T* in, size_t n, size_t chars, size_t* missing)
{
    const utfvectors::CountT done = WITH_VECTORS(n, advance(in, n, chars));
    size_t at = done.at;
    chars -= done.count;
    while (n - at >= sizeof(WordT)) {
        const size_t firsts = countHighBits(firstBits(loadWord(in + at)));
        if (firsts > chars) break;
        chars -= firsts;
        at += sizeof(WordT);
    }
    // All characters that begin before `at` are counted; the last of them may reach beyond it.
    for (; at < n; ++at) {
        if (!UTF8Is1st(in[at])) continue;
        if (chars == 0) break;
        --chars;
    }
    if (missing != nullptr) *missing = chars;
    return at;
}

ProgressT utf8ToLatin1(const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
{
    return fromUtf8<Latin1UnitsC>(in, n, out, outSize, WITH_VECTORS(n, utf8ToLatin1(in, n, out, outSize)));
}

ProgressT utf8ToUtf16(const UTF8T* in, size_t n, U8BitT* out, size_t outSize, bool swap)
{
    const ProgressT done = WITH_VECTORS(n, utf8ToUtf16(in, n, out, outSize, swap));
    return swap ? fromUtf8<Utf16UnitsM<true>>(in, n, out, outSize, done)
                : fromUtf8<Utf16UnitsM<false>>(in, n, out, outSize, done);
}

ProgressT utf8ToWide(const UTF8T* in, size_t n, U8BitT* out, size_t outSize)
{
    return fromUtf8<WideUnitsC>(in, n, out, outSize, WITH_VECTORS(n, utf8ToWide(in, n, out, outSize)));
}

ProgressT utf8ToUtf16Length(const UTF8T* in, size_t n)
{
    ProgressT done = WITH_VECTORS(n, utf8ToUtf16Length(in, n));
    while (done.consumed < n) {
        UCS4 ch;
        const size_t len = readChar(in + done.consumed, n - done.consumed, ch);
        if (len == 0 || ch > Utf16UnitsM<false>::LIMIT) break;
        done.consumed += len;
        done.written += sizeof(UTF16T) * Utf16UnitsM<false>::count(ch);
    }
    return done;
}

ProgressT latin1ToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize)
{
    return toUtf8<Latin1SourceC>(in, n, out, outSize, WITH_VECTORS(n, latin1ToUtf8(in, n, out, outSize)));
}

ProgressT utf16ToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize, bool swap)
{
    const ProgressT done = WITH_VECTORS(n, utf16ToUtf8(in, n, out, outSize, swap));
    return swap ? toUtf8<Utf16SourceM<true>>(in, n, out, outSize, done)
                : toUtf8<Utf16SourceM<false>>(in, n, out, outSize, done);
}

ProgressT utf16ToUtf8Length(const U8BitT* in, size_t n, bool swap)
{
    const ProgressT done = WITH_VECTORS(n, utf16ToUtf8Length(in, n, swap));
    return swap ? toUtf8Length<Utf16SourceM<true>>(in, n, done) : toUtf8Length<Utf16SourceM<false>>(in, n, done);
}

ProgressT wideToUtf8(const U8BitT* in, size_t n, UTF8T* out, size_t outSize)
{
    return toUtf8<WideSourceC>(in, n, out, outSize, WITH_VECTORS(n, wideToUtf8(in, n, out, outSize)));
}

ProgressT wideToUtf8Length(const U8BitT* in, size_t n)
{
    return toUtf8Length<WideSourceC>(in, n, WITH_VECTORS(n, wideToUtf8Length(in, n)));
}

}   // namespace utfkernels
