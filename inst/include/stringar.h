// stringar.h: a growable array of strings.
//
// Ownership:     the array's handles; the texts behind them are shared as everywhere.
// Thread safety: unlocked.
#ifndef TVXCMN_STRINGAR_H
#define TVXCMN_STRINGAR_H

#include "blobarr.h"
#include "stringc.h"

#include <cstddef>
#include <utility>

// What the array's storage holds: a string that is made and ended in place, and moved bytewise.
class StringArrayEntryC : public StringC {
public:
    StringArrayEntryC() = default;
    explicit StringArrayEntryC(StringC&& text) noexcept : StringC(std::move(text)) {}
};

class StringArrayC : public BlobArrayC {
public:
    StringArrayC() : BlobArrayC(sizeof(StringArrayEntryC)) {}
    StringArrayC(const StringArrayC& other) : StringArrayC() { add(other); }
    // The strings that a list of pointers names, up to the null at its end.
    explicit StringArrayC(const StringC* const* list);
    ~StringArrayC() override { StringArrayC::clear(); }
    StringArrayC& operator=(const StringArrayC& other);

    // Drops all strings and frees the storage.
    void clear() override;
    // Drops the string at an address in the array; an empty one stays there.
    void destroy(void* element) override;
    using BlobArrayC::destroy;   // by index: drops a string and takes its place out

    // `cmp` gets the addresses of two strings, or the two strings themselves.
    virtual void sort(int (*cmp)(void* closure, const void* a, const void* b), void* closure);
    virtual void sort(int (*cmp)(void* closure, StringC a, StringC b), void* closure);
    // By code point.
    void sort();

    // Requires: n < size() ("n < used"). Otherwise: an empty string of the calling thread's that belongs
    // to no array.
    StringC& operator[](size_t n);
    const StringC& operator[](size_t n) const { return const_cast<StringArrayC&>(*this)[n]; }

    // Append. Strings are taken by value, because a reference to one of this array would not survive the
    // growth; an array may be appended to itself.
    void add(StringC text) { addAt(size(), std::move(text)); }
    void add(const StringArrayC& other);
    StringArrayC& operator<<(StringC text)
    {
        add(std::move(text));
        return *this;
    }
    StringArrayC& operator+=(const StringArrayC& other)
    {
        add(other);
        return *this;
    }
    // Puts a string in front of the one at `index`, or at the end. Requires: index <= size() ("Attempt to
    // add past end of BlobArrayC"). Otherwise: it goes to the end.
    void add(size_t index, StringC text) { addAt(index, std::move(text)); }
    // Replaces a string. Requires: n < size() ("n < used"). Otherwise: nothing.
    void put(size_t n, StringC text) { (*this)[n] = std::move(text); }
    // Takes a string out. Requires: n < size() ("Attempt to remove past end of BlobArrayC"). Otherwise: an
    // empty one, and nothing changes.
    StringC remove(size_t n);

    // Below 0, 0 or above 0: by the first strings that differ, then by size.
    int compare(const StringArrayC& other) const;

private:
    StringArrayEntryC* entry(size_t n) const { return static_cast<StringArrayEntryC*>(BlobArrayC::operator[](n)); }
    void addAt(size_t index, StringC&& text);
};

#endif   // TVXCMN_STRINGAR_H
