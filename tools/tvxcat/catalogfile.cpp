#include "catalogfile.h"

#include "catalogformat.h"

namespace {

const size_t MAX_FILE = 0xFFFFFFFF;   // offsets have 32 bits
const size_t MAX_SHARING = 16;        // how many times the file its texts may be, of which some may be the same bytes

}   // namespace

unsigned long keyOf(const CatalogMessageT& message) { return ErrCatalogKey(message.set, message.number); }

std::string labelOf(const CatalogMessageT& message)
{
    return "s" + std::to_string(message.set) + "m" + std::to_string(message.number);
}

std::string catalogOf(const std::vector<CatalogMessageT>& messages)
{
    const size_t indexSize = ErrCatalogEntryOffset(messages.size());
    std::string bytes(indexSize, '\0');
    size_t offset = indexSize;
    for (const CatalogMessageT& message : messages) offset += message.text.size();
    if (offset > MAX_FILE) return "";

    bytes.reserve(offset);
    WriteErrCatalogHeader(bytes.data(), static_cast<unsigned>(messages.size()));
    size_t index = 0;
    for (const CatalogMessageT& message : messages) {
        WriteErrCatalogEntry(bytes.data() + ErrCatalogEntryOffset(index++),
                             {static_cast<unsigned short>(message.set),
                              static_cast<unsigned short>(message.text.size()), message.number,
                              static_cast<unsigned>(bytes.size())});
        bytes += message.text;
    }
    return bytes;
}

std::string readCatalog(std::string_view bytes, std::vector<CatalogMessageT>& messages)
{
    unsigned count = 0;
    if (bytes.size() < ERR_CATALOG_HEADER_SIZE || !ReadErrCatalogHeader(bytes.data(), count))
        return "this is no message catalog";
    if (ErrCatalogEntryOffset(count) > bytes.size()) return "the index of the catalog is cut short";
    size_t total = 0;
    for (size_t i = 0; i < count; ++i) {
        const ErrCatalogEntryT entry = ReadErrCatalogEntry(bytes.data() + ErrCatalogEntryOffset(i));
        messages.push_back({entry.set, entry.message, ""});
        if (entry.offset > bytes.size() || entry.length > bytes.size() - entry.offset)
            return "the text of " + labelOf(messages.back()) + " lies beyond the end";
        total += entry.length;
        if (total > MAX_SHARING * bytes.size()) return "the texts of the catalog overlap too much";
        messages.back().text = bytes.substr(entry.offset, entry.length);
    }
    return "";
}

std::vector<std::string> fieldsOf(std::string_view text)
{
    std::vector<std::string> fields;
    for (;;) {
        const size_t end = text.find('\1');
        fields.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) return fields;
        text.remove_prefix(end + 1);
    }
}

bool hasVariants(std::string_view text) { return !text.empty() && text.front() == '\1'; }
