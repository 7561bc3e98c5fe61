#include "fileservice.h"

#include "assertfatal.h"
#include "cmnlib/copyfile.h"
#include "errorapi.h"
#include "file/fileattributes.h"
#include "file/filecopy.h"
#include "file/fileopen.h"
#include "file/namemaker.h"

#include <climits>

using fileattributes::LinksT;

namespace {

const size_t BLOCK_SIZE = 4096;   // what callbacks are told about

const char* textOfCopyError(long code)
{
    switch (code) {
    case TVXERR_COPY_OPEN_SOURCE: return "Failed to open the source file when copying file '%1$S' to '%2$S'";
    case TVXERR_COPY_OPEN_DESTINATION: return "Failed to open the destination file when copying file '%1$S' to '%2$S'";
    case TVXERR_COPY_READ: return "Failed to read the source file when copying file '%1$S' to '%2$S'";
    default: return "Failed to write to the destination file when copying file '%1$S' to '%2$S'";
    }
}

// One file on its way.
class FileCopierC {
public:
    FileCopierC(const FileNameC* from, const FileNameC* to, const CopyProgressT& progress, bool isMoved)
        : m_from(from), m_to(to), m_progress(progress), m_isMoved(isMoved)
    {
    }
    CopyOutcomeT copy()
    {
        CopyOutcomeT outcome = {openSource(), false, false};
        if (outcome.code == 0) outcome.code = openTarget(outcome.hasTouched);
        if (outcome.code == 0) outcome.code = moveAll(outcome.isStopped);
        const bool isSynced =
            outcome.code != 0 || !m_isMoved || retryOnEintr([&] { return ::fsync(m_target.fd()); }) == 0;
        if (!isSynced) outcome.code = fail(errno, TVXERR_COPY_WRITE);
        const int closing = m_target.isOpen() ? closeFd(m_target.release()) : 0;
        if (outcome.code == 0 && closing != 0) outcome.code = fail(closing, TVXERR_COPY_WRITE);
        return outcome;
    }

private:
    long fail(int error, long code) const
    {
        if (error != 0) ErrorErrno(error);
        return Error(code, textOfCopyError(code), ArgListC() << m_from->getPath() << m_to->getPath());
    }

    long openSource()
    {
        const OpeningT opening = {FileStreamC::FMODE_OPEN, FileStreamC::FACCESS_READ, FileStreamC::SHARE_READ, false,
                                  O_NONBLOCK};
        const StringC path = m_from->getPath();
        int error = openPlainly(path, opening, m_source);
        if (error == 0 && ::fstat(m_source.fd(), &m_sourceInfo) != 0) error = errno;
        if (error == 0 && !S_ISREG(m_sourceInfo.st_mode)) error = S_ISDIR(m_sourceInfo.st_mode) ? EISDIR : EINVAL;
        if (error == 0) return 0;
        reportOpenFailure(error, path);
        return fail(0, TVXERR_COPY_OPEN_SOURCE);
    }

    // The target is emptied when it is known not to be the source under another name.
    long openTarget(bool& hasTouched)
    {
        const OpeningT opening = {
            FileStreamC::FMODE_OPENORCREATE,        FileStreamC::FACCESS_WRITE, FileStreamC::SHARE_READ, false, 0,
            m_isMoved ? mode_t{0600} : mode_t{0666}};
        const StringC path = m_to->getPath();
        struct stat info = {};
        const int error = openPlainly(path, opening, m_target);
        if (error != 0) {
            reportOpenFailure(error, path);
            return fail(0, TVXERR_COPY_OPEN_DESTINATION);
        }
        if (::fstat(m_target.fd(), &info) != 0) return fail(errno, TVXERR_COPY_OPEN_DESTINATION);
        if (isSameFile(info, m_sourceInfo)) return fail(EINVAL, TVXERR_COPY_OPEN_DESTINATION);
        // Some file systems write a file that was emptied to the disk when it is closed: not what is empty anyway.
        const bool isEmpty = S_ISREG(info.st_mode) && info.st_size == 0;
        hasTouched = isEmpty || retryOnEintr([&] { return ::ftruncate(m_target.fd(), 0); }) == 0;
        if (hasTouched) return 0;
        reportOpenFailure(errno, path);
        return fail(0, TVXERR_COPY_OPEN_DESTINATION);
    }

