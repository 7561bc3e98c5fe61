#include "ipc/forkguard.h"

#include "assertfatal.h"
#include "atomicm.h"

#include <pthread.h>

namespace {

constinit AtomicM<ForkGuardI*> guards[FORK_RANKS];

// What the thread that is forking has entered: a guard that somebody adds meanwhile is none of its business.
thread_local ForkGuardI* entered[FORK_RANKS];

void prepare()
{
    for (int rank = 0; rank < FORK_RANKS; ++rank) {
        entered[rank] = guards[rank];
        if (entered[rank] != nullptr) entered[rank]->beforeFork();
    }
}

void resume(void (ForkGuardI::*leave)())
{
    for (int rank = FORK_RANKS - 1; rank >= 0; --rank) {
        if (entered[rank] != nullptr) (entered[rank]->*leave)();
    }
}

void resumeParent() { resume(&ForkGuardI::inParent); }

void resumeChild() { resume(&ForkGuardI::inChild); }

}   // namespace

void guardOverForks(ForkRankT rank, ForkGuardI& guard)
{
    guards[rank] = &guard;
    static const int result = pthread_atfork(prepare, resumeParent, resumeChild);
    (void)TVX_CHECK(result == 0, "pthread_atfork(prepare, resumeParent, resumeChild) == 0");
}
