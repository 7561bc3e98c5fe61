#include "confapi/impl/unxfilcker.h"

#include "cmnlib/errnokeeper.h"
#include "cmnlib/syscall.h"

#include <algorithm>
#include <ctime>

namespace {

const long NANOSECONDS = 1000000000;
const long FIRST_PAUSE = NANOSECONDS / 1000;   // a save takes about as long
const long LONGEST_PAUSE = NANOSECONDS / 100;

timespec now()
{
    timespec time;
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return time;
}

bool isBefore(const timespec& a, const timespec& b)
{
    return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
}

// A signal does not shorten it.
void pause(long nanoseconds)
{
    timespec left = {0, nanoseconds};
    retryOnEintr([&] { return ::nanosleep(&left, &left); });
}

}   // namespace

UnxFilckerC::UnxFilckerC(const FileNameC& lockFile) : m_filename(lockFile)
{
    m_fl.l_type = F_WRLCK;
    m_fl.l_whence = SEEK_SET;   // from its first byte on, to its end, wherever that comes to be
}

// What somebody planted there is not followed, and a pipe not waited for.
int UnxFilckerC::open()
{
    if (isLocked()) return 0;
    m_fd = openFd(m_filename.getPath().utf8(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK);
    return isLocked() ? 0 : CANNOT_OPEN;
}

int UnxFilckerC::lockFile()
{
    if (open() != 0) return CANNOT_OPEN;
    struct stat info;
    if (retryOnEintr([this] { return ::fcntl(m_fd, F_SETLK, &m_fl); }) != 0 || !isStillNamed(info)) return giveUp();
    applyMode(info);
    return LOCKED;
}

int UnxFilckerC::lockFile(unsigned tries)
{
    timespec end = now();
    end.tv_sec += tries;
    int result = lockFile();
    for (long length = FIRST_PAUSE; result == BUSY && isBefore(now(), end);
         length = std::min(2 * length, LONGEST_PAUSE)) {
        pause(length);
        result = lockFile();
    }
    return result;
}

bool UnxFilckerC::isStillNamed(struct stat& info) const
{
    struct stat named;
    if (::fstat(m_fd, &info) != 0) return false;
    const bool isThere = ::stat(m_filename.getPath().utf8(), &named) == 0;
    if (!isThere && errno != ENOENT) return false;
    if (isThere && isSameFile(info, named)) return true;
    errno = EAGAIN;   // another holder has removed it, and one that is new may be locked meanwhile
    return false;
}

// Only on a file of our own: one with another name as well may have been planted to have that one changed. The
// owner can always write, or could not lock the next time.
void UnxFilckerC::applyMode(const struct stat& info) const
{
    const mode_t wanted = (m_mode & 0666) | S_IWUSR;
    if (m_mode == NO_MODE || info.st_nlink != 1 || (info.st_mode & 07777) == wanted) return;
    const ErrnoKeeperC keeper;
    ::fchmod(m_fd, wanted);   // not ours to change: whoever owns it has settled that
}

int UnxFilckerC::giveUp()
{
    closeFd(m_fd);
    m_fd = -1;
    return BUSY;
}

bool UnxFilckerC::releaseFile()
{
    if (!isLocked()) return true;
    ::unlink(m_filename.getPath().utf8());
    const int failure = closeFd(m_fd);
    m_fd = -1;
    if (failure != 0) errno = failure;
    return failure == 0;
}
