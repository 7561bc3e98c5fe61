// keynames.h: what the names of keys and values may be, and how paths are taken apart.
//
// Thread safety: pure functions, any thread.
#ifndef TVXCMN_CONFAPI_KEYNAMES_H
#define TVXCMN_CONFAPI_KEYNAMES_H

#include "string/impl/textview.h"
#include "stringc.h"

#include <string_view>
#include <vector>

namespace keynames {

// Terminated, and good until the text changes.
inline std::string_view bytesOf(const StringC& text)
{
    const TextViewT view(text.impl());
    return {reinterpret_cast<const char*>(view.begin), view.size};
}

// A name that holds U+0000 is nobody's: files would be searched for what stands in front of it.
inline bool isCut(std::string_view name) { return name.find('\0') != std::string_view::npos; }

// Whether a file with it, as the name of a section, as the name of a value and as a value, reads back.
bool isStorableKey(std::string_view name);
bool isStorableValueName(std::string_view name);
bool isStorableValue(std::string_view value);

// Whether `path` lies below `base`; `rest` is then what follows behind the backslash.
bool descendantOf(std::string_view path, std::string_view base, std::string_view& rest);

StringC withoutTrailingBackslashes(const StringC& path);
std::vector<StringC> partsOf(const StringC& path);   // without the empty ones
StringC joined(const std::vector<StringC>& parts, size_t count);

// The roots. 0, or an empty name, for what is none.
unsigned long rootOf(const StringC& name);
StringC longNameOf(unsigned long root);
StringC shortNameOf(unsigned long root);

}   // namespace keynames

#endif   // TVXCMN_CONFAPI_KEYNAMES_H
