#include "confapi/impl/pendingchanges.h"

#include "prefs.h"

void PendingChangesC::collect(const PrefsC& prefs)
{
    for (const PrefsSectionElem* section = prefs.sections(); section != nullptr; section = section->ps_next_p) {
        const std::string name = section->ps_name_p;
        if (section->ps_dirty == SEC_REMOVE) {
            m_changes.push_back({REMOVE_SECTION, name, {}, {}});
            continue;
        }
        if (section->ps_dirty == SEC_NEW) m_changes.push_back({ADD_SECTION, name, {}, {}});
        section->ps_sec_p->ResetIterator();
        while (const PrefsKeyElem* const key = (*section->ps_sec_p)()) {
            if (key->ke_dirty == KEY_CHANGE) m_changes.push_back({SET_VALUE, name, key->ke_name_p, key->ke_value_p});
            if (key->ke_dirty == KEY_REMOVE) m_changes.push_back({REMOVE_VALUE, name, key->ke_name_p, {}});
        }
    }
}

void PendingChangesC::applyTo(PrefsC& prefs) const
{
    for (const ChangeT& change : m_changes) {
        const char* const section = change.section.c_str();
        switch (change.action) {
        case ADD_SECTION: prefs.AddSection(section); break;
        case REMOVE_SECTION: prefs.RemoveSection(section); break;
        case SET_VALUE: prefs.SetAttr(section, change.name.c_str(), change.value.c_str(), true); break;
        case REMOVE_VALUE: prefs.RemoveKey(section, change.name.c_str()); break;
        }
    }
}
