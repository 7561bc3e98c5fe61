#include "prefs.h"

#include "cmnlib/prefsfile.h"
#include "cmnlib/prefsmerge.h"
#include "errorapi.h"
#include "file/pathbytes.h"
#include "fileservice.h"

#include <cerrno>
#include <unistd.h>

namespace {

const int NAME_ATTEMPTS = 100;

// A new file beside `target` that holds `text`; null when it cannot be made.
std::unique_ptr<FileNameC> writeBeside(const FileNameC& target, std::string_view text, const struct stat* like)
{
    const FileNameC directory = target.getParent();
    int failure = EEXIST;   // somebody may take the name before the file is there
    for (int n = 0; n < NAME_ATTEMPTS && failure == EEXIST; ++n) {
        std::unique_ptr<FileNameC> name(FileService()->createTempFile(&directory, "pref", ".ini", 0));
        if (name == nullptr) return nullptr;
        failure = writeNewFile(name->getPath().utf8(), text, like);
        if (failure == 0) return name;
    }
    return nullptr;
}

}   // namespace

bool PrefsC::SaveOverwrite(const char* filename) { return overwriteFile(filename, PrefsMergeC::whole(*this)) == 0; }

bool PrefsC::SaveMergeAs(const char* infilename, const char* outfilename)
{
    std::string source;
    const int failure = readWholeFile(infilename, source);
    if (failure != 0 && failure != ENOENT) return false;
    return overwriteFile(outfilename, PrefsMergeC::merge(*this, source)) == 0;
}

bool PrefsC::SaveMerge(const char* filename)
{
    std::string source;
    struct stat info;
    const int failure = readWholeFile(filename, source, &info);
    if (failure != 0 && failure != ENOENT) return false;

    const FileNameC target(textOf(filename));
    const std::unique_ptr<FileNameC> replacement =
        writeBeside(target, PrefsMergeC::merge(*this, source), failure == 0 ? &info : nullptr);
    if (replacement == nullptr) return false;
    if (FileService()->rename(replacement.get(), &target) != 0) {
        ::unlink(replacement->getPath().utf8());
        return false;
    }
    syncDirectoryOf(filename);
    return true;
}

bool PrefsC::Save(const char* filename_p, bool merge, const char* mergefrom_p)
{
    if (filename_p == nullptr) filename_p = CurrentFileName_p.get();
    if (filename_p == nullptr || *filename_p == '\0') return false;
    const AutoRollbackErrorCheckpointC checkpoint;
    if (!merge) return SaveOverwrite(filename_p);
    return mergefrom_p != nullptr ? SaveMergeAs(mergefrom_p, filename_p) : SaveMerge(filename_p);
}
