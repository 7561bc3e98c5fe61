// filestream.h: the stream over a file of the system.
//
// Sharing. A file that is opened with SHARE_NONE is locked for writing, one with SHARE_READ for reading:
// the whole of it, by a record lock of the system, until the stream closes. SHARE_WRITE and
// SHARE_READWRITE take no lock and heed none. What follows from the system's rules:
//   - locks stand between processes: two streams of one process never stop each other
//   - the lock goes when *any* descriptor of this process on that file is closed, also one that was
//     opened just to look at it. Do not open a file a second time while its lock matters.
//   - a lock is not inherited by a child
//   - while a stream waits for a lock (wait_for_lock), signals do not interrupt it
//   - a file that was renamed over or removed before its lock was had gives EAGAIN; try again
//
// Descriptors are closed on exec and are none of 0, 1 and 2. Opening a FIFO waits for its other end.
// SIGPIPE is left as it is: writing to a pipe that nobody reads ends the process, unless it ignores it.
//
// Thread safety: a stream is unlocked. Nothing here may be called from a signal handler.
// Ownership:     a stream owns its descriptor and closes it when it is deleted; a failure of that
//                close is seen by nobody, so whoever wrote calls close() and looks at the result.
#ifndef TVXCMN_FILESTREAM_H
#define TVXCMN_FILESTREAM_H

#include "streams.h"

class FileNameC;

class FileStreamC : public IOStreamC {
public:
    enum FileOpenModeT : int {
        FMODE_APPEND,         // made if need be; every write goes to the end
        FMODE_CREATE,         // made, or emptied
        FMODE_CREATENEW,      // made; must not be there
        FMODE_OPEN,           // must be there
        FMODE_OPENORCREATE,   // made if need be
        FMODE_TRUNCATE        // must be there; emptied
    };
    enum FileAccessT : int { FACCESS_READ = 1, FACCESS_WRITE = 2, FACCESS_READWRITE = 3 };
    // What others may do meanwhile.
    enum FileShareT : int { SHARE_NONE, SHARE_READ, SHARE_WRITE, SHARE_READWRITE };

    // Takes over the open descriptor `fd`, for example NativeStdOut().
    FileStreamC(int fd, FileOpenModeT mode, FileAccessT access, FileShareT sharing);
    ~FileStreamC() override;
    FileStreamC(const FileStreamC&) = delete;
    FileStreamC& operator=(const FileStreamC&) = delete;

    // A new stream that the caller deletes; or null, with the system's reason and then 0xE0CB0010 in
    // the error buffer (EAGAIN: somebody holds the lock; EBADF: no such mode), or 0xE0CB0009 for
    // appending without write access. A file is emptied only under its lock. New files get the mode
    // 0666, less the process's mask. SHARE_NONE needs the permission to write even to read, SHARE_READ
    // the permission to read even to write, and emptying the permission to write.
    // Requires: one of the three accesses ("Invalid access argument"). Otherwise: as for reading.
    [[nodiscard]] static IOStreamC* openFile(const FileNameC& filename, FileOpenModeT mode, FileAccessT access,
                                             FileShareT sharing, bool wait_for_lock = false);

    // The second close does nothing and returns 0.
    long close() override;
    // One read(), which a signal may interrupt. On a stream that cannot read: 0xE0CB0006 and -1.
    long read(unsigned char* buf, long size) override;
    // On a closed stream: 0xE0CB0005 and -1.
    long long length() const override;
    // What the access asked for allows, whatever the descriptor could do.
    bool canRead() const override;
    bool canSeek() const override;   // while it is open
    bool canWrite() const override;
    // On a closed stream: 0xE0CB0007 and -1.
    // Requires: one of the three starting points ("Invalid whence value"). Otherwise: the beginning.
    long long seek(long long offset, WhenceT whence) override;
    // On a stream that cannot write: 0xE0CB000B.
    long setLength(long long len) override;
    // fsync(); nothing on a stream that cannot write.
    long flush() override;
    // As many write() as it takes; none of them is repeated when a signal interrupts it. How much of the
    // bytes had been written before a failure is not told. On a stream that cannot write: 0xE0CB0008.
    long write(const unsigned char* buf, long size) override;
    // From file to file the system moves the bytes where it can.
    long writeFrom(InputStreamC& in, long count) override;

    using IOStreamC::read;
    using IOStreamC::write;

    static bool NativeDescIsValid(NativeFileDescT fd) { return fd >= 0; }
    static NativeFileDescT InvalidNativeDesc() { return -1; }
    // Closes `fd` once; being interrupted counts as closed. 0, or the system's reason, recorded.
    static long CloseNativeDesc(NativeFileDescT fd);
    static NativeFileDescT NativeStdIn() { return 0; }
    static NativeFileDescT NativeStdOut() { return 1; }
    static NativeFileDescT NativeStdErr() { return 2; }
    // Not descriptors, but what to do about one of them in a child process: leave it the parent's, or
    // leave it closed.
    static NativeFileDescT InheritNativeDesc() { return -2; }
    static NativeFileDescT ClosedNativeDesc() { return -3; }

private:
    NativeFileDescT fileHandle;   // -1 when closed
    [[maybe_unused]] const FileOpenModeT mode;
    const FileAccessT access;
};

#endif   // TVXCMN_FILESTREAM_H
