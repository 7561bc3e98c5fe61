// copyfile.h: copying from one descriptor to another.
#ifndef TVXCMN_CMNLIB_COPYFILE_H
#define TVXCMN_CMNLIB_COPYFILE_H

struct CopyResultT {
    int error;      // 0, or an errno
    bool reading;   // the source gave it, not the target
};

// Copies from the position of `from` to its end, to the position of `to`. Any thread.
CopyResultT copyContents(int from, int to);

#endif   // TVXCMN_CMNLIB_COPYFILE_H
