#include "pathname.h"

#include "cmnlib/syscall.h"

#include <climits>
#include <cstring>
#include <memory>
#include <sys/stat.h>

unsigned long GetCWD(char* buf, unsigned long size)
{
    char path[PATH_MAX];
    if (getcwd(path, sizeof path) == nullptr) {
        if (buf != nullptr && size > 0) *buf = 0;
        return 0;
    }
    const unsigned long length = std::strlen(path);
    if (buf != nullptr && length < size) std::memcpy(buf, path, length + 1);
    return length;
}

int Mkdir(const char* path, unsigned mode)
{
    if (path != nullptr) return mkdir(path, mode);
    errno = EINVAL;
    return -1;
}

int Rmdir(const char* path)
{
    const std::unique_ptr<const char[]> fixed(FixUpPath(path));
    if (fixed != nullptr) return rmdir(fixed.get());
    errno = EINVAL;
    return -1;
}

int Chdir(const char* path)
{
    const std::unique_ptr<const char[]> fixed(FixUpPath(path));
    if (fixed != nullptr) return chdir(fixed.get());
    errno = EINVAL;
    return -1;
}
