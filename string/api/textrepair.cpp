#include "string/api/textrepair.h"

#include "string/api/utfkernels.h"

namespace {

const UCS4 REPLACEMENT = 0xFFFD;

StringC wellFormedText(std::string_view bytes) { return {bytes.data(), bytes.size(), StringC::CC_VALID_UTF8}; }

size_t wellFormedPrefix(std::string_view bytes)
{
    return utfkernels::validPrefix(reinterpret_cast<const UTF8T*>(bytes.data()), bytes.size(), nullptr);
}

}   // namespace

StringC repairedText(std::string_view bytes)
{
    if (wellFormedPrefix(bytes) == bytes.size()) return wellFormedText(bytes);
    StringC text;
    while (!bytes.empty()) {
        const size_t good = wellFormedPrefix(bytes);
        text += wellFormedText(bytes.substr(0, good));
        bytes.remove_prefix(good);
        if (bytes.empty()) break;
        text += REPLACEMENT;
        bytes.remove_prefix(1);
    }
    return text;
}
