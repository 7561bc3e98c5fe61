// blobarr.h: a growable array of elements of one size that it knows nothing else about.
//
// Elements lie in a row and are moved by copying their bytes, so they must not point into themselves.
// The array makes room and takes it away again; what an element is, and how one is cleaned up, is for
// derived classes to say: destroy(void*) is their hook.
//
// Ownership:     the storage, which clear() and the destructor free. Not what the elements refer to: the
//                destructor of this class can no longer reach the hook of a derived one, so each derived
//                class that owns something empties itself in its own destructor.
// Thread safety: unlocked.
#ifndef TVXCMN_BLOBARR_H
#define TVXCMN_BLOBARR_H

#include "basetypes.h"
#include "quicksort.h"

#include <cstddef>

class BlobArrayC {
public:
    explicit BlobArrayC(size_t element_size) : elem_size(element_size) {}
    BlobArrayC(const BlobArrayC&) = delete;   // a derived class knows how its elements are copied
    BlobArrayC& operator=(const BlobArrayC&) = delete;
    virtual ~BlobArrayC();

    // Drops all elements without looking at them, and frees the storage.
    virtual void clear();
    // Cleans up the element at an address in the array. Here: nothing.
    virtual void destroy(void* element);
    // Grows the capacity by one step, see nextCapacity.
    virtual void resize();

    size_t size() const noexcept { return used; }
    // The address of an element. Requires: n < size() ("n < used"). Otherwise: null.
    void* operator[](size_t n) const;

    // Makes room for an element in front of the one at `position`, or at the end, and returns the
    // address of that raw memory. Requires: position <= size() ("Attempt to add past end of
    // BlobArrayC"). Otherwise: the room is at the end.
    void* addAt(size_t position);
    // As addAt, and fills the room with the bytes at `element`, which must not lie in this array.
    void* add(size_t position, const void* element);
    void* add(const void* element) { return add(used, element); }
    // Overwrites an element. Requires: position < size() ("n < used"). Otherwise: nothing.
    void put(size_t position, const void* element);
    // Takes an element out without cleaning it up. Requires: position < size() ("Attempt to remove past
    // end of BlobArrayC"). Otherwise: nothing.
    void remove(size_t position);
    // Cleans an element up and takes it out. Requires: n < size() ("Attempt to destroy element past end
    // of BlobArrayC"). Otherwise: nothing.
    void destroy(size_t n);
    void destroy(int n) { destroy(static_cast<size_t>(n)); }   // a plain 0 would fit destroy(void*) as well
    void destroy(long n) { destroy(static_cast<size_t>(n)); }
    void destroy(unsigned n) { destroy(static_cast<size_t>(n)); }
    // Cleans up all elements, first to last, and clears the array.
    void destroyAll();

    // `cmp` gets the addresses of two elements.
    void sort(SortCompareT cmp, void* ctx) { quicksort(contents, used, elem_size, cmp, ctx); }

    // The growth rule of all arrays: 0, 32, 64, 128, 224, 352 and so on.
    static constexpr size_t nextCapacity(size_t capacity) { return ((capacity * 3 / 2) | 31) + 1; }
    // `contents` (null or from here) with room for `bytes`; the bytes that fit are kept. Freed by
    // freeStorage.
    [[nodiscard]] static void* resizedStorage(void* contents, size_t bytes);
    static void freeStorage(void* contents);

private:
    U8BitT* at(size_t n) const { return contents + n * elem_size; }

    const size_t elem_size;       // bytes of an element
    U8BitT* contents = nullptr;   // `reserved` elements of room, the first `used` of them taken
    size_t used = 0;
    size_t reserved = 0;
};

#endif   // TVXCMN_BLOBARR_H
