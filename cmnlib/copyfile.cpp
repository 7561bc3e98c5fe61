#include "pathname.h"

#include "cmnlib/copyfile.h"
#include "cmnlib/syscall.h"

#include <cstdint>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

// Large enough that a system call's fixed cost does not show, small enough for the processor's cache.
const size_t BLOCK_SIZE = 128 * 1024;
// The most that the system moves in one call.
const size_t RANGE_SIZE = 1UL << 30;

CopyResultT copyByBlocks(int from, int to)
{
    // A short text, or nothing at all, is not worth a large block.
    char small[4096];
    const CopyStepT first = copyBlock(from, to, small, sizeof small);
    if (first.moved == 0) return first.result;

    const std::unique_ptr<char[]> large(new char[BLOCK_SIZE]);
    for (;;) {
        const CopyStepT step = copyBlock(from, to, large.get(), BLOCK_SIZE);
        if (step.moved == 0) return step.result;
    }
}

// Opens both sides; the target is not truncated before it is known to be another file.
int openBoth(const char* from, const char* to, FdOwnerC& source, FdOwnerC& target)
{
    struct stat sourceInfo;
    struct stat targetInfo;
    source.reset(Open(from, O_RDONLY));
    if (!source.isOpen() || fstat(source.fd(), &sourceInfo) != 0) return errno;
    if (S_ISDIR(sourceInfo.st_mode)) return EISDIR;

    target.reset(Open(to, O_WRONLY | O_CREAT, sourceInfo.st_mode & 0777));
    if (!target.isOpen() || fstat(target.fd(), &targetInfo) != 0) return errno;
    if (isSameFile(sourceInfo, targetInfo)) return EINVAL;
    // A device or pipe has no length. Some file systems write a file that was emptied to the disk when it is closed:
    // not what is empty anyway.
    if (!S_ISREG(targetInfo.st_mode) || targetInfo.st_size == 0) return 0;
    return retryOnEintr([&] { return ftruncate(target.fd(), 0); }) == 0 ? 0 : errno;
}

int copyFile(const char* from, const char* to)
{
    FdOwnerC source;
    FdOwnerC target;
    int error = openBoth(from, to, source, target);
    if (error == 0) error = copyContents(source.fd(), target.fd()).error;
    if (error != 0) return error;
    return closeFd(target.release());
}

// 0 or -1 with errno.
int statusOf(int error)
{
    if (error == 0) return 0;
    errno = error;
    return -1;
}

}   // namespace

int writeAll(int fd, const char* data, size_t size)
{
    while (size > 0) {
        const ssize_t written = retryOnEintr([&] { return write(fd, data, size); });
        if (written < 0) return errno;
        if (written == 0) return EIO;   // would go on for ever
        data += written;
        size -= static_cast<size_t>(written);
    }
    return 0;
}

CopyStepT copyBlock(int from, int to, char* block, size_t capacity)
{
    const ssize_t size = retryOnEintr([&] { return read(from, block, capacity); });
    if (size <= 0) return {0, {size < 0 ? errno : 0, true}};
    const int error = writeAll(to, block, static_cast<size_t>(size));
    return {error == 0 ? static_cast<size_t>(size) : 0, {error, false}};
}

CopyResultT copyContents(int from, int to)
{
    // The kernel moves the pages, or shares them where the file system can. Whatever it says but success,
    // reading and writing find out which side is to blame; and it takes a file without a length (as in
    // /proc) for an empty one, so they also have the last word on where the end is.
    while (copy_file_range(from, nullptr, to, nullptr, RANGE_SIZE, 0) > 0) {
    }
    return copyByBlocks(from, to);
}

int CmnCopyFile(const char* from, const char* to) { return statusOf(copyFile(from, to)); }

int RenameFile(const char* from, const char* to)
{
    return from != nullptr && to != nullptr ? rename(from, to) : statusOf(EINVAL);
}

int RemoveFile(const char* path) { return path != nullptr ? unlink(path) : statusOf(EINVAL); }

bool FileExists(const char* path)
{
    struct stat info;
    return path != nullptr && stat(path, &info) == 0;
}

long FileSize(const char* path)
{
    struct stat info;
    if (path == nullptr) return statusOf(EINVAL);
    return stat(path, &info) == 0 ? info.st_size : -1;
}

long FileSpaceAvail(const char* path)
{
    struct statvfs info;
    if (path == nullptr) return statusOf(EINVAL);
    if (statvfs(path, &info) != 0) return -1;
    const unsigned long long bytes = static_cast<unsigned long long>(info.f_bavail) * info.f_frsize;
    return bytes > INT64_MAX ? INT64_MAX : static_cast<long>(bytes);
}
