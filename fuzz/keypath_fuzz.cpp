// Keys of the registry: whether they are there, what is below them, and how their paths come apart, beside a set of
// names in lower case.

#include "fuzz.h"

#include "confapi/impl/confregini.h"
#include "string/api/textrepair.h"

#include <algorithm>
#include <set>
#include <string>

namespace {

std::string str(const StringC& text) { return {text.utf8(), text.utf8Bytes()}; }

// The sections that there are.
class ModelC {
public:
    bool has(const std::string& key) const { return m_names.count(key) > 0 || hasBelow(key); }
    bool hasBelow(const std::string& key) const
    {
        return std::any_of(m_names.begin(), m_names.end(), [&](const std::string& name) { return isBelow(name, key); });
    }
    std::set<std::string> childrenOf(const std::string& key) const
    {
        std::set<std::string> children;
        for (const std::string& name : m_names) {
            if (!isBelow(name, key)) continue;
            const size_t begin = key.size() + 1;
            children.insert(name.substr(begin, name.find('\\', begin) - begin));
        }
        children.erase("");
        return children;
    }
    void add(const std::string& key) { m_names.insert(key); }
    void remove(const std::string& key)
    {
        std::erase_if(m_names, [&](const std::string& name) { return name == key || isBelow(name, key); });
    }

private:
    static bool isBelow(const std::string& name, const std::string& key)
    {
        return name.size() > key.size() + 1 && name.starts_with(key + "\\");
    }

    std::set<std::string> m_names;
};

std::string stripped(std::string key)
{
    while (key.ends_with('\\')) key.pop_back();
    return key;
}

bool isStorable(const std::string& key)
{
    return key.find(']') == std::string::npos && !key.starts_with(' ') && !key.ends_with(' ');
}

// A registry that keeps what it is told in memory, and the model beside it. The file is never there.
class PairC {
public:
    PairC()
    {
        FUZZ_REQUIRE(m_registry.AddIniFile("/proc/none/keys.ini", "HKLM", "Base") == 0);
        FUZZ_REQUIRE(m_registry.SetWriteThrough(false) == 0);
        FUZZ_REQUIRE(m_registry.OpenKey(HKEY_LOCAL_MACHINE, "base", KEY_READ, &m_base) == 0);
    }

    void create(const std::string& key)
    {
        const std::string name = stripped(lower(key));
        const bool isThere = isOpenable(key);
        const bool isPossible = isThere || isStorable(name);
        const ErrorT result = m_registry.CreateKey(m_base, key.c_str(), nullptr);
        FUZZ_REQUIRE(result == (isPossible ? 0 : TVXERR_REGISTRY_INVALID_ARGUMENT));
        if (result == 0 && !isThere) m_model.add(name);
    }
    void remove(const std::string& key, bool withAll)
    {
        const std::string name = found(key);
        const bool isKept = !withAll && isOpenable(key) && (name.empty() || m_model.hasBelow(name));
        const ErrorT expected = isKept ? TVXERR_REGISTRY_NOT_EMPTY : isOpenable(key) ? 0 : TVXERR_REGISTRY_NOT_FOUND;
        FUZZ_REQUIRE(m_registry.DeleteKey(m_base, key.c_str(), withAll) == expected);
        if (!name.empty() && !isKept) m_model.remove(name);
    }
    void check(const std::string& key)
    {
        unsigned long handle = 0;
        const ErrorT result = m_registry.StartEnumerate(m_base, key.c_str(), &handle);
        FUZZ_REQUIRE((result == 0) == isOpenable(key));
        if (result != 0) return;
        const std::string name = found(key);
        std::set<std::string> children;
        StringC child;
        unsigned long count = 0;
        while (m_registry.GetEnumeratedKey(handle, count, &child) == 0) {
            children.insert(lower(str(child)));
            ++count;
        }
        FUZZ_REQUIRE(children.size() == count);
        FUZZ_REQUIRE(children == (name.empty() ? std::set<std::string>() : m_model.childrenOf(name)));
        FUZZ_REQUIRE(m_registry.EndEnumerate(handle) == 0);
    }

private:
    static std::string lower(const std::string& key) { return str(StringC(key.c_str()).asLower()); }

    // The name by which the key is there; empty for the base, and for none.
    std::string found(const std::string& key) const
    {
        const std::string exact = lower(key);
        if (m_model.has(exact)) return exact;
        return m_model.has(stripped(exact)) ? stripped(exact) : "";
    }
    bool isOpenable(const std::string& key) const { return stripped(key).empty() || !found(key).empty(); }

    ConfRegistryIniC m_registry;
    ModelC m_model;
    unsigned long m_base = 0;
};

void checkComponents(const std::string& text)
{
    ConfRegistryIniC registry;
    const StringC path = repairedText(text);
    const std::string bytes = str(path);
    unsigned long root = 0;
    StringC subKey;
    StringC name;
    if (registry.ExtractKeyComponents(path, &root, &subKey, &name) != 0) return;
    const std::string rest = str(subKey) + str(name);
    const std::string front = bytes.substr(0, bytes.size() - rest.size());
    FUZZ_REQUIRE(bytes.ends_with("\\" + rest) && name.find('\\') < 0);
    FUZZ_REQUIRE(front == str(registry.HKEYToLongString(root)) + "\\" ||
                 front == str(registry.HKEYToShortString(root)) + "\\");
    StringC all;
    FUZZ_REQUIRE(registry.ExtractKeyComponents(path, nullptr, &all, nullptr) == 0 && str(all) == rest);
}

// Few different characters, so that keys meet.
std::string keyOf(std::string_view bytes)
{
    static const char* const LETTERS[] = {"a", "A", "b", "\\", "\\", "\\", "]", " ", "\xC3\x84", "\xC3\xA4"};
    std::string key;
    for (const char byte : bytes) key += LETTERS[static_cast<unsigned char>(byte) % std::size(LETTERS)];
    return key;
}

}   // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInputC input(data, size);
    std::string path(input.bytes(input.below(32)));
    std::replace(path.begin(), path.end(), '\0', '0');   // where texts may end
    checkComponents("HKLM" + path);
    PairC pair;
    while (!input.isEmpty()) {
        const unsigned action = input.below(5);
        const std::string key = keyOf(input.bytes(input.below(12)));
        switch (action) {
        case 0: pair.remove(key, true); break;
        case 1: pair.check(key); break;
        case 2: pair.remove(key, false); break;
        default: pair.create(key); break;
        }
    }
    return 0;
}
