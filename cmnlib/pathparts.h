// pathparts.h: what the routines for parts of a path share.
#ifndef TVXCMN_CMNLIB_PATHPARTS_H
#define TVXCMN_CMNLIB_PATHPARTS_H

#include <cstddef>

// Without the "/" at the end; the first character always counts.
size_t lengthWithoutTrailingSlashes(const char* path);

// Makes `length` bytes at `part`, which may lie in `dst`, the terminated text in `dst`; returns that.
char* putPart(char* dst, const char* part, size_t length);

#endif   // TVXCMN_CMNLIB_PATHPARTS_H
