#include "file/pathbytes.h"

#include "ucs4.h"
#include "utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

const size_t NONE = std::string_view::npos;

const UTF8T* asUTF8(std::string_view text) { return reinterpret_cast<const UTF8T*>(text.data()); }

struct CharacterT {
    UCS4 value;   // for a byte that belongs to no character one that no character has
    size_t size;
};
CharacterT characterAt(std::string_view text)
{
    const UTF8T first = static_cast<UTF8T>(text[0]);
    if (first < 0x80) return {first, 1};
    const size_t size = characterSize(text);
    if (size == 1) return {0x80000000u | first, 1};
    const UTF8T* at = asUTF8(text);
    return {UTF8Get(at), size};
}

// Takes the characters at the front of both off, if the one of the pattern stands for the one of the name.
bool matchCharacter(std::string_view& name, std::string_view& pattern, bool isCaseSensitive)
{
    if (name.empty() || pattern.empty()) return false;
    const CharacterT have = characterAt(name);
    const CharacterT want = characterAt(pattern);
    const bool isMatch = want.value == have.value || want.value == '?' ||
                         (!isCaseSensitive && UCS4ToLower(want.value) == UCS4ToLower(have.value));
    if (!isMatch) return false;
    name.remove_prefix(have.size);
    pattern.remove_prefix(want.size);
    return true;
}

// Of the eight bytes at `text`, those that are `byte`, each marked by its highest bit.
inline uint64_t bytesEqual(const char* text, char byte)
{
    const uint64_t ONES = 0x0101010101010101;
    const uint64_t LOW_BITS = 0x7F * ONES;
    uint64_t word;
    std::memcpy(&word, text, sizeof word);
    word ^= static_cast<unsigned char>(byte) * ONES;
    return ~(((word & LOW_BITS) + LOW_BITS) | word | LOW_BITS);
}

// The first place from `from` on where a "/" stands and `second` behind it, or NONE.
inline size_t findSlashAnd(char second, std::string_view text, size_t from)
{
    for (; from + 9 <= text.size(); from += 8) {
        if ((bytesEqual(text.data() + from, '/') & bytesEqual(text.data() + from + 1, second)) != 0) break;
    }
    for (; from + 1 < text.size(); ++from) {
        if (text[from] == '/' && text[from + 1] == second) return from;
    }
    return NONE;
}

// The length of the "." or ".." that the component at `at` is; 0 when it is neither.
size_t dotsAt(std::string_view path, size_t at)
{
    const std::string_view rest = path.substr(at, 3);
    if (rest == "." || rest.starts_with("./")) return 1;
    return rest == ".." || rest == "../" ? 2 : 0;
}

// The first component that is "." or "..", from the one that begins at `at` on; the size when there is none.
size_t findDots(std::string_view path, size_t at)
{
    while (dotsAt(path, at) == 0) {
        const size_t slash = findSlashAnd('.', path, at);
        if (slash == NONE) return path.size();
        at = slash + 1;
    }
    return at;
}

// The size of `out` without its last component. That ends in "/" and must be there; when it is "..", the
// size is what it was.
size_t popped(const char* out, size_t size)
{
    size_t at = size - 1;
    while (at > 0 && out[at - 1] != '/') --at;
    return std::string_view(out + at, size - at) == "../" ? size : at;
}

// Whether `text` has at most `limit` characters.
bool hasAtMost(std::string_view text, int limit)
{
    for (; !text.empty() && limit > 0; --limit) text.remove_prefix(characterSize(text));
    return text.empty();
}

}   // namespace

size_t characterSize(std::string_view text)
{
    const size_t announced = UTF8Len(asUTF8(text));
    if (announced == 1) return 1;
    if (announced > text.size()) return 1;
    for (size_t i = 1; i < announced; ++i) {
        if (UTF8Is1st(static_cast<UTF8T>(text[i]))) return 1;
    }
    return announced;
}

size_t findDoubledSlash(std::string_view text)
{
    const size_t doubled = findSlashAnd('/', text, 0);
    return doubled == NONE && text.ends_with('/') ? text.size() - 1 : doubled;
}

size_t collapseSlashes(char* text, size_t size)
{
    const std::string_view whole(text, size);
    size_t to = findSlashAnd('/', whole, 0);
    if (to == NONE) to = size;
    for (size_t from = to; from < size;) {   // at a run of "/", where all before is in order
        from = whole.find_first_not_of('/', from);
        if (from == NONE) break;
        const size_t end = std::min(findSlashAnd('/', whole, from), size);
        text[to] = '/';
        std::memmove(text + to + 1, text + from, end - from);
        to += 1 + end - from;
        from = end;
    }
    return to > 0 && text[to - 1] == '/' ? to - 1 : to;
}

// What follows a "*" is looked for from the left; once that is found, no earlier place can do better, so
// only the last "*" is ever taken back. With `m` characters after it the cost is at most name times m.
bool matchesWildcard(std::string_view name, std::string_view pattern, bool isCaseSensitive)
{
    bool hasStar = false;
    std::string_view afterStar;   // the pattern behind the last "*"
    std::string_view retry;       // where in the name that is to be tried next
    for (;;) {
        if (!pattern.empty() && pattern[0] == '*') {
            pattern.remove_prefix(1);
            hasStar = true;
            afterStar = pattern;
            retry = name;
            if (pattern.empty()) return true;
            continue;
        }
        if (name.empty()) return pattern.empty();
        if (matchCharacter(name, pattern, isCaseSensitive)) continue;
        if (!hasStar || retry.empty()) return false;
        retry.remove_prefix(characterSize(retry));
        name = retry;
        pattern = afterStar;
    }
}

size_t canonicalise(std::string_view path, char* out)
{
    bool hasPopped = false;
    size_t size = 0;
    for (size_t at = 0; at < path.size();) {
        const size_t next = findDots(path, at);
        std::memcpy(out + size, path.data() + at, next - at);
        size += next - at;
        const size_t dots = dotsAt(path, next);
        at = std::min(next + dots + 1, path.size());
        if (dots < 2) continue;

        const size_t shorter = size != 0 ? popped(out, size) : 0;
        if (shorter != size) {
            size = shorter;
            hasPopped = true;
        } else {
            std::memcpy(out + size, path.data() + next, at - next);
            size += at - next;
        }
    }
    if (size == 0 && hasPopped) out[size++] = '.';
    if (size != 0 && out[size - 1] == '/' && !hasAtMost({out, size}, 2)) --size;
    return size;
}
