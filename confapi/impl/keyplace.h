// keyplace.h: where a key is, and a small memory of where keys have been found, by the words in which they were
// asked for: callers name the same few keys over and over.
//
// Thread safety: unlocked; the registry's latch.
#ifndef TVXCMN_CONFAPI_KEYPLACE_H
#define TVXCMN_CONFAPI_KEYPLACE_H

#include "cmnlib/prefstext.h"
#include "confapi/impl/confregkey.h"
#include "confapi/impl/keynames.h"

#include <array>
#include <string_view>

struct KeyPlaceT {
    unsigned long handle = 0;             // its entry in the table of handles; 0: it is not open
    int fileRef = ConfRegKeyC::NO_FILE;   // the file that holds it
    StringC section;                      // its name in that file
};

class KeyPlaceCacheC {
public:
    struct EntryT {
        unsigned long hKey = 0;
        StringC subKey;
        unsigned long tableGeneration = 0;           // of the registry when it was found; 0: never
        ConfRegIniFileC* file = nullptr;             // which holds it
        unsigned long fileGeneration = 0;            // of the file then
        const PrefsSectionElem* section = nullptr;   // in the file, good for that generation; null: it has none

        bool isFor(unsigned long otherKey, std::string_view otherSubKey) const
        {
            return hKey == otherKey && keynames::bytesOf(subKey) == otherSubKey;
        }
    };

    // The entry that this key has, or would have.
    EntryT& entryOf(unsigned long hKey, std::string_view subKey)
    {
        return m_entries[(prefstext::hash(subKey) + hKey) % m_entries.size()];
    }

private:
    std::array<EntryT, 1024> m_entries;
};

#endif   // TVXCMN_CONFAPI_KEYPLACE_H
