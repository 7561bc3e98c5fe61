// mounts.h: which INI file holds which part of the registry.
//
// It follows the registry's rules: a file holds what lies below its base key; of several the first one that is
// mounted; and the keys from a root down to a base hold no values. Keys are whole paths, from the long name of
// their root on, with backslashes.
#ifndef TVXREG_MOUNTS_H
#define TVXREG_MOUNTS_H

#include "prefs.h"
#include "status.h"

#include <deque>
#include <string>
#include <string_view>
#include <vector>

struct MountT {
    std::string base;
    std::string file;
};

// The key that a user names: with the short or long name of a root, and with slashes when there is no backslash
// in it. Empty when it begins with no root.
std::string keyOf(std::string_view text);

// Whether `key` lies below `base`, as which section then.
bool isBelow(std::string_view key, std::string_view base, std::string& section);
// Whether `key` is `base` or lies above it.
bool isAtOrAbove(std::string_view key, std::string_view base);

class MountsC {
public:
    // "KEY=FILE". The result is what is wrong with it, or "". A relative FILE is one of `folder`.
    std::string add(const std::string& text, const std::string& folder);
    // Lines like that; empty ones and those that begin with ";" or "#" do not count.
    int addFile(const std::string& path);

    // The mount that holds the values of a key; null when none does.
    const MountT* holderOf(std::string_view key, std::string& section) const;
    const std::deque<MountT>& all() const { return m_mounts; }

private:
    std::deque<MountT> m_mounts;   // whose addresses stay
};

// Loads a file; one that is missing is empty. Otherwise, tells why it cannot be read.
int loadFile(const std::string& path, PrefsC& contents);

// A backslash that a path ends with counts only when the file has such a section.
void settleSection(const PrefsC& contents, std::string& section);

#endif   // TVXREG_MOUNTS_H
