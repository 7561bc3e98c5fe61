#include "simd.h"
#include "utf8.h"
#include "utfblock.h"
#include "utfvectors.h"

#include <cstdint>

#if TVX_SIMD

namespace utfvectors {

TVX_SIMD_BEGIN

namespace {

size_t popCount(unsigned long bits) { return static_cast<size_t>(__builtin_popcountl(bits)); }

// The well-formed prefix, its characters, and among them those of four bytes.
struct ScanT {
    size_t at = 0;
    size_t chars = 0;
    size_t fours = 0;
};

// Takes a character back that may be cut at the end.
void dropLastChar(const UTF8T* in, ScanT& scan)
{
    if (scan.at == 0 || in[scan.at - 1] < 0x80) return;
    do --scan.at;
    while (!UTF8Is1st(in[scan.at]));
    --scan.chars;
    if (in[scan.at] >= 0xF0) --scan.fours;
}

template <bool UNICODE>
void scanBlocks(const UTF8T* in, size_t n, ScanT& scan)
{
    simd::U8x32 before = {};   // zeros also after a block that ends with ASCII
    bool endsWhole = true;
    for (; n - scan.at >= BLOCK; scan.at += BLOCK) {
        const BlockT block(in + scan.at);
        if (block.isAscii() && endsWhole) {
            scan.chars += BLOCK;
            continue;
        }
        if (!isWellFormed<UNICODE>(before, block)) break;
        scan.chars += popCount(block.firsts());
        if (UNICODE) scan.fours += popCount(block.fours());
        endsWhole = in[scan.at + BLOCK - 1] < 0x80;
        before = endsWhole ? simd::U8x32{} : block.second;
    }
    dropLastChar(in, scan);
}

// The last bytes, as a block that is filled up with zeros.
template <bool UNICODE>
void scanTail(const UTF8T* in, size_t n, ScanT& scan)
{
    const size_t left = n - scan.at;
    if (left == 0 || left > BLOCK) return;
    UTF8T padded[BLOCK] = {};
    std::memcpy(padded, in + scan.at, left);
    const BlockT block(padded);
    if (!isWellFormed<UNICODE>(simd::U8x32{}, block)) return;
    scan.at = n;
    scan.chars += popCount(block.firsts()) - (BLOCK - left);
    if (UNICODE) scan.fours += popCount(block.fours());
    dropLastChar(in, scan);
}

template <bool UNICODE>
ScanT scanned(const UTF8T* in, size_t n)
{
    ScanT scan;
    scanBlocks<UNICODE>(in, n, scan);
    scanTail<UNICODE>(in, n, scan);
    return scan;
}

template <class MaskT>
CountT countBits(const UTF8T* in, size_t n, size_t limit, MaskT mask)
{
    CountT done;
    for (; n - done.at >= BLOCK; done.at += BLOCK) {
        const size_t count = done.count + popCount(mask(BlockT(in + done.at)));
        if (count > limit) break;
        done.count = count;
    }
    return done;
}

TVX_STEP simd::U8x32 lowerAscii(simd::U8x32 v) { return v | (simd::U8x32(v - 'A' < 26) & 0x20); }

}   // namespace

size_t asciiPrefix(const UTF8T* in, size_t n)
{
    size_t at = 0;
    while (n - at >= BLOCK && BlockT(in + at).isAscii()) at += BLOCK;
    while (n - at >= sizeof(simd::U8x16)) {
        const unsigned high = simd::highBits(simd::load<simd::U8x16>(in + at));
        if (high != 0) return at + static_cast<size_t>(__builtin_ctz(high));
        at += sizeof(simd::U8x16);
    }
    return at;
}

size_t equalCIPrefix(const UTF8T* a, const UTF8T* b, size_t n)
{
    size_t at = 0;
    for (; n - at >= sizeof(simd::U8x32); at += sizeof(simd::U8x32)) {
        const simd::U8x32 x = simd::load<simd::U8x32>(a + at);
        const simd::U8x32 y = simd::load<simd::U8x32>(b + at);
        if (simd::any((lowerAscii(x) ^ lowerAscii(y)) | ((x | y) & 0x80))) break;
    }
    return at;
}

CountT countHigh(const UTF8T* in, size_t n)
{
    return countBits(in, n, SIZE_MAX, [](const BlockT& block) { return block.high(); });
}

CountT countChars(const UTF8T* in, size_t n) { return advance(in, n, SIZE_MAX); }

CountT advance(const UTF8T* in, size_t n, size_t chars)
{
    return countBits(in, n, chars, [](const BlockT& block) { return block.firsts(); });
}

ProgressT validPrefix(const UTF8T* in, size_t n)
{
    const ScanT scan = scanned<false>(in, n);
    return {scan.at, scan.at, scan.chars};
}

ProgressT utf8ToUtf16Length(const UTF8T* in, size_t n)
{
    const ScanT scan = scanned<true>(in, n);
    return {scan.at, (scan.chars + scan.fours) * sizeof(UTF16T), scan.chars};
}

TVX_SIMD_END

}   // namespace utfvectors

#endif   // TVX_SIMD
