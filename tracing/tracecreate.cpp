#include "tracing/tracecreate.h"

#include "cmnlib/syscall.h"
#include "gettime.h"
#include "ipc/localtime.h"
#include "taskid.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

const unsigned ATTEMPTS = 100;

std::tm localNow()
{
    timeval now = {0, 0};
    GetTimeOfDay(&now);
    std::tm local = {};
    localTimeOf(now.tv_sec, local);
    return local;
}

// The percent sign that begins a directive is at `p`; returns the directive's character.
const char* directiveOf(const char* p, bool& wantsUnderscore)
{
    wantsUnderscore = p[1] == '_';
    return p + (wantsUnderscore ? 2 : 1);
}

bool isNumbered(const char* pattern)
{
    for (const char* p = std::strchr(pattern, '%'); p != nullptr; p = std::strchr(p, '%')) {
        bool wantsUnderscore;
        p = directiveOf(p, wantsUnderscore);
        if (*p == 'u') return true;
        if (*p != 0) ++p;
    }
    return false;
}

void appendDirective(std::string& name, char directive, unsigned attempt, long taskId, const std::tm& local)
{
    char text[48] = "";
    switch (directive) {
    case 'p': std::snprintf(text, sizeof text, "%lu", static_cast<unsigned long>(taskId)); break;
    case 't': std::snprintf(text, sizeof text, "%02d%02d%02d", local.tm_hour, local.tm_min, local.tm_sec); break;
    case 'd':
        std::snprintf(text, sizeof text, "%04d%02d%02d", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
        break;
    case 'u':
        if (attempt > 0) std::snprintf(text, sizeof text, "%u", attempt);
        break;
    default: text[0] = directive; break;
    }
    name += text;
}

// Whether everybody may create files in a directory. There the name may be one that somebody else has put there
// to have us write to a file of their choice, or wait for ever.
bool isOpenToAll(int directory)
{
    struct stat info;
    return fstat(directory, &info) != 0 || (info.st_mode & S_IWOTH) != 0;
}

bool isOurOwn(int file)
{
    struct stat info;
    return fstat(file, &info) == 0 && S_ISREG(info.st_mode) && info.st_uid == geteuid() && info.st_nlink == 1;
}

// Opens a file without waiting for a reader at its other end; what is written to it later may wait. The
// directory is held meanwhile, so that nobody can put another one in its place.
FdOwnerC openChecked(const std::string& name, int exclusive)
{
    const size_t slash = name.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : name.substr(0, slash + 1);
    const FdOwnerC directory(openFd(folder.c_str(), O_PATH | O_DIRECTORY));
    if (!directory.isOpen()) return FdOwnerC();

    const bool isPublic = isOpenToAll(directory.fd());
    const char* const last = name.c_str() + (slash == std::string::npos ? 0 : slash + 1);
    const int flags =
        O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_CLOEXEC | O_NOCTTY | exclusive | (isPublic ? O_NOFOLLOW : 0);
    FdOwnerC file(liftFd(retryOnEintr([&] { return ::openat(directory.fd(), last, flags, 0666); })));
    if (!file.isOpen()) return file;
    if (isPublic && !isOurOwn(file.fd())) {
        errno = ELOOP;
        file.reset();
    } else if (::fcntl(file.fd(), F_SETFL, O_APPEND) != 0) {
        file.reset();
    }
    return file;
}

}   // namespace

std::string traceFileName(const char* pattern, unsigned attempt, long taskId, const std::tm& local)
{
    std::string name;
    for (;;) {
        const char* p = strchrnul(pattern, '%');
        name.append(pattern, p);
        if (*p == 0) return name;
        bool wantsUnderscore;
        p = directiveOf(p, wantsUnderscore);
        if (wantsUnderscore && attempt > 0) name += '_';
        if (*p == 0) return name;
        appendDirective(name, *p, attempt, taskId, local);
        pattern = p + 1;
    }
}

// A name that failed once would fail again: what may pass is repeated underneath.
ErrorT createTraceFile(const char* pattern, FdOwnerC& file)
{
    const std::tm local = localNow();
    const int exclusive = isNumbered(pattern) ? O_EXCL : 0;
    std::string previous;
    for (unsigned attempt = 0; attempt < ATTEMPTS; ++attempt) {
        std::string name = traceFileName(pattern, attempt, GetTaskId(), local);
        if (attempt > 0 && name == previous) break;
        file = openChecked(name, exclusive);
        if (file.isOpen()) return 0;
        previous = std::move(name);
    }
    return ErrorOfErrno(errno);
}
