// confregini.h: the registry over INI files (confregistry.h).
//
// Handles lead to entries of a table. The roots and the keys between a root and a file's base key are there for
// good and held by no file; other keys while they are open.
//
// Thread safety: latched, by one latch for all registries of the process: the lock files between processes do not
// tell two of their threads apart.
#ifndef TVXCMN_CONFAPI_CONFREGINI_H
#define TVXCMN_CONFAPI_CONFREGINI_H

#include "confapi/impl/confreginifile.h"
#include "confapi/impl/confregkey.h"
#include "confapi/impl/keyplace.h"
#include "confregistry.h"
#include "contemplate.h"
#include "hashmap.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class ConfRegistryIniC : public ConfRegistryI {
public:
    ConfRegistryIniC();
    ~ConfRegistryIniC() override;
    ConfRegistryIniC(const ConfRegistryIniC&) = delete;
    ConfRegistryIniC& operator=(const ConfRegistryIniC&) = delete;

    ErrorT ExistsBytes(unsigned long hKey, StringC subKey, StringC valueName, unsigned long* handle,
                       unsigned long samDesired) override;
    ErrorT ReadBytes(unsigned long hKey, StringC subKey, StringC valueName, unsigned char* value, unsigned long* size,
                     unsigned long* type) override;
    ErrorT ReadString(unsigned long hKey, StringC subKey, StringC valueName, StringC* value) override;
    ErrorT ReadStringArray(unsigned long hKey, StringC subKey, StringC valueName, StringArrayC** value) override;
    ErrorT ReadDWord(unsigned long hKey, StringC subKey, StringC valueName, unsigned long* value) override;
    ErrorT StartEnumerate(unsigned long hKey, StringC subKey, unsigned long* handle) override;
    ErrorT GetEnumeratedValue(unsigned long handle, unsigned long index, StringC* valueName, unsigned long* valueType,
                              unsigned char* value, unsigned long* valueSize) override;
    ErrorT GetEnumeratedKey(unsigned long handle, unsigned long index, StringC* keyName) override;
    ErrorT EndEnumerate(unsigned long handle) override;
    ErrorT CreateKey(unsigned long hKey, StringC subKey, unsigned long* handle) override;
    ErrorT CreateBytes(unsigned long hKey, StringC subKey, StringC valueName, unsigned long dwType,
                       const unsigned char* data, unsigned long len) override;
    ErrorT CreateString(unsigned long hKey, StringC subKey, StringC valueName, StringC value) override;
    ErrorT CreateStringArray(unsigned long hKey, StringC subKey, StringC valueName, StringArrayC* value) override;
    ErrorT CreateDWord(unsigned long hKey, StringC subKey, StringC valueName, unsigned long value) override;
    ErrorT DeleteValue(unsigned long hKey, StringC subKey, StringC valueName) override;
    ErrorT DeleteKey(unsigned long hKey, StringC subKey, bool nonEmpty) override;
    ErrorT ExtractKeyComponents(StringC fullKey, unsigned long* root, StringC* subKey, StringC* valueName) override;
    unsigned long StringToHKEY(StringC root) override;
    StringC HKEYToLongString(unsigned long root) override;
    StringC HKEYToShortString(unsigned long root) override;
    ErrorT SetCurrentUserRoot(StringC subKey) override;
    ErrorT ConnectNetworkRegistry(StringC computername, unsigned long root, unsigned long* key) override;
    ErrorT OpenKey(unsigned long hKey, StringC subKey, unsigned long samDesired, unsigned long* handle) override;
    ErrorT CloseKey(unsigned long hKey) override;
    ErrorT AddIniFile(StringC path, StringC rootKey, StringC subKey) override;
    ErrorT SetWriteThrough(bool writethru) override;

    // Makes a fork wait until no thread is in a registry.
    static void guardForks();

