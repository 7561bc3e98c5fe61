#include "filestream.h"

#include "errorapi.h"
#include "file/filesupport.h"
#include "support/faults.h"
#include "support/helpers.h"
#include "support/system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

typedef FileStreamC FS;
typedef std::unique_ptr<IOStreamC> StreamT;

StreamT opened(const char* path, FS::FileOpenModeT mode, FS::FileAccessT access, FS::FileShareT sharing,
               bool waits = false)
{
    return StreamT(FS::openFile(named(path), mode, access, sharing, waits));
}

StreamT writable(const char* path)
{
    return opened(path, FS::FMODE_CREATE, FS::FACCESS_READWRITE, FS::SHARE_READWRITE);
}

void putFile(const char* path, const std::string& text) { std::ofstream(path) << text; }

ErrorT system(int error) { return ErrorOfErrno(error); }

// Delivers `size` bytes in reads as large as asked for, and notes those.
class CountedInputC : public InputStreamC {
public:
    CountedInputC(long size, bool fails) : m_left(size), m_fails(fails) {}
    long read(unsigned char* buf, long size) override
    {
        asked.push_back(size);
        const long n = std::min(size, m_left);
        std::fill_n(buf, n, static_cast<unsigned char>('x'));
        m_left -= n;
        return n == 0 && m_fails ? -1 : n;
    }
    long long length() const override { return m_left; }

    std::vector<long> asked;

private:
    long m_left;
    bool m_fails;
};

}   // namespace

TEST(FileStream, modesOpenMakeAndEmptyFiles)
{
    struct RowT {
        FS::FileOpenModeT mode;
        int missing;           // errno when the file is not there; 0: it is made
        int present;           // errno when it is there
        const char* content;   // of a file that held "old", after "new" was written
    };
    const RowT rows[] = {
        {FS::FMODE_APPEND, 0, 0, "oldnew!"},
        {FS::FMODE_CREATE, 0, 0, "new!"},
        {FS::FMODE_CREATENEW, 0, EEXIST, "old"},
        {FS::FMODE_OPEN, ENOENT, 0, "new!"},
        {FS::FMODE_OPENORCREATE, 0, 0, "new!"},
        {FS::FMODE_TRUNCATE, ENOENT, 0, "new!"},
        {static_cast<FS::FileOpenModeT>(6), EBADF, EBADF, "old"},
    };
    for (const FS::FileShareT sharing : {FS::SHARE_NONE, FS::SHARE_READ, FS::SHARE_WRITE, FS::SHARE_READWRITE}) {
        for (const RowT& row : rows) {
            SCOPED_TRACE(testing::Message() << "mode " << row.mode << ", sharing " << sharing);
            putFile("there", "old");
            for (const auto& [path, error] : {std::pair("there", row.present), std::pair("missing", row.missing)}) {
                ::unlink("missing");
                const StreamT stream = opened(path, row.mode, FS::FACCESS_WRITE, sharing);
                EXPECT_EQ(stream != nullptr, error == 0);
                if (stream != nullptr) {
                    EXPECT_EQ(stream->write("new!", 4), 0);
                    EXPECT_THAT(recordedErrors(), IsEmpty());
                } else {
                    EXPECT_THAT(recordedErrors(), ElementsAre(system(error), TVXERR_FILE_OPEN));
                }
            }
            EXPECT_EQ(fileText("there"), row.content);
        }
    }
    EXPECT_EQ(opened("none", FS::FMODE_APPEND, FS::FACCESS_READ, FS::SHARE_READ), nullptr);
    EXPECT_THAT(recordedErrors(), ElementsAre(TVXERR_FILE_APPEND_WITHOUT_WRITE));
    EXPECT_NE(::access("none", F_OK), 0);
}

