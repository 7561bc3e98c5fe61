// syscall.h: the few habits that every call of the system follows in this library.
//
//   - what a signal may interrupt is repeated through one wrapper; a call that is not, says so
//   - every descriptor is closed on exec and none is 0, 1 or 2, where output meant for the standard
//     streams would end up in it
//   - close is called once: on Linux the descriptor is free again after EINTR, and a second close could
//     hit one that another thread has just been given
//
// What fails leaves the reason in errno and records nothing; the callers report.
//
// Thread safety: any thread. An FdOwnerC is unlocked.
#ifndef TVXCMN_CMNLIB_SYSCALL_H
#define TVXCMN_CMNLIB_SYSCALL_H

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// Calls `call` until it does anything but fail with EINTR, and returns its last result.
template <class CallT>
auto retryOnEintr(CallT call) -> decltype(call())
{
    decltype(call()) result;
    do {
        result = call();
    } while (result == -1 && errno == EINTR);
    return result;
}

// Closes `fd`; 0, or the errno of a failure other than EINTR. Leaves errno as it was.
inline int closeFd(int fd)
{
    const int before = errno;
    const int failure = ::close(fd) == 0 || errno == EINTR ? 0 : errno;
    errno = before;
    return failure;
}

// A descriptor like `fd`, which it takes over, that is none of the standard ones and closed on exec;
// -1 when there is none left, or when `fd` is -1.
inline int liftFd(int fd)
{
    if (fd < 0 || fd > STDERR_FILENO) return fd;
    const int lifted = ::fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    closeFd(fd);
    return lifted;
}

// open() with what this library asks of every descriptor. Blocks where open() blocks.
inline int openFd(const char* path, int flags, mode_t mode = 0666)
{
    return liftFd(retryOnEintr([=] { return ::open(path, flags | O_CLOEXEC | O_NOCTTY, mode); }));
}

// Owns a descriptor and closes it, unless it is released. -1 is none.
class FdOwnerC {
public:
    explicit FdOwnerC(int fd = -1) noexcept : m_fd(fd) {}
    FdOwnerC(FdOwnerC&& other) noexcept : m_fd(other.release()) {}
    FdOwnerC& operator=(FdOwnerC&& other) noexcept
    {
        if (this != &other) reset(other.release());
        return *this;
    }
    FdOwnerC(const FdOwnerC&) = delete;
    FdOwnerC& operator=(const FdOwnerC&) = delete;
    ~FdOwnerC() { reset(); }

    int fd() const noexcept { return m_fd; }
    bool isOpen() const noexcept { return m_fd >= 0; }

    // Hands the descriptor over.
    [[nodiscard]] int release() noexcept
    {
        const int fd = m_fd;
        m_fd = -1;
        return fd;
    }
    // Closes what is owned and owns `fd` instead. Leaves errno as it was.
    void reset(int fd = -1) noexcept
    {
        if (m_fd >= 0) closeFd(m_fd);
        m_fd = fd;
    }

private:
    int m_fd;
};

// Whether both describe one file, under whatever names.
inline bool isSameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

#endif   // TVXCMN_CMNLIB_SYSCALL_H
