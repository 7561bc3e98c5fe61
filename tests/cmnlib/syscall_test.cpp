#include "cmnlib/syscall.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>

namespace {

bool isOpen(int fd) { return ::fcntl(fd, F_GETFD) != -1; }

// Whether a file opens beyond the standard descriptors when one of them is free.
int openWithoutStandardInput()
{
    ::close(STDIN_FILENO);
    const FdOwnerC file(openFd("/dev/null", O_RDONLY));
    const bool isClosedOnExec = (::fcntl(file.fd(), F_GETFD) & FD_CLOEXEC) != 0;
    return file.fd() > STDERR_FILENO && isClosedOnExec && !isOpen(STDIN_FILENO) ? 0 : 1;
}

}   // namespace

TEST(SystemCalls, areRepeatedOnlyWhileASignalInterruptsThem)
{
    int calls = 0;
    EXPECT_EQ(retryOnEintr([&] { return errno = EINTR, ++calls < 4 ? -1 : 7; }), 7);
    EXPECT_EQ(retryOnEintr([&] { return errno = EIO, ++calls, -1; }), -1);
    EXPECT_EQ(calls, 5);
}

TEST(SystemCalls, noDescriptorIsAStandardOne)
{
    EXPECT_EXIT(std::exit(openWithoutStandardInput()), testing::ExitedWithCode(0), "");
}

TEST(FdOwnerC, closesWhatIsNotReleased)
{
    FdOwnerC first(openFd("/dev/null", O_RDONLY));
    const int fd = first.fd();
    FdOwnerC second(std::move(first));
    EXPECT_FALSE(first.isOpen());
    second = FdOwnerC(openFd("/dev/zero", O_RDONLY));
    EXPECT_FALSE(isOpen(fd));
    errno = ENOENT;
    const int zero = second.release();
    second.reset(zero);
    second.reset();
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(isOpen(zero));
    EXPECT_EQ(closeFd(zero), EBADF);
}
