// The registry below its interface: the table of handles, the files, and how a key is found in them.

#include "confapi/impl/confregini.h"

#include "confapi/impl/keynames.h"

#include <algorithm>
#include <cerrno>

using keynames::bytesOf;

namespace {

const unsigned long FIRST_RESERVED = 0x80000000;   // the roots, and what might become one
const unsigned long LAST_RESERVED = 0x8000000F;

}   // namespace

// ---- the table ----------------------------------------------------------------------------------------

ConfRegKeyC* ConfRegistryIniC::GetOpenKey(unsigned long hKey) const
{
    const auto result = m_openKeys.get(hKey);
    return result.found() ? &result.Value() : nullptr;
}

StringC ConfRegistryIniC::GetOpenKeyString(unsigned long hKey) const
{
    const ConfRegKeyC* const key = GetOpenKey(hKey);
    if (key == nullptr) return {};
    if (key->getFileRef() == ConfRegKeyC::NO_FILE) return key->getKeyString();
    return file(key->getFileRef()).getBaseKey() + "\\" + key->getKeyString();
}

unsigned long ConfRegistryIniC::takeHandle()
{
    if (m_keyIndex >= FIRST_RESERVED && m_keyIndex <= LAST_RESERVED) m_keyIndex = LAST_RESERVED + 1;
    return m_keyIndex++;
}

unsigned long ConfRegistryIniC::enterKey(const ConfRegKeyC& key, const StringC& path)
{
    const unsigned long handle = takeHandle();
    m_openKeys.put(handle, key);
    m_handles.insert_or_assign(std::string(bytesOf(path)), handle);
    return handle;
}

// One that is there already only uses up its number.
void ConfRegistryIniC::enterIntermediateKeys(const StringC& root, const std::vector<StringC>& parts)
{
    for (size_t count = 1; count <= parts.size(); ++count) {
        const StringC path = root + "\\" + keynames::joined(parts, count);
        const auto known = m_handles.find(bytesOf(path));
        if (known != m_handles.end() && GetOpenKey(known->second)->getFileRef() == ConfRegKeyC::NO_FILE) {
            takeHandle();
        } else {
            enterKey(ConfRegKeyC(path, ConfRegKeyC::NO_FILE, 0), path);
        }
    }
}

ErrorT ConfRegistryIniC::handOut(unsigned long opened, unsigned long* handle)
{
    if (handle == nullptr) return ConfRegCloseKey(opened);
    *handle = opened;
    return 0;
}

// ---- the files ----------------------------------------------------------------------------------------

// The file behind one that is replaced is not looked at.
bool ConfRegistryIniC::findReplaced(const FileNameC& path, const StringC& baseKey, std::vector<bool>& isReplaced) const
{
    isReplaced.assign(m_iniFiles.size(), false);
    for (size_t i = 0; i < m_iniFiles.size(); ++i) {
        if (m_iniFiles[i]->getPath().compareTo(&path) == 0) return false;
        if (!m_iniFiles[i]->getBaseKey().equalCI(baseKey)) continue;
        isReplaced[i] = true;
        ++i;
    }
    return true;
}

bool ConfRegistryIniC::hasRoom(const std::vector<bool>& isReplaced)
{
    return static_cast<size_t>(std::count(isReplaced.begin(), isReplaced.end(), false)) < ALL_FILES;
}

// Handles follow their files to their new places; those of a file that goes lead to the one that will be added.
void ConfRegistryIniC::removeReplaced(const std::vector<bool>& isReplaced)
{
    std::vector<int> places;
    places.reserve(isReplaced.size());
    const int kept = static_cast<int>(std::count(isReplaced.begin(), isReplaced.end(), false));
    int next = 0;
    for (const bool isGone : isReplaced) places.push_back(isGone ? kept : next++);
    if (next == static_cast<int>(isReplaced.size())) return;
    HashIteratorM<unsigned long, ConfRegKeyC> it(&m_openKeys, false);
    for (++it; it; ++it) {
        ConfRegKeyC& key = it->Value();
        if (key.getFileRef() != ConfRegKeyC::NO_FILE) key.setFileRef(places[static_cast<size_t>(key.getFileRef())]);
    }
    for (size_t i = isReplaced.size(); i-- > 0;) {
        if (isReplaced[i]) delete m_iniFiles.remove(i);
    }
}

