#include "confapi/impl/keynames.h"

#include "cmnlib/prefstext.h"
#include "confregistry.h"
#include "stringar.h"

#include <memory>

namespace {

struct RootT {
    unsigned long key;
    const char* longName;
    const char* shortName;
};

const RootT ROOTS[] = {
    {HKEY_CLASSES_ROOT, "HKEY_CLASSES_ROOT", "HKCR"},
    {HKEY_CURRENT_USER, "HKEY_CURRENT_USER", "HKCU"},
    {HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE", "HKLM"},
    {HKEY_USERS, "HKEY_USERS", "HKU"},
    {HKEY_PERFORMANCE_DATA, "HKEY_PERFORMANCE_DATA", "HKPD"},
    {HKEY_CURRENT_CONFIG, "HKEY_CURRENT_CONFIG", "HKCC"},
    {HKEY_DYN_DATA, "HKEY_DYN_DATA", "HKDD"},
};

const RootT* findRoot(unsigned long key)
{
    for (const RootT& root : ROOTS) {
        if (root.key == key) return &root;
    }
    return nullptr;
}

bool hasBlankEnds(std::string_view text) { return prefstext::trimmed(text).size() != text.size(); }

}   // namespace

namespace keynames {

bool isStorableValue(std::string_view value)
{
    return value.find_first_of(std::string_view("\n\r\0", 3)) == std::string_view::npos;
}

bool isStorableKey(std::string_view name)
{
    return isStorableValue(name) && name.find(']') == std::string_view::npos && !hasBlankEnds(name);
}

bool isStorableValueName(std::string_view name)
{
    if (name.empty()) return true;
    return isStorableValue(name) && name.find('=') == std::string_view::npos && name.front() != ';' &&
           name.front() != '[' && !hasBlankEnds(name);
}

bool descendantOf(std::string_view path, std::string_view base, std::string_view& rest)
{
    if (path.size() <= base.size() + 1 || path[base.size()] != '\\') return false;
    if (!prefstext::areEqual(path.substr(0, base.size()), base)) return false;
    rest = path.substr(base.size() + 1);
    return true;
}

StringC withoutTrailingBackslashes(const StringC& path)
{
    std::string_view bytes = bytesOf(path);
    while (bytes.ends_with('\\')) bytes.remove_suffix(1);
    return {bytes.data(), bytes.size(), StringC::CC_VALID_UTF8};
}

std::vector<StringC> partsOf(const StringC& path)
{
    const std::unique_ptr<StringArrayC> split(path.split("\\"));
    std::vector<StringC> parts;
    for (size_t i = 0; i < split->size(); ++i) parts.push_back((*split)[i]);
    return parts;
}

StringC joined(const std::vector<StringC>& parts, size_t count)
{
    StringC path;
    for (size_t i = 0; i < count; ++i) {
        if (i > 0) path += "\\";
        path += parts[i];
    }
    return path;
}

unsigned long rootOf(const StringC& name)
{
    for (const RootT& root : ROOTS) {
        if (bytesOf(name) == root.longName || bytesOf(name) == root.shortName) return root.key;
    }
    return 0;
}

StringC longNameOf(unsigned long root)
{
    const RootT* const found = findRoot(root);
    return found != nullptr ? StringC(found->longName) : StringC();
}

StringC shortNameOf(unsigned long root)
{
    const RootT* const found = findRoot(root);
    return found != nullptr ? StringC(found->shortName) : StringC();
}

}   // namespace keynames
