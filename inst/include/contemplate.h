// contemplate.h: ArrayM, a growable array of small values: pointers, numbers and plain records.
//
// Values are moved by copying their bytes and dropped without a destructor, so T must be trivially
// copyable; texts and other values with a life of their own go into arrays made for them.
//
// Ownership:     the storage. What pointers point at only through destroy, destroyRange and destroyAll.
// Thread safety: unlocked.
#ifndef TVXCMN_CONTEMPLATE_H
#define TVXCMN_CONTEMPLATE_H

#include "assertfatal.h"
#include "blobarr.h"
#include "quicksort.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

template <class T>
class ArrayM {
public:
    ArrayM() noexcept = default;
    ArrayM(const ArrayM& other) { append(other); }
    ArrayM(ArrayM&& other) noexcept { swap(other); }
    ~ArrayM()
    {
        static_assert(std::is_trivially_copyable<T>::value, "elements are moved by copying their bytes");
        static_assert(alignof(T) <= alignof(std::max_align_t), "the storage is aligned for the usual types");
        clear();
    }
    ArrayM& operator=(const ArrayM& other)
    {
        if (this == &other) return *this;
        used = 0;
        append(other);
        return *this;
    }
    ArrayM& operator=(ArrayM&& other) noexcept
    {
        swap(other);
        return *this;
    }
    void swap(ArrayM& other) noexcept
    {
        std::swap(elements, other.elements);
        std::swap(used, other.used);
        std::swap(reserved, other.reserved);
    }

    size_t size() const noexcept { return used; }

    // Requires: n < size() ("n < used"). Otherwise: an element of the calling thread's, all zeros, that
    // belongs to no array.
    T& operator[](size_t n) { return TVX_CHECK(n < used, "n < used") ? elements[n] : nobody(); }
    const T& operator[](size_t n) const { return TVX_CHECK(n < used, "n < used") ? elements[n] : nobody(); }

    // Values are taken by value, because a reference to an element would not survive the growth.
    ArrayM& operator<<(T value)
    {
        add(value);
        return *this;
    }
    void add(T value)
    {
        if (used == reserved) resize();
        elements[used++] = value;
    }
    // Puts a value in front of the one at `position`, or at the end. Requires: position <= size(), see
    // addAt. Otherwise: it goes to the end.
    void add(size_t position, T value) { *addAt(position) = value; }
    // Makes room in front of the element at `position`, or at the end, and returns it; its old bytes are
    // still in it. Requires: position <= size() ("position == used", then "Attempt to add past end of
    // ArrayM"). Otherwise: the room is at the end.
    T* addAt(size_t position);

    // Overwrites an element. Requires: position < size() ("position < used"). Otherwise: nothing.
    void put(size_t position, T value)
    {
        if (TVX_CHECK(position < used, "position < used")) elements[position] = value;
    }
    // Takes an element out; the last one to go takes the storage with it. Requires: position < size()
    // ("position < used"). Otherwise: nothing, and the result is all zeros.
    T remove(size_t position);
    // Drops all elements from place `n` on, and keeps the storage.
    void truncate(size_t n)
    {
        if (n < used) used = n;
    }
    // Drops all elements and frees the storage.
    void clear()
    {
        BlobArrayC::freeStorage(elements);
        elements = nullptr;
        used = 0;
        reserved = 0;
    }

    // For arrays of pointers: delete what one, some (from `first` up to but not with `last`) or all of
    // them point at, and take them out. What lies beyond the end is "position < used" and is left alone.
    void destroy(size_t position)
    {
        if (TVX_CHECK(position < used, "position < used")) destroyRange(position, position + 1);
    }
    void destroyRange(size_t first, size_t last);
    void destroyAll()
    {
        for (size_t n = 0; n < used; ++n) delete elements[n];
        clear();
    }

    // Sorts as quicksort does; the second form hands `ctx` to the comparison.
    void sort(int (*cmp)(const T&, const T&));
    void sort_c(int (*cmp)(void*, const T&, const T&), void* ctx);

