// latch.h: mutual exclusion between the threads of one process.
//
// Both kinds are constant-initialised, so a latch at namespace scope may be entered before any static
// constructor has run.
//
// Thread safety: latched.
#ifndef TVXCMN_LATCH_H
#define TVXCMN_LATCH_H

#include "basetypes.h"

#include <pthread.h>

// A non-recursive latch that checks its use: entering it twice from one thread and leaving it without
// holding it are assertions.
class LatchC {
public:
    constexpr LatchC() noexcept = default;
    ~LatchC();
    LatchC(const LatchC&) = delete;
    LatchC& operator=(const LatchC&) = delete;

    // Waits until the latch is free and takes it.
    // Requires:  the calling thread does not hold it ("retcode != EDEADLK").
    // Otherwise: returns; the latch stays held once.
    void enter();

    // Gives the latch back, without waiting.
    // Requires:  the calling thread holds it ("pthread_mutex_lock(&mutex) == EDEADLK").
    // Otherwise: nothing changes.
    void leave();

    // Whether the calling thread holds the latch. May make another thread's probe fail meanwhile.
    [[nodiscard]] BooleanT holding();

    // Takes the latch if it is free; whether it did. Never waits.
    [[nodiscard]] BooleanT probe();

    // Takes the place of leave in the child of a fork, in the thread that forked and had entered the latch: the
    // system knows that thread under another number now, and would not let it leave.
    void renewInChild();

private:
    pthread_mutex_t mutex = PTHREAD_ERRORCHECK_MUTEX_INITIALIZER_NP;
};

// A latch that its holder may enter again; each enter needs a leave.
class CountingLatchC {
public:
    constexpr CountingLatchC() noexcept = default;
    ~CountingLatchC();
    CountingLatchC(const CountingLatchC&) = delete;
    CountingLatchC& operator=(const CountingLatchC&) = delete;

    void enter();
    // Undoes one enter. Does nothing in a thread that does not hold the latch.
    void leave();
    // Whether the calling thread holds the latch.
    [[nodiscard]] BooleanT holding() const;
    // Takes the latch if it is free or the calling thread holds it; whether it did. Never waits.
    [[nodiscard]] BooleanT probe();

    // See LatchC::renewInChild; undoes one enter, as leave does.
    void renewInChild();

private:
    void setOwner(pthread_t owner) noexcept { __atomic_store_n(&m_owner, owner, __ATOMIC_RELAXED); }

    pthread_mutex_t mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
    // A recursive mutex cannot say who holds it. Written by the holder only; 0 while nobody does. Relaxed: a thread
    // looks for nothing but itself there, and that only itself can write.
    pthread_t m_owner = 0;
    unsigned long m_depth = 0;
};

// Holds a latch for the length of a scope.
template <class LatchT>
class LatchGuardM {
public:
    explicit LatchGuardM(LatchT& latch) : m_latch(latch) { m_latch.enter(); }
    ~LatchGuardM() { m_latch.leave(); }
    LatchGuardM(const LatchGuardM&) = delete;
    LatchGuardM& operator=(const LatchGuardM&) = delete;

private:
    LatchT& m_latch;
};

#endif   // TVXCMN_LATCH_H
