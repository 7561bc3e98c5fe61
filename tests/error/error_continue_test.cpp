#include "error/api/selectstyle.h"
#include "errorapi.h"
#include "support/helpers.h"
#include "tvxcmn.h"

#include <gmock/gmock.h>

namespace {

using namespace std::string_view_literals;

const ErrorT DISK = 0xE1B20005L;

TEST(ErrorContinues, textWithMoreDirectivesThanArgumentsIsRecordedWithNeutralValues)
{
    ErrBufI& buffer = *getErrBuf(2);
    EXPECT_EQ(Error(DISK, "%d %S.", ArgListNull), DISK);
    EXPECT_EQ(assertCount("a != 0"), 2U);
    EXPECT_STREQ(buffer.get(0)->message().utf8(), "0 .");
    buffer.reset();
}

TEST(ErrorContinues, placesBeyondTheEndAreLeftAlone)
{
    ErrBufI& buffer = *getErrBuf(2);
    Error(DISK, "x");
    EXPECT_EQ(buffer.get(1), nullptr);
    EXPECT_EQ(assertCount(), 0U);
    buffer.destroy(1);
    EXPECT_EQ(assertCount("Attempt to destroy element past end of BlobArrayC"), 1U);
    EXPECT_EQ(buffer.count(), 1U);
    buffer.destroy(0);
    EXPECT_EQ(buffer.count(), 0U);
}

TEST(ErrorContinues, listOfVariantsEndsAtAZeroByte)
{
    ErrSevT sev;
    std::string room;
    EXPECT_EQ(selectStyle("\1\1{w}\1P\1R\1S\0\1\1{f}\1Q\1\1"sv, sev, room), "P\1R\1S");
    EXPECT_EQ(sev, ERR_SEV_WARN);
    EXPECT_EQ(assertCount("(buf == ep && *buf == '\\0') || buf[-1] == '\\x01'"), 1U);
    EXPECT_THAT(assertLog(), testing::HasSubstr(" failed file catalog.cpp line "));
}

}   // namespace
