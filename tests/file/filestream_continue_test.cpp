#include "filestream.h"

#include "errorapi.h"
#include "file/filesupport.h"
#include "streamreader.h"
#include "support/helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <memory>

TEST(FileStreamContinue, badArgumentsGoOnWithTheirNeutralValue)
{
    std::ofstream("file") << "text";
    const std::unique_ptr<IOStreamC> stream(FileStreamC::openFile(named("file"), FileStreamC::FMODE_OPEN,
                                                                  static_cast<FileStreamC::FileAccessT>(6),
                                                                  FileStreamC::SHARE_READWRITE));
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(assertCount("Invalid access argument"), 1U);
    EXPECT_TRUE(stream->canRead() && !stream->canWrite());
    EXPECT_EQ(stream->seek(2, static_cast<IOStreamC::WhenceT>(7)), 2);
    EXPECT_EQ(assertCount("Invalid whence value"), 1U);
    EXPECT_EQ(stream->position(), 2);
}

TEST(StreamReaderContinue, aStreamThatClaimsMoreThanItWasAskedForIsNotBelieved)
{
    class BoastfulC : public InputStreamC {
    public:
        long read(unsigned char* buf, long size) override
        {
            std::fill_n(buf, size, static_cast<unsigned char>('x'));
            return m_calls++ == 0 ? size + 1 : 0;
        }
        long long length() const override { return 0; }

    private:
        int m_calls = 0;
    };
    BoastfulC stream;
    StreamReaderC reader(&stream, false, nullptr, false);
    EXPECT_EQ(reader.readToEnd().length(), 1024);
    EXPECT_EQ(assertCount("n <= room"), 1U);
}
