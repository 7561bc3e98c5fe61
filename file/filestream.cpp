#include "filestream.h"

#include "assertfatal.h"
#include "cmnlib/syscall.h"
#include "errorapi.h"
#include "file/fileopen.h"
#include "file/streamerrors.h"
#include "filename.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <typeinfo>

static_assert(sizeof(off_t) == sizeof(long long), "every position fits");

namespace {

int accessFlags(FileStreamC::FileAccessT access)
{
    switch (access) {
    case FileStreamC::FACCESS_READ: return O_RDONLY;
    case FileStreamC::FACCESS_WRITE: return O_WRONLY;
    case FileStreamC::FACCESS_READWRITE: return O_RDWR;
    }
    (void)TVX_CHECK(false, "Invalid access argument");
    return O_RDONLY;
}

// How a file is opened.
struct PlanT {
    const char* path;
    int flags;
    mode_t permissions;
    bool isLocked;
    bool isTruncatedLater;   // under the lock
    short lock;              // F_WRLCK or F_RDLCK
    bool waitsForLock;
};

// Fills in the flags; false when there is no such mode.
bool planMode(PlanT& plan, FileStreamC::FileOpenModeT mode)
{
    switch (mode) {
    case FileStreamC::FMODE_APPEND: plan.flags |= O_CREAT | O_APPEND; return true;
    case FileStreamC::FMODE_CREATE: plan.flags |= O_CREAT; break;
    case FileStreamC::FMODE_CREATENEW: plan.flags |= O_CREAT | O_EXCL; return true;
    case FileStreamC::FMODE_OPEN: return true;
    case FileStreamC::FMODE_OPENORCREATE: plan.flags |= O_CREAT; return true;
    case FileStreamC::FMODE_TRUNCATE: break;
    default: return false;
    }
    plan.isTruncatedLater = plan.isLocked;
    if (!plan.isLocked) plan.flags |= O_TRUNC;
    if ((plan.flags & O_ACCMODE) == O_RDONLY) plan.flags |= O_RDWR;
    return true;
}

// A lock needs the access that it keeps others from.
void widenForLock(PlanT& plan)
{
    if (!plan.isLocked) return;
    const int tooLittle = plan.lock == F_WRLCK ? O_RDONLY : O_WRONLY;
    if ((plan.flags & O_ACCMODE) == tooLittle) plan.flags = (plan.flags & ~O_ACCMODE) | O_RDWR;
}

// 0, or the errno of the failure.
int lockWhole(int fd, const PlanT& plan)
{
    struct flock lock = {};
    lock.l_type = plan.lock;
    lock.l_whence = SEEK_SET;
    const int command = plan.waitsForLock ? F_SETLKW : F_SETLK;
    if (retryOnEintr([&] { return ::fcntl(fd, command, &lock); }) == 0) return 0;
    return errno == EACCES ? EAGAIN : errno;
}

// Whether the name still means the open file: it may have been replaced before the lock was had.
int checkIdentity(int fd, const char* path)
{
    struct stat opened;
    struct stat named;
    if (::fstat(fd, &opened) != 0 || ::stat(path, &named) != 0) return errno;
    return isSameFile(opened, named) ? 0 : EAGAIN;
}

// 0 and the open file, or the errno of the failure.
int openPlanned(const PlanT& plan, FdOwnerC& file)
{
    file.reset(openFd(plan.path, plan.flags, plan.permissions));
    if (!file.isOpen()) return errno;
    if (plan.isLocked) {
        int failure = lockWhole(file.fd(), plan);
        if (failure == 0) failure = checkIdentity(file.fd(), plan.path);
        if (failure != 0) return failure;
    }
    if (plan.isTruncatedLater && retryOnEintr([&] { return ::ftruncate(file.fd(), 0); }) != 0) return errno;
    return 0;
}

}   // namespace

int openPlainly(const StringC& path, const OpeningT& opening, FdOwnerC& file)
{
    PlanT plan = {};
    plan.path = path.utf8();
    if (std::strlen(plan.path) != path.utf8Bytes()) return EINVAL;   // the system would cut it
    plan.flags = accessFlags(opening.access) | opening.moreFlags;
    plan.permissions = opening.permissions;
    plan.isLocked = opening.sharing == FileStreamC::SHARE_NONE || opening.sharing == FileStreamC::SHARE_READ;
    plan.lock = opening.sharing == FileStreamC::SHARE_NONE ? F_WRLCK : F_RDLCK;
    plan.waitsForLock = opening.waitsForLock;
    if (!planMode(plan, opening.mode)) return EBADF;
    widenForLock(plan);
    return openPlanned(plan, file);
}

long reportOpenFailure(int error, const StringC& path)
{
    ErrorErrno(error);
    return Error(TVXERR_FILE_OPEN, "Failed to open file '%1$S'", ArgListC() << path);
}

FileStreamC::FileStreamC(int fd, FileOpenModeT openMode, FileAccessT openAccess, FileShareT)
    : fileHandle(fd), mode(openMode), access(openAccess)
{
}

FileStreamC::~FileStreamC() { FileStreamC::close(); }

