// catalogfile.h: message catalogs as a whole, to and from their bytes (catalogformat.h).
//
// Thread safety: pure functions, any thread.
#ifndef TVXCAT_CATALOGFILE_H
#define TVXCAT_CATALOGFILE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct CatalogMessageT {
    uint32_t set;   // at most MAX_SET
    uint32_t number;
    std::string text;
};
const uint32_t MAX_SET = 0xFFFF;

// The order of messages in a catalog; no two of them share a key.
unsigned long keyOf(const CatalogMessageT& message);

// "s203m16"
std::string labelOf(const CatalogMessageT& message);

// The catalog of messages that are sorted and whose texts fit; they lie behind each other in that order. Empty
// when they are too much for one file.
std::string catalogOf(const std::vector<CatalogMessageT>& messages);

// Reads a catalog; what is wrong with it, or "".
std::string readCatalog(std::string_view bytes, std::vector<CatalogMessageT>& messages);

// The fields of a text, or of the variants in it: what lies between the bytes 1.
std::vector<std::string> fieldsOf(std::string_view text);

// Whether a text holds variants. Then its fields, after an empty one, are five for each.
bool hasVariants(std::string_view text);
const size_t VARIANT_FIELDS = 5;

#endif   // TVXCAT_CATALOGFILE_H
