#include "assertfatal.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

#include <cerrno>

TEST(AssertContinues, returnsZeroAndKeepsErrno)
{
    errno = ENOENT;
    EXPECT_EQ(assertFatal("e", "stringim.cpp", 5), 0);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(TVX_CHECK(false, "never"));
    EXPECT_TRUE(TVX_CHECK(true, "silent"));
    EXPECT_EQ(assertCount(), 2u);
}

TEST(AssertContinues, messageIsCutToItsBuffer)
{
    const std::string expr(5000, 'x');
    assertFatal(expr.c_str(), "f", 1);
    EXPECT_EQ(assertLog(), "\nAssertion (" + std::string(1023 - 11, 'x'));
}

TEST(AssertContinues, entriesOfConcurrentThreadsStayWhole)
{
    const int threads = 8;
    const int each = 50;
    inThreads(threads, [](int i) {
        for (int n = 0; n < each; ++n) assertFatal("whole", "thread.cpp", i);
    });
    size_t expected = 0;
    for (int i = 0; i < threads; ++i) {
        const std::string entry = "\nAssertion (whole) failed file thread.cpp line " + std::to_string(i) +
                                  "\nBreak on assertFatal() in cmnlib to debug\n";
        expected += each * entry.size();
    }
    EXPECT_EQ(assertLog().size(), expected);
    EXPECT_EQ(assertCount("whole"), static_cast<size_t>(threads * each));
}
