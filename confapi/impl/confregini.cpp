// The interface of the registry; what is below it stands in confregtable.cpp.

#include "confapi/impl/confregini.h"

#include "arglist.h"
#include "cmnlib/neverdestroyed.h"
#include "confapi/impl/keynames.h"
#include "ipc/forkguard.h"
#include "latch.h"
#include "string/api/textrepair.h"
#include "tracing/tracedelivery.h"

#include <cstring>

using keynames::bytesOf;

namespace {

constinit NeverDestroyedM<CountingLatchC> s_latch;
constinit LatchForkGuardM<CountingLatchC> s_forkGuard(*s_latch);

// Counting, because every operation may be made of others.
class RegistryGuardC : LatchGuardM<CountingLatchC> {
public:
    RegistryGuardC() : LatchGuardM(*s_latch) {}

    // Whether the calling thread reports something out of the registry itself, or out of a consumer of the tracer,
    // which must not wait for the registry. The catalogs ask for the install directory on any report.
    static bool isOutOfBounds() { return s_latch->holding() || TraceDeliveryC::isRunning(); }
};

// The rules by which a value is handed out, once it is known.
ErrorT handOutValue(const char* text, unsigned long* type, unsigned char* data, unsigned long* size)
{
    if (type != nullptr) *type = REG_SZ;
    if (size == nullptr) return data == nullptr ? 0 : TVXERR_REGISTRY_INVALID_ARGUMENT;
    const unsigned long room = *size;
    *size = std::strlen(text) + 1;
    if (data == nullptr) return 0;
    if (room < *size) return TVXERR_REGISTRY_BUFFER_TOO_SMALL;
    std::memcpy(data, text, *size);
    return 0;
}

}   // namespace

void ConfRegistryIniC::guardForks() { guardOverForks(FORK_RANK_REGISTRY, s_forkGuard); }

ConfRegistryIniC::ConfRegistryIniC()
{
    for (const unsigned long root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
        const StringC name = keynames::longNameOf(root);
        m_openKeys.put(root, ConfRegKeyC(name, ConfRegKeyC::NO_FILE, 0));
        m_handles.insert_or_assign(std::string(bytesOf(name)), root);
    }
}

ConfRegistryIniC::~ConfRegistryIniC() { m_iniFiles.destroyAll(); }

// ---- reading ------------------------------------------------------------------------------------------

ErrorT ConfRegistryIniC::ExistsBytes(unsigned long hKey, StringC subKey, StringC valueName, unsigned long* handle,
                                     unsigned long samDesired)
{
    const RegistryGuardC guard;
    unsigned long key = 0;
    ErrorT result = ConfRegOpenKeyEx(hKey, subKey, samDesired, &key);
    if (result != 0) return result;
    if (!valueName.isEmpty()) result = ConfRegQueryValueEx(key, valueName, nullptr, nullptr, nullptr);
    if (result == 0) return handOut(key, handle);
    ConfRegCloseKey(key);
    return result;
}

ErrorT ConfRegistryIniC::ConfRegQueryValueEx(unsigned long hKey, const StringC& valueName, unsigned long* lpType,
                                             unsigned char* lpData, unsigned long* size)
{
    ValueT found;
    const ErrorT result = findValue(hKey, StringC(), valueName, found);
    return result != 0 ? result : handOutValue(found.key->ke_value_p, lpType, lpData, size);
}

ErrorT ConfRegistryIniC::ReadBytes(unsigned long hKey, StringC subKey, StringC valueName, unsigned char* value,
                                   unsigned long* size, unsigned long* type)
{
    const RegistryGuardC guard;
    ValueT found;
    const ErrorT result = findValue(hKey, subKey, valueName, found);
    if (result != 0) return result;
    return handOutValue(found.key->ke_value_p, type, size != nullptr ? value : nullptr, size);
}

