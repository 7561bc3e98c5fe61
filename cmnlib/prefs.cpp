#include "prefs.h"

#include "assertfatal.h"
#include "cmnlib/prefsstore.h"

#include <cstdlib>
#include <langinfo.h>
#include <utility>

namespace {

bool isNamed(const char* name) { return name != nullptr && *name != '\0'; }

void ignoreNameless() {}
void assertName() { (void)TVX_CHECK(false, "current_p->ps_name_p != 0"); }

std::unique_ptr<char[]> duplicate(const char* text)
{
    if (text == nullptr) return nullptr;
    const size_t size = std::strlen(text) + 1;
    std::unique_ptr<char[]> copy(new char[size]);
    std::memcpy(copy.get(), text, size);
    return copy;
}

// A word of the locale may be missing, and then it is no value's word.
bool isWord(const char* value, const char* word) { return isNamed(word) && prefstext::areEqual(value, word); }

}   // namespace

// ---- the keys of a section ----------------------------------------------------------------------------

PrefsKeyElem* PrefsSectionC::FindKey(const char* keyname_p, bool include_removed_keys) const
{
    return keyname_p != nullptr ? FindKey(std::string_view(keyname_p), include_removed_keys) : nullptr;
}

PrefsKeyElem* PrefsSectionC::FindKey(std::string_view name, bool include_removed_keys) const
{
    if (name.empty()) return nullptr;
    PrefsKeyElem* const key = findName(m_index, name, prefstext::hash(name), ignoreNameless);
    return key != nullptr && (include_removed_keys || key->ke_dirty != KEY_REMOVE) ? key : nullptr;
}

const char* PrefsSectionC::GetValue(const char* keyname_p) const
{
    const PrefsKeyElem* const key = FindKey(keyname_p);
    return key != nullptr ? key->ke_value_p : nullptr;
}

PrefsKeyElem* PrefsSectionC::operator()()
{
    it_p = it_p != nullptr ? it_p->ke_next_p : keylist_p;
    return it_p;
}

PrefsKeyElem* PrefsSectionC::append(const char* name, size_t size, HashValT hash)
{
    PrefsKeyElem* const key =
        m_store->make<PrefsKeyElem>(m_store->keep({name, size}), "", KEY_CLEAN, nullptr, false, false, 0U, 0U);
    (m_last != nullptr ? m_last->ke_next_p : keylist_p) = key;
    m_last = key;
    if (size != 0) addToIndex(m_index, *m_store, key, hash);
    return key;
}

// A value that is set again and again takes over the room of the one before; when it needs more, it gets twice as
// much, so that what is left behind stays below what is in use. `value` may be a part of the old value.
void PrefsSectionC::storeValue(PrefsKeyElem& key, const char* value) const
{
    key.m_isTextGood = false;
    while (*value == ' ' || *value == '\t') ++value;
    const size_t whole = std::strlen(value);
    const size_t size = prefstext::trimmedRight({value, whole}).size();
    if (m_store->isLoading(value) && size == whole) {
        key.ke_value_p = value;
        key.m_valueRoom = 0;
        return;
    }
    char* room = const_cast<char*>(key.ke_value_p);   // ours to change as far as m_valueRoom goes
    if (key.m_valueRoom <= size) {
        const size_t needed = std::max(size + 1, 2 * size_t{key.m_valueRoom});
        room = static_cast<char*>(m_store->allocate(needed));
        key.m_valueRoom = static_cast<uint32_t>(std::min<size_t>(needed, UINT32_MAX));
    }
    std::memmove(room, value, size);
    room[size] = '\0';
    key.ke_value_p = room;
}

void PrefsSectionC::SetValue(const char* keyname_p, const char* value_p, bool dirty)
{
    if (keyname_p == nullptr) return;
    const std::string_view name(keyname_p);
    const HashValT hash = prefstext::hash(name);
    PrefsKeyElem* key = !name.empty() ? findName(m_index, name, hash, ignoreNameless) : nullptr;
    if (key == nullptr) key = append(name.data(), name.size(), hash);
    storeValue(*key, value_p != nullptr ? value_p : "");
    key->ke_dirty = dirty ? KEY_CHANGE : KEY_CLEAN;
    key->ke_visited = false;
}

// ---- life ---------------------------------------------------------------------------------------------

PrefsC::PrefsC() : m_store(std::make_unique<PrefsStoreC>()) {}

PrefsC::PrefsC(const char* file) : CurrentFileName_p(duplicate(file)), m_store(std::make_unique<PrefsStoreC>()) {}

PrefsC::~PrefsC() = default;

void PrefsC::Clear()
{
    sectlist_p = m_lastSection = m_storedSection = nullptr;
    m_index = {};
    m_store->clear();
    CurrentFileName_p.reset();
}

void PrefsC::Unvisit()
{
    for (PrefsSectionElem* section = sectlist_p; section != nullptr; section = section->ps_next_p) {
        section->ps_visited = false;
        if (section->ps_sec_p == nullptr) continue;
        for (PrefsKeyElem* key = section->ps_sec_p->keylist_p; key != nullptr; key = key->ke_next_p)
            key->ke_visited = false;
    }
}

// ---- sections -----------------------------------------------------------------------------------------

