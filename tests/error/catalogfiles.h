// catalogfiles.h: catalogs for tests, written byte by byte.
#ifndef TVXCMN_TESTS_CATALOGFILES_H
#define TVXCMN_TESTS_CATALOGFILES_H

#include <fstream>
#include <string>
#include <vector>

struct CatalogRowT {
    unsigned set;
    unsigned message;
    std::string text;
};

inline std::string bigEndian(unsigned long value, int size)
{
    std::string bytes;
    while (size-- > 0) bytes += static_cast<char>(value >> 8 * size);
    return bytes;
}

// The rows have to be in the order of the index.
inline std::string catalogBytes(const std::vector<CatalogRowT>& rows)
{
    std::string index;
    std::string texts;
    for (const CatalogRowT& row : rows) {
        index += bigEndian(row.set, 2) + bigEndian(row.text.size(), 2) + bigEndian(row.message, 4) +
                 bigEndian(12 + 12 * rows.size() + texts.size(), 4);
        texts += row.text;
    }
    return "openuict" + bigEndian(rows.size(), 4) + index + texts;
}

inline void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

#endif   // TVXCMN_TESTS_CATALOGFILES_H
