// forkguard.h: makes fork safe in a process whose threads hold latches.
//
// A child gets the memory as it was at the fork, but only the thread that forked: a latch that another thread
// held then would stay held for ever. So whoever keeps a process-wide latch guards it: fork waits until it
// has all guarded latches, taken in the order of their ranks, and both processes give them back.
//
// Thread safety: latched.
// Ownership:     guards must live until the process ends.
#ifndef TVXCMN_IPC_FORKGUARD_H
#define TVXCMN_IPC_FORKGUARD_H

// The order in which latches are taken, by a fork as by everybody else: who holds one may enter those below.
enum ForkRankT {
    FORK_RANK_LOAD_CRYPTO,   // the module that is loaded may come back to all of the others
    FORK_RANK_CREATE_CONFIGURATION,
    FORK_RANK_CREATE_CRYPTO,
    FORK_RANK_CREATE_TRACER,
    FORK_RANK_REGISTRY,
    FORK_RANK_TRACER,
    FORK_RANK_LOCALE,
    FORK_RANK_REMOVE_LATER,
    FORK_RANK_LOCAL_TIME,
    FORK_RANKS   // how many there are
};

// What is done around a fork, all on the thread that forks.
class ForkGuardI {
public:
    virtual void beforeFork() = 0;   // enters the latch
    virtual void inParent() = 0;     // leaves it
    virtual void inChild() = 0;      // renews it, and drops what belongs to the parent alone

protected:
    ~ForkGuardI() = default;
};

// The guard of a latch that protects nothing which a child should drop.
template <class LatchT>
class LatchForkGuardM : public ForkGuardI {
public:
    explicit constexpr LatchForkGuardM(LatchT& latch) noexcept : m_latch(latch) {}

    void beforeFork() override { m_latch.enter(); }
    void inParent() override { m_latch.leave(); }
    void inChild() override { m_latch.renewInChild(); }

private:
    LatchT& m_latch;
};

// Puts the guard in charge of its rank, of which there is one in a process. To be called before the latch is
// entered for the first time; calling it again changes nothing.
void guardOverForks(ForkRankT rank, ForkGuardI& guard);

#endif   // TVXCMN_IPC_FORKGUARD_H
