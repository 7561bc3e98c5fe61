// fileservice.h: the file system, as the library and the modules see it.
//
// FileService() is the one way to it, so that a program can put a service of its own in its place
// (SetFileService). Operations that other systems have are part of the interface; here they report an
// assertion and return the neutral value that each of them names.
//
// Every name may be null, or hold U+0000, which no system call takes: that is EINVAL, or false; a null name is
// an assertion besides ("filename != 0", or the text that the operation names).
//
// Errors:        operations that return a truth value or a time record nothing. Those that return a code, or
//                something new, record the system's reason, and after it their own message if they have one.
// Thread safety: any thread. There is no lock: operations are independent calls of the system. setCWD
//                changes the whole process. Nothing here may be called from a signal handler.
// Ownership:     what is returned as a pointer is new and the caller deletes it.
#ifndef TVXCMN_FILESERVICE_H
#define TVXCMN_FILESERVICE_H

#include "filelister.h"
#include "filestream.h"
#include "osversion.h"

#include <atomic>

class DynLoadC;

// Told after every block of a copy. `packageSize` and `numFiles` are the bytes and files of everything that is
// being copied, `fileLength` the bytes of this file when its copying began, `bytesCopied` those of it that have
// been copied. 0 stops the copying, which then counts as done.
typedef BooleanT (*FileCopyCallbackT)(const FileNameC* from, const FileNameC* to, FileSizeT packageSize, long numFiles,
                                      FileSizeT fileLength, FileSizeT bytesCopied, void* closure);

class FileServiceI {
public:
    virtual ~FileServiceI();

