// threadptr.h: one pointer per thread, cleaned up when the thread ends.
//
// Thread safety: per-thread; construction and destruction are unlocked.
// Ownership:     the clean-up function disposes of what a thread left behind. It does not run for the
//                main thread at exit, and not for any thread once the key is destroyed.
#ifndef TVXCMN_THREADPTR_H
#define TVXCMN_THREADPTR_H

#include <pthread.h>

// The part that does not depend on the pointer's type.
class ThreadSpecificKeyC {
public:
    // A failure to create the key is an assertion; if that returns, every thread's pointer stays null.
    explicit ThreadSpecificKeyC(void (*cleanup)(void*));
    ~ThreadSpecificKeyC();   // deletes the key: no clean-up can run into unloaded code later
    ThreadSpecificKeyC(const ThreadSpecificKeyC&) = delete;
    ThreadSpecificKeyC& operator=(const ThreadSpecificKeyC&) = delete;

    void* get() const noexcept { return m_usable ? pthread_getspecific(key) : nullptr; }
    // "result == 0" when the thread's value cannot be stored.
    void set(const void* value);

private:
    pthread_key_t key{};
    bool m_usable;
};

template <class T>
class ThreadSpecificPointerM {
public:
    explicit ThreadSpecificPointerM(void (*cleanup)(void*) = DefaultCleanupFunc) : key(cleanup) {}

    // Sets the calling thread's pointer. What it pointed to before is the caller's affair.
    ThreadSpecificPointerM& operator=(T* object)
    {
        key.set(object);
        return *this;
    }

    // The calling thread's pointer; null in a thread that never set one.
    T* obj() const noexcept { return static_cast<T*>(key.get()); }
    T* operator->() const noexcept { return obj(); }

    // Deletes the object.
    static void DefaultCleanupFunc(void* object) { delete static_cast<T*>(object); }

private:
    ThreadSpecificKeyC key;
};

#endif   // TVXCMN_THREADPTR_H