private:
    friend class ConfRegistryPeerC;   // tests

    static constexpr size_t ALL_FILES = 10000;   // in place of an index; so there are never that many and one

    struct NameHashT {
        using is_transparent = void;
        size_t operator()(std::string_view name) const { return prefstext::hash(name); }
    };
    struct NameEqualT {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const { return prefstext::areEqual(a, b); }
    };

    struct ValueT {
        ConfRegIniFileC* file = nullptr;
        PrefsKeyElem* key = nullptr;   // in the file
    };

    // ---- the operations below the interface ----
    ErrorT ConfRegOpenKeyEx(unsigned long hKey, const StringC& subKey, unsigned long samDesired,
                            unsigned long* phkResult);
    ErrorT ConfRegCloseKey(unsigned long hKey);
    ErrorT ConfRegQueryValueEx(unsigned long hKey, const StringC& valueName, unsigned long* lpType,
                               unsigned char* lpData, unsigned long* size);
    ErrorT ConfRegSetValueEx(unsigned long hKey, const StringC& valueName, const char* data);
    ErrorT ConfRegDeleteValue(unsigned long hKey, const StringC& valueName);
    ErrorT ConfRegDeleteKey(unsigned long hKey);
    void ConfRegUpdateIniCache(size_t fileIndex);
    ErrorT ConfRegSaveIniFile(size_t fileIndex);
    ConfRegKeyC* GetOpenKey(unsigned long hKey) const;
    StringC GetOpenKeyString(unsigned long hKey) const;

    // ---- finding keys and values ----
    // 0, TVXERR_REGISTRY_UNKNOWN_HANDLE or TVXERR_REGISTRY_NOT_FOUND.
    ErrorT findKey(unsigned long hKey, const StringC& subKey, KeyPlaceT& place);
    ErrorT findPath(const StringC& path, KeyPlaceT& place);
    // The first file whose subtree holds the path; its place in the array, or NO_FILE.
    int fileOf(const StringC& path, StringC& section) const;
    ConfRegIniFileC& file(int fileRef) const { return *m_iniFiles[static_cast<size_t>(fileRef)]; }
    // 0, when there is such a value, or why not.
    ErrorT findValue(unsigned long hKey, const StringC& subKey, const StringC& valueName, ValueT& value);
    ErrorT findSection(unsigned long hKey, const StringC& subKey, const KeyPlaceCacheC::EntryT*& found);
    bool isEmptyKey(unsigned long handle) const;
    // What `deletion` answers for the open key. Its file is looked at before: what others have written in this very
    // second counts too.
    template <class DeleteT>
    ErrorT deleteIn(unsigned long hKey, const StringC& subKey, DeleteT deletion);

    // ---- the table of handles ----
    unsigned long enterKey(const ConfRegKeyC& key, const StringC& path);
    void enterIntermediateKeys(const StringC& root, const std::vector<StringC>& parts);
    unsigned long takeHandle();
    ErrorT handOut(unsigned long opened, unsigned long* handle);
    // What registering a file with that path and base key would do away with. False when the path is taken.
    bool findReplaced(const FileNameC& path, const StringC& baseKey, std::vector<bool>& isReplaced) const;
    static bool hasRoom(const std::vector<bool>& isReplaced);   // for one file more than stay
    void removeReplaced(const std::vector<bool>& isReplaced);

    ArrayM<ConfRegIniFileC*> m_iniFiles;   // owned
    HashMapM<unsigned long, ConfRegKeyC> m_openKeys;
    unsigned long m_keyIndex = 1;
    bool m_writeThru = true;

    std::unordered_map<std::string, unsigned long, NameHashT, NameEqualT> m_handles;   // of m_openKeys, by path
    unsigned long m_tableGeneration = 1;   // another one whenever a key may lie elsewhere than it did
    time_t m_lastUpdate = 0;               // when all files were looked at
    KeyPlaceCacheC m_places;
};

#endif   // TVXCMN_CONFAPI_CONFREGINI_H