int ConfRegistryIniC::fileOf(const StringC& path, StringC& section) const
{
    std::string_view rest;
    for (size_t i = 0; i < m_iniFiles.size(); ++i) {
        if (!keynames::descendantOf(bytesOf(path), bytesOf(m_iniFiles[i]->getBaseKey()), rest)) continue;
        section = StringC(rest.data(), rest.size(), StringC::CC_VALID_UTF8);
        return static_cast<int>(i);
    }
    return ConfRegKeyC::NO_FILE;
}

void ConfRegistryIniC::ConfRegUpdateIniCache(size_t fileIndex)
{
    if (fileIndex != ALL_FILES) {
        if (fileIndex < m_iniFiles.size()) m_iniFiles[fileIndex]->reload(false);
        return;
    }
    const time_t now = ::time(nullptr);
    if (now == m_lastUpdate) return;   // nor has any of them to be looked at
    for (size_t i = 0; i < m_iniFiles.size(); ++i) m_iniFiles[i]->reload(false);
    m_lastUpdate = now;
}

ErrorT ConfRegistryIniC::ConfRegSaveIniFile(size_t fileIndex)
{
    if (fileIndex != ALL_FILES) {
        if (fileIndex >= m_iniFiles.size()) return TVXERR_REGISTRY_FAILURE;
        return m_writeThru ? m_iniFiles[fileIndex]->save() : 0;
    }
    ErrorT result = 0;
    int reason = errno;
    for (size_t i = 0; i < m_iniFiles.size(); ++i) {
        const ErrorT failure = ConfRegSaveIniFile(i);
        if (failure == 0) continue;
        result = failure;
        reason = errno;
    }
    errno = reason;
    return result;
}

// ---- finding ------------------------------------------------------------------------------------------

// What is asked for by its exact name has precedence over what a backslash at the end, as ExtractKeyComponents
// leaves one, may mean.
ErrorT ConfRegistryIniC::findKey(unsigned long hKey, const StringC& subKey, KeyPlaceT& place)
{
    const ConfRegKeyC* const key = GetOpenKey(hKey);
    if (key == nullptr) return TVXERR_REGISTRY_UNKNOWN_HANDLE;
    if (subKey.isEmpty()) {
        place = {hKey, key->getFileRef(), key->getKeyString()};
        return 0;
    }
    ConfRegUpdateIniCache(ALL_FILES);
    if (keynames::isCut(bytesOf(subKey))) return TVXERR_REGISTRY_NOT_FOUND;
    const StringC above = GetOpenKeyString(hKey) + "\\";
    const ErrorT result = findPath(above + subKey, place);
    if (result == 0 || !bytesOf(subKey).ends_with('\\')) return result;
    const StringC stripped = keynames::withoutTrailingBackslashes(subKey);
    return stripped.isEmpty() ? findKey(hKey, stripped, place) : findPath(above + stripped, place);
}

ErrorT ConfRegistryIniC::findPath(const StringC& path, KeyPlaceT& place)
{
    const auto known = m_handles.find(bytesOf(path));
    if (known != m_handles.end()) {
        const ConfRegKeyC* const key = GetOpenKey(known->second);
        place = {known->second, key->getFileRef(), key->getKeyString()};
        return 0;
    }
    place.fileRef = fileOf(path, place.section);
    const bool isThere = place.fileRef != ConfRegKeyC::NO_FILE && file(place.fileRef).hasKey(place.section);
    return isThere ? 0 : TVXERR_REGISTRY_NOT_FOUND;
}

// Where the key is. Of what could have changed on the disk, all files are looked at when there is a subkey, and
// otherwise the file of the open key alone.
ErrorT ConfRegistryIniC::findSection(unsigned long hKey, const StringC& subKey, const KeyPlaceCacheC::EntryT*& found)
{
    const std::string_view words = bytesOf(subKey);
    KeyPlaceCacheC::EntryT& entry = m_places.entryOf(hKey, words);
    found = &entry;
    const bool isKnown = entry.tableGeneration == m_tableGeneration && entry.isFor(hKey, words);
    if (!words.empty()) {
        ConfRegUpdateIniCache(ALL_FILES);
    } else if (isKnown) {
        entry.file->reload(false);
    }
    if (isKnown && entry.fileGeneration == entry.file->generation()) return 0;

    KeyPlaceT place;
    const ErrorT result = findKey(hKey, subKey, place);
    if (result != 0) return result;
    if (place.fileRef == ConfRegKeyC::NO_FILE) return TVXERR_REGISTRY_NOT_FOUND;
    ConfRegIniFileC& holder = file(place.fileRef);
    holder.reload(false);
    entry = {hKey, subKey, m_tableGeneration, &holder, holder.generation(), holder.section(place.section)};
    return 0;
}

