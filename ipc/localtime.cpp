#include "ipc/localtime.h"

#include "cmnlib/neverdestroyed.h"
#include "ipc/forkguard.h"
#include "latch.h"

namespace {

constinit NeverDestroyedM<LatchC> latch;
constinit LatchForkGuardM<LatchC> latchGuard(*latch);

}   // namespace

bool localTimeOf(time_t time, std::tm& local)
{
    guardOverForks(FORK_RANK_LOCAL_TIME, latchGuard);
    const LatchGuardM<LatchC> guard(*latch);
    return localtime_r(&time, &local) != nullptr;
}
