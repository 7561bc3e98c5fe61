#include "file/removetree.h"

#include "dirstack.h"
#include "file/fileattributes.h"
#include "file/pathbytes.h"

#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

class RemoverC {
public:
    int remove(const FileNameC& name, RemovalT how)
    {
        const fileattributes::PathC path(&name);
        if (path.failure() != 0) return path.failure();
        struct stat info = {};
        if (::lstat(path.c_str(), &info) != 0) return errno == ENOENT ? 0 : errno;
        handle({std::string(bytesOf(path.text())), S_ISDIR(info.st_mode), how});
        while (!m_levels.empty()) step();
        return m_failure;
    }

private:
    // What is being removed. Of directories, those that are open.
    struct TargetT {
        std::string name;   // in the directory around it; the whole path of the outermost one
        bool isDirectory;
        RemovalT how;
        bool isWidened = false;   // it was made writable; before, it had:
        mode_t mode = 0;
        bool hasLost = false;     // something in it was removed
        bool hasFailed = false;   // something in it could not be
    };
    enum OutcomeT { REMOVED, MISSING, OPENED, FAILED };

    // Where names are looked up. -1, which makes every call fail, after the way back up was lost.
    int around() const
    {
        if (m_stack.isEmpty()) return AT_FDCWD;
        return m_stack.top()->dp != nullptr ? ::dirfd(m_stack.top()->dp) : -1;
    }

    OutcomeT attempt(TargetT& target)
    {
        if (::unlinkat(around(), target.name.c_str(), target.isDirectory ? AT_REMOVEDIR : 0) == 0) return REMOVED;
        if (errno == ENOENT) return MISSING;
        m_lastError = errno;
        if (!target.isDirectory || !target.how.isRecursive) return FAILED;
        const FileNameC name(textOf(target.name));
        const int failure = around() == -1 ? ENOENT : m_stack.open(new FileNameC(), name, false);
        if (failure != 0) {
            m_lastError = failure;
            return FAILED;
        }
        m_levels.push_back(std::move(target));
        return OPENED;
    }

    void handle(TargetT target)
    {
        OutcomeT outcome = attempt(target);
        while (outcome == FAILED && widen(target)) outcome = attempt(target);
        if (outcome != OPENED) note(outcome);
    }

    // Once, and only what its owner may not write to; after that, what was changed is taken back.
    bool widen(TargetT& target)
    {
        const char* const name = target.name.c_str();
        if (target.isWidened) (void)::fchmodat(around(), name, target.mode, AT_SYMLINK_NOFOLLOW);
        if (target.isWidened || !target.how.isForced) return false;
        struct stat info = {};
        if (::fstatat(around(), name, &info, AT_SYMLINK_NOFOLLOW) != 0 || S_ISLNK(info.st_mode)) return false;
        if ((info.st_mode & S_IWUSR) != 0) return false;
        target.mode = info.st_mode & 07777;
        if (::fchmodat(around(), name, target.mode | S_IWUSR, AT_SYMLINK_NOFOLLOW) != 0) return false;
        target.isWidened = true;
        target.how.isForced = target.how.forcesContents = false;
        return true;
    }

    void note(OutcomeT outcome)
    {
        if (m_levels.empty()) {
            m_failure = outcome == FAILED ? m_lastError : 0;
        } else {
            m_levels.back().hasLost |= outcome == REMOVED;
            m_levels.back().hasFailed |= outcome == FAILED;
        }
    }

    void step()
    {
        std::string_view name;
        unsigned char type = DT_UNKNOWN;
        if (m_stack.next(name, type) != DIRStackC::ENTRY) {
            leave();
        } else if (name != "..") {
            const RemovalT outer = m_levels.back().how;
            handle({std::string(name), isDirectory(name, type), {outer.forcesContents, outer.forcesContents, true}});
        }
    }

    bool isDirectory(std::string_view name, unsigned char type) const
    {
        struct stat info = {};
        if (type != DT_UNKNOWN) return type == DT_DIR;
        return ::fstatat(around(), name.data(), &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(info.st_mode);
    }

    // A file system may pass over entries while others are removed: then the directory is read again. The outermost
    // one, which was there, may be missing because the path to it led through what has been removed.
    void leave()
    {
        TargetT target = std::move(m_levels.back());
        m_levels.pop_back();
        m_stack.explode();
        if (::unlinkat(around(), target.name.c_str(), AT_REMOVEDIR) == 0) return note(REMOVED);
        m_lastError = errno;
        if (m_lastError == ENOENT) return note(m_levels.empty() ? FAILED : MISSING);
        const bool maybePassedOver =
            target.hasLost && !target.hasFailed && (m_lastError == ENOTEMPTY || m_lastError == EEXIST);
        target.hasLost = target.hasFailed = false;
        if (maybePassedOver || widen(target)) {
            handle(std::move(target));
        } else {
            note(FAILED);
        }
    }

    DIRStackC m_stack;
    std::vector<TargetT> m_levels;   // as many as the stack has directories
    int m_lastError = 0;
    int m_failure = 0;
};

}   // namespace

int removeFile(const FileNameC& name, RemovalT how) { return RemoverC().remove(name, how); }