    // Makes the capacity at least `count` elements, in steps of the growth rule.
    void reserve(size_t count)
    {
        size_t capacity = reserved;
        while (capacity < count) capacity = BlobArrayC::nextCapacity(capacity);
        if (capacity != reserved) setCapacity(capacity);
    }
    // Grows the capacity by one step, see BlobArrayC::nextCapacity.
    void resize() { setCapacity(BlobArrayC::nextCapacity(reserved)); }

    // For range loops.
    T* begin() noexcept { return elements; }
    T* end() noexcept { return elements + used; }
    const T* begin() const noexcept { return elements; }
    const T* end() const noexcept { return elements + used; }

private:
    static T& nobody()
    {
        alignas(T) static thread_local U8BitT bytes[sizeof(T)];
        std::memset(bytes, 0, sizeof bytes);
        return *reinterpret_cast<T*>(bytes);
    }

    void setCapacity(size_t capacity)
    {
        elements = static_cast<T*>(BlobArrayC::resizedStorage(elements, capacity * sizeof(T)));
        reserved = capacity;
    }

    void append(const ArrayM& other)
    {
        reserve(used + other.used);
        moveBytes(elements + used, other.elements, other.used);
        used += other.used;
    }

    static void moveBytes(T* to, const T* from, size_t count)
    {
        if (count > PTRDIFF_MAX / sizeof(T)) __builtin_unreachable();   // spares compilers a false alarm
        if (count != 0) std::memmove(static_cast<void*>(to), from, count * sizeof(T));
    }

    T* elements = nullptr;   // `reserved` elements of room, the first `used` of them taken
    size_t used = 0;
    size_t reserved = 0;
};

template <class T>
T* ArrayM<T>::addAt(size_t position)
{
    if (position > used) {
        (void)TVX_CHECK(position == used, "position == used");
        (void)TVX_CHECK(position <= used, "Attempt to add past end of ArrayM");
        position = used;
    }
    if (used == reserved) resize();
    moveBytes(elements + position + 1, elements + position, used - position);
    ++used;
    return elements + position;
}

template <class T>
T ArrayM<T>::remove(size_t position)
{
    if (!TVX_CHECK(position < used, "position < used")) return nobody();
    const T value = elements[position];
    --used;
    moveBytes(elements + position, elements + position + 1, used - position);
    if (used == 0) clear();
    return value;
}

template <class T>
void ArrayM<T>::destroyRange(size_t first, size_t last)
{
    if (!TVX_CHECK(last <= used, "position < used")) last = used;
    if (first >= last) return;
    for (size_t n = first; n < last; ++n) delete elements[n];
    moveBytes(elements + first, elements + last, used - last);
    used -= last - first;
    if (used == 0) clear();
}

template <class T>
void ArrayM<T>::sort(int (*cmp)(const T&, const T&))
{
    struct CallT {
        int (*cmp)(const T&, const T&);
        static int compare(void* self, const void* a, const void* b)
        {
            return static_cast<CallT*>(self)->cmp(*static_cast<const T*>(a), *static_cast<const T*>(b));
        }
    } call = {cmp};
    quicksort(elements, used, sizeof(T), CallT::compare, &call);
}

template <class T>
void ArrayM<T>::sort_c(int (*cmp)(void*, const T&, const T&), void* ctx)
{
    struct CallT {
        int (*cmp)(void*, const T&, const T&);
        void* ctx;
        static int compare(void* self, const void* a, const void* b)
        {
            const CallT* const call = static_cast<CallT*>(self);
            return call->cmp(call->ctx, *static_cast<const T*>(a), *static_cast<const T*>(b));
        }
    } call = {cmp, ctx};
    quicksort(elements, used, sizeof(T), CallT::compare, &call);
}

#endif   // TVXCMN_CONTEMPLATE_H
