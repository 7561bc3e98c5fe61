#include "latch.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// Runs `question` in another thread, where nothing is held.
template <class FunctionT>
bool elsewhere(FunctionT question)
{
    bool answer = false;
    std::thread([&] { answer = question(); }).join();
    return answer;
}

template <class LatchT>
void admitsOneThreadAtATime()
{
    LatchT latch;
    long count = 0;
    inThreads(4, [&](int) {
        for (int i = 0; i < 5000; ++i) {
            const LatchGuardM<LatchT> guard(latch);
            ++count;
        }
    });
    EXPECT_EQ(count, 20000);
}

}   // namespace

TEST(Latch, admitsOneThreadAtATime)
{
    admitsOneThreadAtATime<LatchC>();
    admitsOneThreadAtATime<CountingLatchC>();
}

TEST(LatchC, tellsWhoHoldsIt)
{
    LatchC latch;
    EXPECT_FALSE(latch.holding());
    EXPECT_TRUE(latch.probe());
    EXPECT_TRUE(latch.holding());
    EXPECT_FALSE(latch.probe()) << "not even by its holder";
    EXPECT_FALSE(elsewhere([&] { return latch.holding(); }));
    EXPECT_FALSE(elsewhere([&] { return latch.probe(); }));
    latch.leave();
    EXPECT_FALSE(latch.holding());
}

TEST(CountingLatchC, countsItsHoldersEntries)
{
    CountingLatchC latch;
    EXPECT_FALSE(latch.holding());
    latch.enter();
    EXPECT_TRUE(latch.probe());
    EXPECT_TRUE(latch.holding());
    latch.leave();
    EXPECT_TRUE(latch.holding());
    EXPECT_FALSE(elsewhere([&] { return latch.holding() || latch.probe(); }));
    latch.leave();
    EXPECT_FALSE(latch.holding());
    latch.leave();   // by nobody: no effect
    EXPECT_TRUE(elsewhere([&] {
        const bool free = latch.probe();
        latch.leave();
        return free;
    }));
}

TEST(LatchDeathTest, wrongUseEndsTheProcess)
{
    LatchC latch;
    EXPECT_EXIT(latch.leave(), testing::ExitedWithCode(1), "pthread_mutex_lock\\(&mutex\\) == EDEADLK");
    const auto enterTwice = [&] {
        latch.enter();
        latch.enter();
    };
    EXPECT_EXIT(enterTwice(), testing::ExitedWithCode(1), "retcode != EDEADLK");
}
