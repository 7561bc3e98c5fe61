// Character positions of a body: which byte a character starts at, and how many there are.

#include "assertfatal.h"
#include "string/api/utfkernels.h"
#include "string/impl/stringim.h"
#include "string/impl/utf8inline.h"
#include "utf8.h"

#include <algorithm>
#include <cstring>

namespace {

// Stepping back goes byte by byte, skipping ahead many bytes at a time.
const long BACKWARD_COST = 8;

// Bytes that are looked at for a zero and then counted while they are still near.
const size_t COUNT_STEP = 16 * 1024;

}   // namespace

StringImplC::PlaceT StringImplC::memo() const noexcept
{
    const uint64_t packed = m_memo.load(std::memory_order_relaxed);
    return {begin() + static_cast<uint32_t>(packed), static_cast<long>(packed >> 32)};
}

void StringImplC::savePos(long n, const UTF8T* ptr) const
{
    const bool isInside = ptr >= begin() && ptr <= end();
    if (!TVX_CHECK(isInside, "ptr >= data && ptr <= data+numBytes")) return;
    const size_t offset = static_cast<size_t>(ptr - begin());
    if (n <= 0 || static_cast<size_t>(n) > UINT32_MAX || offset > UINT32_MAX) return;
    m_memo.store(static_cast<uint64_t>(n) << 32 | offset, std::memory_order_relaxed);
}

StringImplC::ShapeT StringImplC::shape() const noexcept
{
    ShapeT shape = m_shape.load(std::memory_order_relaxed);
    if (shape != SHAPE_UNKNOWN) return shape;
    if (std::memchr(begin(), 0, numBytes) != nullptr) {
        shape = SHAPE_ANY;
    } else {
        shape = utfkernels::asciiPrefix(begin(), numBytes) == numBytes ? SHAPE_ASCII : SHAPE_ZERO_FREE;
    }
    m_shape.store(shape, std::memory_order_relaxed);
    return shape;
}

// Takes into account bytes that have come into the text.
void StringImplC::mergeShape(const UTF8T* added, size_t n) noexcept
{
    const ShapeT before = m_shape.load(std::memory_order_relaxed);
    if (before == SHAPE_UNKNOWN || before == SHAPE_ANY) return;
    ShapeT after = before;
    if (std::memchr(added, 0, n) != nullptr) {
        after = SHAPE_ANY;
    } else if (utfkernels::asciiPrefix(added, n) != n) {
        after = SHAPE_ZERO_FREE;
    }
    m_shape.store(std::max(before, after), std::memory_order_relaxed);
}

// Counting stops at a zero byte inside the text. A count that came to the end leaves the memo there, so that
// counting after an append looks at the new part only.
long StringImplC::length() const
{
    if (knownChars() >= 0) return knownChars();

    PlaceT place = memo();
    const UTF8T* zero = nullptr;
    while (place.at < end() && zero == nullptr) {
        size_t step = std::min(COUNT_STEP, static_cast<size_t>(end() - place.at));
        zero = static_cast<const UTF8T*>(std::memchr(place.at, 0, step));
        if (zero != nullptr) step = static_cast<size_t>(zero - place.at);
        place.index += static_cast<long>(utfkernels::countChars(place.at, step));
        place.at += step;
    }
    if (zero == nullptr) savePos(place.index, place.at);
    numChars.store(place.index, std::memory_order_relaxed);
    return place.index;
}

UCS4 StringImplC::operator[](long index) const
{
    const UTF8T* at = nthChar(index).at;
    return at != nullptr ? readChar(at, end()) : 0;
}

// An index beyond a text that is known to be ASCII is the end, in silence; beyond any other text it is
// an assertion, the end, and no memo.
StringImplC::PlaceT StringImplC::nthChar(long n) const
{
    if (!TVX_CHECK(n >= 0, "n >= 0")) return {nullptr, n};
    const long size = static_cast<long>(numBytes);
    if (isKnownASCII()) {
        const long at = std::min(n, size);
        return {begin() + at, at};
    }
    const PlaceT saved = memo();
    if (n - saved.index == 1 && saved.at < end() && *saved.at != 0) {   // the step of a forward scan
        const UTF8T* const at = saved.at + std::min(UTF8Len(saved.at), static_cast<size_t>(end() - saved.at));
        savePos(n, at);
        return {at, n};
    }
    if (n <= size && shape() == SHAPE_ASCII) return {begin() + n, n};

    const PlaceT from = n >= saved.index ? saved : PlaceT{begin(), 0};
    const PlaceT to = n >= saved.index ? PlaceT{end(), knownChars()} : saved;
    size_t nchar = 0;
    const UTF8T* const at = walk(from, to, n, &nchar);
    if (!TVX_CHECK(!nchar, "!nchar")) return {at, n - static_cast<long>(nchar)};
    savePos(n, at);
    return {at, n};
}

// From the nearer of two places (`to` may be uncounted, with index -1) to character n; *nchar is set to
// the number of characters that the text lacks. Around a zero byte the way decides what is found: only
// the one from behind passes it, and is taken for the last third.
const UTF8T* StringImplC::walk(const PlaceT& from, const PlaceT& to, long n, size_t* nchar) const
{
    const long ahead = n - from.index;
    const long back = to.index - n;
    const bool hasZero = m_shape.load(std::memory_order_relaxed) == SHAPE_ANY;   // nthChar has asked for the shape
    const bool isNearEnd = ahead >= 2 * back && (hasZero || ahead / BACKWARD_COST > back);
    if (back < 0 || !isNearEnd) return skip(from.at, static_cast<size_t>(ahead), nchar);

    const UTF8T* at = to.at;
    for (long i = 0; i < back && at != nullptr; ++i) at = backup(at);
    return at != nullptr ? at : begin();
}

const UTF8T* StringImplC::skip(const UTF8T* from, size_t count, size_t* missing) const noexcept
{
    if (shape() != SHAPE_ANY) {
        return from + utfkernels::advance(from, static_cast<size_t>(end() - from), count, missing);
    }
    const UTF8T* at = from;
    for (; count > 0 && at < end() && *at != 0; --count) {
        at += std::min(UTF8Len(at), static_cast<size_t>(end() - at));
    }
    *missing = count;
    return at;
}

// The character before p; null when p is at the start.
const UTF8T* StringImplC::backup(const UTF8T* p) const noexcept
{
    do {
        if (p == begin()) return nullptr;
        --p;
    } while (!UTF8Is1st(*p));
    return p;
}
