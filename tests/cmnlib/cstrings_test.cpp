#include "cstrings.h"

#include "gettime.h"
#include "osversion.h"
#include "taskid.h"

#include <gtest/gtest.h>

#include <memory>
#include <strings.h>
#include <sys/wait.h>
#include <unistd.h>

TEST(CStrings, compareIgnoresTheCaseOfAsciiOnly)
{
    const char* const texts[] = {"", "a", "A", "ab", "aB", "b", "[", "{", "\xC3\x84", "\xC3\xA4"};
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    for (const char* a : texts) {
        for (const char* b : texts) {
            EXPECT_EQ(sign(StrCompareCI(a, b)), sign(strcasecmp(a, b))) << a << " " << b;
            EXPECT_EQ(sign(StrCompareCIN(a, b, 1)), sign(strncasecmp(a, b, 1))) << a << " " << b;
        }
    }
    EXPECT_EQ(StrCompareCI(nullptr, ""), 0);
    EXPECT_GT(StrCompareCI("a", nullptr), 0);
}

TEST(CStrings, trimWorksInPlace)
{
    const struct {
        const char* text;
        const char* left;
        const char* right;
        const char* both;
    } rows[] = {{"", "", "", ""}, {" \t\r\n", "", "", ""}, {"x", "x", "x", "x"}, {" a b ", "a b ", " a b", "a b"}};
    for (const auto& row : rows) {
        const std::unique_ptr<char[]> left(StrDuplicate(row.text));
        const std::unique_ptr<char[]> right(StrDuplicate(row.text));
        const std::unique_ptr<char[]> both(StrDuplicate(row.text));
        EXPECT_STREQ(StrTrimLeft(left.get()), row.left);
        EXPECT_STREQ(StrTrimRight(right.get()), row.right);
        EXPECT_STREQ(StrTrim(both.get()), row.both);
    }
    EXPECT_EQ(StrTrim(nullptr), nullptr);
    EXPECT_EQ(StrDuplicate(nullptr), nullptr);
}

TEST(SystemShims, askTheSystem)
{
    timeval before;
    ASSERT_EQ(GetTimeOfDay(&before), 0);
    EXPECT_LE(labs(before.tv_sec - time(nullptr)), 2);

    utsname name;
    ASSERT_EQ(uname(&name), 0);
    EXPECT_STREQ(OSVersionInfoC().release(), name.release);
    EXPECT_STREQ(OSVersionInfoC().machine(), name.machine);

    EXPECT_EQ(GetTaskId(), getpid());
    const pid_t child = fork();
    if (child == 0) _exit(GetTaskId() == getpid() ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << "a forked child has an id of its own";
}
