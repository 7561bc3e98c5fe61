#include "threadptr.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

struct ObjectC {
    std::atomic<int>* deleted;
    int thread;
    ~ObjectC() { ++*deleted; }
};

}   // namespace

TEST(ThreadSpecificPointerM, eachThreadHasItsOwnAndItsEndCleansUp)
{
    std::atomic<int> deleted{0};
    ThreadSpecificPointerM<ObjectC> pointer;
    ObjectC mine{&deleted, -1};
    pointer = &mine;
    inThreads(4, [&](int i) {
        EXPECT_EQ(pointer.obj(), nullptr);
        pointer = new ObjectC{&deleted, i};
        EXPECT_EQ(pointer->thread, i);
    });
    EXPECT_EQ(deleted, 4);
    EXPECT_EQ(pointer.obj(), &mine);
    pointer = nullptr;
}

TEST(ThreadSpecificPointerM, destroyedKeyCleansUpNothing)
{
    std::atomic<int> deleted{0};
    auto* pointer = new ThreadSpecificPointerM<ObjectC>;
    ObjectC object{&deleted, 0};
    std::thread([&] {
        *pointer = &object;
        delete pointer;
    }).join();
    EXPECT_EQ(deleted, 0);
}

TEST(ThreadSpecificPointerMDeathTest, noMoreKeysIsFatal)
{
    const auto exhaust = [] {
        for (;;) new ThreadSpecificPointerM<ObjectC>;
    };
    EXPECT_EXIT(exhaust(), testing::ExitedWithCode(1), "\\(result = pthread_key_create\\(&key, c\\)\\) == 0");
}
