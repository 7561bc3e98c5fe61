#include "ipc/forkguard.h"

#include "cmnlib/neverdestroyed.h"
#include "ipc/localtime.h"
#include "latch.h"
#include "support/system.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

namespace {

constinit NeverDestroyedM<CountingLatchC> countingLatch;
constinit NeverDestroyedM<LatchC> checkedLatch;
std::string steps;

// Notes its steps, in the parent and in the child.
template <class LatchT>
class NotingGuardM final : public LatchForkGuardM<LatchT> {
public:
    NotingGuardM(LatchT& latch, char name) : LatchForkGuardM<LatchT>(latch), m_name(name) {}
    void beforeFork() override
    {
        LatchForkGuardM<LatchT>::beforeFork();
        (steps += '+') += m_name;
    }
    void inParent() override
    {
        (steps += '-') += m_name;
        LatchForkGuardM<LatchT>::inParent();
    }
    void inChild() override
    {
        (steps += '~') += m_name;
        LatchForkGuardM<LatchT>::inChild();
    }

private:
    const char m_name;
};

void guardBothLatches()
{
    static NotingGuardM<CountingLatchC> counting(*countingLatch, 'c');
    static NotingGuardM<LatchC> checked(*checkedLatch, 'l');
    guardOverForks(FORK_RANK_LOCALE, checked);
    guardOverForks(FORK_RANK_REGISTRY, counting);
    steps.clear();
}

TEST(ForkGuard, takesLatchesByRankAndGivesThemBackInBothProcesses)
{
    guardBothLatches();
    EXPECT_EQ(inChild([] { return steps == "+c+l~l~c" ? 0 : 1; }), 0);
    EXPECT_EQ(steps, "+c+l-l-c");
    EXPECT_FALSE(countingLatch->holding() || checkedLatch->holding());
}

TEST(ForkGuard, childOfALatchesHolderHoldsItAsOftenAsTheParent)
{
    guardBothLatches();
    const LatchGuardM<CountingLatchC> once(*countingLatch);
    const LatchGuardM<CountingLatchC> twice(*countingLatch);
    EXPECT_EQ(inChild([] {
                  countingLatch->leave();
                  if (!countingLatch->holding()) return 1;
                  countingLatch->leave();
                  if (countingLatch->holding()) return 2;
                  return countingLatch->probe() ? 0 : 3;
              }),
              0);
}

TEST(ForkGuard, childOfABusyProcessFindsAllLatchesFree)
{
    guardBothLatches();
    std::atomic<bool> isDone{false};
    std::thread busy([&] {
        while (!isDone) {
            const LatchGuardM<CountingLatchC> upper(*countingLatch);
            const LatchGuardM<LatchC> lower(*checkedLatch);
        }
    });
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(inChild([] {
                      alarm(10);   // a latch that is held for ever ends the child
                      const LatchGuardM<CountingLatchC> upper(*countingLatch);
                      const LatchGuardM<LatchC> lower(*checkedLatch);
                      return checkedLatch->holding() ? 0 : 1;
                  }),
                  0);
    }
    isDone = true;
    busy.join();
}

TEST(ForkGuard, childMayAskForLocalTime)
{
    std::atomic<bool> isDone{false};
    std::thread busy([&] {
        std::tm local;
        while (!isDone) localTimeOf(0, local);
    });
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(inChild([] {
                      alarm(10);
                      std::tm local;
                      return localTimeOf(0, local) ? 0 : 1;
                  }),
                  0);
    }
    isDone = true;
    busy.join();
}

}   // namespace
