#include "utf16.h"

#include "assertfatal.h"

namespace {

const UTF16T REPLACEMENT = 0xFFFD;

UTF16T inOrder(UTF16T unit, bool swap) { return swap ? OSASwap16(unit) : unit; }

}   // namespace

size_t UTF16Len(UCS4 ch)
{
    if (ch < 0x10000) return 1;
    return TVX_CHECK(ch <= 0x10FFFF, "UCS4IsUnicode(ch)") ? 2 : 1;
}

void UTF16Put(UTF16T*& p, UCS4 ch, bool swap)
{
    if (ch > 0xFFFF && TVX_CHECK(ch <= 0x10FFFF, "UCS4IsUnicode(ch)")) {
        *p++ = inOrder(static_cast<UTF16T>(0xD800 + ((ch - 0x10000) >> 10)), swap);
        *p++ = inOrder(static_cast<UTF16T>(0xDC00 + (ch & 0x3FF)), swap);
    } else {
        *p++ = inOrder(ch > 0xFFFF ? REPLACEMENT : static_cast<UTF16T>(ch), swap);
    }
}

UCS4 UTF16Get(const UTF16T*& p, bool swap)
{
    const UCS4 first = inOrder(*p++, swap);
    if (!UTF16IsSurrogate(first)) return first;
    if (!TVX_CHECK(UTF16Is1st(first), "UTF16Is1st(c1)")) return REPLACEMENT;
    const UCS4 second = inOrder(*p, swap);
    if (!TVX_CHECK(UTF16Is2nd(second), "UTF16Is2nd(c2)")) return REPLACEMENT;
    ++p;
    return ((first & 0x3FF) << 10) + (second & 0x3FF) + 0x10000;
}
