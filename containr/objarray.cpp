#include "objarray.h"

#include "assertfatal.h"

namespace {

void* objectAt(const void* place) { return *static_cast<void* const*>(place); }

struct ObjectCompareT {
    SortCompareT cmp;
    void* ctx;

    static int call(void* self, const void* a, const void* b)
    {
        const ObjectCompareT* const compare = static_cast<ObjectCompareT*>(self);
        return compare->cmp(compare->ctx, objectAt(a), objectAt(b));
    }
};

}   // namespace

void ObjArrayC::destroy(void*) {}

void* ObjArrayC::operator[](size_t n) const
{
    const void* const place = BlobArrayC::operator[](n);
    return place != nullptr ? objectAt(place) : nullptr;
}

void* ObjArrayC::remove(size_t position)
{
    void* const object = position < size() ? (*this)[position] : nullptr;
    BlobArrayC::remove(position);
    return object;
}

void ObjArrayC::destroy(size_t n)
{
    if (!TVX_CHECK(n < size(), "Attempt to destroy element past end of BlobArrayC")) return;
    destroy(remove(n));
}

void ObjArrayC::destroyAll()
{
    for (size_t n = 0; n < size(); ++n) destroy((*this)[n]);
    clear();
}

void ObjArrayC::sort(SortCompareT cmp, void* ctx)
{
    ObjectCompareT compare = {cmp, ctx};
    BlobArrayC::sort(ObjectCompareT::call, &compare);
}
