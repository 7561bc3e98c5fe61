// copyfile.h: copying from one descriptor to another.
#ifndef TVXCMN_CMNLIB_COPYFILE_H
#define TVXCMN_CMNLIB_COPYFILE_H

#include <cstddef>

struct CopyResultT {
    int error;      // 0, or an errno
    bool reading;   // the source gave it, not the target
};

struct CopyStepT {
    size_t moved;   // bytes; 0 at the end and after a failure
    CopyResultT result;
};

// Copies what one read gives, by way of `block`. Any thread.
CopyStepT copyBlock(int from, int to, char* block, size_t capacity);

// Copies from the position of `from` to its end, to the position of `to`. Any thread.
CopyResultT copyContents(int from, int to);

#endif   // TVXCMN_CMNLIB_COPYFILE_H
