// unxfilcker.h: exclusion between processes by a lock file, which exists while somebody holds or wants the lock.
//
// The holder has the file open and write-locked. It removes the file before it gives the lock up, so whoever was
// waiting finds that the file it has locked is no longer the one that the path names, and tries again. A file
// that a killed process left is no obstacle: its lock ended with the process.
//
// The system keeps such locks by process: two objects for one file in one process do not exclude each other, and
// closing any descriptor of the file ends the lock. So there must be one at a time (the registry's latch).
//
// Functions leave the reason of a failure in errno.
//
// Thread safety: unlocked.
#ifndef TVXCMN_CONFAPI_UNXFILCKER_H
#define TVXCMN_CONFAPI_UNXFILCKER_H

#include "filename.h"

#include <fcntl.h>
#include <sys/stat.h>

class UnxFilckerC {
public:
    enum ResultT { LOCKED = 0, BUSY = -1, CANNOT_OPEN = -2 };

    explicit UnxFilckerC(const FileNameC& lockFile);
    ~UnxFilckerC() { releaseFile(); }
    UnxFilckerC(const UnxFilckerC&) = delete;
    UnxFilckerC& operator=(const UnxFilckerC&) = delete;

    // Who may open the lock file: those whom `mode` lets do so, rather than those whom the process's mask leaves.
    // A file that this process leaves behind when it is killed would keep others out for ever.
    void shareAs(mode_t mode) { m_mode = mode; }

    // LOCKED, BUSY or CANNOT_OPEN (a symbolic link, a missing directory, no permission). Never waits.
    int lockFile();
    // While it is BUSY, tries again, for about as many seconds as there are `tries`.
    int lockFile(unsigned tries);
    // Does nothing when it is not locked. False when closing failed; the lock is gone all the same.
    bool releaseFile();

    bool isLocked() const { return m_fd != -1; }

private:
    // Opens the file, unless it is open. 0, or CANNOT_OPEN.
    int open();
    // Whether the path still leads to the file that is open, about which it tells.
    bool isStillNamed(struct stat& info) const;
    void applyMode(const struct stat& info) const;
    int giveUp();

    FileNameC m_filename;
    int m_fd = -1;
    struct flock m_fl = {};
    mode_t m_mode = NO_MODE;

    static constexpr mode_t NO_MODE = ~mode_t{0};
};

#endif   // TVXCMN_CONFAPI_UNXFILCKER_H
