// namemaker.h: file names out of bytes that are known to be in order already.
#ifndef TVXCMN_FILE_NAMEMAKER_H
#define TVXCMN_FILE_NAMEMAKER_H

#include "file/pathbytes.h"
#include "filename.h"

class FileNameMakerC {
public:
    // A name of a path that is normalised as it stands.
    static FileNameC make(std::string_view normalised, bool isAbsolute)
    {
        FileNameC name;
        if (!normalised.empty()) name.path = textOf(normalised);
        name.is_absolute = isAbsolute;
        return name;
    }

    // Makes `result` the name `name` below `base`, as ComposeName does. `base` stands without the "/" that it
    // begins with when `isBaseAbsolute`. Neither lies in `result`'s own text.
    static void compose(FileNameC& result, std::string_view base, bool isBaseAbsolute, std::string_view name);

    // `entry`, one component, below `parent`, as the constructor from a parent and a name makes it. New.
    static FileNameC* makeChild(const FileNameC& parent, std::string_view entry);

    // Good until `name` changes.
    static std::string_view bytes(const FileNameC& name) { return bytesOf(name.path); }
};

#endif   // TVXCMN_FILE_NAMEMAKER_H
