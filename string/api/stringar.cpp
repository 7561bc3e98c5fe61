#include "stringar.h"

#include <algorithm>
#include <new>

namespace {

const StringC& stringAt(const void* element) { return *static_cast<const StringArrayEntryC*>(element); }

// By reference: a handle for each comparison would cost more than the comparison.
int compareInPlace(void*, const void* a, const void* b) { return stringAt(a).compare(stringAt(b)); }

struct StringCompareT {
    int (*cmp)(void* closure, StringC a, StringC b);
    void* closure;
};

int compareValues(void* context, const void* a, const void* b)
{
    const StringCompareT& compare = *static_cast<const StringCompareT*>(context);
    return compare.cmp(compare.closure, stringAt(a), stringAt(b));
}

StringC& noString()
{
    thread_local StringC nobody;
    nobody = StringC();
    return nobody;
}

}   // namespace

StringArrayC::StringArrayC(const StringC* const* list) : StringArrayC()
{
    for (; *list != nullptr; ++list) add(**list);
}

StringArrayC& StringArrayC::operator=(const StringArrayC& other)
{
    if (this == &other) return *this;
    clear();
    add(other);
    return *this;
}

void StringArrayC::clear()
{
    for (size_t n = 0; n < size(); ++n) destroy(static_cast<void*>(entry(n)));
    BlobArrayC::clear();
}

// The empty string that stays needs no end of its own: nobody counts the handles of the empty text. So
// whoever drops the place without looking at it, or calls here again, does no harm.
void StringArrayC::destroy(void* element) { StringC().swap(*static_cast<StringArrayEntryC*>(element)); }

void StringArrayC::sort(int (*cmp)(void* closure, const void* a, const void* b), void* closure)
{
    BlobArrayC::sort(cmp, closure);
}

void StringArrayC::sort(int (*cmp)(void* closure, StringC a, StringC b), void* closure)
{
    StringCompareT compare = {cmp, closure};
    BlobArrayC::sort(compareValues, &compare);
}

void StringArrayC::sort() { BlobArrayC::sort(compareInPlace, nullptr); }

StringC& StringArrayC::operator[](size_t n)
{
    StringArrayEntryC* const found = entry(n);
    return found != nullptr ? *found : noString();
}

void StringArrayC::add(const StringArrayC& other)
{
    const size_t count = other.size();   // `other` may be this array
    for (size_t n = 0; n < count; ++n) add(other[n]);
}

StringC StringArrayC::remove(size_t n)
{
    StringC taken;
    if (n < size()) taken.swap(*entry(n));
    BlobArrayC::remove(n);
    return taken;
}

int StringArrayC::compare(const StringArrayC& other) const
{
    const size_t common = std::min(size(), other.size());
    for (size_t n = 0; n < common; ++n) {
        const int difference = (*this)[n].compare(other[n]);
        if (difference != 0) return difference;
    }
    return size() < other.size() ? -1 : size() > other.size();
}

void StringArrayC::addAt(size_t index, StringC&& text)
{
    ::new (BlobArrayC::addAt(index)) StringArrayEntryC(std::move(text));
}
