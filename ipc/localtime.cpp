#include "ipc/localtime.h"

#include "cmnlib/neverdestroyed.h"
#include "ipc/forkguard.h"
#include "latch.h"

namespace {

constinit NeverDestroyedM<LatchC> latch;
constinit LatchForkGuardM<LatchC> latchGuard(*latch);

// Before there are threads: the first reading of the rules takes long, and a fork may come in the middle of it.
[[maybe_unused]] const bool isGuarded = [] {
    guardOverForks(FORK_RANK_LOCAL_TIME, latchGuard);
    return true;
}();

}   // namespace

bool localTimeOf(time_t time, std::tm& local)
{
    const LatchGuardM<LatchC> guard(*latch);
    return localtime_r(&time, &local) != nullptr;
}