    long moveAll(bool& isStopped)
    {
        CopyResultT result = {0, false};
        if (m_progress.callback == nullptr) {
            result = copyContents(m_source.fd(), m_target.fd());
        } else {
            result = moveBlocks(isStopped);
        }
        if (result.error == 0) return 0;
        return fail(result.error, result.reading ? TVXERR_COPY_READ : TVXERR_COPY_WRITE);
    }

    CopyResultT moveBlocks(bool& isStopped)
    {
        const FileSizeT length = m_sourceInfo.st_size;
        const FileSizeT packageSize = m_progress.packageSize != 0 ? m_progress.packageSize : length;
        const long numFiles = m_progress.numFiles != 0 ? m_progress.numFiles : 1;
        char block[BLOCK_SIZE];
        FileSizeT copied = 0;
        for (;;) {
            const CopyStepT step = copyBlock(m_source.fd(), m_target.fd(), block, sizeof block);
            if (step.moved == 0) return step.result;
            copied += static_cast<FileSizeT>(step.moved);
            isStopped =
                m_progress.callback(m_from, m_to, packageSize, numFiles, length, copied, m_progress.closure) == 0;
            if (isStopped) return {0, false};
        }
    }

    const FileNameC* const m_from;
    const FileNameC* const m_to;
    const CopyProgressT& m_progress;
    const bool m_isMoved;
    FdOwnerC m_source;
    FdOwnerC m_target;
    struct stat m_sourceInfo = {};
};

long reportDirectory(int error, const FileNameC& directory)
{
    if (error != 0) ErrorErrno(error);
    return Error(TVXERR_FILE_CREATE_DIRECTORY, "Cannot create directory '%1$S'", ArgListC() << directory.getPath());
}

// Makes a directory that may be there already. The root is nobody's to make, or to give other attributes.
long makeDirectory(const FileNameC& directory, mode_t permissions)
{
    const fileattributes::PathC path(&directory);
    if (path.failure() != 0) return reportDirectory(path.failure(), directory);
    if (directory.isRoot()) return reportDirectory(EEXIST, directory);
    if (::mkdir(path.c_str(), permissions) == 0) return 0;
    const int failure = errno;
    const bool isThere = failure == EEXIST && fileattributes::isThere(&directory, LinksT::FOLLOWED, S_IFDIR);
    return isThere ? 0 : reportDirectory(failure, directory);
}

// Whether `to`, or where it would be made, lies in the directory `from`.
bool liesInside(const FileNameC& from, const FileNameC& to)
{
    struct stat outer;
    struct stat info;
    if (fileattributes::read(&from, LinksT::FOLLOWED, outer) != 0) return false;
    FileNameC existing = to;
    while (existing.isValid() && !fileattributes::isThere(&existing, LinksT::FOLLOWED, 0)) {
        existing = existing.getParent();
    }
    const StringC path = existing.isValid() || existing.isRoot() ? existing.getPath() : StringC(".");
    FdOwnerC at(openFd(path.utf8(), O_PATH));
    struct stat last = {};
    while (at.isOpen() && ::fstat(at.fd(), &info) == 0) {
        if (isSameFile(info, outer)) return true;
        if (isSameFile(info, last)) return false;   // the root is its own parent
        last = info;
        at.reset(liftFd(::openat(at.fd(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC)));
    }
    return false;
}

// A tree on its way.
class TreeCopierC {
public:
    TreeCopierC(const FileNameC& from, const FileNameC& to, const CopyProgressT& progress)
        : m_from(from), m_to(to), m_progress(progress)
    {
    }

    long copy()
    {
        if (liesInside(m_from, m_to)) return reportDirectory(EINVAL, m_to);
        long result = m_progress.callback != nullptr ? each(&TreeCopierC::count) : 0;
        if (result == 0) result = enter(m_from, m_to);
        if (result == 0) result = each(&TreeCopierC::copyEntry);
        const long attributes = finishDirectories();
        return result != 0 ? result : attributes;
    }

private:
    typedef long (TreeCopierC::*VisitT)(const FileNameC& from, const FileNameC& to, const FileInfoC& info);

    long each(VisitT visit)
    {
        const std::unique_ptr<FileListerI> lister(
            FileService()->getLister(&m_from, FileListerC::Recursive | FileListerC::Relative));
        bool isBelow = false;   // entries have come: what is missing then has gone since it was listed
        while (!m_isStopped) {
            FileNameC* namePointer = nullptr;
            FileInfoC* infoPointer = nullptr;
            const ErrorT end = lister->getNext(&namePointer, &infoPointer);
            const std::unique_ptr<FileNameC> name(namePointer);
            std::unique_ptr<FileInfoC> info(infoPointer);
            if (end == TVXERR_FILE_NO_MORE_FILES) return 0;
            if (end == ENOENT && isBelow) lister->clearError();
            if (end != 0 && (end != ENOENT || !isBelow)) return ErrorErrno(static_cast<int>(end));
            if (name == nullptr) continue;   // a directory that cannot be read: the next call tells
            isBelow = true;
            const std::unique_ptr<FileNameC> from(FileNameMakerC::makeChild(m_from, FileNameMakerC::bytes(*name)));
            const std::unique_ptr<FileNameC> to(FileNameMakerC::makeChild(m_to, FileNameMakerC::bytes(*name)));
            const int failure = info == nullptr ? look(*from, info) : 0;
            if (failure != 0 && failure != ENOENT) return ErrorErrno(failure);
            const long result = failure == 0 ? (this->*visit)(*from, *to, *info) : 0;
            if (result != 0) return result;
        }
        return 0;
    }

    // What the lister could not tell.
    static int look(const FileNameC& name, std::unique_ptr<FileInfoC>& info)
    {
        struct stat status;
        const int failure = fileattributes::read(&name, LinksT::SEEN, status);
        if (failure == 0) info = std::make_unique<FileInfoC>(fileattributes::infoOf(status));
        return failure;
    }

    long count(const FileNameC& from, const FileNameC&, const FileInfoC& info)
    {
        struct stat target;
        const bool isLink = info.mode() == FILEINFO_MODELNK;
        if (isLink && fileattributes::read(&from, LinksT::FOLLOWED, target) != 0) return 0;
        if (isLink ? !S_ISREG(target.st_mode) : !info.isFile()) return 0;
        m_progress.packageSize += isLink ? target.st_size : info.size();
        ++m_progress.numFiles;
        return 0;
    }

    long copyEntry(const FileNameC& from, const FileNameC& to, const FileInfoC& info)
    {
        if (info.isDirectory()) return enter(from, to);
        if (info.isFile()) return copyOne(from, to);
        if (info.mode() != FILEINFO_MODELNK) return 0;
        struct stat target;
        const bool isDangling = fileattributes::read(&from, LinksT::FOLLOWED, target) != 0;
        if (isDangling || S_ISDIR(target.st_mode)) return copyLink(from, to);
        return S_ISREG(target.st_mode) ? copyOne(from, to) : 0;
    }

    long copyOne(const FileNameC& from, const FileNameC& to)
    {
        const ErrorCheckpointC checkpoint;
        const CopyOutcomeT outcome = copyRegularFile(&from, &to, m_progress, false);
        m_isStopped = outcome.isStopped;
        if (outcome.code == 0 || fileattributes::isThere(&from, LinksT::SEEN, 0)) return outcome.code;
        checkpoint.rollback();   // it is gone since it was listed
        return 0;
    }

    static long copyLink(const FileNameC& from, const FileNameC& to)
    {
        const fileattributes::PathC source(&from);
        const fileattributes::PathC link(&to);
        char target[PATH_MAX + 1];
        const ssize_t size = ::readlink(source.c_str(), target, PATH_MAX);
        if (size < 0) return errno == ENOENT ? 0 : ErrorErrno(errno);
        target[size] = 0;
        bool isMade = ::symlink(target, link.c_str()) == 0;
        if (!isMade && errno == EEXIST && ::unlink(link.c_str()) == 0) isMade = ::symlink(target, link.c_str()) == 0;
        return isMade ? 0 : ErrorErrno(errno);
    }

    // Writable for us until all that belongs in it is there. A link in the target may lead back into the source.
    long enter(const FileNameC& from, const FileNameC& to)
    {
        if (fileattributes::isThere(&to, LinksT::SEEN, S_IFLNK) && liesInside(m_from, to)) {
            return reportDirectory(EINVAL, to);
        }
        const long result = makeDirectory(to, 0700);
        if (result != 0) return result;
        m_sources.add(new FileNameC(from));
        m_targets.add(new FileNameC(to));
        return 0;
    }

    // Innermost first. Owners can be given away by few.
    long finishDirectories()
    {
        int failure = 0;
        for (size_t n = m_targets.size(); n-- > 0;) {
            const int error = fileattributes::clone(m_sources[n], m_targets[n]);
            if (failure == 0 && error != EPERM && error != ENOENT) failure = error;
        }
        return failure == 0 ? 0 : ErrorErrno(failure);
    }

    const FileNameC& m_from;
    const FileNameC& m_to;
    CopyProgressT m_progress;
    FileNameArrayC m_sources;   // of the directories that have been made
    FileNameArrayC m_targets;
    bool m_isStopped = false;
};

}   // namespace

CopyOutcomeT copyRegularFile(const FileNameC* from, const FileNameC* to, const CopyProgressT& progress, bool isMoved)
{
    return FileCopierC(from, to, progress, isMoved).copy();
}

long FlnFileServiceC::mkdirTemplate(const FileNameC* templateDirectory, const FileNameC* newDirectory)
{
    if (!TVX_CHECK(templateDirectory != nullptr, "templateDirectory")) return ErrorErrno(EINVAL);
    if (!TVX_CHECK(newDirectory != nullptr, "newDirectory")) return ErrorErrno(EINVAL);
    const long result = makeDirectory(*newDirectory, 0777);
    return result != 0 ? result : cloneAttributes(templateDirectory, newDirectory);
}

long FlnFileServiceC::copyFile(const FileNameC* from, const FileNameC* to, FileCopyCallbackT callback, void* closure)
{
    if (!TVX_CHECK(from != nullptr, "from") || !TVX_CHECK(to != nullptr, "to")) return ErrorErrno(EINVAL);
    return copyRegularFile(from, to, {callback, closure, copy_package_size, copy_num_files}, false).code;
}

long FlnFileServiceC::copy(const FileNameC* from, const FileNameC* to, FileCopyCallbackT callback, void* closure)
{
    if (!TVX_CHECK(from != nullptr, "from") || !TVX_CHECK(to != nullptr, "to")) return ErrorErrno(EINVAL);
    const ErrorCheckpointC checkpoint;
    const long result = isDirectory(from) != 0 ? TreeCopierC(*from, *to, {callback, closure, 0, 0}).copy()
                                               : copyFile(from, to, callback, closure);
    if (result == 0) checkpoint.rollback();
    return result;
}

long FlnFileServiceC::rename(const FileNameC* from, const FileNameC* to)
{
    if (!TVX_CHECK(from != nullptr && to != nullptr, "filename != 0")) return ErrorErrno(EINVAL);
    const fileattributes::PathC source(from);
    const fileattributes::PathC target(to);
    if (source.failure() != 0 || target.failure() != 0) return ErrorErrno(EINVAL);
    if (::rename(source.c_str(), target.c_str()) == 0) return 0;
    const int failure = errno;
    struct stat info;
    if (failure != EXDEV || fileattributes::read(from, LinksT::FOLLOWED, info) != 0 || !S_ISREG(info.st_mode)) {
        return ErrorErrno(failure);
    }
    const CopyOutcomeT outcome = copyRegularFile(from, to, {nullptr, nullptr, 0, 0}, true);
    if (outcome.code != 0) {
        if (outcome.hasTouched) (void)::unlink(target.c_str());
        return outcome.code;
    }
    (void)fileattributes::clone(from, to);
    (void)fileattributes::setLastModified(to, info.st_mtime);
    return ::unlink(source.c_str()) == 0 ? 0 : ErrorErrno(errno);
}
