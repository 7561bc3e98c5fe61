// outputfile.h: files that appear under their names only when they are whole.
#ifndef TOOLS_OUTPUTFILE_H
#define TOOLS_OUTPUTFILE_H

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

// False, with errno, when not all of it could be written.
inline bool writeWhole(int fd, std::string_view content)
{
    while (!content.empty()) {
        const ssize_t written = write(fd, content.data(), content.size());
        if (written < 0 && errno != EINTR) return false;
        if (written > 0) content.remove_prefix(static_cast<size_t>(written));
    }
    return true;
}

// Writes into a device or a pipe, or where a link leads that leads to nothing yet.
inline bool writeThrough(const std::string& path, std::string_view content)
{
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (fd < 0) return false;
    const bool isWritten = writeWhole(fd, content);
    const int error = errno;
    const bool isClosed = close(fd) == 0;
    if (!isWritten) errno = error;
    return isWritten && isClosed;
}

// A file that is replaced hands its rights on, and its owner when that is allowed. A new one gets those of any.
inline bool giveRights(int fd, const struct stat* replaced)
{
    if (replaced != nullptr) {
        (void)!fchown(fd, replaced->st_uid, replaced->st_gid);
        return fchmod(fd, replaced->st_mode & 0777) == 0;
    }
    const mode_t mask = umask(0);   // can only be asked for by setting it
    umask(mask);
    return fchmod(fd, 0666 & ~mask) == 0;
}

// Makes a file with this content beside the one at `path`, or where that is a link to, and puts it in its place. What
// is no file is written to instead. False, with errno, when that fails, and then a file has not changed.
inline bool replaceFile(const std::string& path, std::string_view content)
{
    struct stat info;
    const bool isThere = stat(path.c_str(), &info) == 0;
    if (isThere ? !S_ISREG(info.st_mode) : lstat(path.c_str(), &info) == 0) return writeThrough(path, content);
    char* const resolved = isThere ? realpath(path.c_str(), nullptr) : nullptr;
    const std::string target = resolved != nullptr ? resolved : path;
    std::free(resolved);

    std::string temporary = target + ".XXXXXX";
    const int fd = mkstemp(temporary.data());
    if (fd < 0) return false;
    bool isWhole = giveRights(fd, isThere ? &info : nullptr) && writeWhole(fd, content) && fsync(fd) == 0;
    isWhole = close(fd) == 0 && isWhole && rename(temporary.c_str(), target.c_str()) == 0;
    if (isWhole) return true;
    const int error = errno;
    unlink(temporary.c_str());
    errno = error;
    return false;
}

#endif   // TOOLS_OUTPUTFILE_H
