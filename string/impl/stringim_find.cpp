// Searches of a body. Hits are found by bytes; their index is counted from the place where the search
// began, and becomes the memo, so that finding on from a hit is linear over the whole text.

#include "string/api/charset.h"
#include "string/api/utfkernels.h"
#include "string/impl/stringim.h"
#include "string/impl/textsearch.h"
#include "string/impl/textview.h"
#include "string/impl/utf8inline.h"

#include <climits>

namespace {

const UCS4 MOST_CHARACTER = 0x7FFFFFFF;   // the last value that UTF-8 can hold

// One character as UTF-8.
struct CharFormT {
    explicit CharFormT(UCS4 ch)
    {
        UTF8T* p = bytes;
        UTF8Put(p, ch);
        size = static_cast<size_t>(p - bytes);
    }
    UTF8T bytes[6];
    size_t size;
};

long behind(long after) { return after < LONG_MAX ? after + 1 : after; }

}   // namespace

// The place that a backward search stays in front of.
StringImplC::PlaceT StringImplC::placeBefore(long before) const
{
    return before == -1 ? PlaceT{end(), length()} : nthChar(before);
}

long StringImplC::hitAfter(const PlaceT& start, const UTF8T* hit) const
{
    if (hit == nullptr) return -1;
    const size_t bytes = static_cast<size_t>(hit - start.at);
    const long index =
        start.index + static_cast<long>(isKnownASCII() ? bytes : utfkernels::countChars(start.at, bytes));
    savePos(index, hit);
    return index;
}

long StringImplC::hitBefore(const PlaceT& limit, const UTF8T* hit) const
{
    if (hit == nullptr) return -1;
    const size_t bytes = static_cast<size_t>(limit.at - hit);
    const long index = limit.index - static_cast<long>(isKnownASCII() ? bytes : utfkernels::countChars(hit, bytes));
    savePos(index, hit);
    return index;
}

long StringImplC::find(UCS4 ch, long after) const
{
    const PlaceT start = nthChar(behind(after));
    if (start.at == nullptr || ch > MOST_CHARACTER) return -1;
    const CharFormT form(ch);
    return hitAfter(start, textsearch::findFirst(start.at, end(), form.bytes, form.size));
}

long StringImplC::rfind(UCS4 ch, long before) const
{
    const PlaceT limit = placeBefore(before);
    if (limit.at == nullptr || ch > MOST_CHARACTER) return -1;
    const CharFormT form(ch);
    return hitBefore(limit, textsearch::findLast(begin(), limit.at, form.bytes, form.size));
}

long StringImplC::find(const StringImplI& text, long after) const
{
    const PlaceT start = nthChar(behind(after));
    if (start.at == nullptr) return -1;
    const TextViewT needle(text);
    return hitAfter(start, textsearch::findFirst(start.at, end(), needle.begin, needle.size));
}

long StringImplC::rfind(const StringImplI& text, long before) const
{
    const PlaceT limit = placeBefore(before);
    if (limit.at == nullptr) return -1;
    const TextViewT needle(text);
    return hitBefore(limit, textsearch::findLast(begin(), limit.at, needle.begin, needle.size));
}

long StringImplC::findAny(const StringImplI& set, long after) const { return findMember(set, after, true); }
long StringImplC::findNot(const StringImplI& set, long after) const { return findMember(set, after, false); }
long StringImplC::rfindAny(const StringImplI& set, long before) const { return rfindMember(set, before, true); }
long StringImplC::rfindNot(const StringImplI& set, long before) const { return rfindMember(set, before, false); }

// The first character behind `after` whose membership in the set is `wanted`.
long StringImplC::findMember(const StringImplI& set, long after, bool wanted) const
{
    const PlaceT start = nthChar(behind(after));
    if (start.at == nullptr) return -1;
    const TextViewT members(set);
    if (wanted && members.size == 1) return hitAfter(start, textsearch::findFirst(start.at, end(), members.begin, 1));

    const CharSetC chars(members.begin, members.size);
    for (const UTF8T* next = start.at; next < end();) {
        const UTF8T* const at = next;
        if (chars.contains(readChar(next, end())) == wanted) return hitAfter(start, at);
    }
    return -1;
}

long StringImplC::rfindMember(const StringImplI& set, long before, bool wanted) const
{
    const PlaceT limit = placeBefore(before);
    if (limit.at == nullptr) return -1;
    const TextViewT members(set);
    const CharSetC chars(members.begin, members.size);
    for (const UTF8T* at = backup(limit.at); at != nullptr; at = backup(at)) {
        const UTF8T* p = at;
        if (chars.contains(readChar(p, end())) == wanted) return hitBefore(limit, at);
    }
    return -1;
}
