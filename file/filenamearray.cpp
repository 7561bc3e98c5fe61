#include "filenamearray.h"

namespace {

struct NameCompareT {
    int (*cmp)(void* ctx, const FileNameC* a, const FileNameC* b);
    void* ctx;

    static int call(void* self, const void* a, const void* b)
    {
        const NameCompareT* const compare = static_cast<NameCompareT*>(self);
        return compare->cmp(compare->ctx, static_cast<const FileNameC*>(a), static_cast<const FileNameC*>(b));
    }
};

}   // namespace

void FileNameArrayC::destroy(void* name)
{
    if (delete_contents) delete static_cast<FileNameC*>(name);
}

FileNameC* FileNameArrayC::put(size_t position, FileNameC* name)
{
    FileNameC* const old = (*this)[position];
    if (position < size()) ObjArrayC::put(position, name);
    return old;
}

void FileNameArrayC::sort()
{
    sort([](void*, const FileNameC* a, const FileNameC* b) { return a->compareTo(b); }, nullptr);
}

void FileNameArrayC::sort(int (*cmp)(void* ctx, const FileNameC* a, const FileNameC* b), void* ctx)
{
    NameCompareT compare = {cmp, ctx};
    ObjArrayC::sort(NameCompareT::call, &compare);
}
