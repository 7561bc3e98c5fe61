#include "filelister.h"

#include "assertfatal.h"
#include "cmnlib/syscall.h"
#include "errorapi.h"
#include "file/builtinservice.h"
#include "file/fileattributes.h"
#include "file/namemaker.h"
#include "fileservice.h"

struct FileListerC::FoundT {
    std::unique_ptr<FileNameC> name;
    std::unique_ptr<FileInfoC> info;
    bool isKnown = false;   // it could be looked at
    bool isDir = false;
    bool isKept = false;
};

FileListSinkI::~FileListSinkI() = default;
FileListerI::~FileListerI() = default;

FileListerC::FileListerC(const FileNameC* dir, unsigned int flags)
    : recursive((flags & Recursive) != 0),
      follow_links((flags & FollowLinks) != 0),
      relative(dir != nullptr && (flags & Relative) != 0),
      include_dotdot((flags & IncludeDotDot) != 0)
{
    (void)TVX_CHECK(dir != nullptr, "filename != 0");
    nextdir = std::make_unique<FileNameC>(dir);
    if (!relative) return;
    start = std::move(nextdir);
    nextdir = std::make_unique<FileNameC>(FileNameMakerC::make(".", false));
}

FileListerC::~FileListerC() = default;

ErrorT FileListerC::getNext(FileNameC** name) { return getNext(name, nullptr, nullptr); }

ErrorT FileListerC::getNext(FileNameC** name, FileInfoC** info) { return getNext(name, info, nullptr); }

ErrorT FileListerC::getNext(FileListSinkI* sink) { return getNext(nullptr, nullptr, sink); }

ErrorT FileListerC::listAll(FileListSinkI* sink)
{
    ErrorT result;
    do {
        result = getNext(sink);
    } while (result == 0);
    return result == TVXERR_FILE_NO_MORE_FILES ? 0 : result;
}

void FileListerC::cancel()
{
    nextdir.reset();
    stack.destroyAll();
    err_code = TVXERR_FILE_NO_MORE_FILES;
}

void FileListerC::ascend()
{
    nextdir.reset();
    if (!stack.isEmpty()) stack.explode();
}

void FileListerC::clearError() { err_code = 0; }

unsigned char FileListerC::filter(const FileNameC*, unsigned char) { return 1; }

ErrorT FileListerC::getNext(FileNameC** name, FileInfoC** info, FileListSinkI* sink)
{
    if (name != nullptr) *name = nullptr;
    if (info != nullptr) *info = nullptr;
    if (err_code != 0) return err_code;
    const int failure = nextdir != nullptr ? openNextDir() : 0;
    if (failure != 0) return giveUpOn(std::move(nextdir), failure, sink);

    FoundT found;
    while (!found.isKept && !found.isDir) {
        if (stack.isEmpty()) return err_code = TVXERR_FILE_NO_MORE_FILES;
        std::string_view entry;
        unsigned char type = DT_UNKNOWN;
        const DIRStackC::NextT next = stack.next(entry, type);
        if (next == DIRStackC::FAILED) {
            const int error = stack.top()->failure;
            auto directory = std::make_unique<FileNameC>(*stack.top()->dirname);
            stack.explode();
            return giveUpOn(std::move(directory), error, sink);
        }
        if (next == DIRStackC::END) {
            stack.explode();
        } else if (entry != ".." || include_dotdot) {
            lookAt(found, entry, type, info != nullptr);
        }
    }

    if (sink != nullptr && found.isKept) {
        report(sink, found.name.get(), found.isKnown ? 0 : -1, found.isDir);
    } else if (found.isDir) {
        enterLater(*found.name);
    }
    if (name != nullptr) *name = found.name.release();
    if (info != nullptr) *info = found.info.release();
    return 0;
}

// 0, or an errno; `nextdir` is gone when it is 0.
int FileListerC::openNextDir()
{
    std::unique_ptr<FileNameC> whole;
    if (relative) whole.reset(FileNameMakerC::makeChild(*start, FileNameMakerC::bytes(*nextdir)));
    auto name = std::make_unique<FileNameC>(*nextdir);
    const int failure =
        stack.open(name.release(), whole != nullptr ? *whole : *nextdir, follow_links || stack.isEmpty());
    if (failure == 0) nextdir.reset();
    return failure;
}

// A directory that cannot be read: the sink decides; without one, the next call tells.
ErrorT FileListerC::giveUpOn(std::unique_ptr<FileNameC> directory, int error, FileListSinkI* sink)
{
    err_code = error;
    if (sink == nullptr) return 0;
    action = sink->warning(directory.get(), error);
    switch (action) {
    case FileListSinkI::Abort: return err_code;
    case FileListSinkI::Continue:
    case FileListSinkI::Prune:
    case FileListSinkI::Ascend: err_code = 0; return 0;
    }
    (void)TVX_CHECK(false, "Invalid return code from FileListSinkI::warning()");
    return 0;
}