TEST(FileStream, accessIsWhatWasAskedForAlsoWhereALockNeedsMore)
{
    for (const FS::FileOpenModeT mode : {FS::FMODE_OPEN, FS::FMODE_CREATE, FS::FMODE_TRUNCATE}) {
        for (const FS::FileShareT sharing : {FS::SHARE_NONE, FS::SHARE_READ, FS::SHARE_WRITE, FS::SHARE_READWRITE}) {
            SCOPED_TRACE(testing::Message() << "mode " << mode << ", sharing " << sharing);
            putFile("file", "text");
            const StreamT reader = opened("file", mode, FS::FACCESS_READ, sharing);
            ASSERT_NE(reader, nullptr);
            EXPECT_EQ(reader->length(), mode == FS::FMODE_OPEN ? 4 : 0);
            EXPECT_TRUE(reader->canRead() && reader->canSeek() && !reader->canWrite());
            EXPECT_EQ(reader->flush(), 0);
            EXPECT_EQ(reader->write("x", 1), TVXERR_STREAM_CANNOT_WRITE);
            EXPECT_EQ(reader->setLength(0), TVXERR_STREAM_CANNOT_RESIZE);
            EXPECT_THAT(recordedErrors(), ElementsAre(TVXERR_STREAM_CANNOT_WRITE, TVXERR_STREAM_CANNOT_RESIZE));
            const StreamT writer = opened("file", FS::FMODE_OPEN, FS::FACCESS_WRITE, sharing);
            ASSERT_NE(writer, nullptr);
            char byte;
            EXPECT_EQ(writer->read(&byte, 1), -1);
            EXPECT_THAT(recordedErrors(), ElementsAre(TVXERR_STREAM_CANNOT_READ));
        }
    }
}

TEST(FileStream, positionsAndLengths)
{
    const StreamT stream = writable("file");
    EXPECT_EQ(stream->write("0123456789", 10), 0);
    EXPECT_EQ(stream->position(), 10);
    EXPECT_EQ(stream->seek(-4, IOStreamC::FROM_END), 6);
    EXPECT_EQ(stream->seek(1, IOStreamC::FROM_CURRENT), 7);
    char three[3];
    EXPECT_EQ(stream->read(three, 3), 3);
    EXPECT_EQ(std::string(three, 3), "789");
    EXPECT_EQ(stream->read(three, 3), 0);
    EXPECT_EQ(stream->read(three, 0), 0);
    EXPECT_EQ(stream->setLength(4), 0);
    EXPECT_EQ(stream->length(), 4);
    EXPECT_EQ(stream->seek(5LL << 32, IOStreamC::FROM_BEGINNING), 5LL << 32);
    EXPECT_THAT(recordedErrors(), IsEmpty());

    EXPECT_EQ(stream->seek(-1, IOStreamC::FROM_BEGINNING), -1);
    EXPECT_EQ(stream->setLength(-1), system(EINVAL));
    EXPECT_EQ(stream->read(three, -1), -1);
    EXPECT_EQ(stream->write(three, -1), system(EINVAL));
    EXPECT_THAT(recordedErrors(), ElementsAre(system(EINVAL), system(EINVAL), system(EINVAL), system(EINVAL)));

    EXPECT_EQ(stream->close(), 0);
    EXPECT_EQ(stream->close(), 0);
    EXPECT_EQ(stream->flush(), 0);
    EXPECT_EQ(stream->position(), -1);
    EXPECT_EQ(stream->length(), -1);
    EXPECT_EQ(stream->read(three, 1), -1);
    EXPECT_EQ(stream->write(three, 1), TVXERR_STREAM_CANNOT_WRITE);
    EXPECT_EQ(stream->setLength(1), TVXERR_STREAM_CANNOT_RESIZE);
    EXPECT_THAT(recordedErrors(),
                ElementsAre(TVXERR_STREAM_CANNOT_SEEK, TVXERR_STREAM_NO_LENGTH, TVXERR_STREAM_CANNOT_READ,
                            TVXERR_STREAM_CANNOT_WRITE, TVXERR_STREAM_CANNOT_RESIZE));
}

