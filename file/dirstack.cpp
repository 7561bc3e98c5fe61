#include "dirstack.h"

#include "assertfatal.h"
#include "cmnlib/syscall.h"
#include "file/fileattributes.h"
#include "file/pathbytes.h"

#include <memory>
#include <string>

// Entries one behind the other: type, name, NUL.
struct DirRestC {
    std::string entries;
    size_t at = 0;
};

namespace {

const int DIRECTORY_FLAGS = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC;

int openDirectoryAt(int at, const char* name, int flags)
{
    return liftFd(retryOnEintr([=] { return ::openat(at, name, DIRECTORY_FLAGS | flags); }));
}

// The stream over `fd`, which it takes over. Null: see errno.
DIR* streamOf(FdOwnerC fd)
{
    DIR* const dp = ::fdopendir(fd.fd());
    if (dp != nullptr) (void)fd.release();
    return dp;
}

void identify(DirStackEntC& directory, const struct stat& info)
{
    directory.device = info.st_dev;
    directory.inode = info.st_ino;
}

// Null at the end and after a failure, which errno tells apart.
const dirent* readNext(DIR* dp)
{
    const dirent* found;
    do {
        errno = 0;
        found = ::readdir(dp);   // NOLINT(concurrency-mt-unsafe): nobody else has this stream
    } while (found != nullptr && std::string_view(found->d_name) == ".");
    return found;
}

}   // namespace

void DIRStackC::push(FileNameC* dirname, DIR* dp)
{
    const bool isSearchable = ::faccessat(::dirfd(dp), ".", X_OK, AT_EACCESS) == 0;
    const DirStackEntC directory = {dirname, dp, nullptr, 0, isSearchable, 0, 0};
    add(&directory);
    if (size() - m_shelved > MAX_OPEN) shelveOutermost();
}

DirStackEntC DIRStackC::pop()
{
    if (!TVX_CHECK(!isEmpty(), "n < used")) return {};
    DirStackEntC directory = *top();
    remove(size() - 1);
    if (m_shelved == size() && m_shelved > 0) unshelve(*entry(--m_shelved), directory.dp);
    return directory;
}

void DIRStackC::explode()
{
    DirStackEntC directory = pop();
    destroy(&directory);
}

void DIRStackC::destroy(void* element)
{
    const DirStackEntC* const directory = static_cast<const DirStackEntC*>(element);
    delete directory->dirname;
    delete directory->rest;
    if (directory->dp != nullptr) ::closedir(directory->dp);
}

void DIRStackC::destroyAll()
{
    BlobArrayC::destroyAll();
    m_shelved = 0;
}

bool DIRStackC::holds(dev_t device, ino_t inode) const
{
    for (size_t n = 0; n < size(); ++n) {
        if (entry(n)->device == device && entry(n)->inode == inode) return true;
    }
    return false;
}

int DIRStackC::open(FileNameC* dirname, const FileNameC& path, bool followsLinks)
{
    std::unique_ptr<FileNameC> name(dirname);
    const fileattributes::PathC whole(&path);
    if (whole.failure() != 0) return whole.failure();
    const int flags = followsLinks ? 0 : O_NOFOLLOW;
    const std::string component(isEmpty() ? bytesOf(whole.text()) : baseOf(bytesOf(whole.text())));
    if (!isEmpty() && top()->dp == nullptr) return top()->failure != 0 ? top()->failure : ENOENT;
    const int around = isEmpty() ? AT_FDCWD : ::dirfd(top()->dp);
    FdOwnerC fd(openDirectoryAt(around, component.c_str(), flags));
    while (!fd.isOpen() && (errno == EMFILE || errno == ENFILE) && size() - m_shelved > 1) {
        shelveOutermost();
        fd.reset(openDirectoryAt(around, component.c_str(), flags));
    }
    struct stat info = {};
    if (!fd.isOpen() || (followsLinks && ::fstat(fd.fd(), &info) != 0)) return errno;
    if (followsLinks && holds(info.st_dev, info.st_ino)) return ELOOP;
    DIR* const dp = streamOf(std::move(fd));
    if (dp == nullptr) return errno;
    push(name.release(), dp);
    identify(*top(), info);
    return 0;
}

DIRStackC::NextT DIRStackC::next(std::string_view& name, unsigned char& type)
{
    DirStackEntC& directory = *top();
    if (directory.rest != nullptr) {
        DirRestC& rest = *directory.rest;
        if (rest.at == rest.entries.size()) return directory.failure == 0 ? END : FAILED;
        type = static_cast<unsigned char>(rest.entries[rest.at]);
        name = rest.entries.c_str() + rest.at + 1;
        rest.at += name.size() + 2;
        return ENTRY;
    }
    const dirent* const found = readNext(directory.dp);
    if (found == nullptr) {
        directory.failure = errno;
        return directory.failure == 0 ? END : FAILED;
    }
    name = found->d_name;
    type = found->d_type;
    return ENTRY;
}

// One that was left through a link keeps its descriptor, because the ".." of the directory inside is another one.
void DIRStackC::shelveOutermost()
{
    DirStackEntC& directory = *entry(m_shelved++);
    struct stat info = {};
    struct stat up = {};
    (void)::fstat(::dirfd(directory.dp), &info);
    identify(directory, info);
    const int inside = ::dirfd(entry(m_shelved)->dp);
    if (::fstatat(inside, "..", &up, 0) == 0 && !isSameFile(up, info)) return;
    if (directory.rest == nullptr) {
        auto rest = std::make_unique<DirRestC>();
        while (const dirent* const found = readNext(directory.dp)) {
            rest->entries += static_cast<char>(found->d_type);
            rest->entries.append(found->d_name, std::strlen(found->d_name) + 1);
        }
        directory.failure = errno;
        directory.rest = rest.release();
    }
    ::closedir(directory.dp);
    directory.dp = nullptr;
}

// What has been moved away meanwhile is not what its ".." says, and its rest cannot be reached any more.
void DIRStackC::unshelve(DirStackEntC& directory, DIR* inside)
{
    if (directory.dp != nullptr) return;
    struct stat info = {};
    FdOwnerC fd(inside != nullptr ? openDirectoryAt(::dirfd(inside), "..", 0) : -1);
    int failure = fd.isOpen() && ::fstat(fd.fd(), &info) == 0 ? 0 : inside != nullptr ? errno : ENOENT;
    if (failure == 0 && (info.st_dev != directory.device || info.st_ino != directory.inode)) failure = ENOENT;
    if (failure == 0) directory.dp = streamOf(std::move(fd));
    if (directory.dp != nullptr) return;
    DirRestC& rest = *directory.rest;
    if (rest.at == rest.entries.size()) return;   // it was read to its end before
    directory.failure = failure != 0 ? failure : errno;
    rest.at = rest.entries.size();
}
