// pathname.h: paths and files by plain NUL-terminated texts, for callers that hold no FileNameC.
//
// Paths are bytes and "/" is the only separator. Unless a line says otherwise an operation returns 0, or
// -1 with the reason in errno; nothing is recorded in the error buffer. A null path is EINVAL. Opening
// and truncating is repeated while a signal interrupts it, and every descriptor is close-on-exec and
// above 2, so that it never becomes a later child's or this process's standard stream.
//
// Thread safety: any thread. Not for signal handlers.
// Ownership:     a result is the caller's buffer, unless its line says that the caller frees it.
#ifndef TVXCMN_PATHNAME_H
#define TVXCMN_PATHNAME_H

#include <cstdio>

// ---- Parts of a path. `dst` may be null or `src`, which works in place; otherwise they are apart. ----

// The text after the last "/", or all of it; inside `path`. Null gives null.
[[nodiscard]] char* BaseNameP(char* path);
[[nodiscard]] const char* BaseNameP(const char* path);

// The last character of `s` that stands in `set`, or null.
[[nodiscard]] char* Strrpbrk(char* s, const char* set);
[[nodiscard]] const char* Strrpbrk(const char* s, const char* set);

// The last component without `suffix` (may be null): "a/b.c/" gives "b.c", "/" gives "". `dst` holds
// strlen(src) + 1 bytes. Returns the buffer with the result, null for a null `src`.
char* BaseName(char* src, char* dst, const char* suffix);

// The directory with its final "/": "a/b" and "a/b/" give "a/", "/" gives "/", and "." when there is
// none. `dst` holds max(strlen(src), 1) + 1 bytes; in place, an empty `src` has no room for the "." and
// gives null, as a null one does.
char* DirName(char* src, char* dst);

// Trailing "/" dropped, but never the first character: "a/b/" gives "a/b". `dst` as for BaseName.
char* DirToFileName(char* src, char* dst);

// The directory without its final "/": "a/b/c" gives "a/b", "/a" gives "/". `dst` as for DirName.
char* DirFileName(char* src, char* dst);

// A new array, which the caller deletes with delete[]: runs of "/" made one, and trailing ones dropped
// (but never the first character). Null gives null.
[[nodiscard]] char* FixUpPath(const char* path);

// ---- Directories ----

// The length of the current directory's path, which goes into `buf` when that (not null) has room for it
// and its terminator. 0 when the system cannot tell, or for a path of 4,096 bytes and more; `buf` is
// empty then.
unsigned long GetCWD(char* buf, unsigned long size);

int Mkdir(const char* path, unsigned mode = 0777);
int Rmdir(const char* path);   // these two take "a//b/" for "a/b"
int Chdir(const char* path);

// ---- Files ----

// Makes `to` a copy of the contents of `from`; a new file gets its permission bits as well. A failure
// leaves behind what was written. Copying a file onto itself is EINVAL and does no harm.
int CmnCopyFile(const char* from, const char* to);

int RenameFile(const char* from, const char* to);   // EXDEV between file systems
int RemoveFile(const char* path);                   // never a directory

// Anything that is there, following links.
[[nodiscard]] bool FileExists(const char* path);
// In bytes, or -1.
[[nodiscard]] long FileSize(const char* path);
// What an ordinary user may still write to the file system that holds `path`, in bytes, or -1.
[[nodiscard]] long FileSpaceAvail(const char* path);

// As fopen, open and creat, with the rules at the top of this file. `mode` is fopen's.
[[nodiscard]] FILE* Fopen(const char* path, const char* mode);
[[nodiscard]] int Open(const char* path, int flags, unsigned mode = 0666);
[[nodiscard]] int Creat(const char* path, unsigned mode);

#endif   // TVXCMN_PATHNAME_H
