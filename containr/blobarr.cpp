#include "blobarr.h"

#include "assertfatal.h"

#include <cstdlib>
#include <cstring>
#include <new>

BlobArrayC::~BlobArrayC() { freeStorage(contents); }

void BlobArrayC::clear()
{
    freeStorage(contents);
    contents = nullptr;
    used = 0;
    reserved = 0;
}

void BlobArrayC::destroy(void*) {}

void BlobArrayC::resize()
{
    const size_t capacity = nextCapacity(reserved);
    contents = static_cast<U8BitT*>(resizedStorage(contents, capacity * elem_size));
    reserved = capacity;
}

void* BlobArrayC::operator[](size_t n) const
{
    if (!TVX_CHECK(n < used, "n < used")) return nullptr;
    return at(n);
}

void* BlobArrayC::addAt(size_t position)
{
    if (!TVX_CHECK(position <= used, "Attempt to add past end of BlobArrayC")) position = used;
    if (used == reserved) resize();
    U8BitT* const room = at(position);
    if (position < used) std::memmove(room + elem_size, room, (used - position) * elem_size);
    ++used;
    return room;
}

void* BlobArrayC::add(size_t position, const void* element) { return std::memcpy(addAt(position), element, elem_size); }

void BlobArrayC::put(size_t position, const void* element)
{
    void* const slot = (*this)[position];
    if (slot != nullptr) std::memmove(slot, element, elem_size);
}

void BlobArrayC::remove(size_t position)
{
    if (!TVX_CHECK(position < used, "Attempt to remove past end of BlobArrayC")) return;
    --used;
    if (position < used) std::memmove(at(position), at(position + 1), (used - position) * elem_size);
}

void BlobArrayC::destroy(size_t n)
{
    if (!TVX_CHECK(n < used, "Attempt to destroy element past end of BlobArrayC")) return;
    destroy(static_cast<void*>(at(n)));
    remove(n);
}

void BlobArrayC::destroyAll()
{
    for (size_t n = 0; n < used; ++n) destroy(static_cast<void*>(at(n)));
    clear();
}

// Elements can be moved bytewise, so the C library may move the block, or just its page table entries,
// or grow it in place. Its result is aligned for every type.
void* BlobArrayC::resizedStorage(void* contents, size_t bytes)
{
    void* const storage = std::realloc(contents, bytes);
    if (storage == nullptr) throw std::bad_alloc();
    return storage;
}

void BlobArrayC::freeStorage(void* contents) { std::free(contents); }
