#include "string/impl/textsearch.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

// Sixteen bytes at a time in the compiler's own vectors, which every machine has in some form, and four
// of them between two looks at the result.
typedef unsigned char BlockT __attribute__((vector_size(16)));
typedef uint64_t HalvesT __attribute__((vector_size(16)));
const size_t BLOCK = sizeof(BlockT);
const size_t BLOCKS = 4;

// Each byte that is compared in vain is paid from this budget; whoever runs out of it goes on with the
// method whose worst case is linear. Ordinary texts never do.
size_t budgetFor(size_t haySize) { return 1024 + haySize; }

BlockT load(const UTF8T* p)
{
    BlockT block;
    std::memcpy(&block, p, sizeof block);
    return block;
}

// 0xFF in each byte where the first and the last byte of the needle stand at their distance.
BlockT candidates(const UTF8T* at, size_t lastOffset, const BlockT& first, const BlockT& last)
{
    return BlockT(load(at) == first) & BlockT(load(at + lastOffset) == last);
}

struct NeedleT {
    const UTF8T* bytes;
    size_t size;
    bool standsAt(const UTF8T* at) const { return std::memcmp(at, bytes, size) == 0; }
};

// The first hit among the candidates of eight bytes, the first of which is at `at`.
const UTF8T* firstHit(const UTF8T* at, uint64_t marks, const NeedleT& needle, size_t& budget)
{
    static_assert(std::endian::native == std::endian::little);
    while (marks != 0) {
        const int byte = std::countr_zero(marks) / 8;
        if (needle.standsAt(at + byte)) return at + byte;
        budget -= std::min(budget, needle.size);
        marks &= ~(uint64_t{0xFF} << (8 * byte));
    }
    return nullptr;
}

const UTF8T* firstHit(const UTF8T* at, const BlockT (&marks)[BLOCKS], const NeedleT& needle, size_t& budget)
{
    for (const BlockT& block : marks) {
        const HalvesT halves = HalvesT(block);
        const UTF8T* hit = firstHit(at, halves[0], needle, budget);
        if (hit == nullptr) hit = firstHit(at + BLOCK / 2, halves[1], needle, budget);
        if (hit != nullptr) return hit;
        at += BLOCK;
    }
    return nullptr;
}

const UTF8T* findByMemmem(const UTF8T* begin, const UTF8T* end, const NeedleT& needle)
{
    return static_cast<const UTF8T*>(memmem(begin, static_cast<size_t>(end - begin), needle.bytes, needle.size));
}

// Compares from the back (Knuth, Morris and Pratt on the reversed texts).
const UTF8T* findLastLinear(const UTF8T* begin, const UTF8T* end, const NeedleT& needle)
{
    const auto reversed = [&needle](size_t i) { return needle.bytes[needle.size - 1 - i]; };
    std::vector<size_t> border(needle.size, 0);   // longest proper border of each reversed prefix
    for (size_t i = 1, k = 0; i < needle.size; ++i) {
        while (k > 0 && reversed(i) != reversed(k)) k = border[k - 1];
        if (reversed(i) == reversed(k)) ++k;
        border[i] = k;
    }
    size_t matched = 0;
    for (const UTF8T* at = end; at > begin;) {
        --at;
        while (matched > 0 && *at != reversed(matched)) matched = border[matched - 1];
        if (*at == reversed(matched)) ++matched;
        if (matched == needle.size) return at;
    }
    return nullptr;
}

}   // namespace

const UTF8T* textsearch::findFirst(const UTF8T* begin, const UTF8T* end, const UTF8T* bytes, size_t n)
{
    const size_t size = static_cast<size_t>(end - begin);
    if (n == 0 || n > size) return nullptr;
    if (n == 1) return static_cast<const UTF8T*>(std::memchr(begin, bytes[0], size));

    const NeedleT needle = {bytes, n};
    const BlockT first = BlockT{} + bytes[0];
    const BlockT last = BlockT{} + bytes[n - 1];
    size_t budget = budgetFor(size);
    const UTF8T* at = begin;
    const UTF8T* const lastStart = end - n;
    while (lastStart - at >= static_cast<ptrdiff_t>(BLOCKS * BLOCK) && budget > 0) {
        BlockT marks[BLOCKS];
        for (size_t i = 0; i < BLOCKS; ++i) marks[i] = candidates(at + i * BLOCK, n - 1, first, last);
        const HalvesT any = HalvesT((marks[0] | marks[1]) | (marks[2] | marks[3]));
        if ((any[0] | any[1]) != 0) {
            const UTF8T* const hit = firstHit(at, marks, needle, budget);
            if (hit != nullptr) return hit;
        }
        at += BLOCKS * BLOCK;
    }
    return findByMemmem(at, end, needle);
}

const UTF8T* textsearch::findLast(const UTF8T* begin, const UTF8T* end, const UTF8T* bytes, size_t n)
{
    if (n == 0 || n > static_cast<size_t>(end - begin)) return nullptr;
    const NeedleT needle = {bytes, n};
    size_t budget = budgetFor(static_cast<size_t>(end - begin));
    const UTF8T* limit = end - n + 1;   // behind the last possible start
    while (budget > 0) {
        limit = static_cast<const UTF8T*>(memrchr(begin, bytes[0], static_cast<size_t>(limit - begin)));
        if (limit == nullptr || needle.standsAt(limit)) return limit;
        budget -= std::min(budget, n);
    }
    return findLastLinear(begin, limit + n - 1, needle);
}
