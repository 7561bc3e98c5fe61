// fileopen.h: opening files as streams do, without reporting.
#ifndef TVXCMN_FILE_FILEOPEN_H
#define TVXCMN_FILE_FILEOPEN_H

#include "cmnlib/syscall.h"
#include "filestream.h"
#include "stringc.h"

struct OpeningT {
    FileStreamC::FileOpenModeT mode;
    FileStreamC::FileAccessT access;
    FileStreamC::FileShareT sharing;
    bool waitsForLock;
    int moreFlags;               // of open()
    mode_t permissions = 0666;   // of a new file, less the process's mask
};

// 0 and the open file, or the errno of the failure. Asserts what FileStreamC::openFile does.
int openPlainly(const StringC& path, const OpeningT& opening, FdOwnerC& file);

// Records that `path` cannot be opened because of `error`; returns the code of that.
long reportOpenFailure(int error, const StringC& path);

#endif   // TVXCMN_FILE_FILEOPEN_H
