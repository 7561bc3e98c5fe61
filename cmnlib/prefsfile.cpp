#include "cmnlib/prefsfile.h"

#include "cmnlib/copyfile.h"
#include "cmnlib/prefstext.h"
#include "cmnlib/syscall.h"
#include "file/fileopen.h"
#include "file/pathbytes.h"

namespace {

const mode_t PERMISSIONS = 07777;
const size_t LARGEST_FILE = size_t{64} << 20;   // above it a mistake, not settings

int statusOf(int result) { return result == 0 ? 0 : errno; }

// The owner comes first: a new one takes permissions away.
int takeAttributes(int fd, const struct stat& like)
{
    if (::fchown(fd, like.st_uid, like.st_gid) != 0) (void)!::fchown(fd, static_cast<uid_t>(-1), like.st_gid);
    return statusOf(::fchmod(fd, like.st_mode & PERMISSIONS));
}

int complete(int fd, std::string_view text, const struct stat* like)
{
    int failure = writeAll(fd, text.data(), text.size());
    if (failure == 0 && like != nullptr) failure = takeAttributes(fd, *like);
    if (failure == 0) failure = statusOf(retryOnEintr([fd] { return ::fdatasync(fd); }));
    return failure;
}

}   // namespace

int readWholeFile(const char* path, std::string& text, struct stat* info)
{
    struct stat own;
    if (info == nullptr) info = &own;
    const FdOwnerC file(openFd(path, O_RDONLY | O_NONBLOCK));   // no waiting for who writes to a pipe
    if (!file.isOpen() || ::fstat(file.fd(), info) != 0) return errno;
    if (!S_ISREG(info->st_mode)) return S_ISDIR(info->st_mode) ? EISDIR : EINVAL;
    size_t held = 0;
    if (info->st_size > static_cast<off_t>(LARGEST_FILE)) return EFBIG;
    text.resize(static_cast<size_t>(info->st_size) + 1);   // a byte more than there is shows the end
    for (;;) {
        const ssize_t n = retryOnEintr([&] { return ::read(file.fd(), text.data() + held, text.size() - held); });
        if (n < 0) return errno;
        if (n == 0) break;
        held += static_cast<size_t>(n);
        if (held > LARGEST_FILE) return EFBIG;
        if (held == text.size()) text.resize(2 * held);
    }
    text.resize(held);
    return prefstext::hasUTF16Mark(text) ? EILSEQ : 0;
}

int overwriteFile(const char* path, std::string_view text)
{
    if (text.size() > LARGEST_FILE) return EFBIG;
    FdOwnerC file;
    const OpeningT opening = {FileStreamC::FMODE_CREATE, FileStreamC::FACCESS_WRITE, FileStreamC::SHARE_NONE, false, 0};
    int failure = openPlainly(textOf(path), opening, file);
    if (failure == 0) failure = writeAll(file.fd(), text.data(), text.size());
    const int closing = file.isOpen() ? closeFd(file.release()) : 0;
    return failure != 0 ? failure : closing;
}

int writeNewFile(const char* path, std::string_view text, const struct stat* like)
{
    if (text.size() > LARGEST_FILE) return EFBIG;
    FdOwnerC file(openFd(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, like != nullptr ? 0600 : 0666));
    if (!file.isOpen()) return errno;
    int failure = complete(file.fd(), text, like);
    const int closing = closeFd(file.release());
    if (failure == 0) failure = closing;
    if (failure != 0) ::unlink(path);
    return failure;
}

void syncDirectoryOf(const char* path)
{
    const std::string_view whole(path);
    const size_t slash = whole.rfind('/');
    std::string directory(slash == std::string_view::npos ? "." : whole.substr(0, slash + 1));
    const FdOwnerC file(openFd(directory.c_str(), O_RDONLY | O_DIRECTORY));
    if (file.isOpen()) retryOnEintr([&] { return ::fsync(file.fd()); });
}
