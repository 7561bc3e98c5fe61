#include "fileservice.h"

#include "assertfatal.h"
#include "cmnlib/neverdestroyed.h"
#include "errorapi.h"
#include "file/builtinservice.h"
#include "file/fileattributes.h"
#include "file/pathbytes.h"
#include "file/removetree.h"
#include "ipc/forkguard.h"
#include "latch.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <unistd.h>
#include <utility>

using fileattributes::LinksT;

namespace {

std::atomic<FileServiceI*> currentService{nullptr};

// Of the queues of all services.
constinit NeverDestroyedM<LatchC> queueLatch;
constinit LatchForkGuardM<LatchC> queueLatchGuard(*queueLatch);

// Used by exit handlers and threads to the very end; only its queue is processed when the process exits.
FlnFileServiceC& builtInService()
{
    static NeverDestroyedM<FlnFileServiceC> service;
    static const int registered = std::atexit([] { builtInService().removeQueued(); });
    (void)registered;
    return *service;
}

bool isNamed(const FileNameC* name) { return TVX_CHECK(name != nullptr, "filename != 0"); }

long codeOf(int error) { return error == 0 ? 0 : ErrorErrno(error); }

bool isNamedAndThere(const FileNameC* name, LinksT links, mode_t type)
{
    return isNamed(name) && fileattributes::isThere(name, links, type);
}

// Reports that an operation belongs to other systems.
BooleanT isMissing() { return TVX_CHECK(false, "Not implemented") ? 1 : 0; }

int makeDirectory(const FileNameC& name)
{
    const fileattributes::PathC path(&name);
    return path.failure() != 0 || ::mkdir(path.c_str(), 0777) == 0 ? path.failure() : errno;
}

}   // namespace

// ---- the service ---------------------------------------------------------------------------------------

FileServiceI::~FileServiceI() = default;

FileServiceI* FileService()
{
    FileServiceI* service = currentService.load(std::memory_order_acquire);
    if (service != nullptr) return service;
    FileServiceI* const builtIn = &builtInService();
    return currentService.compare_exchange_strong(service, builtIn) ? builtIn : service;
}

void SetFileService(FileServiceI* service) { currentService.store(service, std::memory_order_release); }

bool isFileServiceBuiltIn() { return FileService() == &builtInService(); }

void FileServiceI::removeEmptyFolderLeaveToRoot(FileNameC filename, StringC* limit)
{
    const StringC last = limit != nullptr ? FileNameC(*limit).getPath() : StringC();
    while (filename.isValid()) {
        if (limit != nullptr && filename.getPath().equalCI(last)) return;
        if (isDirectory(&filename) == 0 || isLink(&filename) != 0 || remove(&filename, 0, 0) == 0) return;
        filename = filename.getParent();
    }
}

FlnFileServiceC::~FlnFileServiceC() { removeQueued(); }

FileNameArrayC* FlnFileServiceC::listRoots()
{
    auto roots = std::make_unique<FileNameArrayC>();
    roots->add(new FileNameC(StringC("/")));
    return roots.release();
}

FileListerI* FlnFileServiceC::getLister(const FileNameC* dir, unsigned int flags)
{
    return new FileListerC(dir, flags);
}

IOStreamC* FlnFileServiceC::openFile(const FileNameC& name, FileStreamC::FileOpenModeT mode,
                                     FileStreamC::FileAccessT access, FileStreamC::FileShareT sharing,
                                     bool wait_for_lock)
{
    return FileStreamC::openFile(name, mode, access, sharing, wait_for_lock);
}

// ---- what other systems have ---------------------------------------------------------------------------

FileNameC* FlnFileServiceC::getAbsolute(const FileNameC* name)
{
    (void)isMissing();
    return new FileNameC(name);
}

FileNameC* FlnFileServiceC::getUNC(const FileNameC* name)
{
    (void)isMissing();
    return new FileNameC(name);
}

FileNameC FlnFileServiceC::getShortPathName(const FileNameC& name) { return name; }
FileNameC FlnFileServiceC::getLongPathName(const FileNameC& name) { return name; }
BooleanT FlnFileServiceC::isHidden(const FileNameC&) { return isMissing(); }
BooleanT FlnFileServiceC::isNetRoot(const FileNameC* name) { return isNamed(name) && isMissing(); }
BooleanT FlnFileServiceC::isSystem(const FileNameC&) { return isMissing(); }
BooleanT FlnFileServiceC::setHidden(const FileNameC&, BooleanT) { return isMissing(); }
BooleanT FlnFileServiceC::disableWow64Redirection(void**) { return 0; }
BooleanT FlnFileServiceC::revertWow64Redirection(void*) { return 0; }