TEST(FileStream, locksStandBetweenProcesses)
{
    putFile("file", "precious");
    struct RowT {
        FS::FileShareT held;
        FS::FileShareT wanted;
        bool opens;
    };
    const RowT rows[] = {{FS::SHARE_NONE, FS::SHARE_NONE, false},     {FS::SHARE_NONE, FS::SHARE_READ, false},
                         {FS::SHARE_READ, FS::SHARE_READ, true},      {FS::SHARE_READ, FS::SHARE_NONE, false},
                         {FS::SHARE_NONE, FS::SHARE_READWRITE, true}, {FS::SHARE_WRITE, FS::SHARE_NONE, true}};
    for (const RowT& row : rows) {
        SCOPED_TRACE(testing::Message() << row.held << " " << row.wanted);
        const StreamT held = opened("file", FS::FMODE_OPEN, FS::FACCESS_READWRITE, row.held);
        ASSERT_NE(held, nullptr);
        EXPECT_EQ(inChild([&row] {
                      const StreamT other = opened("file", FS::FMODE_OPEN, FS::FACCESS_READ, row.wanted);
                      if (other != nullptr) return 1;
                      return recordedErrors() == std::vector{system(EAGAIN), TVXERR_FILE_OPEN} ? 0 : 2;
                  }),
                  row.opens ? 1 : 0);
    }
    // A file that somebody holds is not emptied.
    const StreamT held = opened("file", FS::FMODE_OPEN, FS::FACCESS_READ, FS::SHARE_READ);
    EXPECT_EQ(
        inChild([] { return opened("file", FS::FMODE_CREATE, FS::FACCESS_WRITE, FS::SHARE_NONE) == nullptr ? 0 : 1; }),
        0);
    EXPECT_EQ(fileText("file"), "precious");
}