    virtual FileNameArrayC* listRoots() = 0;   // here: "/"
    // 0 or a code. Requires: a current directory, and `dir` ("l_pPath != __null").
    virtual long getCWD(FileNameC* dir) = 0;
    // Not implemented here ("Not implemented"): a copy.
    virtual FileNameC* getAbsolute(const FileNameC* name) = 0;
    virtual FileNameC getShortPathName(const FileNameC& name) = 0;   // here: `name`
    virtual FileNameC getLongPathName(const FileNameC& name) = 0;    // here: `name`
    // Not implemented here ("Not implemented"): a copy.
    virtual FileNameC* getUNC(const FileNameC* name) = 0;
    // Whether this process may read or write the file. Asking whether a regular file is writable gives up the
    // locks that the process holds on it.
    virtual BooleanT isReadable(const FileNameC* name) = 0;
    virtual BooleanT isWritable(const FileNameC* name) = 0;
    virtual BooleanT isReadOnly(const FileNameC* name) = 0;   // its owner may not write to it
    virtual BooleanT exists(const FileNameC* name) = 0;       // links are followed
    virtual BooleanT isDirectory(const FileNameC* name) = 0;
    virtual BooleanT isLink(const FileNameC* name) = 0;
    virtual FileNameC* readLink(const FileNameC* name) = 0;   // null: it is none
    virtual BooleanT isFile(const FileNameC* name) = 0;
    virtual BooleanT isHidden(const FileNameC& name) = 0;    // not implemented here ("Not implemented"): 0
    virtual BooleanT isNetRoot(const FileNameC* name) = 0;   // not implemented here ("Not implemented"): 0
    // Bytes, or -1. `result`, if not null, gets 0 or a code.
    virtual FileSizeT length(const FileNameC* name, long* result) = 0;
    // Seconds since 1970-01-01T00:00:00Z; 0 on failure.
    virtual time_t lastModified(const FileNameC* name) = 0;
    // Requires: "filename != 0 && when >= 0".
    virtual BooleanT setLastModified(const FileNameC* name, time_t when) = 0;
    // Not here ("FlnFileServiceC::created not implemented for this platform", and the same of setCreated): 0.
    virtual time_t created(const FileNameC* name) = 0;
    virtual BooleanT setCreated(const FileNameC* name, time_t when) = 0;
    // Nobody may write any more; or everybody who may read.
    virtual BooleanT setReadOnly(const FileNameC* name, BooleanT readOnly) = 0;
    // Owner, group and permissions. 0 or a code.
    virtual long cloneAttributes(const FileNameC* from, const FileNameC* to) = 0;
    // Bytes that an ordinary user may still write beside the file; -1 on failure.
    virtual FileSizeT diskFree(const FileNameC* name) = 0;
    // A name in the directory for temporary files that nothing goes by, yet. `prefix`: up to five bytes count.
    // `suffix` is not used. Null when there is none ("Failed 'tempnam' call to create temporary filename!").
    virtual FileNameC* createTempFile(const StringC& prefix, const StringC& suffix) = 0;
    // `prefix`, a number and `suffix`, in `dir` if that is not null. With `create` the empty file is there, and
    // only then nobody else can have taken the name. Null on failure.
    virtual FileNameC* createTempFile(const FileNameC* dir, const StringC& prefix, const StringC& suffix,
                                      unsigned char create) = 0;
    // Removes a file, a link (not what it leads to) or a directory; with `recursive` also one that is not empty,
    // as much of it as can be. With `force` the permission to write is given where it is missing. True when it is
    // gone, or was not there. Requires: "name".
    virtual BooleanT remove(const FileNameC* name, BooleanT force, BooleanT recursive) = 0;
    // Removes it, with all that is in it, when the process exits, in the order asked for. The child of a fork
    // leaves its parent's files alone.
    virtual void removeLater(const FileNameC* name) = 0;
    // Not here ("Cannot delay removing until reboot on this platform"): removes it at once. 0 or a code.
    virtual long removeOnReboot(const FileNameC& name) = 0;
    // True when the directory is there afterwards. With `recursive` its parents are made as well.
    virtual BooleanT mkdir(const FileNameC* name, BooleanT recursive) = 0;
    // 0 or a code. Between file systems regular files are copied, with their permissions and modification time;
    // whatever fails, one of the two names holds the whole file.
    virtual long rename(const FileNameC* from, const FileNameC* to) = 0;
    // Not here ("Cannot delay renaming until reboot on this platform"): renames it at once.
    virtual long renameOnReboot(const FileNameC& from, const FileNameC& to) = 0;
    // Copies a file or a whole tree; what is in the way of the tree's files is overwritten, directories that are
    // there are filled. Files lose their permissions, directories keep them. Links to files become files, other
    // links stay links, pipes, sockets and devices are left out, and refused as targets of files. So is a link in
    // the target that leads back into the source. 0 or a code; what had been copied stays.
    // Requires: "from", "to".
    virtual long copy(const FileNameC* from, const FileNameC* to, FileCopyCallbackT callback, void* closure) = 0;
    virtual FileListerI* getLister(const FileNameC* dir, unsigned int flags) = 0;   // see FileListerC
    virtual BooleanT isSystem(const FileNameC& name) = 0;   // not implemented here ("Not implemented"): 0
    virtual BooleanT setHidden(const FileNameC& name, BooleanT hidden) = 0;   // likewise
    virtual BooleanT isInUse(const FileNameC* name) = 0;                      // here: 0
    virtual IOStreamC* openFile(const FileNameC& name, FileStreamC::FileOpenModeT mode, FileStreamC::FileAccessT access,
                                FileStreamC::FileShareT sharing,
                                bool wait_for_lock) = 0;   // see FileStreamC::openFile
    // 0; or 0xE0CB0011.
    virtual long setCWD(const FileNameC& dir) = 0;
    // Of the file, or of a link itself unless `follow_links`. Null on failure.
    virtual FileInfoC* getInfo(const FileNameC* name, BooleanT follow_links) = 0;
    virtual BooleanT disableWow64Redirection(void** state) = 0;   // here: 0, and nothing happens
    virtual BooleanT revertWow64Redirection(void* state) = 0;     // likewise
    // Removes the directory, then its parents, as long as they are empty; not `limit`, if that is not null, which
    // is compared without regard to case.
    virtual void removeEmptyFolderLeaveToRoot(FileNameC filename, StringC* limit);
};

// The service: the built-in one, unless another one has been set. Good until the process ends.
FileServiceI* FileService();
// Puts another service, which stays the caller's, in place; null brings the built-in one back.
void SetFileService(FileServiceI* service);

// The built-in service.
class FlnFileServiceC : public FileServiceI {
public:
    FlnFileServiceC() = default;
    ~FlnFileServiceC() override;   // removes what removeLater was told
    FlnFileServiceC(const FlnFileServiceC&) = delete;
    FlnFileServiceC& operator=(const FlnFileServiceC&) = delete;

