#include "filestream.h"

#include "errorapi.h"
#include "file/filesupport.h"
#include "support/helpers.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>

TEST(FileStreamContinue, badArgumentsGoOnWithTheirNeutralValue)
{
    std::ofstream("file") << "text";
    const std::unique_ptr<IOStreamC> stream(FileStreamC::openFile(named("file"), FileStreamC::FMODE_OPEN,
                                                                  static_cast<FileStreamC::FileAccessT>(5),
                                                                  FileStreamC::SHARE_READWRITE));
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(assertCount("Invalid access argument"), 1U);
    EXPECT_TRUE(stream->canRead());
    EXPECT_EQ(stream->seek(2, static_cast<IOStreamC::WhenceT>(7)), 2);
    EXPECT_EQ(assertCount("Invalid whence value"), 1U);
    EXPECT_EQ(stream->position(), 2);
}
