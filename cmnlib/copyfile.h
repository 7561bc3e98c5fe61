// copyfile.h: copying from one descriptor to another, and writing all that there is.
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

// Writes all of the `size` bytes. 0 or an errno. Any thread.
int writeAll(int fd, const char* data, size_t size);

// Copies what one read gives, by way of `block`. Any thread.
CopyStepT copyBlock(int from, int to, char* block, size_t capacity);

// Copies from the position of `from` to its end, to the position of `to`. Any thread.
CopyResultT copyContents(int from, int to);

#endif   // TVXCMN_CMNLIB_COPYFILE_H