IOStreamC* FileStreamC::openFile(const FileNameC& filename, FileOpenModeT mode, FileAccessT access, FileShareT sharing,
                                 bool wait_for_lock)
{
    const StringC path = filename.getPath();
    if (mode == FMODE_APPEND && (access & FACCESS_WRITE) == 0) {
        Error(TVXERR_FILE_APPEND_WITHOUT_WRITE, "Attempted to open '%1$S' for appending without write access",
              ArgListC() << path);
        return nullptr;
    }
    FdOwnerC file;
    const int failure = openPlainly(path, {mode, access, sharing, wait_for_lock, 0}, file);
    if (failure != 0) {
        reportOpenFailure(failure, path);
        return nullptr;
    }
    if (access < FACCESS_READ || access > FACCESS_READWRITE) access = FACCESS_READ;   // as it was opened
    auto stream = std::make_unique<FileStreamC>(file.release(), mode, access, sharing);
    if (mode == FMODE_APPEND && stream->seek(0, FROM_END) < 0) return nullptr;
    return stream.release();
}

long FileStreamC::CloseNativeDesc(NativeFileDescT fd)
{
    const int failure = closeFd(fd);
    return failure == 0 ? 0 : ErrorErrno(failure);
}

long FileStreamC::close()
{
    if (!NativeDescIsValid(fileHandle)) return 0;
    const long result = CloseNativeDesc(fileHandle);
    fileHandle = InvalidNativeDesc();
    return result;
}

long FileStreamC::read(unsigned char* buf, long size)
{
    if (!canRead()) {
        Error(TVXERR_STREAM_CANNOT_READ, "Attempted to read from a stream that does not support reading");
        return -1;
    }
    if (size == 0) return 0;
    const ssize_t n = size > 0 ? ::read(fileHandle, buf, static_cast<size_t>(size)) : -1;
    if (n < 0) ErrorErrno(size > 0 ? errno : EINVAL);
    return n;
}

// What the system does not move, and whatever fails, is left to the reads and writes. Only a file that is one to the
// last override is taken for one.
long FileStreamC::writeFrom(InputStreamC& in, long count)
{
    const long most = 1L << 30;
    const auto* const source = typeid(in) == typeid(FileStreamC) ? static_cast<const FileStreamC*>(&in) : nullptr;
    if (source != nullptr && source != this && typeid(*this) == typeid(FileStreamC) && source->canRead() &&
        canWrite()) {
        const bool isLimited = count > 0;
        ssize_t moved = 1;
        while (moved > 0 && (!isLimited || count > 0)) {
            const size_t size = static_cast<size_t>(isLimited ? std::min(count, most) : most);
            moved = ::copy_file_range(source->fileHandle, nullptr, fileHandle, nullptr, size, 0);
            if (moved > 0 && isLimited) count -= moved;
        }
        if (isLimited && count == 0) return 0;
    }
    return OutputStreamC::writeFrom(in, count);
}

long long FileStreamC::length() const
{
    struct stat info;
    if (!NativeDescIsValid(fileHandle)) {
        Error(TVXERR_STREAM_NO_LENGTH, "Cannot obtain length of stream");
        return -1;
    }
    if (::fstat(fileHandle, &info) == 0) return info.st_size;
    ErrorErrno(errno);
    return -1;
}

bool FileStreamC::canRead() const { return NativeDescIsValid(fileHandle) && (access & FACCESS_READ) != 0; }

bool FileStreamC::canSeek() const { return NativeDescIsValid(fileHandle); }

bool FileStreamC::canWrite() const { return NativeDescIsValid(fileHandle) && (access & FACCESS_WRITE) != 0; }

// Some devices have negative positions: only errno tells them from a failure.
long long FileStreamC::seek(long long offset, WhenceT whence)
{
    if (!canSeek()) {
        Error(TVXERR_STREAM_CANNOT_SEEK, "Attempted to set current position in a stream that does not support seeking");
        return -1;
    }
    const bool isKnown = TVX_CHECK(whence >= FROM_BEGINNING && whence <= FROM_END, "Invalid whence value");
    const int from = !isKnown || whence == FROM_BEGINNING ? SEEK_SET : whence == FROM_CURRENT ? SEEK_CUR : SEEK_END;
    errno = 0;
    const off_t position = ::lseek(fileHandle, offset, from);
    if (position >= 0 || errno == 0) return position;
    ErrorErrno(errno);
    return -1;
}

long FileStreamC::setLength(long long len)
{
    if (!canWrite() || !canSeek()) {
        return Error(TVXERR_STREAM_CANNOT_RESIZE, "Attempted to set length on non-resizable stream");
    }
    return retryOnEintr([&] { return ::ftruncate(fileHandle, len); }) == 0 ? 0 : ErrorErrno(errno);
}

long FileStreamC::flush()
{
    if (!canWrite()) return 0;
    return retryOnEintr([&] { return ::fsync(fileHandle); }) == 0 ? 0 : ErrorErrno(errno);
}

long FileStreamC::write(const unsigned char* buf, long size)
{
    if (!canWrite()) return reportNoWriting();
    if (size < 0) return ErrorErrno(EINVAL);
    while (size > 0) {
        const ssize_t n = ::write(fileHandle, buf, static_cast<size_t>(size));
        if (n <= 0) return ErrorErrno(n < 0 ? errno : EIO);   // none of them written would repeat for ever
        buf += n;
        size -= n;
    }
    return 0;
}
