// fileattributes.h: what the system knows about a file, and changing it. Null names and names that the
// system cannot take are EINVAL.
//
// Functions that return an int give 0 or an errno and record nothing.
#ifndef TVXCMN_FILE_FILEATTRIBUTES_H
#define TVXCMN_FILE_FILEATTRIBUTES_H

#include "fileinfo.h"
#include "filename.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace fileattributes {

enum class LinksT { FOLLOWED, SEEN };   // what is asked about: what a link leads to, or the link

// The path of a name as the system takes it: it would cut one that holds U+0000.
class PathC {
public:
    explicit PathC(const FileNameC* name) : m_text(name != nullptr ? name->getPath() : StringC()), m_isNamed(name) {}

    // 0, or EINVAL.
    int failure() const { return m_isNamed && std::strlen(m_text.utf8()) == m_text.utf8Bytes() ? 0 : EINVAL; }
    const char* c_str() const { return m_text.utf8(); }
    const StringC& text() const { return m_text; }

private:
    const StringC m_text;
    const bool m_isNamed;
};

int read(const FileNameC* name, LinksT links, struct stat& info);
FileInfoC infoOf(const struct stat& info);

// Whether there is a file, of the kind S_IF... in `type`; 0 stands for any.
bool isThere(const FileNameC* name, LinksT links, mode_t type);
bool isReadOnly(const FileNameC* name);   // its owner may not write to it
// Whether this process may, with the rights that it has at the moment.
bool isReadable(const FileNameC* name);
bool isWritable(const FileNameC* name);

// Nobody may write any more; or everybody who may read.
int setReadOnly(const FileNameC* name, bool isReadOnly);
int setLastModified(const FileNameC* name, time_t when);
// Owner, group and permissions.
int clone(const FileNameC* from, const FileNameC* to);

// Bytes that this user may still write to the file system that holds the file.
int diskFree(const FileNameC* name, FileSizeT& bytes);
int readLink(const FileNameC* name, FileNameC& target);

}   // namespace fileattributes

#endif   // TVXCMN_FILE_FILEATTRIBUTES_H
