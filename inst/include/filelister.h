// filelister.h: what is in a directory, or in the whole tree below it, one entry at a time.
//
// A walk is depth-first: a directory is opened by the call after the one that handed it out, and its entries
// come before the rest of those around it. Entries come in the order of the file system, "." never. What is
// made or removed during a walk may or may not come. A directory that becomes a link while the walk is on
// its way to it is not entered, unless links are followed; ".." is never entered.
//
// Two ways to take entries: call getNext until it is not 0; or give a sink, which sees each entry and says how
// to go on. Without a sink all directories are handed out, and filters decide about files only; with one,
// directories that a filter rejects are walked all the same.
//
// Thread safety: unlocked.
// Ownership:     names and descriptions that are handed out are new and the caller deletes them. A lister that
//                is deleted closes what it has open; a sink must not delete the lister that calls it.
#ifndef TVXCMN_FILELISTER_H
#define TVXCMN_FILELISTER_H

#include "dirstack.h"
#include "errornumbers.h"
#include "fileinfo.h"
#include "filenamearray.h"
#include "stringar.h"

#include <memory>

class FileListSinkI {
public:
    virtual ~FileListSinkI();

    enum ActionT : int {
        Continue = 0,
        Prune = 1,    // do not enter this directory; the same as Continue for a file
        Ascend = 2,   // skip what is left of the directory around it
        Abort = 3     // no further calls
    };
    // Take ownership of `name`. What cannot be looked at comes as a file.
    virtual ActionT addFile(FileNameC* name) = 0;
    virtual ActionT addDir(FileNameC* name) = 0;
    // The directory `name`, which stays the lister's, cannot be read, for the reason `errorNumber`, an errno.
    // Everything but Abort goes on with what comes after it.
    virtual ActionT warning(FileNameC* name, int errorNumber) = 0;
};

class FileListerI {
public:
    virtual ~FileListerI();

    // The next entry. 0; 0xE0CB0001 after the last one; or the errno of a directory that could not be read,
    // which ends the walk until clearError. The call that found that directory returned 0 with null results,
    // so look at the name as well.
    virtual ErrorT getNext(FileNameC** name) = 0;
    virtual ErrorT getNext(FileNameC** name, FileInfoC** info) = 0;   // *info: null when it cannot be had
    // Takes one step; the sink gets the entry, or the warning, that it comes upon.
    virtual ErrorT getNext(FileListSinkI* sink) = 0;
    // All that is left. 0, or the errno of the warning that the sink answered with Abort.
    virtual ErrorT listAll(FileListSinkI* sink) = 0;
    // Ends the walk: 0xE0CB0001 from now on.
    virtual void cancel() = 0;
    // Skips what is left of the innermost directory, or the directory handed out last.
    virtual void ascend() = 0;
    // Goes on after an error.
    virtual void clearError() = 0;
};

class FileListerC : public FileListerI {
public:
    enum FlagsT : unsigned {
        Recursive = 0x1,
        FollowLinks = 0x2,    // links to directories are directories; what leads back to itself is ELOOP
        Relative = 0x4,       // names are relative to `dir`
        IncludeDotDot = 0x8   // ".." is an entry
    };

    // Reads nothing yet. Requires: a directory ("filename != 0"). Otherwise: as for one that does not exist.
    FileListerC(const FileNameC* dir, unsigned int flags);
    ~FileListerC() override;
    FileListerC(const FileListerC&) = delete;
    FileListerC& operator=(const FileListerC&) = delete;

    ErrorT getNext(FileNameC** name) override;
    ErrorT getNext(FileNameC** name, FileInfoC** info) override;
    ErrorT getNext(FileListSinkI* sink) override;
    ErrorT listAll(FileListSinkI* sink) override;
    void cancel() override;
    void ascend() override;
    void clearError() override;

    // All of it. `info` and `sink` may be null, and so may `name`. Requires of the sink: one of the four
    // actions ("Invalid return code from FileListSinkI::warning()", "Invalid return from
    // FileListSinkI::addFile/Dir()"). Otherwise: the step ends; after a warning its error stays.
    virtual ErrorT getNext(FileNameC** name, FileInfoC** info, FileListSinkI* sink);
    // Whether an entry is wanted. `filename` is whole also when names are handed out relative.
    virtual unsigned char filter(const FileNameC* filename, unsigned char isDir);

protected:
    // Hands an entry to the sink and does what it says. `status`: 0, or -1 when it could not be looked at.
    void report(FileListSinkI* sink, const FileNameC* name, long status, unsigned char isDir);

private:
    struct FoundT;

    int openNextDir();
    ErrorT giveUpOn(std::unique_ptr<FileNameC> directory, int error, FileListSinkI* sink);
    void lookAt(FoundT& found, std::string_view entry, unsigned char type, bool wantsInfo);
    void readInfo(FoundT& found, const FileNameC& full, const char* entry) const;
    void enterLater(const FileNameC& name);

    const bool recursive;
    const bool follow_links;
    const bool relative;
    const bool include_dotdot;
    FileListSinkI::ActionT action = FileListSinkI::Continue;   // what a sink said last
    std::unique_ptr<FileNameC> start;                          // only when `relative`
    std::unique_ptr<FileNameC> nextdir;                        // opened by the next call
    ErrorT err_code = 0;                                       // what every further call returns
    DIRStackC stack;
};

// Keeps the files whose last component matches a pattern (FileNameC::matchBase), and no directories.
class FileWildcardListerC : public FileListerC {
public:
    FileWildcardListerC(const FileNameC* dir, const StringC& pattern, unsigned int flags)
        : FileListerC(dir, flags), wildcard(pattern)
    {
    }
    unsigned char filter(const FileNameC* filename, unsigned char isDir) override;

private:
    const StringC wildcard;
};

// Keeps the files whose whole path ends with one of some strings, and no directories. Case counts.
class FileFindListerC : public FileListerC {
public:
    FileFindListerC(const FileNameC* dir, unsigned int flags) : FileListerC(dir, flags) {}
    // A copy of `endings`; an empty string among them keeps every file, null or no string none.
    void setFiles(StringArrayC* endings);
    unsigned char filter(const FileNameC* filename, unsigned char isDir) override;

private:
    StringArrayC strs;
};

// The names that a lister hands out, collected.
class FileListingC : public FileNameArrayC, public FileListSinkI {
public:
    // Takes over the lister; and reads all of it, unless `synchronous` is false: then nothing is read before
    // advance() is called. Nothing happens in the background.
    explicit FileListingC(FileListerI* lister, bool synchronous = true);
    ~FileListingC() override;

    // Reads up to `maxEntries` entries, or all with 0. True while more may come.
    bool advance(unsigned long maxEntries = 0);
    // 0, or the errno of the first directory that could not be read, or what else ended the lister.
    ErrorT errorCode() const { return err_code; }

    ActionT addFile(FileNameC* name) override;
    ActionT addDir(FileNameC* name) override;
    ActionT warning(FileNameC* name, int errorNumber) override;

private:
    void finish(ErrorT result);

    const std::unique_ptr<FileListerI> mLister;
    const bool mSynchronous;
    ErrorT err_code = 0;
    bool m_isAtEnd = false;
};

#endif   // TVXCMN_FILELISTER_H
