#include "wellformed.h"

#include "cstrings.h"
#include "stringc.h"
#include "utf16.h"
#include "utf8.h"

#include <algorithm>
#include <cstring>

namespace {

const UTF8T* bytesOf(const std::string& text) { return reinterpret_cast<const UTF8T*>(text.data()); }

size_t asciiPrefix(const std::string& text)
{
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    return static_cast<size_t>(std::find_if_not(text.begin(), text.end(), isAscii) - text.begin());
}

size_t utf8Prefix(const std::string& text)
{
    const UTF8T* const begin = bytesOf(text);
    size_t at = 0;
    while (at < text.size()) {
        const UTF8T first = begin[at];
        const size_t length = UTF8Len(begin + at);
        const bool isStray = first >= 0x80 && length == 1;
        const bool isCut = length > text.size() - at;
        if (isStray || isCut || std::any_of(begin + at + 1, begin + at + length, UTF8Is1st)) break;
        at += length;
    }
    return at;
}

UTF16T unitAt(const std::string& text, size_t at, bool swap)
{
    UTF16T unit;
    std::memcpy(&unit, text.data() + at, sizeof unit);
    return swap ? OSASwap16(unit) : unit;
}

size_t utf16Prefix(const std::string& text, bool swap)
{
    size_t at = 0;
    while (text.size() - at >= 2) {
        const UTF16T unit = unitAt(text, at, swap);
        size_t length = 2;
        if (UTF16IsSurrogate(unit)) {
            length = 4;
            if (!UTF16Is1st(unit) || text.size() - at < 4 || !UTF16Is2nd(unitAt(text, at + 2, swap))) break;
        }
        at += length;
    }
    return at;
}

size_t wcharPrefix(const std::string& text)
{
    size_t at = 0;
    for (; text.size() - at >= 4; at += 4) {
        UCS4 ch;
        std::memcpy(&ch, text.data() + at, sizeof ch);
        if (ch > 0x7FFFFFFF) break;
    }
    return at;
}

}   // namespace

size_t wellFormedPrefix(const std::string& bytes, const char* encoding)
{
    const auto is = [&](const char* name) { return StrCompareCI(encoding, name) == 0; };
    if (is(StringC::CC_LATIN1)) return bytes.size();
    if (is(StringC::CC_ASCII)) return asciiPrefix(bytes);
    if (is(StringC::CC_WCHART)) return wcharPrefix(bytes);
    if (is(StringC::CC_UTF16LE)) return utf16Prefix(bytes, false);
    if (is(StringC::CC_UTF16BE)) return utf16Prefix(bytes, true);
    // A byte-order mark that reads 0xFFFE says that the other order follows.
    if (is(StringC::CC_UTF16)) return utf16Prefix(bytes, bytes.size() >= 2 && unitAt(bytes, 0, false) == 0xFFFE);
    return utf8Prefix(bytes);
}
