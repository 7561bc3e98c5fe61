// pathbytes.h: paths as bytes, for everything in this folder that would otherwise make a text for each
// step. A "/" is never a part of another character, so bytes are all that paths need.
#ifndef TVXCMN_FILE_PATHBYTES_H
#define TVXCMN_FILE_PATHBYTES_H

#include "filename.h"

#include <cstddef>
#include <memory>
#include <string_view>

// Good until `text` changes.
inline std::string_view bytesOf(const StringC& text) { return {text.utf8(), text.utf8Bytes()}; }

// Bytes that come from the system or from another text, and that need not be UTF-8.
inline StringC textOf(std::string_view bytes)
{
    return bytes.empty() ? StringC() : StringC(bytes.data(), bytes.size(), StringC::CC_VALID_UTF8);
}

// The last component.
inline std::string_view baseOf(std::string_view path) { return path.substr(path.rfind('/') + 1); }

// The path before the last "/", or nothing.
inline std::string_view parentOf(std::string_view path)
{
    const size_t slash = path.rfind('/');
    return path.substr(0, slash == std::string_view::npos ? 0 : slash);
}

// Whether `path` is `base` or lies below it. Both normalised; everything lies below an empty base.
inline bool isAtOrBelow(std::string_view path, std::string_view base)
{
    if (!path.starts_with(base)) return false;
    return base.empty() || path.size() == base.size() || path[base.size()] == '/';
}

// A terminated path in the making, for which a caller's stack mostly has room.
class PathBufferC {
public:
    // Room for `capacity` bytes, and no more.
    explicit PathBufferC(size_t capacity)
    {
        if (capacity < sizeof m_small) return;
        m_large.reset(new char[capacity + 1]);
        m_begin = m_large.get();
    }
    PathBufferC(const PathBufferC&) = delete;
    PathBufferC& operator=(const PathBufferC&) = delete;

    void append(char byte) { m_begin[m_size++] = byte; }
    void append(std::string_view bytes)
    {
        std::memcpy(m_begin + m_size, bytes.data(), bytes.size());
        m_size += bytes.size();
    }
    void resize(size_t size) { m_size = size; }

    char* begin() { return m_begin; }
    char* end() { return m_begin + m_size; }
    size_t size() const { return m_size; }
    std::string_view bytes() const { return {m_begin, m_size}; }
    const char* terminated()
    {
        m_begin[m_size] = 0;
        return m_begin;
    }

private:
    char m_small[1024];
    std::unique_ptr<char[]> m_large;
    char* m_begin = m_small;
    size_t m_size = 0;
};

// Makes runs of "/" in `text`, which does not begin with one, a single one, and drops what stands at the
// end. Returns the new size.
size_t collapseSlashes(char* text, size_t size);

// Where in `text` the first "/" stands that is followed by another one or by nothing; npos when all is
// well.
size_t findDoubledSlash(std::string_view text);

// Writes the canonical form of a normalised path, see FileNameC::getCanonicalPath, to `out`, which has
// room for as many bytes; returns its size.
size_t canonicalise(std::string_view path, char* out);

// FileNameC::wildcardMatch over bytes.
bool matchesWildcard(std::string_view name, std::string_view pattern, bool isCaseSensitive);

// How many bytes the character at the front of `text` has; a byte that belongs to none is one of its own.
// `text` is not empty.
size_t characterSize(std::string_view text);

#endif   // TVXCMN_FILE_PATHBYTES_H
