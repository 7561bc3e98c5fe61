// prefssupport.h: what the tests of preference files share.
#ifndef TVXCMN_TESTS_PREFSSUPPORT_H
#define TVXCMN_TESTS_PREFSSUPPORT_H

#include "prefs.h"

#include <fstream>
#include <string>
#include <string_view>

inline void writeFile(const std::string& path, std::string_view text) { std::ofstream(path, std::ios::binary) << text; }

// Where the object keeps the name of its file: in the first field behind the slots.
inline const char* ownName(const PrefsC& prefs)
{
    return *reinterpret_cast<char* const*>(reinterpret_cast<const char*>(&prefs) + sizeof(void*));
}

#endif   // TVXCMN_TESTS_PREFSSUPPORT_H