BooleanT FlnFileServiceC::isInUse(const FileNameC* name)
{
    (void)isNamed(name);
    return 0;
}

time_t FlnFileServiceC::created(const FileNameC* name)
{
    if (!isNamed(name)) return 0;
    (void)TVX_CHECK(false, "FlnFileServiceC::created not implemented for this platform");
    return 0;
}

BooleanT FlnFileServiceC::setCreated(const FileNameC* name, time_t when)
{
    if (!TVX_CHECK(name != nullptr && when >= 0, "filename != 0 && when >= 0")) return 0;
    (void)TVX_CHECK(false, "FlnFileServiceC::setCreated not implemented for this platform");
    return 0;
}

// ---- attributes ----------------------------------------------------------------------------------------

BooleanT FlnFileServiceC::isReadable(const FileNameC* name)
{
    return isNamed(name) && fileattributes::isReadable(name);
}
BooleanT FlnFileServiceC::isWritable(const FileNameC* name)
{
    return isNamed(name) && fileattributes::isWritable(name);
}
BooleanT FlnFileServiceC::isReadOnly(const FileNameC* name)
{
    return isNamed(name) && fileattributes::isReadOnly(name);
}
BooleanT FlnFileServiceC::exists(const FileNameC* name) { return isNamedAndThere(name, LinksT::FOLLOWED, 0); }
BooleanT FlnFileServiceC::isDirectory(const FileNameC* name)
{
    return isNamedAndThere(name, LinksT::FOLLOWED, S_IFDIR);
}
BooleanT FlnFileServiceC::isFile(const FileNameC* name) { return isNamedAndThere(name, LinksT::FOLLOWED, S_IFREG); }
BooleanT FlnFileServiceC::isLink(const FileNameC* name) { return isNamedAndThere(name, LinksT::SEEN, S_IFLNK); }

FileNameC* FlnFileServiceC::readLink(const FileNameC* name)
{
    auto target = std::make_unique<FileNameC>();
    const int failure = isNamed(name) ? fileattributes::readLink(name, *target) : EINVAL;
    if (failure == 0) return target.release();
    ErrorErrno(failure);
    return nullptr;
}

FileSizeT FlnFileServiceC::length(const FileNameC* name, long* result)
{
    struct stat info;
    const int failure = isNamed(name) ? fileattributes::read(name, LinksT::FOLLOWED, info) : EINVAL;
    const long code = codeOf(failure);
    if (result != nullptr) *result = code;
    return failure == 0 ? info.st_size : -1;
}

FileSizeT FlnFileServiceC::_length(const FileNameC* name)
{
    struct stat info;
    return isNamed(name) && fileattributes::read(name, LinksT::FOLLOWED, info) == 0 ? info.st_size : -1;
}

time_t FlnFileServiceC::lastModified(const FileNameC* name)
{
    struct stat info;
    return isNamed(name) && fileattributes::read(name, LinksT::FOLLOWED, info) == 0 ? info.st_mtime : 0;
}

BooleanT FlnFileServiceC::setLastModified(const FileNameC* name, time_t when)
{
    if (!TVX_CHECK(name != nullptr && when >= 0, "filename != 0 && when >= 0")) return 0;
    return fileattributes::setLastModified(name, when) == 0;
}

BooleanT FlnFileServiceC::setReadOnly(const FileNameC* name, BooleanT readOnly)
{
    return isNamed(name) && fileattributes::setReadOnly(name, readOnly != 0) == 0;
}

long FlnFileServiceC::cloneAttributes(const FileNameC* from, const FileNameC* to)
{
    if (!isNamed(from) || !isNamed(to)) return ErrorErrno(EINVAL);
    return codeOf(fileattributes::clone(from, to));
}

FileSizeT FlnFileServiceC::diskFree(const FileNameC* name)
{
    FileSizeT bytes = -1;
    const int failure = isNamed(name) ? fileattributes::diskFree(name, bytes) : EINVAL;
    return codeOf(failure) == 0 ? bytes : -1;
}

