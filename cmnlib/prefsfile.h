// prefsfile.h: whole files, read and written so that nothing is lost: every failure shows, and a file is replaced by
// one that is complete and on the disk.
//
// Functions that return an int give 0 or an errno and record nothing.
//
// Thread safety: any thread.
#ifndef TVXCMN_CMNLIB_PREFSFILE_H
#define TVXCMN_CMNLIB_PREFSFILE_H

#include <string>
#include <string_view>
#include <sys/stat.h>

// Reads a file to its end. `info` (may be null) gets what the system knew about it before. What is no regular file is
// EINVAL or EISDIR, and never waited for; UTF-16 is EILSEQ; more than 64 MiB are EFBIG, and not written either.
int readWholeFile(const char* path, std::string& text, struct stat* info = nullptr);

// Empties a file, or makes it, and writes it in place. One that another process holds locked is EAGAIN.
int overwriteFile(const char* path, std::string_view text);

// Makes a file that nothing goes by yet, not even a link (EEXIST), writes it and has it on the disk. Until it is
// complete nobody else may read it; then it gets the permissions of `like` and, as far as the process may, its owner
// and group. `like` null: it has those of a new file from the start. A file that cannot be completed is removed again.
int writeNewFile(const char* path, std::string_view text, const struct stat* like);

// Has the names of the directory in which `path` stands on the disk, where the system can do that. Who has just given a
// file its name has nothing to take back: a failure only means that a power cut may.
void syncDirectoryOf(const char* path);

#endif   // TVXCMN_CMNLIB_PREFSFILE_H
