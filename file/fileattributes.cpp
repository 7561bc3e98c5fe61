#include "file/fileattributes.h"

#include "cmnlib/syscall.h"
#include "file/pathbytes.h"
#include "pathname.h"

#include <climits>

namespace {

const mode_t PERMISSIONS = 07777;
const mode_t WRITE_BITS = S_IWUSR | S_IWGRP | S_IWOTH;
const mode_t READ_BITS = S_IRUSR | S_IRGRP | S_IROTH;

int statusOf(int result) { return result == 0 ? 0 : errno; }

FileInfoModeT kindOf(mode_t mode)
{
    switch (mode & S_IFMT) {
    case S_IFREG: return FILEINFO_MODEFILE;
    case S_IFDIR: return FILEINFO_MODEDIR;
    case S_IFCHR: return FILEINFO_MODECHR;
    case S_IFBLK: return FILEINFO_MODEBLK;
    case S_IFIFO: return FILEINFO_MODEFIFO;
    case S_IFLNK: return FILEINFO_MODELNK;
    case S_IFSOCK: return FILEINFO_MODESOCK;
    default: return FILEINFO_MODEUNKNOWN;
    }
}

bool hasAccess(const FileNameC* name, int access)
{
    const fileattributes::PathC path(name);
    return path.failure() == 0 && ::faccessat(AT_FDCWD, path.c_str(), access, AT_EACCESS) == 0;
}

}   // namespace

namespace fileattributes {

int read(const FileNameC* name, LinksT links, struct stat& info)
{
    const PathC path(name);
    info = {};
    if (path.failure() != 0) return path.failure();
    return statusOf(links == LinksT::FOLLOWED ? ::stat(path.c_str(), &info) : ::lstat(path.c_str(), &info));
}

FileInfoC infoOf(const struct stat& info)
{
    FileInfoC result;
    result.setMode(kindOf(info.st_mode));
    result.setPerms(info.st_mode & PERMISSIONS);
    result.setSize(info.st_size);
    result.setCreated(info.st_ctime);
    result.setModified(info.st_mtime);
    result.setAccessed(info.st_atime);
    result.setDevice(info.st_dev);
    result.setUid(info.st_uid);
    result.setGid(info.st_gid);
    return result;
}

bool isThere(const FileNameC* name, LinksT links, mode_t type)
{
    struct stat info;
    return read(name, links, info) == 0 && (type == 0 || (info.st_mode & S_IFMT) == type);
}

bool isReadOnly(const FileNameC* name)
{
    struct stat info;
    return read(name, LinksT::FOLLOWED, info) == 0 && (info.st_mode & S_IWUSR) == 0;
}

bool isReadable(const FileNameC* name) { return hasAccess(name, R_OK); }

// A program that is running has the permission and still cannot be written to: only opening it tells.
bool isWritable(const FileNameC* name)
{
    if (!hasAccess(name, W_OK)) return false;
    if (!isThere(name, LinksT::FOLLOWED, S_IFREG)) return true;
    return FdOwnerC(openFd(PathC(name).c_str(), O_WRONLY | O_NONBLOCK)).isOpen();
}

int setReadOnly(const FileNameC* name, bool isReadOnly)
{
    struct stat info;
    const int failure = read(name, LinksT::FOLLOWED, info);
    if (failure != 0) return failure;
    const mode_t readers = info.st_mode & READ_BITS;
    const mode_t mode = isReadOnly ? info.st_mode & ~WRITE_BITS : info.st_mode | readers >> 1;   // w follows r
    return statusOf(::chmod(PathC(name).c_str(), mode & PERMISSIONS));
}

int setLastModified(const FileNameC* name, time_t when)
{
    const PathC path(name);
    const timespec times[] = {{0, UTIME_OMIT}, {when, 0}};
    return path.failure() != 0 ? path.failure() : statusOf(::utimensat(AT_FDCWD, path.c_str(), times, 0));
}

// The permissions come last, because a new owner or group takes the set-id bits away. They come also when the owner
// cannot be given, then without these bits, which would lend another owner's rights.
int clone(const FileNameC* from, const FileNameC* to)
{
    struct stat source;
    struct stat target;
    int failure = read(from, LinksT::FOLLOWED, source);
    if (failure == 0) failure = read(to, LinksT::FOLLOWED, target);
    if (failure != 0) return failure;
    const PathC path(to);
    const bool hasOwners = source.st_uid == target.st_uid && source.st_gid == target.st_gid;
    if (!hasOwners) failure = statusOf(::chown(path.c_str(), source.st_uid, source.st_gid));
    const mode_t kept = failure == 0 ? PERMISSIONS : PERMISSIONS & ~static_cast<mode_t>(S_ISUID | S_ISGID);
    const int modeFailure = statusOf(::chmod(path.c_str(), source.st_mode & kept));
    return failure != 0 ? failure : modeFailure;
}

int diskFree(const FileNameC* name, FileSizeT& bytes)
{
    const PathC path(name);
    if (path.failure() != 0) return path.failure();
    bytes = FileSpaceAvail(path.c_str());
    return bytes >= 0 ? 0 : errno;
}

int readLink(const FileNameC* name, FileNameC& target)
{
    const PathC path(name);
    char bytes[PATH_MAX];
    if (path.failure() != 0) return path.failure();
    const ssize_t size = ::readlink(path.c_str(), bytes, sizeof bytes);
    if (size < 0) return errno;
    target = FileNameC(textOf({bytes, static_cast<size_t>(size)}));
    return 0;
}

}   // namespace fileattributes
