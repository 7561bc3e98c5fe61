#include "mounts.h"

#include "../support/inputfile.h"
#include "../support/utf8text.h"
#include "inilines.h"
#include "names.h"

#include "configuration.h"
#include "confregistry.h"
#include "tvxcmn.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

std::string_view withoutBackslashes(std::string_view key)
{
    while (!key.empty() && key.back() == '\\') key.remove_suffix(1);
    return key;
}

std::string withoutEmptyParts(std::string key)
{
    const auto areBackslashes = [](char a, char b) { return a == '\\' && b == '\\'; };
    key.erase(std::unique(key.begin(), key.end(), areBackslashes), key.end());
    return std::string(withoutBackslashes(key));
}

// Empty for what is no root's name.
std::string longRootOf(std::string_view name)
{
    if (validUtf8(name) != name.size()) return "";
    ConfRegistryI* const registry = getConfiguration(2)->registry();
    return registry->HKEYToLongString(registry->StringToHKEY(StringC(std::string(name).c_str()))).utf8();
}

// Slashes become backslashes, each run of them one.
std::string fromSlashes(std::string_view text)
{
    std::string key;
    for (const char ch : text) {
        if (ch != '/') {
            key += ch;
        } else if (!key.empty() && key.back() != '\\') {
            key += '\\';
        }
    }
    return std::string(withoutBackslashes(key));
}

}   // namespace

std::string keyOf(std::string_view text)
{
    const std::string key = text.find('\\') == std::string_view::npos ? fromSlashes(text) : std::string(text);
    const size_t end = std::min(key.find('\\'), key.size());
    const std::string root = longRootOf(std::string_view(key).substr(0, end));
    return root.empty() ? "" : root + key.substr(end);
}

bool isBelow(std::string_view key, std::string_view base, std::string& section)
{
    if (key.size() <= base.size() + 1 || key[base.size()] != '\\') return false;
    if (!areEqualNames(key.substr(0, base.size()), base)) return false;
    section = key.substr(base.size() + 1);
    return true;
}

bool isAtOrAbove(std::string_view key, std::string_view base)
{
    std::string rest;
    return areEqualNames(key, base) || isBelow(base, key, rest);
}

std::string MountsC::add(const std::string& text, const std::string& folder)
{
    const size_t equals = text.find('=');
    const std::string_view whole(text);
    const std::string_view file = equals != std::string::npos ? trimmed(whole.substr(equals + 1)) : "";
    if (file.empty()) return "is not KEY=FILE";
    MountT mount{withoutEmptyParts(keyOf(trimmed(whole.substr(0, equals)))), std::string(file)};
    if (mount.base.empty()) return "begins with no root key";
    if (mount.file[0] != '/') mount.file.insert(0, folder);
    for (const MountT& other : m_mounts) {
        if (other.file == mount.file) return "the file is mounted twice";
        if (areEqualNames(other.base, mount.base)) return "the key is mounted twice";
    }
    m_mounts.push_back(mount);
    return "";
}

int MountsC::addFile(const std::string& path)
{
    std::string content;
    if (!readFile(path, content)) return failed(STATUS_UNREADABLE, path, std::strerror(errno));
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    std::string_view rest = withoutMark(content);
    std::string_view line;
    for (size_t number = 1; nextLine(rest, line); ++number) {
        const std::string text(trimmed(line));
        if (text.empty() || text[0] == ';' || text[0] == '#') continue;
        const std::string fault = add(text, folder);
        if (!fault.empty()) return failed(STATUS_UNREADABLE, path + ":" + std::to_string(number), fault);
    }
    return STATUS_DONE;
}

const MountT* MountsC::holderOf(std::string_view key, std::string& section) const
{
    const std::string_view bare = withoutBackslashes(key);
    for (const MountT& mount : m_mounts) {
        if (isAtOrAbove(bare, mount.base)) return nullptr;
    }
    for (const MountT& mount : m_mounts) {
        if (isBelow(key, mount.base, section)) return &mount;
    }
    return nullptr;
}

int loadFile(const std::string& path, PrefsC& contents)
{
    if (contents.Load(path.c_str()) || errno == ENOENT) return STATUS_DONE;
    return failed(STATUS_UNREADABLE, path, errno == EINVAL ? "not a regular file" : std::strerror(errno));
}

void settleSection(const PrefsC& contents, std::string& section)
{
    if (contents.FindSection(section.c_str()) == nullptr) section = withoutBackslashes(section);
}
