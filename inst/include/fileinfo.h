// fileinfo.h: what the system tells about a file without opening it.
//
// Thread safety: a value; one object unlocked.
#ifndef TVXCMN_FILEINFO_H
#define TVXCMN_FILEINFO_H

#include "basetypes.h"

#include <ctime>
#include <sys/types.h>

// The kinds of files (POSIX, <sys/stat.h>).
enum FileInfoModeT : int {
    FILEINFO_MODEFILE,   // a regular file
    FILEINFO_MODEDIR,
    FILEINFO_MODECHR,
    FILEINFO_MODEBLK,
    FILEINFO_MODEFIFO,
    FILEINFO_MODELNK,
    FILEINFO_MODESOCK,
    FILEINFO_MODEUNKNOWN
};

class FileInfoC {
public:
    // Everything 0, and of an unknown kind.
    FileInfoC() = default;
    FileInfoC(const FileInfoC&) = default;
    FileInfoC& operator=(const FileInfoC&) = default;
    virtual ~FileInfoC();

    FileInfoModeT mode() const noexcept { return m_mode; }
    long perms() const noexcept { return m_perms; }           // the permission, set-id and sticky bits
    FileSizeT size() const noexcept { return m_size; }        // bytes
    time_t created() const noexcept { return m_created; }     // the last change of the attributes, or of the file
    time_t modified() const noexcept { return m_modified; }   // the last change of the contents
    time_t accessed() const noexcept { return m_accessed; }
    dev_t device() const noexcept { return m_device; }   // that holds the file
    uid_t uid() const noexcept { return m_uid; }
    gid_t gid() const noexcept { return m_gid; }
    bool isDirectory() const noexcept { return m_mode == FILEINFO_MODEDIR; }
    bool isFile() const noexcept { return m_mode == FILEINFO_MODEFILE; }

    void setMode(FileInfoModeT mode) noexcept { m_mode = mode; }
    void setPerms(long perms) noexcept { m_perms = perms; }
    void setSize(FileSizeT size) noexcept { m_size = size; }
    void setCreated(time_t when) noexcept { m_created = when; }
    void setModified(time_t when) noexcept { m_modified = when; }
    void setAccessed(time_t when) noexcept { m_accessed = when; }
    void setDevice(dev_t device) noexcept { m_device = device; }
    void setUid(uid_t uid) noexcept { m_uid = uid; }
    void setGid(gid_t gid) noexcept { m_gid = gid; }

private:
    FileInfoModeT m_mode = FILEINFO_MODEUNKNOWN;
    long m_perms = 0;
    FileSizeT m_size = 0;
    time_t m_created = 0;   // all times in seconds since 1970-01-01T00:00:00Z
    time_t m_modified = 0;
    time_t m_accessed = 0;
    dev_t m_device = 0;
    uid_t m_uid = 0;
    gid_t m_gid = 0;
};

#endif   // TVXCMN_FILEINFO_H
