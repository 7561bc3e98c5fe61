// Look-ups in a catalog of any bytes, against a plain reading of the format.

#include "error/api/catalog.h"

#include "fuzz.h"

#include <sys/mman.h>
#include <unistd.h>

namespace {

const size_t HEADER = 12;
const size_t ENTRY = 12;

// Of a position beyond the end: nothing.
bool number(std::string_view file, size_t at, size_t size, unsigned long& value)
{
    if (at + size > file.size()) return false;
    value = 0;
    for (const char byte : file.substr(at, size)) value = value << 8 | static_cast<unsigned char>(byte);
    return true;
}

bool expected(std::string_view file, ErrorT err, std::string_view& text)
{
    unsigned long count = 0;
    if (file.substr(0, 8) != "openuict" || !number(file, 8, 4, count) || (err >> 29 & 1) == 0) return false;
    const unsigned long wantedSet = static_cast<unsigned long>(err) >> 16 & 0xFFF;
    const unsigned long wanted = static_cast<unsigned long>(err) & 0xFFFF;
    long low = 0;
    long high = static_cast<long>(count) - 1;
    while (low <= high) {
        const long middle = (low + high) / 2;
        const size_t at = HEADER + ENTRY * static_cast<size_t>(middle);
        unsigned long set = 0, length = 0, message = 0, offset = 0;
        if (!number(file, at, 2, set) || !number(file, at + 2, 2, length) || !number(file, at + 4, 4, message) ||
            !number(file, at + 8, 4, offset)) {
            return false;
        }
        if (set == wantedSet && message == wanted) {
            text = {};
            if (length == 0) return true;   // wherever it is said to be
            if (offset + length > file.size()) return false;
            text = file.substr(offset, length);
            text = text.substr(0, text.find('\0'));
            return true;
        }
        if (set < wantedSet || (set == wantedSet && message < wanted)) {
            low = middle + 1;
        } else {
            high = middle - 1;
        }
    }
    return false;
}

void requireLookUp(ErrCatalogC& catalog, std::string_view file, ErrorT err)
{
    std::string_view text;
    std::string_view found;
    std::string buffer;
    const bool isThere = expected(file, err, text);
    FUZZ_REQUIRE(catalog.lookup(err, found, buffer) == isThere);
    if (isThere) FUZZ_REQUIRE(found == text);
    ErrSevT sev = static_cast<ErrSevT>(-1);
    const StringC message = catalog.getMessage(sev, err, "{w}x", nullptr);
    FUZZ_REQUIRE(sev >= ERR_SEV_NONE && sev <= ERR_SEV_FATAL);
    FUZZ_REQUIRE(isThere || message == StringC("x"));
    StringC kept;
    FUZZ_REQUIRE(catalog.message(err, kept, sev) == isThere);
    FUZZ_REQUIRE(!isThere || kept == message);
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const int fd = memfd_create("catalog", MFD_CLOEXEC);
    static const StringC path(("/proc/self/fd/" + std::to_string(fd)).c_str());
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    FUZZ_REQUIRE(ftruncate(fd, 0) == 0 && pwrite(fd, data, size, 0) == static_cast<ssize_t>(size));

    ErrCatalogC catalog(path);
    for (const ErrorT err : {0xE0000000L, 0xE0010001L, 0xEFFFFFFFL, 0xC0010001L}) requireLookUp(catalog, file, err);
    unsigned long set = 0, message = 0;
    for (size_t at = HEADER; at < HEADER + 16 * ENTRY; at += ENTRY) {
        if (!number(file, at, 2, set) || !number(file, at + 4, 4, message)) break;
        requireLookUp(catalog, file, static_cast<ErrorT>(0xE0000000UL | (set & 0xFFF) << 16 | (message & 0xFFFF)));
    }
    return 0;
}
