// outputfile.h: files that appear under their names only when they are whole.
#ifndef TOOLS_OUTPUTFILE_H
#define TOOLS_OUTPUTFILE_H

#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

// Makes a file with this content beside `path` and puts it in the place of what is there. False, with errno, when
// that fails, and then nothing has changed.
inline bool replaceFile(const std::string& path, std::string_view content)
{
    std::string temporary = path + ".XXXXXX";
    const int fd = mkstemp(temporary.data());
    if (fd < 0) return false;
    const mode_t mask = umask(0);   // can only be asked for by setting it
    umask(mask);
    bool isWhole = fchmod(fd, 0666 & ~mask) == 0;
    while (isWhole && !content.empty()) {
        const ssize_t written = write(fd, content.data(), content.size());
        isWhole = written > 0 || (written < 0 && errno == EINTR);
        if (written > 0) content.remove_prefix(static_cast<size_t>(written));
    }
    isWhole = isWhole && fsync(fd) == 0;
    isWhole = close(fd) == 0 && isWhole && rename(temporary.c_str(), path.c_str()) == 0;
    if (isWhole) return true;
    const int error = errno;
    unlink(temporary.c_str());
    errno = error;
    return false;
}

#endif   // TOOLS_OUTPUTFILE_H