ErrorT ConfRegistryIniC::ReadString(unsigned long hKey, StringC subKey, StringC valueName, StringC* value)
{
    if (value == nullptr) return TVXERR_REGISTRY_INVALID_ARGUMENT;
    if (RegistryGuardC::isOutOfBounds()) return TVXERR_REGISTRY_FAILURE;
    const RegistryGuardC guard;
    ValueT found;
    const ErrorT result = findValue(hKey, subKey, valueName, found);
    if (result == 0) StringC(found.file->textOf(*found.key)).swap(*value);
    return result;
}

ErrorT ConfRegistryIniC::ReadStringArray(unsigned long, StringC, StringC, StringArrayC**)
{
    return TVXERR_REGISTRY_FAILURE;
}

ErrorT ConfRegistryIniC::ReadDWord(unsigned long hKey, StringC subKey, StringC valueName, unsigned long* value)
{
    if (value == nullptr) return TVXERR_REGISTRY_INVALID_ARGUMENT;
    StringC text;
    const ErrorT result = ReadString(hKey, subKey, valueName, &text);
    if (result != 0) return result;
    const long number = text.asLong(nullptr, 0);
    if (number < 0) return TVXERR_REGISTRY_NOT_FOUND;
    *value = static_cast<unsigned long>(number);
    return 0;
}

ErrorT ConfRegistryIniC::StartEnumerate(unsigned long hKey, StringC subKey, unsigned long* handle)
{
    const RegistryGuardC guard;
    return ConfRegOpenKeyEx(hKey, subKey, KEY_READ, handle);
}

ErrorT ConfRegistryIniC::GetEnumeratedValue(unsigned long handle, unsigned long index, StringC* valueName,
                                            unsigned long* valueType, unsigned char* value, unsigned long* valueSize)
{
    const RegistryGuardC guard;
    const ConfRegKeyC* const key = GetOpenKey(handle);
    if (key == nullptr) return TVXERR_REGISTRY_UNKNOWN_HANDLE;
    if (key->getFileRef() == ConfRegKeyC::NO_FILE) return TVXERR_REGISTRY_NOT_FOUND;
    const auto& values = file(key->getFileRef()).valuesOf(key->getKeyString());
    if (index >= values.size()) return TVXERR_REGISTRY_NO_MORE_ITEMS;
    if (valueName != nullptr) *valueName = repairedText(values[index]->ke_name_p);
    const ErrorT result = handOutValue(values[index]->ke_value_p, valueType, value, valueSize);
    const bool isSizeQuery = value == nullptr && valueSize != nullptr;   // unlike that of a value that is named
    return isSizeQuery ? TVXERR_REGISTRY_BUFFER_TOO_SMALL : result;
}

ErrorT ConfRegistryIniC::GetEnumeratedKey(unsigned long handle, unsigned long index, StringC* keyName)
{
    const RegistryGuardC guard;
    const ConfRegKeyC* const key = GetOpenKey(handle);
    if (key == nullptr) return TVXERR_REGISTRY_UNKNOWN_HANDLE;
    if (keyName == nullptr) return TVXERR_REGISTRY_INVALID_ARGUMENT;
    if (key->getFileRef() == ConfRegKeyC::NO_FILE) return TVXERR_REGISTRY_NOT_FOUND;
    const std::vector<StringC>* const children = file(key->getFileRef()).childrenOf(key->getKeyString());
    if (children == nullptr || index >= children->size()) return TVXERR_REGISTRY_NO_MORE_ITEMS;
    *keyName = (*children)[index];
    return 0;
}

ErrorT ConfRegistryIniC::EndEnumerate(unsigned long handle) { return CloseKey(handle); }

// ---- changing -----------------------------------------------------------------------------------------

