#include "support/faults.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <string_view>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>
#include <vector>

namespace {

std::atomic<int> anyFault{0};   // most calls look no further
std::mutex faultsMutex;
std::vector<FaultC*> faults;

}   // namespace

FaultC::FaultC(const char* call, int error, int skip, int count)
    : m_call(call), m_error(error), m_skip(skip), m_count(count)
{
    enter();
}

FaultC::FaultC(const char* call, std::function<void()> action, int skip, int count)
    : m_call(call), m_error(-1), m_action(std::move(action)), m_skip(skip), m_count(count)
{
    enter();
}

void FaultC::enter()
{
    const std::lock_guard<std::mutex> lock(faultsMutex);
    faults.push_back(this);
    ++anyFault;
}

FaultC::~FaultC()
{
    const std::lock_guard<std::mutex> lock(faultsMutex);
    faults.erase(std::find(faults.begin(), faults.end(), this));
    --anyFault;
}

int FaultC::next(const char* call)
{
    if (anyFault == 0) return -1;
    std::unique_lock<std::mutex> lock(faultsMutex);
    int error = -1;
    std::function<void()> action;
    for (FaultC* const fault : faults) {
        if (std::string_view(fault->m_call) != call) continue;
        const int number = fault->m_calls++;
        if (number < fault->m_skip || number - fault->m_skip >= fault->m_count) continue;
        error = fault->m_error;
        action = fault->m_action;
    }
    lock.unlock();
    if (action) action();
    return error;
}

// Each wrapper stands in for one call; __real_... is what it stands for.
#define WRAPPED(result, name, params, args)                                                                            \
    extern "C" result __real_##name params;                                                                            \
    extern "C" result __wrap_##name params;                                                                            \
    result __wrap_##name params                                                                                        \
    {                                                                                                                  \
        const int error = FaultC::next(#name);                                                                         \
        if (error <= 0) return __real_##name args;                                                                     \
        errno = error;                                                                                                 \
        return -1;                                                                                                     \
    }

#define WRAPPED_TRANSFER(name, params, size, args)                                                                     \
    extern "C" ssize_t __real_##name params;                                                                           \
    extern "C" ssize_t __wrap_##name params;                                                                           \
    ssize_t __wrap_##name params                                                                                       \
    {                                                                                                                  \
        const int error = FaultC::next(#name);                                                                         \
        if (error == 0 && size > 1) size /= 2;                                                                         \
        if (error <= 0) return __real_##name args;                                                                     \
        errno = error;                                                                                                 \
        return -1;                                                                                                     \
    }

WRAPPED(int, ftruncate, (int fd, off_t length), (fd, length))
WRAPPED(int, stat, (const char* path, struct stat* info), (path, info))
WRAPPED(int, gettimeofday, (timeval * now, void* zone), (now, zone))
WRAPPED(int, fstat, (int fd, struct stat* info), (fd, info))
WRAPPED(int, fdatasync, (int fd), (fd))
WRAPPED(int, fsync, (int fd), (fd))
WRAPPED(int, unlink, (const char* path), (path))
WRAPPED(int, unlinkat, (int at, const char* path, int flags), (at, path, flags))
WRAPPED(int, fchmod, (int fd, mode_t mode), (fd, mode))
WRAPPED(int, rename, (const char* from, const char* to), (from, to))
WRAPPED_TRANSFER(read, (int fd, void* data, size_t size), size, (fd, data, size))
WRAPPED_TRANSFER(write, (int fd, const void* data, size_t size), size, (fd, data, size))
WRAPPED_TRANSFER(copy_file_range, (int in, off_t* inAt, int out, off_t* outAt, size_t size, unsigned flags), size,
                 (in, inAt, out, outAt, size, flags))

extern "C" dirent* __real_readdir(DIR* dp);
extern "C" dirent* __wrap_readdir(DIR* dp);
dirent* __wrap_readdir(DIR* dp)
{
    const int error = FaultC::next("readdir");
    if (error <= 0) return __real_readdir(dp);
    errno = error;
    return nullptr;
}

extern "C" int __real_close(int fd);
extern "C" int __wrap_close(int fd);
int __wrap_close(int fd)
{
    const int error = FaultC::next("close");
    const int result = __real_close(fd);
    if (error <= 0) return result;
    errno = error;
    return -1;
}

// The argument that may follow; the system ignores one that was not given.
#define VARIADIC(type, last, statement)                                                                                \
    va_list more;                                                                                                      \
    va_start(more, last);                                                                                              \
    const type extra = va_arg(more, type);                                                                             \
    va_end(more);                                                                                                      \
    if (error <= 0) return statement;                                                                                  \
    errno = error;                                                                                                     \
    return -1

extern "C" int __real_open(const char* path, int flags, ...);
extern "C" int __wrap_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...)
{
    const int error = FaultC::next("open");
    VARIADIC(mode_t, flags, __real_open(path, flags, extra));
}

extern "C" int __real_openat(int at, const char* path, int flags, ...);
extern "C" int __wrap_openat(int at, const char* path, int flags, ...);
int __wrap_openat(int at, const char* path, int flags, ...)
{
    const int error = FaultC::next("openat");
    VARIADIC(mode_t, flags, __real_openat(at, path, flags, extra));
}

extern "C" int __real_fcntl(int fd, int command, ...);
extern "C" int __wrap_fcntl(int fd, int command, ...);
int __wrap_fcntl(int fd, int command, ...)
{
    const int error = FaultC::next("fcntl");
    VARIADIC(long, command, __real_fcntl(fd, command, extra));
}
