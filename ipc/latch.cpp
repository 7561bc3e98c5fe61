#include "latch.h"

#include "assertfatal.h"

#include <cerrno>

LatchC::~LatchC() { pthread_mutex_destroy(&mutex); }

void LatchC::enter()
{
    const int retcode = pthread_mutex_lock(&mutex);
    (void)TVX_CHECK(retcode != EDEADLK, "retcode != EDEADLK");
}

// An error-checking mutex refuses to be unlocked by a stranger. Trying to lock it first, as the text of
// the assertion suggests, would make a stranger wait for the holder.
void LatchC::leave()
{
    const int retcode = pthread_mutex_unlock(&mutex);
    (void)TVX_CHECK(retcode != EPERM, "pthread_mutex_lock(&mutex) == EDEADLK");
}

BooleanT LatchC::holding()
{
    const timespec past = {0, 0};   // a deadline that has passed: try, never wait
    const int retcode = pthread_mutex_timedlock(&mutex, &past);
    if (retcode == 0) pthread_mutex_unlock(&mutex);
    return retcode == EDEADLK;
}

BooleanT LatchC::probe() { return pthread_mutex_trylock(&mutex) == 0; }

// The first step does nothing, but tells tools that watch the mutex that it is free.
void LatchC::renewInChild()
{
    pthread_mutex_unlock(&mutex);
    mutex = PTHREAD_ERRORCHECK_MUTEX_INITIALIZER_NP;
}

CountingLatchC::~CountingLatchC() { pthread_mutex_destroy(&mutex); }

// Who enters again only counts: the mutex is locked once.
void CountingLatchC::enter()
{
    if (!holding()) {
        pthread_mutex_lock(&mutex);
        setOwner(pthread_self());
    }
    ++m_depth;
}

void CountingLatchC::leave()
{
    if (!holding() || --m_depth > 0) return;
    setOwner(0);
    pthread_mutex_unlock(&mutex);
}

BooleanT CountingLatchC::holding() const { return __atomic_load_n(&m_owner, __ATOMIC_RELAXED) == pthread_self(); }

BooleanT CountingLatchC::probe()
{
    if (!holding()) {
        if (pthread_mutex_trylock(&mutex) != 0) return false;
        setOwner(pthread_self());
    }
    ++m_depth;
    return true;
}

void CountingLatchC::renewInChild()
{
    pthread_mutex_unlock(&mutex);
    mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
    pthread_mutex_lock(&mutex);
    leave();
}
