// inputfile.h: files that are read whole.
#ifndef TOOLS_INPUTFILE_H
#define TOOLS_INPUTFILE_H

#include <cerrno>
#include <cstdio>
#include <string>

// Appends what is still to be read. False, with errno, when reading fails.
inline bool readRest(std::FILE* file, std::string& content)
{
    char chunk[65536];
    for (size_t n; (n = std::fread(chunk, 1, sizeof chunk, file)) > 0;) content.append(chunk, n);
    return std::ferror(file) == 0;
}

// False, with errno, when the file cannot be read to its end.
inline bool readFile(const std::string& path, std::string& content)
{
    std::FILE* const file = std::fopen(path.c_str(), "re");
    if (file == nullptr) return false;
    const bool isRead = readRest(file, content);
    const int error = errno;
    std::fclose(file);
    errno = error;
    return isRead;
}

#endif   // TOOLS_INPUTFILE_H