// The directory says of most entries what they are. It is believed where the entry could be looked at too.
void FileListerC::lookAt(FoundT& found, std::string_view entry, unsigned char type, bool wantsInfo)
{
    const DirStackEntC& directory = *stack.top();
    found.name.reset(FileNameMakerC::makeChild(*directory.dirname, entry));
    std::unique_ptr<FileNameC> whole;
    if (relative) whole.reset(FileNameMakerC::makeChild(*start, FileNameMakerC::bytes(*found.name)));
    const FileNameC& full = whole != nullptr ? *whole : *found.name;
    const bool isTold = type != DT_UNKNOWN && (type != DT_LNK || !follow_links);
    if (isTold && !wantsInfo && directory.isSearchable && isFileServiceBuiltIn()) {
        found.isKnown = true;
        found.isDir = type == DT_DIR;
    } else {
        readInfo(found, full, entry.data());
    }
    found.isKept = filter(&full, found.isDir) != 0;
}

void FileListerC::readInfo(FoundT& found, const FileNameC& full, const char* entry) const
{
    if (!isFileServiceBuiltIn()) {
        const AutoRollbackErrorCheckpointC entriesMayVanish;
        found.info.reset(FileService()->getInfo(&full, follow_links));
        found.isKnown = found.info != nullptr;
        found.isDir = found.isKnown && found.info->isDirectory();
        return;
    }
    struct stat info = {};
    found.isKnown = ::fstatat(::dirfd(stack.top()->dp), entry, &info, follow_links ? 0 : AT_SYMLINK_NOFOLLOW) == 0;
    found.isDir = found.isKnown && S_ISDIR(info.st_mode);
    found.info.reset(found.isKnown ? new FileInfoC(fileattributes::infoOf(info)) : nullptr);
}

void FileListerC::enterLater(const FileNameC& name)
{
    if (recursive && baseOf(FileNameMakerC::bytes(name)) != "..") nextdir = std::make_unique<FileNameC>(name);
}

void FileListerC::report(FileListSinkI* sink, const FileNameC* name, long status, unsigned char isDir)
{
    const bool isKnownDir = status == 0 && isDir != 0;
    const size_t depth = stack.size();
    auto copy = std::make_unique<FileNameC>(*name);
    action = isKnownDir ? sink->addDir(copy.release()) : sink->addFile(copy.release());
    switch (action) {
    case FileListSinkI::Continue:
        if (isKnownDir && stack.size() == depth) enterLater(*name);   // else the sink has made the lister ascend
        return;
    case FileListSinkI::Prune: return;
    case FileListSinkI::Ascend:
        if (!stack.isEmpty()) stack.explode();
        return;
    case FileListSinkI::Abort: stack.destroyAll(); return;
    }
    (void)TVX_CHECK(false, "Invalid return from FileListSinkI::addFile/Dir()");
}

// ---- listers that filter ------------------------------------------------------------------------------

unsigned char FileWildcardListerC::filter(const FileNameC* filename, unsigned char isDir)
{
    return isDir == 0 && filename->matchBase(wildcard) ? 1 : 0;
}

void FileFindListerC::setFiles(StringArrayC* endings)
{
    if (endings != nullptr) {
        strs = *endings;
    } else {
        strs.clear();
    }
}

unsigned char FileFindListerC::filter(const FileNameC* filename, unsigned char isDir)
{
    if (isDir != 0) return 0;
    const StringC path = filename->getPath();
    for (size_t n = 0; n < strs.size(); ++n) {
        if (bytesOf(path).ends_with(bytesOf(strs[n]))) return 1;
    }
    return 0;
}

// ---- collecting ---------------------------------------------------------------------------------------

FileListingC::FileListingC(FileListerI* lister, bool synchronous) : mLister(lister), mSynchronous(synchronous)
{
    if (mSynchronous) finish(mLister->listAll(this));
}

FileListingC::~FileListingC() = default;

bool FileListingC::advance(unsigned long maxEntries)
{
    const size_t before = size();
    while (!m_isAtEnd && (maxEntries == 0 || size() - before < maxEntries)) {
        const ErrorT result = mLister->getNext(this);
        if (result != 0) finish(result);
    }
    return !m_isAtEnd;
}

void FileListingC::finish(ErrorT result)
{
    m_isAtEnd = true;
    if (err_code == 0 && result != TVXERR_FILE_NO_MORE_FILES) err_code = result;
}

FileListSinkI::ActionT FileListingC::addFile(FileNameC* name)
{
    add(name);
    return Continue;
}

FileListSinkI::ActionT FileListingC::addDir(FileNameC* name)
{
    add(name);
    return Continue;
}

FileListSinkI::ActionT FileListingC::warning(FileNameC*, int errorNumber)
{
    if (err_code == 0) err_code = errorNumber;
    return Continue;
}