PrefsSectionElem* PrefsC::FindSection(const char* name_p, bool include_removed_sections) const
{
    if (!isNamed(name_p)) return nullptr;
    const std::string_view name(name_p);
    PrefsSectionElem* const section = findName(m_index, name, prefstext::hash(name), ignoreNameless);
    return section != nullptr && (include_removed_sections || section->ps_dirty != SEC_REMOVE) ? section : nullptr;
}

PrefsSectionElem* PrefsC::appendSection(const char* name, HashValT hash)
{
    PrefsSectionC* const keys = m_store->make<PrefsSectionC>(m_store.get());
    PrefsSectionElem* const section =
        m_store->make<PrefsSectionElem>(m_store->keep(name), keys, nullptr, SEC_NEW, false);
    (m_lastSection != nullptr ? m_lastSection->ps_next_p : sectlist_p) = section;
    m_lastSection = section;
    addToIndex(m_index, *m_store, section, hash);
    return section;
}

PrefsSectionElem* PrefsC::NewSection(const char* name_p, bool loaded_from_file)
{
    if (!isNamed(name_p)) return nullptr;
    const std::string_view name(name_p);
    const HashValT hash = prefstext::hash(name);
    PrefsSectionElem* const known = findName(m_index, name, hash, assertName);
    PrefsSectionElem* const section = known != nullptr ? known : appendSection(name_p, hash);
    if (!TVX_CHECK(section->ps_sec_p != nullptr, "current_p->ps_sec_p != 0"))
        section->ps_sec_p = m_store->make<PrefsSectionC>(m_store.get());
    section->ps_dirty = known != nullptr || loaded_from_file ? SEC_CLEAN : SEC_NEW;
    section->ps_visited = false;
    return section;
}

// The section that values go into. A file's values come section by section, named by the section's own name.
PrefsSectionElem* PrefsC::ensureSection(const char* name)
{
    PrefsSectionElem* section = m_storedSection;
    if (section != nullptr && section->ps_name_p == name && section->ps_dirty != SEC_REMOVE) return section;
    section = FindSection(name);
    if (section == nullptr || section->ps_sec_p == nullptr) section = NewSection(name, false);
    return m_storedSection = section;
}

bool PrefsC::AddSection(const char* name)
{
    return isNamed(name) && FindSection(name) == nullptr && NewSection(name, false) != nullptr;
}

bool PrefsC::RemoveSection(const char* section_p, bool only_if_empty)
{
    PrefsSectionElem* const section = FindSection(section_p, true);
    if (section == nullptr) return false;
    PrefsKeyElem* const first = section->ps_sec_p != nullptr ? section->ps_sec_p->keylist_p : nullptr;
    if (only_if_empty && first != nullptr) return false;
    section->ps_dirty = SEC_REMOVE;
    for (PrefsKeyElem* key = first; key != nullptr; key = key->ke_next_p) key->ke_dirty = KEY_REMOVE;
    return true;
}

// ---- values -------------------------------------------------------------------------------------------

bool PrefsC::SetAttr(const char* section_p, const char* key_p, const char* value_p, bool dirty)
{
    if (!isNamed(section_p) || !isNamed(key_p)) return false;
    ensureSection(section_p)->ps_sec_p->SetValue(key_p, value_p, dirty);
    return true;
}

bool PrefsC::SetAttrWithoutKey(const char* section_p, const char* value_p, bool dirty)
{
    if (!isNamed(section_p)) return false;
    ensureSection(section_p)->ps_sec_p->SetValue("", value_p, dirty);
    return true;
}

bool PrefsC::RemoveKey(const char* section, const char* key)
{
    const PrefsSectionElem* const found = FindSection(section, true);
    PrefsKeyElem* const elem = found != nullptr && found->ps_sec_p != nullptr ? found->ps_sec_p->FindKey(key) : nullptr;
    if (elem == nullptr) return false;
    elem->ke_dirty = KEY_REMOVE;
    return true;
}

const char* PrefsC::findValue(const char* section, const char* key) const
{
    const PrefsSectionElem* const found = FindSection(section);
    return found != nullptr && found->ps_sec_p != nullptr ? found->ps_sec_p->GetValue(key) : nullptr;
}

// `slow` goes half as fast: in a ring the walk meets it, having asked everybody by then.
const char* PrefsC::GetAttr(const char* section, const char* key, const char* default_p) const
{
    const PrefsC* slow = this;
    bool isSlowToMove = false;
    for (const PrefsC* prefs = this; prefs != nullptr;) {
        const char* const value = prefs->findValue(section, key);
        if (value != nullptr) return value;
        prefs = prefs->defaults_p;
        if (prefs == slow) break;
        if (isSlowToMove) slow = slow->defaults_p;
        isSlowToMove = !isSlowToMove;
    }
    return default_p;
}

long PrefsC::GetLongAttr(const char* section, const char* key, long default_value) const
{
    const char* const value = GetAttr(section, key, nullptr);
    return value != nullptr ? std::strtol(value, nullptr, 0) : default_value;
}

bool PrefsC::GetBoolAttr(const char* section, const char* key, bool default_value) const
{
    const char* const value = GetAttr(section, key, nullptr);
    if (value == nullptr) return default_value;
    if (isWord(value, "true") || isWord(value, nl_langinfo(YESSTR))) return true;
    if (isWord(value, "false") || isWord(value, nl_langinfo(NOSTR))) return false;
    return default_value;
}
