#include "ucs4.h"

#include "ucs4_tables.h"

#include <algorithm>
#include <iterator>

namespace {

struct RangeT {
    UTF16T low;
    UTF16T high;
};

// Runs of decimal digits, ascending. The last one is the digit nine; a run of nine has no zero.
const RangeT DIGITS[] = {
    {0x0030, 0x0039}, {0x0660, 0x0669}, {0x06F0, 0x06F9}, {0x0966, 0x096F}, {0x09E6, 0x09EF}, {0x0A66, 0x0A6F},
    {0x0AE6, 0x0AEF}, {0x0B66, 0x0B6F}, {0x0BE7, 0x0BEF}, {0x0C66, 0x0C6F}, {0x0CE6, 0x0CEF}, {0x0D66, 0x0D6F},
    {0x0E50, 0x0E59}, {0x0ED0, 0x0ED9}, {0x0F20, 0x0F29}, {0x1040, 0x1049}, {0x1369, 0x1371}, {0x17E0, 0x17E9},
    {0x1810, 0x1819}, {0x3021, 0x3029}, {0xFF10, 0xFF19},
};
const UCS4 IDEOGRAPHIC_ZERO = 0x3007;

const RangeT IDEOGRAPHS[] = {
    {0x3006, 0x3007}, {0x3021, 0x3029}, {0x3038, 0x303A}, {0x3400, 0x4DB5}, {0x4E00, 0x9FA5}, {0xF900, 0xFA2D},
};

// The range that holds the character, or null.
template <size_t N>
const RangeT* rangeOf(const RangeT (&ranges)[N], UCS4 ch)
{
    const RangeT* range =
        std::lower_bound(ranges, ranges + N, ch, [](const RangeT& r, UCS4 wanted) { return r.high < wanted; });
    return range != ranges + N && range->low <= ch ? range : nullptr;
}

}   // namespace

int UCS4Digit(UCS4 ch)
{
    if (ch - '0' < 10) return static_cast<int>(ch - '0');
    if (ch < 0x80) return -1;
    if (ch == IDEOGRAPHIC_ZERO) return 0;
    const RangeT* range = rangeOf(DIGITS, ch);
    return range != nullptr ? 9 - static_cast<int>(range->high - ch) : -1;
}

bool UCS4IsDecimal(UCS4 ch) { return UCS4Digit(ch) >= 0; }
bool UCS4IsNumeric(UCS4 ch) { return UCS4Digit(ch) >= 0; }

bool UCS4IsAlphabetic(UCS4 ch)
{
    using namespace ucs4tables;
    return toLower(ch) != ch || toUpper(ch) != ch ||
           std::binary_search(CASELESS_LETTER, CASELESS_LETTER + CASELESS_LETTERS, ch);
}

bool UCS4IsIdeographic(UCS4 ch) { return rangeOf(IDEOGRAPHS, ch) != nullptr; }

UCS4 UCS4ToLower(UCS4 ch) { return ucs4tables::toLower(ch); }
UCS4 UCS4ToUpper(UCS4 ch) { return ucs4tables::toUpper(ch); }

UCS4 UCS4ToTitle(UCS4 ch)
{
    for (const ucs4tables::TitleT& title : ucs4tables::TITLE) {
        if (title.ch == ch) return static_cast<UCS4>(static_cast<int>(ch) + title.difference);
        // The form between the two, which is in title case already.
        if (title.difference == 1 && title.ch + 1u == ch) return ch;
    }
    return ucs4tables::toUpper(ch);
}
