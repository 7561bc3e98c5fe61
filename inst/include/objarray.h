// objarray.h: a growable array of pointers to objects.
//
// Ownership:     none by itself: clear() and the destructor forget the objects. A derived class that owns
//                them overrides destroy(void*), which destroy(n) and destroyAll() call with the object's
//                address, and calls destroyAll() in its own destructor.
// Thread safety: unlocked.
#ifndef TVXCMN_OBJARRAY_H
#define TVXCMN_OBJARRAY_H

#include "blobarr.h"

class ObjArrayC : public BlobArrayC {
public:
    ObjArrayC() : BlobArrayC(sizeof(void*)) {}

    // Cleans up an object (not its place in the array). Here: nothing.
    void destroy(void* object) override;

    // The object at a place. Requires: n < size() ("n < used"). Otherwise: null.
    void* operator[](size_t n) const;

    // Puts an object in front of the one at `position`, or at the end. Requires: position <= size()
    // ("Attempt to add past end of BlobArrayC"). Otherwise: it goes to the end.
    void add(size_t position, const void* object) { BlobArrayC::add(position, &object); }
    void add(const void* object) { BlobArrayC::add(&object); }
    // Sets a place; what stood there is forgotten. Requires: position < size() ("n < used"). Otherwise:
    // nothing.
    void put(size_t position, const void* object) { BlobArrayC::put(position, &object); }
    // Takes an object out and returns it. Requires: position < size() ("Attempt to remove past end of
    // BlobArrayC"). Otherwise: null.
    void* remove(size_t position);
    // Cleans an object up and closes the gap. Requires: n < size() ("Attempt to destroy element past end
    // of BlobArrayC"). Otherwise: nothing.
    void destroy(size_t n);
    void destroy(int n) { destroy(static_cast<size_t>(n)); }   // a plain 0 would fit destroy(void*) as well
    void destroy(long n) { destroy(static_cast<size_t>(n)); }
    void destroy(unsigned n) { destroy(static_cast<size_t>(n)); }
    // Cleans up all objects, first to last, and clears the array.
    void destroyAll();

    // `cmp` gets two objects, not the places where their addresses stand.
    void sort(SortCompareT cmp, void* ctx);
};

#endif   // TVXCMN_OBJARRAY_H
