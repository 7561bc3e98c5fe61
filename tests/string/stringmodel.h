// stringmodel.h: what the text operations mean, on plain sequences of code points and with the simplest
// loops. The tests and the fuzz target hold the library against it.
#ifndef TVXCMN_TESTS_STRINGMODEL_H
#define TVXCMN_TESTS_STRINGMODEL_H

#include "stringc.h"
#include "support/helpers.h"

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace stringmodel {

typedef std::vector<uint32_t> TextT;

inline StringC value(const TextT& text)
{
    const std::string bytes = utf8Of(text);
    return StringC(bytes.data(), bytes.size(), StringC::CC_UTF8);
}
inline std::string bytesOf(const StringC& text) { return std::string(text.utf8(), text.utf8Bytes()); }

// The first index from `start` on at which `holds` is true; -1 when there is none.
inline long firstWhere(long start, long size, const std::function<bool(long)>& holds)
{
    for (long i = start; i < size; ++i) {
        if (holds(i)) return i;
    }
    return -1;
}
inline long lastWhere(long start, const std::function<bool(long)>& holds)
{
    for (long i = start; i >= 0; --i) {
        if (holds(i)) return i;
    }
    return -1;
}
inline bool standsAt(const TextT& text, const TextT& part, size_t at)
{
    return !part.empty() && at + part.size() <= text.size() &&
           std::equal(part.begin(), part.end(), text.begin() + static_cast<ptrdiff_t>(at));
}
inline bool contains(const TextT& set, uint32_t ch) { return std::find(set.begin(), set.end(), ch) != set.end(); }

inline long find(const TextT& text, const TextT& part, long after)
{
    return firstWhere(after + 1, static_cast<long>(text.size()),
                      [&](long i) { return standsAt(text, part, static_cast<size_t>(i)); });
}
// The whole hit lies in front of `before`; -1 stands for the end.
inline long rfind(const TextT& text, const TextT& part, long before)
{
    const long limit = before == -1 ? static_cast<long>(text.size()) : before;
    return lastWhere(limit - static_cast<long>(part.size()),
                     [&](long i) { return standsAt(text, part, static_cast<size_t>(i)); });
}
inline long findMember(const TextT& text, const TextT& set, long after, bool wanted)
{
    return firstWhere(after + 1, static_cast<long>(text.size()),
                      [&](long i) { return contains(set, text[static_cast<size_t>(i)]) == wanted; });
}
inline long rfindMember(const TextT& text, const TextT& set, long before, bool wanted)
{
    const long limit = before == -1 ? static_cast<long>(text.size()) : before;
    return lastWhere(limit - 1, [&](long i) { return contains(set, text[static_cast<size_t>(i)]) == wanted; });
}

inline TextT substr(const TextT& text, size_t at, long len)
{
    const size_t from = std::min(at, text.size());
    const size_t count = len < 0 ? text.size() - from : std::min(static_cast<size_t>(len), text.size() - from);
    const auto begin = text.begin() + static_cast<ptrdiff_t>(from);
    return TextT(begin, begin + static_cast<ptrdiff_t>(count));
}
inline void remove(TextT& text, size_t at, long len)
{
    const size_t count = substr(text, at, len).size();
    const auto begin = text.begin() + static_cast<ptrdiff_t>(std::min(at, text.size()));
    text.erase(begin, begin + static_cast<ptrdiff_t>(count));
}
inline void insert(TextT& text, size_t at, const TextT& added)
{
    text.insert(text.begin() + static_cast<ptrdiff_t>(at), added.begin(), added.end());
}

// One replacement after another, searching on behind each.
inline TextT substitute(TextT text, const TextT& from, const TextT& to, bool all, long after)
{
    for (long hit = find(text, from, after); hit >= 0; hit = all ? find(text, from, after) : -1) {
        remove(text, static_cast<size_t>(hit), static_cast<long>(from.size()));
        insert(text, static_cast<size_t>(hit), to);
        after = hit + static_cast<long>(to.size()) - 1;
    }
    return text;
}
inline TextT transform(TextT text, const TextT& from, const TextT& to, bool all, long after)
{
    for (long hit = findMember(text, from, after, true); hit >= 0; hit = all ? findMember(text, from, hit, true) : -1) {
        uint32_t& ch = text[static_cast<size_t>(hit)];
        ch = to[static_cast<size_t>(std::find(from.begin(), from.end(), ch) - from.begin())];
    }
    return text;
}
inline TextT prefixEscape(const TextT& text, const TextT& chars, uint32_t escape)
{
    TextT result;
    for (const uint32_t ch : text) {
        if (ch == escape || contains(chars, ch)) result.push_back(escape);
        result.push_back(ch);
    }
    return result;
}

}   // namespace stringmodel

#endif   // TVXCMN_TESTS_STRINGMODEL_H
