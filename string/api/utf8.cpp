#include "utf8.h"

#include "assertfatal.h"

namespace {

const UCS4 REPLACEMENT = 0xFFFD;

// What must hold of a character of two to six bytes, by the number of its continuation bytes.
const char* const CONTINUATION[] = {
    "",
    "!UTF8Is1st(cp[1])",
    "!UTF8Is1st(cp[1]) && !UTF8Is1st(cp[2])",
    "!UTF8Is1st(cp[1]) && !UTF8Is1st(cp[2]) && !UTF8Is1st(cp[3])",
    "!UTF8Is1st(cp[1]) && !UTF8Is1st(cp[2]) && !UTF8Is1st(cp[3]) && !UTF8Is1st(cp[4])",
    "!UTF8Is1st(cp[1]) && !UTF8Is1st(cp[2]) && !UTF8Is1st(cp[3]) && !UTF8Is1st(cp[4]) && !UTF8Is1st(cp[5])",
};

}   // namespace

size_t UTF8Len(UCS4 ch)
{
    if (ch < 0x80) return 1;
    if (ch < 0x800) return 2;
    if (ch < 0x10000) return 3;
    if (ch < 0x200000) return 4;
    if (ch < 0x4000000) return 5;
    return TVX_CHECK(ch <= 0x7FFFFFFF, "ch <= 0x7FFFFFFF") ? 6 : 0;
}

void UTF8PutLong(UTF8T*& p, UCS4 ch)
{
    if (ch > 0x7FFFFFFF) return;
    const size_t len = UTF8Len(ch);
    for (size_t i = len - 1; i > 0; --i) {
        p[i] = static_cast<UTF8T>(0x80 | (ch & 0x3F));
        ch >>= 6;
    }
    p[0] = static_cast<UTF8T>(0xFF00u >> len | ch);
    p += len;
}

UCS4 UTF8GetLong(const UTF8T*& p)
{
    const size_t len = UTF8Len(p);
    if (!TVX_CHECK(len > 1, "non-utf8 in string")) {
        ++p;
        return REPLACEMENT;
    }
    UCS4 ch = *p++ & (0x7Fu >> len);
    for (size_t i = 1; i < len; ++i) {
        if (!TVX_CHECK(!UTF8Is1st(*p), CONTINUATION[len - 1])) return REPLACEMENT;
        ch = ch << 6 | (*p++ & 0x3Fu);
    }
    return ch;
}