// Only the one section is made: the keys above it exist because it does.
ErrorT ConfRegistryIniC::CreateKey(unsigned long hKey, StringC subKey, unsigned long* handle)
{
    const RegistryGuardC guard;
    if (GetOpenKey(hKey) == nullptr) return TVXERR_REGISTRY_UNKNOWN_HANDLE;
    unsigned long key = 0;
    if (ConfRegOpenKeyEx(hKey, subKey, KEY_ALL_ACCESS, &key) == 0) return handOut(key, handle);

    StringC section;
    const StringC path = GetOpenKeyString(hKey) + "\\" + keynames::withoutTrailingBackslashes(subKey);
    const int fileRef = fileOf(path, section);
    if (fileRef == ConfRegKeyC::NO_FILE) return TVXERR_REGISTRY_NOT_FOUND;
    if (!keynames::isStorableKey(bytesOf(section))) return TVXERR_REGISTRY_INVALID_ARGUMENT;
    if (!file(fileRef).addSection(section)) return TVXERR_REGISTRY_FAILURE;
    ConfRegSaveIniFile(static_cast<size_t>(fileRef));
    if (ConfRegOpenKeyEx(hKey, subKey, KEY_ALL_ACCESS, &key) != 0) return TVXERR_REGISTRY_FAILURE;
    return handOut(key, handle);
}

// What cannot be stored does not make a key either.
ErrorT ConfRegistryIniC::CreateBytes(unsigned long hKey, StringC subKey, StringC valueName, unsigned long,
                                     const unsigned char* data, unsigned long)
{
    const RegistryGuardC guard;
    const char* const text = data != nullptr ? reinterpret_cast<const char*>(data) : "";
    if (GetOpenKey(hKey) == nullptr) return TVXERR_REGISTRY_UNKNOWN_HANDLE;
    if (!keynames::isStorableValueName(bytesOf(valueName)) || !keynames::isStorableValue(text)) {
        return TVXERR_REGISTRY_INVALID_ARGUMENT;
    }
    unsigned long key = 0;
    ErrorT result = CreateKey(hKey, subKey, &key);
    if (result != 0) return result;
    result = ConfRegSetValueEx(key, valueName, text);
    ConfRegCloseKey(key);
    return result;
}

ErrorT ConfRegistryIniC::CreateString(unsigned long hKey, StringC subKey, StringC valueName, StringC value)
{
    if (keynames::isCut(bytesOf(value))) return TVXERR_REGISTRY_INVALID_ARGUMENT;
    return CreateBytes(hKey, subKey, valueName, REG_SZ, reinterpret_cast<const unsigned char*>(value.utf8()),
                       value.utf8Bytes());
}

ErrorT ConfRegistryIniC::CreateStringArray(unsigned long, StringC, StringC, StringArrayC*)
{
    return TVXERR_REGISTRY_FAILURE;
}

// The letter is what other readers of these files expect.
ErrorT ConfRegistryIniC::CreateDWord(unsigned long hKey, StringC subKey, StringC valueName, unsigned long value)
{
    return CreateString(hKey, subKey, valueName, StringC::format("%ul", ArgListC() << value));
}

// Without write-through a look at the file would take away what has been changed in memory.
template <class DeleteT>
ErrorT ConfRegistryIniC::deleteIn(unsigned long hKey, const StringC& subKey, DeleteT deletion)
{
    const RegistryGuardC guard;
    unsigned long key = 0;
    const ErrorT opened = ConfRegOpenKeyEx(hKey, subKey, KEY_ALL_ACCESS, &key);
    if (opened != 0) return opened;
    const int fileRef = GetOpenKey(key)->getFileRef();
    if (m_writeThru && fileRef != ConfRegKeyC::NO_FILE) file(fileRef).reloadIfChanged();
    const ErrorT result = deletion(key);
    ConfRegCloseKey(key);
    return result;
}

ErrorT ConfRegistryIniC::DeleteValue(unsigned long hKey, StringC subKey, StringC valueName)
{
    return deleteIn(hKey, subKey, [&](unsigned long key) { return ConfRegDeleteValue(key, valueName); });
}

ErrorT ConfRegistryIniC::DeleteKey(unsigned long hKey, StringC subKey, bool nonEmpty)
{
    return deleteIn(hKey, subKey, [&](unsigned long key) {
        return nonEmpty || isEmptyKey(key) ? ConfRegDeleteKey(key) : TVXERR_REGISTRY_NOT_EMPTY;
    });
}