ErrorT ConfRegistryIniC::findValue(unsigned long hKey, const StringC& subKey, const StringC& valueName, ValueT& value)
{
    const KeyPlaceCacheC::EntryT* place = nullptr;
    const ErrorT result = findSection(hKey, subKey, place);
    if (result != 0) return result;
    value.file = place->file;
    value.key = place->section != nullptr ? place->section->ps_sec_p->FindKey(bytesOf(valueName)) : nullptr;
    return value.key != nullptr ? 0 : TVXERR_REGISTRY_NOT_FOUND;
}

// ---- the operations -----------------------------------------------------------------------------------

ErrorT ConfRegistryIniC::ConfRegOpenKeyEx(unsigned long hKey, const StringC& subKey, unsigned long,
                                          unsigned long* phkResult)
{
    if (phkResult == nullptr) return TVXERR_REGISTRY_INVALID_ARGUMENT;
    KeyPlaceT place;
    const ErrorT result = findKey(hKey, subKey, place);
    if (result != 0) return result;
    if (place.handle == 0) {
        const StringC path = file(place.fileRef).getBaseKey() + "\\" + place.section;
        place.handle = enterKey(ConfRegKeyC(place.section, place.fileRef, 0), path);
    }
    GetOpenKey(place.handle)->addHandle();
    *phkResult = place.handle;
    return 0;
}

ErrorT ConfRegistryIniC::ConfRegCloseKey(unsigned long hKey)
{
    ConfRegKeyC* const key = GetOpenKey(hKey);
    if (key == nullptr) return TVXERR_REGISTRY_UNKNOWN_HANDLE;
    key->removeHandle();
    if (key->getRefCount() > 0 || key->getFileRef() == ConfRegKeyC::NO_FILE) return 0;
    const auto known = m_handles.find(bytesOf(GetOpenKeyString(hKey)));
    if (known != m_handles.end() && known->second == hKey) m_handles.erase(known);
    m_openKeys.remove(hKey);
    ++m_tableGeneration;
    return 0;
}

ErrorT ConfRegistryIniC::ConfRegSetValueEx(unsigned long hKey, const StringC& valueName, const char* data)
{
    const ConfRegKeyC* const key = GetOpenKey(hKey);
    if (key == nullptr || key->getFileRef() == ConfRegKeyC::NO_FILE) return TVXERR_REGISTRY_UNKNOWN_HANDLE;
    if (!keynames::isStorableKey(bytesOf(key->getKeyString()))) return TVXERR_REGISTRY_INVALID_ARGUMENT;
    ConfRegIniFileC& changed = file(key->getFileRef());
    if (!valueName.isEmpty()) (void)changed.addSection(key->getKeyString());   // when there were only those below it
    changed.getFileHandler()->SetAttr(key->getKeyString().utf8(), valueName.utf8(), data, true);
    changed.setChanged();
    ConfRegSaveIniFile(static_cast<size_t>(key->getFileRef()));
    return 0;
}

ErrorT ConfRegistryIniC::ConfRegDeleteValue(unsigned long hKey, const StringC& valueName)
{
    const ConfRegKeyC* const key = GetOpenKey(hKey);
    if (key == nullptr) return TVXERR_REGISTRY_UNKNOWN_HANDLE;
    if (key->getFileRef() == ConfRegKeyC::NO_FILE) return TVXERR_REGISTRY_NOT_FOUND;
    ConfRegIniFileC& changed = file(key->getFileRef());
    if (!keynames::isCut(bytesOf(valueName))) {
        changed.getFileHandler()->RemoveKey(key->getKeyString().utf8(), valueName.utf8());
    }
    changed.setChanged();
    ConfRegSaveIniFile(static_cast<size_t>(key->getFileRef()));
    return 0;
}

ErrorT ConfRegistryIniC::ConfRegDeleteKey(unsigned long hKey)
{
    const ConfRegKeyC* const key = GetOpenKey(hKey);
    if (key == nullptr) return TVXERR_REGISTRY_UNKNOWN_HANDLE;
    if (key->getFileRef() == ConfRegKeyC::NO_FILE) return 0;
    ConfRegIniFileC& changed = file(key->getFileRef());
    changed.removeKey(key->getKeyString());
    ConfRegSaveIniFile(static_cast<size_t>(key->getFileRef()));
    return 0;
}
