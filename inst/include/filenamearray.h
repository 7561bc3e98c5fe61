// filenamearray.h: a growable array of file names.
//
// Ownership:     as the constructor says. An array that owns its names deletes those that it still holds
//                when it ends, and those that destroy and destroyAll take out; remove, put and clear never
//                delete one.
// Thread safety: unlocked.
#ifndef TVXCMN_FILENAMEARRAY_H
#define TVXCMN_FILENAMEARRAY_H

#include "filename.h"
#include "objarray.h"

class FileNameArrayC : public ObjArrayC {
public:
    explicit FileNameArrayC(bool deletesContents = true) : delete_contents(deletesContents) {}
    ~FileNameArrayC() override { destroyAll(); }

    // Deletes a name, in an array that owns its names.
    void destroy(void* name) override;
    using ObjArrayC::destroy;   // by index

    // Requires: n < size() ("n < used"). Otherwise: null.
    FileNameC* operator[](size_t n) const { return static_cast<FileNameC*>(ObjArrayC::operator[](n)); }
    // Put a name at the end, or in front of the one at `position`. Requires: position <= size() ("Attempt to
    // add past end of BlobArrayC"). Otherwise: it goes to the end.
    void add(FileNameC* name) { ObjArrayC::add(name); }
    void add(size_t position, FileNameC* name) { ObjArrayC::add(position, name); }
    // Replaces a name and returns the old one, which is the caller's now. Requires: position < size()
    // ("n < used"). Otherwise: null, and `name` stays the caller's.
    FileNameC* put(size_t position, FileNameC* name);
    // Takes a name out; it is the caller's now. Requires: position < size() ("Attempt to remove past end of
    // BlobArrayC"). Otherwise: null.
    FileNameC* remove(size_t position) { return static_cast<FileNameC*>(ObjArrayC::remove(position)); }

    // By path (FileNameC::compareTo), or by `cmp`, which gets two names.
    void sort();
    void sort(int (*cmp)(void* ctx, const FileNameC* a, const FileNameC* b), void* ctx);

private:
    const bool delete_contents;
};

#endif   // TVXCMN_FILENAMEARRAY_H
