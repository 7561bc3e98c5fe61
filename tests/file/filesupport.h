// filesupport.h: what the tests of files share.
#ifndef TVXCMN_TESTS_FILESUPPORT_H
#define TVXCMN_TESTS_FILESUPPORT_H

#include "errorapi.h"
#include "file/pathbytes.h"
#include "filename.h"
#include "tvxcmn.h"

#include <string>
#include <vector>

inline std::string str(const StringC& text) { return std::string(bytesOf(text)); }
inline std::string str(const FileNameC& name) { return str(name.getPath()); }
inline FileNameC named(std::string_view path) { return FileNameC(textOf(path)); }

// What the calling thread has reported since it was asked last.
inline std::vector<ErrorT> recordedErrors()
{
    ErrBufI* const buffer = getErrBuf(2);
    std::vector<ErrorT> errors;
    for (unsigned long i = 0; i < buffer->count(); ++i) errors.push_back(buffer->get(i)->error());
    buffer->reset();
    return errors;
}

#endif   // TVXCMN_TESTS_FILESUPPORT_H
