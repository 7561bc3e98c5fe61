// The operations of StringC that build a new text from an old one in one pass over its bytes.

#include "assertfatal.h"
#include "string/api/charset.h"
#include "string/api/textbytes.h"
#include "string/api/utfkernels.h"
#include "stringc.h"
#include "utf8.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

// A text that is put together piece by piece.
class TextBuilderC {
public:
    explicit TextBuilderC(size_t expected) { m_text.reserve(expected); }

    void add(const UTF8T* begin, const UTF8T* end)
    {
        m_text.append(reinterpret_cast<const char*>(begin), static_cast<size_t>(end - begin));
    }
    void add(UCS4 ch)
    {
        UTF8T bytes[6];
        UTF8T* end = bytes;
        UTF8Put(end, ch);
        add(bytes, end);
    }
    StringC text() const { return StringC(m_text.data(), m_text.size(), StringC::CC_VALID_UTF8); }

private:
    std::string m_text;
};

// The first place of `part` in [begin, end); null when there is none.
const UTF8T* found(const TextBytesT& part, const UTF8T* begin, const UTF8T* end)
{
    return static_cast<const UTF8T*>(memmem(begin, static_cast<size_t>(end - begin), part.begin, part.size()));
}

// Where character `count` after `p` starts.
const UTF8T* skipped(const UTF8T* p, const UTF8T* end, long count)
{
    return p + utfkernels::advance(p, static_cast<size_t>(end - p), static_cast<size_t>(count), nullptr);
}

// Which character stands for another: those of two lists, place by place. The first place of a character
// that is listed twice counts.
class CharTargetsC {
public:
    CharTargetsC(const StringC& from_chars, const StringC& to_chars)
    {
        const TextBytesT from(from_chars);
        const TextBytesT to(to_chars);
        m_pairs.reserve(from.size());
        for (const UTF8T *f = from.begin, *t = to.begin; f < from.end && t < to.end;) {
            const UCS4 ch = UTF8Get(f);
            m_pairs.push_back({ch, UTF8Get(t)});
        }
        std::stable_sort(m_pairs.begin(), m_pairs.end(), isLower);
    }
    // The character that stands for `ch`; null when `ch` is not listed.
    const UCS4* find(UCS4 ch) const
    {
        const auto at = std::lower_bound(m_pairs.begin(), m_pairs.end(), PairT{ch, 0}, isLower);
        return at != m_pairs.end() && at->from == ch ? &at->to : nullptr;
    }

private:
    struct PairT {
        UCS4 from;
        UCS4 to;
    };
    static bool isLower(const PairT& a, const PairT& b) { return a.from < b.from; }

    std::vector<PairT> m_pairs;   // sorted
};

}   // namespace

StringC StringC::transform(const StringC& from_chars, const StringC& to_chars, bool do_all, long after) const
{
    StringC from(from_chars);
    if (!TVX_CHECK(to_chars.length() == from.length(), "to_chars.length() == from_chars.length()") && !from.isEmpty()) {
        from = from.head(to_chars.length());
    }
    const long first = findAny(from, after);
    if (first < 0) return *this;

    const TextBytesT bytes(*this);
    const CharTargetsC targets(from, to_chars);
    const UTF8T* next = skipped(bytes.begin, bytes.end, first);
    TextBuilderC result(bytes.size());
    result.add(bytes.begin, next);
    for (bool isDone = false; next < bytes.end && !isDone;) {
        const UTF8T* const at = next;
        if (const UCS4* const target = targets.find(UTF8Get(next))) {
            result.add(*target);
            isDone = !do_all;
        } else {
            result.add(at, next);
        }
    }
    result.add(next, bytes.end);
    return result.text();
}

// Searching goes on behind what was put in, so a hit never overlaps a replacement, and all hits can be
// found in the unchanged text: by their bytes, since in malformed text or behind a zero byte a character
// index says little. Case mapping keeps the number of characters.
StringC StringC::substitute(const StringC& from_str, const StringC& to_str, bool do_all, long after,
                            bool ignore_case) const
{
    const StringC shadow = ignore_case ? asUpper() : *this;
    const StringC wanted = ignore_case ? from_str.asUpper() : from_str;
    const long first = shadow.find(wanted, after);
    if (first < 0) return *this;

    const TextBytesT bytes(*this);
    const TextBytesT seen(shadow);
    const TextBytesT sought(wanted);
    const TextBytesT replacement(to_str);
    TextBuilderC result(bytes.size() + replacement.size());
    const UTF8T* rest = bytes.begin;      // not copied yet
    const UTF8T* seenRest = seen.begin;   // its counterpart in the shadow
    const auto counterpart = [&](const UTF8T* p, const UTF8T* from, const UTF8T* to) {
        if (!ignore_case) return p + (to - from);
        return skipped(p, bytes.end, static_cast<long>(utfkernels::countChars(from, static_cast<size_t>(to - from))));
    };
    // A hit that begins inside a character lies before the index that find told.
    const UTF8T* hit = found(sought, skipped(seen.begin, seen.end, std::max(first - 1, after + 1)), seen.end);
    while (hit != nullptr) {
        const UTF8T* const at = counterpart(rest, seenRest, hit);
        result.add(rest, at);
        result.add(replacement.begin, replacement.end);
        seenRest = hit + sought.size();
        rest = counterpart(at, hit, seenRest);
        hit = do_all ? found(sought, seenRest, seen.end) : nullptr;
    }
    result.add(rest, bytes.end);
    return result.text();
}

StringC StringC::PrefixEscape(const StringC& chars, UCS4 escapeChar) const
{
    const StringC special = chars + StringC(escapeChar);
    if (findAny(special) < 0) return *this;

    const TextBytesT bytes(*this);
    const CharSetC set(special);
    TextBuilderC result(bytes.size() + bytes.size() / 8);
    for (const UTF8T* next = bytes.begin; next < bytes.end;) {
        const UTF8T* const at = next;
        if (set.contains(UTF8Get(next))) result.add(escapeChar);
        result.add(at, next);
    }
    return result.text();
}

StringC StringC::PrefixUnescape(UCS4 escapeChar) const
{
    if (find(escapeChar) < 0) return *this;

    const TextBytesT bytes(*this);
    TextBuilderC result(bytes.size());
    for (const UTF8T* next = bytes.begin; next < bytes.end;) {
        const UTF8T* at = next;
        if (UTF8Get(next) == escapeChar) {
            if (next >= bytes.end) break;
            at = next;
            (void)UTF8Get(next);
        }
        result.add(at, next);
    }
    return result.text();
}
