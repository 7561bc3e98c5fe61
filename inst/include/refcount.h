// refcount.h: the intrusive reference count of every object that crosses the library's door.
//
// A new object has a count of 0; the first handle that takes it raises the count to 1, and the handle
// that brings it back to 0 deletes it. Counted objects are released, never deleted.
//
// Thread safety: different handles on one object may be made, copied and dropped by any threads at the
// same time. One handle is unlocked: while a thread assigns to it no other thread may use it.
#ifndef TVXCMN_REFCOUNT_H
#define TVXCMN_REFCOUNT_H

#include "atomicm.h"

// The two slots with which every counted interface begins.
class RefCountI {
public:
    virtual void AddRef() = 0;
    virtual void Release() = 0;

protected:
    ~RefCountI() = default;   // not a slot: objects end through Release
};

// The count itself. A copy of an object is a new object: it starts with a count of 0.
class RefCountC : public RefCountI {
public:
    RefCountC() noexcept = default;
    RefCountC(const RefCountC&) noexcept : RefCountC() {}
    RefCountC& operator=(const RefCountC&) noexcept { return *this; }

    void AddRef() override { ref_count.incr(); }
    // Who reads a count of 1 is the last holder: nobody else is left to raise it meanwhile.
    void Release() override
    {
        if (ref_count == 1 || ref_count.decr() == 1) delete this;
    }
    virtual ~RefCountC() = default;

    // How many handles hold the object, at some moment during the call. A holder that reads 1 is the
    // only one and may change the object in place.
    int GetRefCount() const noexcept { return ref_count; }

protected:
    // Sets the count of an object that only its maker has seen.
    void startCount(int count = 1) noexcept { ref_count.init(count); }

private:
    AtomicM<int> ref_count{0};
};

// A counted handle. T has AddRef and Release. Null is allowed; dereferencing it is not.
template <class T>
class RefM {
public:
    RefM() noexcept = default;
    RefM(T* object) : ptr(object) { addRef(object); }
    RefM(const RefM& other) : RefM(other.obj()) {}
    RefM(RefM&& other) noexcept { swap(other); }
    ~RefM() { release(obj()); }

    // Takes the new object before it lets go of the old one: assigning a handle to itself is safe, and
    // the count of a shared object never touches 0 in between.
    RefM& operator=(T* object)
    {
        addRef(object);
        release(ptr.exchange(object));
        return *this;
    }
    RefM& operator=(const RefM& other) { return *this = other.obj(); }
    RefM& operator=(RefM&& other) noexcept
    {
        RefM taken(static_cast<RefM&&>(other));
        swap(taken);
        return *this;
    }

    // Needs no atomic step: each handle has one user.
    void swap(RefM& other) noexcept
    {
        T* const mine = obj();
        ptr.init(other.obj());
        other.ptr.init(mine);
    }

    // The object, still owned by the handle; null for an empty handle.
    T* obj() const noexcept { return ptr; }
    T* GetObject() const noexcept { return ptr; }
    T* operator->() const noexcept { return ptr; }
    T& operator*() const noexcept { return *obj(); }

    explicit operator bool() const noexcept { return obj() != nullptr; }

    bool operator==(const RefM& other) const noexcept { return obj() == other.obj(); }
    bool operator!=(const RefM& other) const noexcept { return obj() != other.obj(); }
    bool operator<(const RefM& other) const noexcept { return obj() < other.obj(); }
    bool operator>(const RefM& other) const noexcept { return obj() > other.obj(); }
    bool operator==(const T* object) const noexcept { return obj() == object; }
    bool operator!=(const T* object) const noexcept { return obj() != object; }

    // Replaces a shared object by a copy that only this handle holds. T must be copyable and counted
    // by RefCountC.
    void Unshare()
    {
        if (GetRefCount() > 1) *this = new T(*obj());
    }

    // The object's count; 0 for an empty handle.
    int GetRefCount() const noexcept { return obj() != nullptr ? obj()->GetRefCount() : 0; }

private:
    static void addRef(T* object)
    {
        if (object != nullptr) object->AddRef();
    }
    static void release(T* object)
    {
        if (object != nullptr) object->Release();
    }

    AtomicM<T*> ptr{nullptr};
};

#endif   // TVXCMN_REFCOUNT_H
