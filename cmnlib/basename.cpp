#include "pathname.h"

#include "cmnlib/pathparts.h"

#include <cstring>

size_t lengthWithoutTrailingSlashes(const char* path)
{
    size_t length = std::strlen(path);
    while (length > 1 && path[length - 1] == '/') --length;
    return length;
}

char* putPart(char* dst, const char* part, size_t length)
{
    std::memmove(dst, part, length);
    dst[length] = 0;
    return dst;
}

const char* BaseNameP(const char* path)
{
    if (path == nullptr) return nullptr;
    const char* const slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

char* BaseNameP(char* path) { return const_cast<char*>(BaseNameP(static_cast<const char*>(path))); }

const char* Strrpbrk(const char* s, const char* set)
{
    if (s == nullptr || set == nullptr) return nullptr;
    for (const char* at = s + std::strlen(s); at != s;) {
        if (std::strchr(set, *--at) != nullptr) return at;
    }
    return nullptr;
}

char* Strrpbrk(char* s, const char* set) { return const_cast<char*>(Strrpbrk(static_cast<const char*>(s), set)); }

char* BaseName(char* src, char* dst, const char* suffix)
{
    if (src == nullptr) return nullptr;
    const size_t end = lengthWithoutTrailingSlashes(src);
    size_t begin = end;
    while (begin > 0 && src[begin - 1] != '/') --begin;

    size_t length = end - begin;
    const size_t cut = suffix != nullptr ? std::strlen(suffix) : 0;
    if (cut <= length && std::memcmp(src + end - cut, suffix != nullptr ? suffix : "", cut) == 0) length -= cut;
    return putPart(dst != nullptr ? dst : src, src + begin, length);
}
