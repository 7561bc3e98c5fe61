// catalogformat.h: how a message catalog lies in its file, for who reads one and for who makes one.
//
// All numbers are big-endian.
//
//     offset      size     what
//     0           8        "openuict"
//     8           4        N, how many entries the index has
//     12          12 x N   the index, ascending by set, then by message number
//     ...                  the texts, at the offsets that the entries give
//
//     an entry    0        2    set: the message set
//                 2        2    length: the text's size in bytes
//                 4        4    message: the message number
//                 8        4    offset: where the text is, from the start of the file
//
// A text is UTF-8 without a terminator; it ends at its first zero byte if it has one. errorapi.h tells what may
// stand in it.
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_CATALOGFORMAT_H
#define TVXCMN_CATALOGFORMAT_H

#include <cstddef>
#include <cstring>

constexpr char ERR_CATALOG_MAGIC[] = "openuict";
constexpr size_t ERR_CATALOG_MAGIC_SIZE = sizeof ERR_CATALOG_MAGIC - 1;
constexpr size_t ERR_CATALOG_HEADER_SIZE = ERR_CATALOG_MAGIC_SIZE + 4;
constexpr size_t ERR_CATALOG_ENTRY_SIZE = 12;
constexpr size_t ERR_CATALOG_MAX_TEXT = 0xFFFF;   // bytes of one text

struct ErrCatalogEntryT {
    unsigned short set;
    unsigned short length;
    unsigned message;
    unsigned offset;
};

// Where entry number `index` begins.
constexpr unsigned long ErrCatalogEntryOffset(unsigned long index) noexcept
{
    return ERR_CATALOG_HEADER_SIZE + ERR_CATALOG_ENTRY_SIZE * index;
}

// The order of the index.
constexpr unsigned long ErrCatalogKey(unsigned set, unsigned message) noexcept
{
    return static_cast<unsigned long>(set) << 32 | message;
}

// Reads a header of ERR_CATALOG_HEADER_SIZE bytes; false if it is not that of a catalog.
inline bool ReadErrCatalogHeader(const char* bytes, unsigned& count) noexcept
{
    if (std::memcmp(bytes, ERR_CATALOG_MAGIC, ERR_CATALOG_MAGIC_SIZE) != 0) return false;
    std::memcpy(&count, bytes + ERR_CATALOG_MAGIC_SIZE, sizeof count);
    count = __builtin_bswap32(count);
    return true;
}

inline void WriteErrCatalogHeader(char* bytes, unsigned count) noexcept
{
    std::memcpy(bytes, ERR_CATALOG_MAGIC, ERR_CATALOG_MAGIC_SIZE);
    count = __builtin_bswap32(count);
    std::memcpy(bytes + ERR_CATALOG_MAGIC_SIZE, &count, sizeof count);
}

// Read and write an entry of ERR_CATALOG_ENTRY_SIZE bytes.
inline ErrCatalogEntryT ReadErrCatalogEntry(const char* bytes) noexcept
{
    ErrCatalogEntryT entry;
    std::memcpy(&entry, bytes, sizeof entry);
    return {__builtin_bswap16(entry.set), __builtin_bswap16(entry.length), __builtin_bswap32(entry.message),
            __builtin_bswap32(entry.offset)};
}

inline void WriteErrCatalogEntry(char* bytes, const ErrCatalogEntryT& entry) noexcept
{
    const ErrCatalogEntryT swapped = {__builtin_bswap16(entry.set), __builtin_bswap16(entry.length),
                                      __builtin_bswap32(entry.message), __builtin_bswap32(entry.offset)};
    std::memcpy(bytes, &swapped, sizeof swapped);
}

static_assert(sizeof(ErrCatalogEntryT) == ERR_CATALOG_ENTRY_SIZE, "an entry in memory is laid out as one in the file");
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the numbers of a file are swapped");

#endif   // TVXCMN_CATALOGFORMAT_H
