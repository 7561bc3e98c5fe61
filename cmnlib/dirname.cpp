#include "pathname.h"

#include "cmnlib/pathparts.h"

#include <cstring>

char* DirName(char* src, char* dst)
{
    if (src == nullptr) return nullptr;
    if (dst == nullptr) dst = src;
    size_t length = lengthWithoutTrailingSlashes(src);
    while (length > 0 && src[length - 1] != '/') --length;

    if (length > 0) return putPart(dst, src, length);
    if (dst == src && *src == 0) return nullptr;
    return putPart(dst, ".", 1);
}

char* DirToFileName(char* src, char* dst)
{
    if (src == nullptr) return nullptr;
    return putPart(dst != nullptr ? dst : src, src, lengthWithoutTrailingSlashes(src));
}

char* DirFileName(char* src, char* dst) { return DirToFileName(DirName(src, dst), nullptr); }

char* FixUpPath(const char* path)
{
    if (path == nullptr) return nullptr;
    const size_t length = lengthWithoutTrailingSlashes(path);
    char* const fixed = new char[length + 1];
    char* out = fixed;
    for (size_t i = 0; i < length; ++i) {
        if (path[i] != '/' || i == 0 || path[i - 1] != '/') *out++ = path[i];
    }
    *out = 0;
    return fixed;
}
