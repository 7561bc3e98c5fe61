// filesupport.h: what the tests of files share.
#ifndef TVXCMN_TESTS_FILESUPPORT_H
#define TVXCMN_TESTS_FILESUPPORT_H

#include "file/pathbytes.h"
#include "filename.h"

#include <string>

inline std::string str(const StringC& text) { return std::string(bytesOf(text)); }
inline std::string str(const FileNameC& name) { return str(name.getPath()); }
inline FileNameC named(std::string_view path) { return FileNameC(textOf(path)); }

#endif   // TVXCMN_TESTS_FILESUPPORT_H
