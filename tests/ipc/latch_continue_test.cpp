#include "latch.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

#include <thread>

TEST(LatchContinues, aStrangerLeavingChangesNothingAndNeverWaits)
{
    LatchC latch;
    latch.enter();
    std::thread([&] { latch.leave(); }).join();   // would hang here if it waited for the holder
    EXPECT_EQ(assertCount("pthread_mutex_lock(&mutex) == EDEADLK"), 1u);
    EXPECT_TRUE(latch.holding());
    latch.leave();
    EXPECT_EQ(assertCount(), 1u);
}

TEST(LatchContinues, enteringTwiceHoldsOnce)
{
    LatchC latch;
    latch.enter();
    latch.enter();
    EXPECT_EQ(assertCount("retcode != EDEADLK"), 1u);
    latch.leave();
    EXPECT_FALSE(latch.holding());
    latch.leave();
    EXPECT_EQ(assertCount("pthread_mutex_lock(&mutex) == EDEADLK"), 1u);
}
