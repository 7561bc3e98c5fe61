// Case change and comparison of bodies.

#include "assertfatal.h"
#include "string/api/utfkernels.h"
#include "string/impl/casemapping.h"
#include "string/impl/stringim.h"
#include "string/impl/textview.h"
#include "string/impl/utf8inline.h"
#include "ucs4.h"
#include "utf8.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

// A difference of sizes or characters as the result of a comparison.
int saturated(long difference) { return static_cast<int>(std::clamp<long>(difference, INT_MIN, INT_MAX)); }

int sizeDifference(size_t a, size_t b) { return saturated(static_cast<long>(a) - static_cast<long>(b)); }

// Where two byte sequences of one size, which are not equal, differ first.
size_t firstDifference(const UTF8T* a, const UTF8T* b, size_t size)
{
    static_assert(std::endian::native == std::endian::little);
    const size_t chunk = 256;   // the C library compares faster, but does not tell where
    size_t at = 0;
    while (size - at > chunk && std::memcmp(a + at, b + at, chunk) == 0) at += chunk;
    for (; size - at >= 8; at += 8) {
        const uint64_t difference = loadEight(a + at) ^ loadEight(b + at);
        if (difference != 0) return at + static_cast<size_t>(std::countr_zero(difference)) / 8;
    }
    while (a[at] == b[at]) ++at;
    return at;
}

// Reads a run of decimal digits as a number, wrapping at 2^64.
uint64_t readNumber(const UTF8T*& p, const UTF8T* end)
{
    uint64_t value = 0;
    while (p < end) {
        const UTF8T* next = p;
        const int digit = UCS4Digit(UTF8Get(next));
        if (digit < 0) break;
        value = value * 10 + static_cast<uint64_t>(digit);
        p = next;
    }
    return value;
}

template <class NumberT>
int order(NumberT a, NumberT b)
{
    return a == b ? 0 : a < b ? -1 : 1;
}

// Compares one step of a natural comparison: two numbers or two characters. Moves both places behind
// what it compared.
int compareStep(const UTF8T*& a, const UTF8T* endA, const UTF8T*& b, const UTF8T* endB, bool case_indep)
{
    const UTF8T* nextA = a;
    const UTF8T* nextB = b;
    const UCS4 chA = UTF8Get(nextA);
    const UCS4 chB = UTF8Get(nextB);
    const bool isDigitA = UCS4Digit(chA) >= 0;
    const bool isDigitB = UCS4Digit(chB) >= 0;
    if (isDigitA && isDigitB) {
        const uint64_t numberA = readNumber(a, endA);
        return order(numberA, readNumber(b, endB));
    }
    if (isDigitA != isDigitB) return isDigitA ? -1 : 1;
    a = nextA;
    b = nextB;
    return case_indep ? order(LowerCaseT::map(chA), LowerCaseT::map(chB)) : order(chA, chB);
}

}   // namespace

// ---- comparison -------------------------------------------------------------------------------------

// The bytes of UTF-8 sort as the code points do.
int StringImplC::compare(const StringImplI& other) const
{
    if (&other == this) return 0;
    const TextViewT text(other);
    const size_t common = std::min(numBytes, text.size);
    if (std::memcmp(begin(), text.begin, common) == 0) return sizeDifference(numBytes, text.size);
    const size_t at = firstDifference(begin(), text.begin, common);
    return begin()[at] - text.begin[at];
}

int StringImplC::compareNat(const StringImplI& other, bool case_indep) const
{
    if (&other == this) return 0;
    const TextViewT text(other);
    const UTF8T* a = begin();
    const UTF8T* b = text.begin;
    while (a < end() && b < text.end()) {
        const int result = compareStep(a, end(), b, text.end(), case_indep);
        if (result != 0) return result;
    }
    return order(a < end(), b < text.end());
}

// Neither walk goes beyond the byte length of the shorter text, even where lower case is longer.
int StringImplC::collate(const StringImplI& other) const
{
    if (&other == this) return 0;
    const TextViewT text(other);
    const size_t common = std::min(numBytes, text.size);
    const UTF8T* a = begin();
    const UTF8T* b = text.begin;
    const UTF8T* const endA = a + common;
    const UTF8T* const endB = b + common;
    while (a < endA && b < endB) {
        if (endA - a >= 8 && endB - b >= 8 && areEqualASCIIButForCase(loadEight(a), loadEight(b))) {
            const size_t left = static_cast<size_t>(std::min(endA - a, endB - b)) - 8;
            const size_t same = 8 + utfkernels::equalCIPrefix(a + 8, b + 8, left);
            a += same;
            b += same;
            continue;
        }
        const UCS4 lowerA = LowerCaseT::map(readChar(a, endA));
        const UCS4 lowerB = LowerCaseT::map(readChar(b, endB));
        if (lowerA != lowerB) return saturated(static_cast<long>(lowerA) - static_cast<long>(lowerB));
    }
    return sizeDifference(numBytes, text.size);
}

// ---- case change ------------------------------------------------------------------------------------

// In place: the mapped text never gets ahead of what is still to be read, since no well-formed character
// becomes longer. Malformed bytes can (each becomes a three-byte U+FFFD) and take the slow way.
template <class CaseM>
void StringImplC::transformChars()
{
    if (!TVX_CHECK(!isShared(), "!isShared()")) return;
    if (numBytes == 0) return;
    UTF8T* out = data;
    const UTF8T* in = data;
    const UTF8T* const last = end();
    long chars = 0;
    while (in < last) {
        if (*in < 0x80 && last - in >= 8 && areASCII(loadEight(in))) {
            storeEight(out, CaseM::mapASCII(loadEight(in)));
            in += 8;
            out += 8;
            chars += 8;
            continue;
        }
        const UTF8T* next = in;
        const UCS4 ch = CaseM::map(readChar(next, last));
        if (out + charSize(ch) > next) {
            transformBeyondBuffer<CaseM>(static_cast<size_t>(out - data), chars, ch, next);
            return;
        }
        writeChar(out, ch);
        in = next;
        ++chars;
    }
    setText(static_cast<size_t>(out - data), chars);
}

// Goes on into a new buffer, with character `ch` next and the unmapped text from `rest`.
template <class CaseM>
void StringImplC::transformBeyondBuffer(size_t written, long chars, UCS4 ch, const UTF8T* rest)
{
    StringImplC mapped;
    mapped.numChars = 0;
    mapped.appendUTF8(data, written, static_cast<size_t>(chars));
    mapped += ch;
    while (rest < end()) mapped += CaseM::map(UTF8Get(rest));

    if (hasOwnBuffer()) std::free(data);
    data = std::exchange(mapped.data, nullptr);
    numAlloc = mapped.numAlloc;
    setText(mapped.numBytes, mapped.knownChars());
}

void StringImplC::toLower() { transformChars<LowerCaseT>(); }
void StringImplC::toUpper() { transformChars<UpperCaseT>(); }
