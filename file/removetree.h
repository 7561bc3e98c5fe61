// removetree.h: removing files and trees of files.
//
// Everything is removed relative to the open directory that holds it, so what somebody exchanges for a link
// meanwhile leads nowhere, and neither the depth of a tree nor the length of its paths is limited.
#ifndef TVXCMN_FILE_REMOVETREE_H
#define TVXCMN_FILE_REMOVETREE_H

#include "filename.h"

struct RemovalT {
    bool isForced;         // give the permission to write where it is missing
    bool forcesContents;   // the same for what is in a directory
    bool isRecursive;
};

// 0 when it is gone or was not there; otherwise the errno of what failed last.
int removeFile(const FileNameC& name, RemovalT how);

#endif   // TVXCMN_FILE_REMOVETREE_H
