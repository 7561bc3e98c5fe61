#include "fileservice.h"

#include "arglist.h"
#include "assertfatal.h"
#include "file/fileattributes.h"
#include "file/fileopen.h"
#include "file/pathbytes.h"

#include <cstdlib>
#include <memory>
#include <string>
#include <sys/random.h>

namespace {

const long LAST_ATTEMPT = 0x7FFFFFFE;
const int RANDOM_ATTEMPTS = 238328;   // 62 to the third, as for the names of the C library
const size_t PREFIX_SIZE = 5;
const size_t RANDOM_SIZE = 6;

// 0: nothing goes by this name. EEXIST, or why that cannot be told.
int checkFree(const FileNameC& name)
{
    struct stat info;
    const int failure = fileattributes::read(&name, fileattributes::LinksT::SEEN, info);
    if (failure == ENOENT) return 0;
    return failure == 0 ? EEXIST : failure;
}

std::string temporaryDirectory()
{
    const char* const wanted = ::secure_getenv("TMPDIR");
    struct stat info;
    if (wanted != nullptr && ::stat(wanted, &info) == 0 && S_ISDIR(info.st_mode)) return wanted;
    return "/tmp";
}

// False when the system has none to give.
bool addRandomCharacters(std::string& text)
{
    static const char ALPHABET[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    unsigned char bytes[RANDOM_SIZE];
    if (retryOnEintr([&] { return ::getrandom(bytes, sizeof bytes, 0); }) != sizeof bytes) return false;
    for (const unsigned char byte : bytes) text += ALPHABET[byte % (sizeof ALPHABET - 1)];
    return true;
}

FileNameC* findTemporaryName(std::string_view prefix)
{
    const std::string begin = temporaryDirectory() + "/" + std::string(prefix.substr(0, PREFIX_SIZE));
    int failure = EEXIST;
    for (int n = 0; n < RANDOM_ATTEMPTS && failure == EEXIST; ++n) {
        std::string path = begin;
        if (!addRandomCharacters(path)) return nullptr;
        auto name = std::make_unique<FileNameC>(textOf(path));
        failure = checkFree(*name);
        if (failure == 0) return name.release();
    }
    return nullptr;
}

}   // namespace

FileNameC* FlnFileServiceC::createTempFile(const StringC& prefix, const StringC&)
{
    FileNameC* const name = findTemporaryName(bytesOf(prefix));
    (void)TVX_CHECK(name != nullptr, "Failed 'tempnam' call to create temporary filename!");
    return name;
}

FileNameC* FlnFileServiceC::createTempFile(const FileNameC* dir, const StringC& prefix, const StringC& suffix,
                                           unsigned char create)
{
    const OpeningT opening = {FileStreamC::FMODE_CREATENEW, FileStreamC::FACCESS_WRITE, FileStreamC::SHARE_NONE, false,
                              0};
    for (long n = 0; TVX_CHECK(n <= LAST_ATTEMPT, "Too many temporary files!"); ++n) {
        // The numbers are those that the application's own seed gives.
        const StringC text = StringC::format("%S%d%S", ArgListC() << prefix << std::rand() << suffix);   // NOLINT
        auto name = dir != nullptr ? std::make_unique<FileNameC>(dir, text) : std::make_unique<FileNameC>(text);
        FdOwnerC file;
        const int failure = create != 0 ? openPlainly(name->getPath(), opening, file) : checkFree(*name);
        if (failure == 0 || (create == 0 && failure != EEXIST)) return name.release();
        if (failure == EEXIST) continue;
        reportOpenFailure(failure, name->getPath());
        return nullptr;
    }
    return nullptr;
}
