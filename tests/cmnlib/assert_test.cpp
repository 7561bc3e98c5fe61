#include "assertfatal.h"

#include "support/helpers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/stat.h>
#include <thread>

namespace {

const char ENTRY[] = "\nAssertion (n >= 0) failed file stringim.cpp line 12\n"
                     "Break on assertFatal() in cmnlib to debug\n";

void failCheck() { assertFatal("n >= 0", "stringim.cpp", 12); }

}   // namespace

TEST(AssertDeathTest, writesTheLogAndEndsWithStatusOne)
{
    EXPECT_EXIT(failCheck(), testing::ExitedWithCode(1),
                "^Assertion \\(n >= 0\\) failed file stringim.cpp line 12\n"
                "Break on assertFatal\\(\\) in cmnlib to debug\n\n$");
    EXPECT_EQ(assertLog(), ENTRY);
}

TEST(AssertDeathTest, environmentDecidesHowItEnds)
{
    struct RowT {
        const char* name;
        std::initializer_list<const char*> set;
        bool aborts;
    };
    const RowT rows[] = {
        {"debug", {"ASSERT_DEBUG"}, true},
        {"debug wins over continue", {"ASSERT_DEBUG", "ASSERT_CONTINUE"}, true},
        {"core dump", {"COREDUMP"}, true},
    };
    for (const RowT& row : rows) {
        SCOPED_TRACE(row.name);
        const auto failing = [&row] {
            for (const char* name : row.set) setenv(name, "", 1);
            failCheck();
        };
        EXPECT_EXIT(failing(), testing::KilledBySignal(SIGABRT), "");
    }
    EXPECT_EQ(assertCount("n >= 0"), std::size(rows));
}

TEST(AssertDeathTest, checkNamesTheBaseNameOfItsFile)
{
    EXPECT_EXIT((void)TVX_CHECK(1 + 1 == 3, "arithmetic"), testing::ExitedWithCode(1),
                "Assertion \\(arithmetic\\) failed file assert_test.cpp line");
}

TEST(AssertDeathTest, unwritableLogIsIgnored)
{
    mkdir("assert.log", 0700);   // a directory in its place
    EXPECT_EXIT(failCheck(), testing::ExitedWithCode(1), "n >= 0");
}

TEST(AssertDeathTest, failingAgainInsideAnExitHandlerStillEndsWithTheStatus)
{
    const auto failing = [] {
        std::atexit(failCheck);
        failCheck();
    };
    EXPECT_EXIT(failing(), testing::ExitedWithCode(1), "n >= 0");
}

TEST(AssertDeathTest, twoThreadsFailingAtOnceEndTheProcessOnce)
{
    EXPECT_EXIT(inThreads(2, [](int) { failCheck(); }), testing::ExitedWithCode(1), "n >= 0");
}

TEST(FatalDeathTest, writesItsMessageAfterStandardOutput)
{
    const auto failing = [] {
        fputs("buffered", stdout);
        dup2(2, 1);
        Fatal(3, "cannot %s %d", "start", 7);
    };
    EXPECT_EXIT(failing(), testing::ExitedWithCode(3), "^bufferedcannot start 7\n$");
}