FileInfoC* FlnFileServiceC::getInfo(const FileNameC* name, BooleanT follow_links)
{
    struct stat info;
    const LinksT links = follow_links != 0 ? LinksT::FOLLOWED : LinksT::SEEN;
    const int failure = isNamed(name) ? fileattributes::read(name, links, info) : EINVAL;
    return codeOf(failure) == 0 ? new FileInfoC(fileattributes::infoOf(info)) : nullptr;
}

StringC FlnFileServiceC::GetSafePath(const FileNameC* name) { return name != nullptr ? name->getPath() : StringC(); }

// ---- the current directory -----------------------------------------------------------------------------

long FlnFileServiceC::getCWD(FileNameC* dir)
{
    if (!TVX_CHECK(dir != nullptr, "l_pPath != __null")) return ErrorErrno(EINVAL);
    const std::unique_ptr<char, decltype(&std::free)> path(::getcwd(nullptr, 0), &std::free);
    const int failure = path == nullptr ? errno : 0;
    if (!TVX_CHECK(path != nullptr, "l_pPath != __null")) return ErrorErrno(failure);
    *dir = FileNameC(textOf(path.get()));
    return 0;
}

long FlnFileServiceC::setCWD(const FileNameC& dir)
{
    const fileattributes::PathC path(&dir);
    const int failure = path.failure() != 0 || ::chdir(path.c_str()) == 0 ? path.failure() : errno;
    if (failure == 0) return 0;
    ErrorErrno(failure);
    return Error(TVXERR_FILE_CHANGE_DIRECTORY, "Cannot change to directory '%1$S'", ArgListC() << path.text());
}

// ---- making directories --------------------------------------------------------------------------------

// Up to what is there, and down again; others may make the same directories meanwhile.
BooleanT FlnFileServiceC::mkdir(const FileNameC* name, BooleanT recursive)
{
    if (!isNamed(name) || name->isRoot()) return 0;
    if (name->getCanonicalPath().isEmpty()) return 1;
    FileNameArrayC missing;
    FileNameC dir = *name;
    int failure = makeDirectory(dir);
    while (failure == ENOENT && recursive != 0 && dir.getParent().isValid()) {
        missing.add(new FileNameC(dir));
        dir = dir.getParent();
        failure = makeDirectory(dir);
    }
    while (missing.size() > 0) {
        const std::unique_ptr<FileNameC> next(missing.remove(missing.size() - 1));
        failure = makeDirectory(*next);
    }
    return failure == 0 || (failure == EEXIST && isDirectory(name) != 0);
}

// ---- removing ------------------------------------------------------------------------------------------

BooleanT FlnFileServiceC::remove(const FileNameC* name, BooleanT force, BooleanT recursive)
{
    if (!TVX_CHECK(name != nullptr, "name")) return 0;
    return removeFile(*name, {force != 0, force != 0, recursive != 0}) == 0;
}

BooleanT FlnFileServiceC::removeDir(const FileNameC* dir, BooleanT force)
{
    return isNamedAndThere(dir, LinksT::SEEN, S_IFDIR) && removeFile(*dir, {false, force != 0, true}) == 0;
}

void FlnFileServiceC::removeLater(const FileNameC* name)
{
    if (!isNamed(name)) return;
    guardOverForks(FORK_RANK_REMOVE_LATER, queueLatchGuard);
    const LatchGuardM<LatchC> guard(*queueLatch);
    const int pid = ::getpid();
    if (m_removeLaterPid != pid) removelater_files.destroyAll();
    m_removeLaterPid = pid;
    removelater_files.add(new FileNameC(*name));
}

void FlnFileServiceC::removeQueued()
{
    if (m_removeLaterPid != ::getpid()) return;
    const LatchGuardM<LatchC> guard(*queueLatch);
    for (size_t n = 0; n < removelater_files.size(); ++n) (void)removeFile(*removelater_files[n], {false, false, true});
    removelater_files.destroyAll();
}

long FlnFileServiceC::removeOnReboot(const FileNameC& name)
{
    (void)TVX_CHECK(false, "Cannot delay removing until reboot on this platform");
    return codeOf(removeFile(name, {false, false, true}));
}

long FlnFileServiceC::renameOnReboot(const FileNameC& from, const FileNameC& to)
{
    (void)TVX_CHECK(false, "Cannot delay renaming until reboot on this platform");
    return rename(&from, &to);
}
