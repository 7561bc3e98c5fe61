#include "pathname.h"

#include "cmnlib/syscall.h"

#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

// The flags of open that a mode of fopen stands for; -1 when it is none.
int flagsOf(const char* mode)
{
    const bool both = std::strchr(mode, '+') != nullptr;
    const int exclusive = std::strchr(mode, 'x') != nullptr ? O_EXCL : 0;
    switch (*mode) {
    case 'r': return both ? O_RDWR : O_RDONLY;
    case 'w': return (both ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC | exclusive;
    case 'a': return (both ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND | exclusive;
    default: return -1;
    }
}

}   // namespace

int Open(const char* path, int flags, unsigned mode)
{
    if (path == nullptr) {
        errno = EINVAL;
        return -1;
    }
    return openFd(path, flags, mode);
}

int Creat(const char* path, unsigned mode) { return Open(path, O_WRONLY | O_CREAT | O_TRUNC, mode); }

FILE* Fopen(const char* path, const char* mode)
{
    const int flags = mode != nullptr ? flagsOf(mode) : -1;
    if (flags < 0) {
        errno = EINVAL;
        return nullptr;
    }
    FdOwnerC fd(Open(path, flags));
    if (!fd.isOpen()) return nullptr;
    const bool onlyAppends = (flags & O_APPEND) != 0 && (flags & O_ACCMODE) == O_WRONLY;
    if (onlyAppends) (void)lseek(fd.fd(), 0, SEEK_END);   // that is where fopen stands, too
    FILE* const file = fdopen(fd.fd(), mode);
    if (file != nullptr) (void)fd.release();   // the stream closes it
    return file;
}
