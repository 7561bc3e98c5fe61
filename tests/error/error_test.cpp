#include "errorapi.h"
#include "tvxcmn.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>

namespace {

const ErrorT DISK = 0xE1B20005L;

// Every test leaves its thread's buffer empty.
class ErrorTest : public testing::Test {
protected:
    ErrorTest() { getErrBuf(2)->reset(); }
    ~ErrorTest() override { getErrBuf(2)->reset(); }

    static std::string newest()
    {
        const ErrBufI& buffer = *getErrBuf(2);
        return buffer.count() != 0 ? buffer.get(buffer.count() - 1)->message().utf8() : "no entry";
    }
    static ErrSevT severity() { return getErrBuf(2)->get(getErrBuf(2)->count() - 1)->severity(); }
};

ErrorT reportVA(const char* def_str, ...)
{
    va_list params;
    va_start(params, def_str);
    const ErrorT err = ErrorVA(DISK, def_str, params);
    va_end(params);
    return err;
}

TEST_F(ErrorTest, recordsTheDefaultTextAndReturnsTheNumber)
{
    EXPECT_EQ(Error(DISK, "{w} 100%% full"), DISK);
    EXPECT_EQ(newest(), "100%% full");
    EXPECT_EQ(severity(), ERR_SEV_WARN);
    EXPECT_EQ(getErrBuf(1)->get(0)->error(), DISK);

    EXPECT_EQ(Error(DISK, "{f} 100%% full", ArgListNull), DISK);
    EXPECT_EQ(newest(), "100% full");
    Error(DISK, "{w} %2$S %1$d", ArgListC() << 3 << "disks");
    EXPECT_EQ(newest(), "disks 3");
    Error(DISK, nullptr);
    EXPECT_EQ(newest(), "");
    EXPECT_EQ(severity(), ERR_SEV_ERROR);
    EXPECT_EQ(getErrBuf(2)->count(), 4U);
}

TEST_F(ErrorTest, recordsNothingWithoutASeverity)
{
    EXPECT_EQ(Error(DISK, "{#}x"), DISK);
    EXPECT_EQ(Error(DISK, "{#}%d", ArgListC(1)), DISK);
    EXPECT_EQ(getErrBuf(2)->count(), 0U);
}

TEST_F(ErrorTest, readsAVariableArgumentListAsTheDefaultTextSays)
{
    EXPECT_EQ(reportVA("\1\1{i}\1%d of %ld%%\1%s\1", 5, 7L, "why"), DISK);
    EXPECT_EQ(newest(), "5 of 7%\nwhy");
    EXPECT_EQ(severity(), ERR_SEV_INFO);
}

TEST_F(ErrorTest, givesTheTextWithoutRecordingIt)
{
    ErrSevT sev = ERR_SEV_NONE;
    EXPECT_STREQ(ErrorString(sev, DISK, "{m}a%%").utf8(), "a%%");
    EXPECT_EQ(sev, ERR_SEV_MONITOR);
    EXPECT_STREQ(ErrorString(sev, DISK, "{#}a%d", 1).utf8(), "a1");
    EXPECT_EQ(sev, ERR_SEV_NONE);
    EXPECT_STREQ(getL10NMessage(DISK, "{w}\1b").utf8(), "\1b");
    EXPECT_STREQ(getL10NMessage(DISK, "\1\1\1b\1%S\1d", "c").utf8(), "b\1c\1d");
    EXPECT_EQ(getErrBuf(2)->count(), 0U);
}

TEST_F(ErrorTest, keepsTheCallersErrnoAndPrintsIt)
{
    errno = ENOENT;
    Error(DISK, "%!", ArgListNull);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(newest(), std::strerror(ENOENT));
    errno = EACCES;
    reportVA("%d: %!", 1);
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(newest(), std::string("1: ") + std::strerror(EACCES));
}

TEST_F(ErrorTest, reportsTheSystemsFailuresInItsWords)
{
    errno = 0;
    EXPECT_EQ(ErrorErrno(EBUSY), 0xE0000010L);
    EXPECT_EQ(newest(), std::strerror(EBUSY));
    EXPECT_EQ(severity(), ERR_SEV_ERROR);
    Error(ErrorOfErrno(ENOENT), "{w} other words", ArgListNull);
    EXPECT_EQ(newest(), std::strerror(ENOENT));
    EXPECT_EQ(errno, 0);
}

TEST_F(ErrorTest, takesBackWhatAScopeHasReported)
{
    Error(DISK, "stays");
    const ErrorCheckpointC checkpoint;
    {
        const AutoRollbackErrorCheckpointC scope;
        EXPECT_EQ(scope.sequence(), ErrorCheckpoint());
        Error(DISK, "goes");
        EXPECT_EQ(getErrBuf(2)->count(), 2U);
    }
    EXPECT_EQ(newest(), "stays");
    Error(DISK, "goes too");
    checkpoint.rollback();
    EXPECT_EQ(getErrBuf(2)->count(), 1U);
}

}   // namespace