    FileNameArrayC* listRoots() override;
    long getCWD(FileNameC* dir) override;
    FileNameC* getAbsolute(const FileNameC* name) override;
    FileNameC getShortPathName(const FileNameC& name) override;
    FileNameC getLongPathName(const FileNameC& name) override;
    FileNameC* getUNC(const FileNameC* name) override;
    BooleanT isReadable(const FileNameC* name) override;
    BooleanT isWritable(const FileNameC* name) override;
    BooleanT isReadOnly(const FileNameC* name) override;
    BooleanT exists(const FileNameC* name) override;
    BooleanT isDirectory(const FileNameC* name) override;
    BooleanT isLink(const FileNameC* name) override;
    FileNameC* readLink(const FileNameC* name) override;
    BooleanT isFile(const FileNameC* name) override;
    BooleanT isHidden(const FileNameC& name) override;
    BooleanT isNetRoot(const FileNameC* name) override;
    FileSizeT length(const FileNameC* name, long* result) override;
    time_t lastModified(const FileNameC* name) override;
    BooleanT setLastModified(const FileNameC* name, time_t when) override;
    time_t created(const FileNameC* name) override;
    BooleanT setCreated(const FileNameC* name, time_t when) override;
    BooleanT setReadOnly(const FileNameC* name, BooleanT readOnly) override;
    long cloneAttributes(const FileNameC* from, const FileNameC* to) override;
    FileSizeT diskFree(const FileNameC* name) override;
    FileNameC* createTempFile(const StringC& prefix, const StringC& suffix) override;
    FileNameC* createTempFile(const FileNameC* dir, const StringC& prefix, const StringC& suffix,
                              unsigned char create) override;
    BooleanT remove(const FileNameC* name, BooleanT force, BooleanT recursive) override;
    void removeLater(const FileNameC* name) override;
    long removeOnReboot(const FileNameC& name) override;
    BooleanT mkdir(const FileNameC* name, BooleanT recursive) override;
    long rename(const FileNameC* from, const FileNameC* to) override;
    long renameOnReboot(const FileNameC& from, const FileNameC& to) override;
    long copy(const FileNameC* from, const FileNameC* to, FileCopyCallbackT callback, void* closure) override;
    FileListerI* getLister(const FileNameC* dir, unsigned int flags) override;
    BooleanT isSystem(const FileNameC& name) override;
    BooleanT setHidden(const FileNameC& name, BooleanT hidden) override;
    BooleanT isInUse(const FileNameC* name) override;
    IOStreamC* openFile(const FileNameC& name, FileStreamC::FileOpenModeT mode, FileStreamC::FileAccessT access,
                        FileStreamC::FileShareT sharing, bool wait_for_lock) override;
    long setCWD(const FileNameC& dir) override;
    FileInfoC* getInfo(const FileNameC* name, BooleanT follow_links) override;
    BooleanT disableWow64Redirection(void** state) override;
    BooleanT revertWow64Redirection(void* state) override;

    // Makes a directory, not its parents, with the attributes of another one. 0, 0xE0CB0002, or the code of what
    // the attributes failed with. Requires: "templateDirectory", "newDirectory".
    long mkdirTemplate(const FileNameC* templateDirectory, const FileNameC* newDirectory);
    // Removes a directory and all that is in it; with `force` as for remove.
    BooleanT removeDir(const FileNameC* dir, BooleanT force);
    // 0; 0xE0CB0016 and 0xE0CB0017 when the source or the target cannot be opened, 0xE0CB0018 and 0xE0CB0019 when
    // they cannot be read or written. The target is not emptied before both are open and known to be different
    // files; after that, a failure leaves what had been copied. Only regular files are sources.
    long copyFile(const FileNameC* from, const FileNameC* to, FileCopyCallbackT callback, void* closure);
    FileSizeT _length(const FileNameC* name);     // bytes, or -1
    StringC GetSafePath(const FileNameC* name);   // the path, empty for null
    void removeQueued();                          // what the destructor does, now

private:
    FileSizeT copy_package_size = 0;   // told to callbacks; 0: the size of the file
    long copy_num_files = 0;           // likewise; 0: 1
    FileNameArrayC removelater_files;
    OSVersionInfoC osversion;
    [[maybe_unused]] DynLoadC* kernel32dll = nullptr;   // of another system
    std::atomic<int> m_removeLaterPid{0};               // whose process the queued files are
};

#endif   // TVXCMN_FILESERVICE_H
