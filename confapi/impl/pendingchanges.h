// pendingchanges.h: what has been changed in a preference file in memory, kept over loading it again.
#ifndef TVXCMN_CONFAPI_PENDINGCHANGES_H
#define TVXCMN_CONFAPI_PENDINGCHANGES_H

#include <string>
#include <vector>

class PrefsC;

class PendingChangesC {
public:
    void collect(const PrefsC& prefs);
    void applyTo(PrefsC& prefs) const;

private:
    enum ActionE { ADD_SECTION, REMOVE_SECTION, SET_VALUE, REMOVE_VALUE };
    struct ChangeT {
        ActionE action;
        std::string section;
        std::string name;
        std::string value;
    };

    std::vector<ChangeT> m_changes;
};

#endif   // TVXCMN_CONFAPI_PENDINGCHANGES_H