TEST(FileStream, aFileReplacedWhileItsLockWasAwaitedIsNotOpened)
{
    putFile("file", "old");
    StreamT held = opened("file", FS::FMODE_OPEN, FS::FACCESS_READWRITE, FS::SHARE_NONE);
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const int child = forkChild();
    if (child == 0) {
        if (::write(ready[1], "x", 1) != 1) _exit(3);
        const StreamT other = opened("file", FS::FMODE_TRUNCATE, FS::FACCESS_WRITE, FS::SHARE_NONE, true);
        if (other != nullptr) _exit(1);
        _exit(recordedErrors() == std::vector{system(EAGAIN), TVXERR_FILE_OPEN} ? 0 : 2);
    }
    char byte;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));   // it waits by now; if not, nothing is lost
    putFile("new", "new");
    ASSERT_EQ(::rename("new", "file"), 0);
    held.reset();
    EXPECT_EQ(waitForChild(child), 0);
    EXPECT_EQ(fileText("file"), "new");
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST(FileStream, everyStepOfOpeningThatFailsClosesAndTells)
{
    putFile("file", "text");
    const size_t before = openDescriptors();
    const struct {
        const char* call;
        int error;
        int reported;
    } rows[] = {{"open", EMFILE, EMFILE}, {"fcntl", ENOLCK, ENOLCK}, {"fcntl", EACCES, EAGAIN},
                {"fstat", EIO, EIO},      {"stat", EIO, EIO},        {"ftruncate", EROFS, EROFS}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        const FaultC fault(row.call, row.error);
        EXPECT_EQ(opened("file", FS::FMODE_TRUNCATE, FS::FACCESS_READ, FS::SHARE_READ), nullptr);
        EXPECT_THAT(recordedErrors(), ElementsAre(system(row.reported), TVXERR_FILE_OPEN));
    }
    for (const char* call : {"open", "fcntl", "ftruncate"}) {   // what a signal interrupts is done again
        const FaultC fault(call, EINTR, 0, 3);
        EXPECT_NE(opened("file", FS::FMODE_TRUNCATE, FS::FACCESS_READ, FS::SHARE_READ), nullptr);
        EXPECT_EQ(fault.calls(), 4);
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_THAT(recordedErrors(), IsEmpty());
}

TEST(FileStream, writesGoOnWhereTheyStoppedAndTellWhatStopsThem)
{
    const StreamT stream = writable("file");
    {
        const FaultC halves("write", 0, 0, 3);
        EXPECT_EQ(stream->write("0123456789", 10), 0);
        EXPECT_GT(halves.calls(), 3);
    }
    EXPECT_EQ(fileText("file"), "0123456789");
    {
        const FaultC interrupted("write", EINTR);
        EXPECT_EQ(stream->write("x", 1), system(EINTR));
    }
    {
        const FaultC interrupted("read", EINTR);
        char byte;
        EXPECT_EQ(stream->read(&byte, 1), -1);
    }
    {
        const FaultC interrupted("ftruncate", EINTR);
        EXPECT_EQ(stream->setLength(3), 0);
    }
    EXPECT_THAT(recordedErrors(), ElementsAre(system(EINTR), system(EINTR)));
    EXPECT_EQ(inChild([] {   // a limit is met in the middle of a write
                  std::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit = {4, 4};
                  setrlimit(RLIMIT_FSIZE, &limit);
                  return writable("limited")->write("0123456789", 10) == system(EFBIG) ? 0 : 1;
              }),
              0);
    EXPECT_EQ(fileText("limited"), "0123");
    const StreamT full = opened("/dev/full", FS::FMODE_OPEN, FS::FACCESS_WRITE, FS::SHARE_READWRITE);
    EXPECT_EQ(full->write("x", 1), system(ENOSPC));
    EXPECT_THAT(recordedErrors(), ElementsAre(system(ENOSPC)));
}

TEST(FileStream, closesOnceWhateverCloseSays)
{
    for (const int error : {EINTR, EIO}) {
        const StreamT stream = writable("file");
        const FaultC fault("close", error);
        EXPECT_EQ(stream->close(), error == EINTR ? 0 : system(error));
        EXPECT_EQ(stream->close(), 0);
        EXPECT_EQ(fault.calls(), 1);
    }
    EXPECT_THAT(recordedErrors(), ElementsAre(system(EIO)));
}

TEST(OutputStream, copiesInChunksUpToTheCount)
{
    const StreamT out = writable("out");
    CountedInputC some(5000, false);
    EXPECT_EQ(out->writeFrom(some, 3000), 0);
    EXPECT_THAT(some.asked, ElementsAre(1024, 1024, 952));
    EXPECT_EQ(out->length(), 3000);
    *out << some;
    EXPECT_EQ(out->length(), 5000);
    CountedInputC failing(1500, true);
    EXPECT_EQ(out->writeFrom(failing, 0), 0);
    EXPECT_EQ(out->length(), 6500);
    EXPECT_THAT(recordedErrors(), IsEmpty());

    CountedInputC more(3000, false);
    const StreamT full = opened("/dev/full", FS::FMODE_OPEN, FS::FACCESS_WRITE, FS::SHARE_READWRITE);
    EXPECT_EQ(full->writeFrom(more, 0), TVXERR_STREAM_WRITE);
    EXPECT_THAT(more.asked, ElementsAre(1024));
    EXPECT_THAT(recordedErrors(), ElementsAre(system(ENOSPC), TVXERR_STREAM_WRITE));
}

// By the system where it can, by hand where it cannot, and from the positions where both streams are.
TEST(OutputStream, copiesFromFileToFile)
{
    std::string text;
    for (int n = 0; n < 1000; ++n) text += std::to_string(n) + " ";
    putFile("source", text);
    const StreamT source = opened("source", FS::FMODE_OPEN, FS::FACCESS_READ, FS::SHARE_READ);
    for (const int error : {0, ENOSYS}) {
        const FaultC fault("copy_file_range", error, 0, error != 0 ? 100 : 0);
        const StreamT target = writable("target");
        target->write("head ", 5);
        source->seek(100, FS::FROM_BEGINNING);
        EXPECT_EQ(target->writeFrom(*source, 2000), 0);
        EXPECT_EQ(source->position(), 2100);
        EXPECT_EQ(fileText("target"), "head " + text.substr(100, 2000));
        EXPECT_EQ(target->writeFrom(*source, 0), 0);
        EXPECT_EQ(fileText("target"), "head " + text.substr(100));
        const StreamT appending = opened("target", FS::FMODE_APPEND, FS::FACCESS_WRITE, FS::SHARE_READWRITE);
        source->seek(-10, FS::FROM_END);
        EXPECT_EQ(appending->writeFrom(*source, 3000), 0);
        EXPECT_EQ(fileText("target"), "head " + text.substr(100) + text.substr(text.size() - 10));
    }
    EXPECT_THAT(recordedErrors(), IsEmpty());
}

TEST(OutputStream, aStreamCopiedIntoItselfComesToAnEnd)
{
    putFile("file", "0123456789");
    const StreamT stream = opened("file", FS::FMODE_APPEND, FS::FACCESS_READWRITE, FS::SHARE_NONE);
    stream->seek(0, IOStreamC::FROM_BEGINNING);
    EXPECT_EQ(stream->writeFrom(*stream, 0), 0);
    EXPECT_EQ(fileText("file"), "01234567890123456789");
}