// A key that no file holds is not known to be empty. Subkeys that no enumeration tells of, whose names begin with a
// backslash, would be deleted too.
bool ConfRegistryIniC::isEmptyKey(unsigned long handle) const
{
    const ConfRegKeyC& key = *GetOpenKey(handle);
    if (key.getFileRef() == ConfRegKeyC::NO_FILE) return false;
    ConfRegIniFileC& holder = file(key.getFileRef());
    return !holder.hasKeysBelow(key.getKeyString()) && holder.valuesOf(key.getKeyString()).empty();
}

// ---- names --------------------------------------------------------------------------------------------

ErrorT ConfRegistryIniC::ExtractKeyComponents(StringC fullKey, unsigned long* root, StringC* subKey, StringC* valueName)
{
    const long first = fullKey.find('\\');
    const long last = fullKey.rfind('\\');
    const bool hasNone = first < 0;
    const unsigned long key = keynames::rootOf(hasNone ? fullKey : fullKey.head(first));
    if (root != nullptr && key == 0) return TVXERR_REGISTRY_UNKNOWN_ROOT;
    if (valueName != nullptr && hasNone) return TVXERR_REGISTRY_UNKNOWN_ROOT;
    if (root != nullptr) *root = key;
    if (subKey != nullptr) {
        const long length = valueName != nullptr ? last - first : -1;
        *subKey = hasNone || length == 0 ? StringC() : fullKey.substr(static_cast<size_t>(first + 1), length);
    }
    if (valueName != nullptr) *valueName = fullKey.substr(static_cast<size_t>(last + 1));
    return 0;
}

unsigned long ConfRegistryIniC::StringToHKEY(StringC root) { return keynames::rootOf(root); }
StringC ConfRegistryIniC::HKEYToLongString(unsigned long root) { return keynames::longNameOf(root); }
StringC ConfRegistryIniC::HKEYToShortString(unsigned long root) { return keynames::shortNameOf(root); }

ErrorT ConfRegistryIniC::SetCurrentUserRoot(StringC) { return TVXERR_REGISTRY_FAILURE; }

ErrorT ConfRegistryIniC::ConnectNetworkRegistry(StringC, unsigned long, unsigned long*)
{
    return TVXERR_REGISTRY_FAILURE;
}

// ---- handles and files --------------------------------------------------------------------------------

ErrorT ConfRegistryIniC::OpenKey(unsigned long hKey, StringC subKey, unsigned long samDesired, unsigned long* handle)
{
    const RegistryGuardC guard;
    return ConfRegOpenKeyEx(hKey, subKey, samDesired, handle);
}

ErrorT ConfRegistryIniC::CloseKey(unsigned long hKey)
{
    const RegistryGuardC guard;
    return ConfRegCloseKey(hKey);
}

ErrorT ConfRegistryIniC::AddIniFile(StringC path, StringC rootKey, StringC subKey)
{
    if (rootKey.isEmpty() || keynames::isCut(bytesOf(path))) return TVXERR_REGISTRY_INVALID_ARGUMENT;
    const StringC root = keynames::longNameOf(keynames::rootOf(rootKey));
    if (root.isEmpty()) return TVXERR_REGISTRY_UNKNOWN_ROOT;
    const RegistryGuardC guard;
    const std::vector<StringC> parts = keynames::partsOf(subKey);
    const StringC base = keynames::joined(parts, parts.size());
    std::vector<bool> isReplaced;
    if (!findReplaced(path, parts.empty() ? root : root + "\\" + base, isReplaced)) {
        return TVXERR_REGISTRY_FILE_REGISTERED;
    }
    if (!hasRoom(isReplaced)) return TVXERR_REGISTRY_FAILURE;
    removeReplaced(isReplaced);
    m_iniFiles.add(new ConfRegIniFileC(path, root, base));
    enterIntermediateKeys(root, parts);
    ++m_tableGeneration;
    return 0;
}

ErrorT ConfRegistryIniC::SetWriteThrough(bool writethru)
{
    const RegistryGuardC guard;
    m_writeThru = writethru;
    return writethru ? ConfRegSaveIniFile(ALL_FILES) : 0;
}
