// findfiles: what is in directory trees, with sizes in bytes.
//
//   findfiles [--name PATTERN] [--follow] [DIRECTORY...]
//
// Prints a line "SIZE PATH" for everything below each DIRECTORY (. unless given) whose last component matches
// PATTERN, where * stands for any text and ? for a character. --follow goes through links.
// Exit status: 0; 1 a directory could not be read, or what was found not be written; 2 wrong use.

#include "fileservice.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace {

const int STATUS_INCOMPLETE = 1;
const int STATUS_USAGE = 2;

struct OptionsT {
    const char* pattern = "*";
    unsigned flags = FileListerC::Recursive;
    std::vector<const char*> directories;
};

bool parse(int argc, char** argv, OptionsT& options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--name" && i + 1 < argc) {
            options.pattern = argv[++i];
        } else if (word == "--follow") {
            options.flags |= FileListerC::FollowLinks;
        } else if (word.starts_with("--")) {
            return false;
        } else {
            options.directories.push_back(argv[i]);
        }
    }
    if (options.directories.empty()) options.directories.push_back(".");
    return true;
}

// Names need not be UTF-8: they come and go as bytes.
StringC textOf(const char* bytes) { return StringC(bytes, std::strlen(bytes), StringC::CC_VALID_UTF8); }

void print(const FileNameC& name, const FileInfoC* info)
{
    const StringC path = name.getPath();
    std::printf("%ld ", info != nullptr ? info->size() : 0);
    std::fwrite(path.utf8(), 1, path.utf8Bytes(), stdout);
    std::putchar('\n');
}

// Whether all of it could be read.
bool walk(const char* directory, const OptionsT& options)
{
    const FileNameC start(textOf(directory));
    const StringC pattern = textOf(options.pattern);
    const std::unique_ptr<FileListerI> lister(FileService()->getLister(&start, options.flags));
    bool isComplete = true;
    for (;;) {
        FileNameC* found = nullptr;
        FileInfoC* description = nullptr;
        const ErrorT error = lister->getNext(&found, &description);
        const std::unique_ptr<FileNameC> name(found);
        const std::unique_ptr<FileInfoC> info(description);
        if (error == TVXERR_FILE_NO_MORE_FILES) return isComplete;
        if (error != 0) {
            std::fprintf(stderr, "findfiles: below %s: %s\n", directory, std::strerror(static_cast<int>(error)));
            isComplete = false;
            lister->clearError();
        } else if (name != nullptr && name->matchBase(pattern)) {
            print(*name, info.get());
        }
    }
}

}   // namespace

int main(int argc, char** argv)
{
    OptionsT options;
    if (!parse(argc, argv, options)) {
        std::fputs("usage: findfiles [--name PATTERN] [--follow] [DIRECTORY...]\n", stderr);
        return STATUS_USAGE;
    }
    int status = 0;
    for (const char* const directory : options.directories) {
        if (!walk(directory, options)) status = STATUS_INCOMPLETE;
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::perror("findfiles: standard output");
        status = STATUS_INCOMPLETE;
    }
    return status;
}
