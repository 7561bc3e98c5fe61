// filecopy.h: copying one regular file for the file service.
#ifndef TVXCMN_FILE_FILECOPY_H
#define TVXCMN_FILE_FILECOPY_H

#include "fileservice.h"

// Who is told about a copy, and what besides the file itself. 0 stands for the file's size, and for one file.
struct CopyProgressT {
    FileCopyCallbackT callback;   // may be null
    void* closure;
    FileSizeT packageSize;
    long numFiles;
};

struct CopyOutcomeT {
    long code;         // 0, or what has been recorded
    bool hasTouched;   // the target is not what it was
    bool isStopped;    // by the callback
};

// `isMoved`: the copy will take the place of the source. It is nobody else's to read until its permissions are set,
// and on the disk when this is done.
CopyOutcomeT copyRegularFile(const FileNameC* from, const FileNameC* to, const CopyProgressT& progress, bool isMoved);

#endif   // TVXCMN_FILE_FILECOPY_H
