#include "cmnlib/prefstext.h"

#include "ucs4.h"
#include "utf8.h"

#include <cstdint>
#include <cstring>

namespace {

const uint64_t HIGH_BITS = 0x8080808080808080;
const uint64_t EACH_BYTE = 0x0101010101010101;
const uint64_t MULTIPLIER = 0x9E3779B97F4A7C15;   // spreads what differs in a few bits
const UCS4 NO_CHARACTER = 0x80000000;             // beyond all characters: a byte that belongs to none

uint64_t mixed(uint64_t hash, uint64_t bits)
{
    hash = (hash ^ bits) * MULTIPLIER;
    return hash ^ hash >> 32;
}

template <class WordT>
uint64_t load(const char* text)
{
    WordT word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

// The last eight bytes; of a shorter text all of them, some twice.
uint64_t loadEnd(const char* text, size_t size)
{
    if (size >= 8) return load<uint64_t>(text + size - 8);
    if (size >= 4) return load<uint32_t>(text) << 32 | load<uint32_t>(text + size - 4);
    if (size >= 2) return load<uint16_t>(text) << 32 | load<uint16_t>(text + size - 2);
    return size != 0 ? load<uint8_t>(text) : 0;
}

// Eight bytes of ASCII with A to Z in lower case; something else when there are other bytes among them. The high bits
// tell of each byte that it is at least "A", and that it is above "Z"; nothing is carried into the next byte.
uint64_t lowerBytes(uint64_t word)
{
    const uint64_t fromA = word + EACH_BYTE * (0x80 - 'A');
    const uint64_t aboveZ = word + EACH_BYTE * (0x80 - 'Z' - 1);
    return word | (fromA & ~aboveZ & HIGH_BITS) >> 2;
}

// The next character in lower case. One that is written with more bytes than it takes is none.
UCS4 foldedCharacter(std::string_view& text)
{
    const UTF8T* p = reinterpret_cast<const UTF8T*>(text.data());
    const UTF8T first = *p;
    const size_t size = UTF8Len(p);
    bool isWhole = size <= text.size() && (size > 1 || *p < 0x80);
    for (size_t i = 1; isWhole && i < size; ++i) isWhole = !UTF8Is1st(p[i]);
    const UCS4 ch = isWhole ? UTF8Get(p) : 0;
    isWhole = isWhole && UTF8Len(ch) == size;
    text.remove_prefix(isWhole ? size : 1);
    return isWhole ? UCS4ToLower(ch) : NO_CHARACTER | first;
}

HashValT hashCharacters(std::string_view name)
{
    uint64_t hash = name.size();
    while (!name.empty()) hash = mixed(hash, foldedCharacter(name));
    return static_cast<HashValT>(hash);
}

char lowerASCII(char ch) { return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch | 0x20) : ch; }

}   // namespace

namespace prefstext {

// A name of ASCII alone equals no other one: a character that folds into ASCII is longer than what it becomes, and
// equal names have as many bytes as characters alike. So the two ways to a hash need not agree.
HashValT hash(std::string_view name)
{
    const uint64_t end = loadEnd(name.data(), name.size());
    uint64_t hash = mixed(name.size(), lowerBytes(end));
    uint64_t all = end;
    for (size_t at = 0; at + 8 < name.size(); at += 8) {
        const uint64_t word = load<uint64_t>(name.data() + at);
        all |= word;
        hash = mixed(hash, lowerBytes(word));
    }
    return (all & HIGH_BITS) == 0 ? static_cast<HashValT>(hash) : hashCharacters(name);
}

bool areEqual(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) return false;
    if (std::memcmp(a.data(), b.data(), a.size()) == 0) return true;
    for (size_t i = 0; i < a.size(); ++i) {
        if (((a[i] | b[i]) & 0x80) != 0) {
            // What stands in front is ASCII in both.
            a.remove_prefix(i);
            b.remove_prefix(i);
            while (!a.empty() && !b.empty()) {
                if (foldedCharacter(a) != foldedCharacter(b)) return false;
            }
            return a.empty() && b.empty();
        }
        if (lowerASCII(a[i]) != lowerASCII(b[i])) return false;
    }
    return true;
}

}   // namespace prefstext
