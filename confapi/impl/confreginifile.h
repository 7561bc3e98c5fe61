// confreginifile.h: one INI file that is registered as a subtree of the registry.
//
// Thread safety: unlocked; the registry's latch.
#ifndef TVXCMN_CONFAPI_CONFREGINIFILE_H
#define TVXCMN_CONFAPI_CONFREGINIFILE_H

#include "confapi/impl/sectiontree.h"
#include "confapi/impl/unxfilcker.h"
#include "errornumbers.h"
#include "filename.h"
#include "prefs.h"
#include "stringc.h"

#include <ctime>
#include <string>
#include <sys/stat.h>
#include <vector>

class ConfRegIniFileC {
public:
    // Loads the file. `rootKey` is the long name of a root, `subKey` has no empty parts.
    ConfRegIniFileC(const FileNameC& path, const StringC& rootKey, const StringC& subKey);
    ConfRegIniFileC(const ConfRegIniFileC&) = delete;
    ConfRegIniFileC& operator=(const ConfRegIniFileC&) = delete;

    const FileNameC& getPath() const { return m_path; }
    const StringC& getRootKey() const { return m_rootKey; }
    const StringC& getSubKey() const { return m_subKey; }
    const StringC& getBaseKey() const { return m_baseKey; }
    PrefsC* getFileHandler() { return &m_confData; }
    UnxFilckerC& getLock() { return m_lock; }

    // Reads the file if it has changed since it was read, which it looks for once in a second of the clock; with
    // `force` in any case. One that is missing, or cannot be read now, leaves everything as it was.
    void reload(bool force);
    // The same without regard to when it was looked at last.
    void reloadIfChanged()
    {
        m_lastCheck = 0;
        reload(false);
    }
    // Merges what has been changed into the file. 0; TVXERR_REGISTRY_FAILURE; or the system's number when all that
    // failed was to put the new file in the old one's place. errno tells why; EBUSY: others keep changing the file.
    ErrorT save();

    // Whether there is a key of that name, by a section of its own or of a key below it.
    bool hasKey(const StringC& name) { return section(name) != nullptr || hasKeysBelow(name); }
    bool hasKeysBelow(const StringC& name);
    const std::vector<StringC>* childrenOf(const StringC& name);
    // The section, unless it is removed, and the values in it that are not, in the order of the file.
    PrefsSectionElem* section(const StringC& name) const { return m_confData.FindSection(name.utf8()); }
    const std::vector<const PrefsKeyElem*>& valuesOf(const StringC& name);
    // The value of one of the keys. It is read over and over, so the text is made once and then handed out.
    const StringC& textOf(PrefsKeyElem& key);

    // Makes a section in memory. False when it is there.
    bool addSection(const StringC& name);
    // Removes the section and all below it in memory.
    void removeKey(const StringC& name);
    // To be told whenever getFileHandler has been used for a change of values.
    void setChanged();
    // Another number after each change and each loading, which ends sections and values.
    unsigned long generation() const { return m_generation; }

private:
    // What tells that a file is another than the one that was read, beside the seconds in m_lastMod.
    struct StampT {
        long nanoseconds = 0;
        ino_t inode = 0;
        off_t size = 0;

        bool operator==(const StampT&) const = default;
    };
    static StampT stampOf(const struct stat& info);

    bool isAsRead(const struct stat& info) const;
    void load();
    void take(std::string&& text, const struct stat& info);
    bool makeDirectory() const;
    ErrorT saveLocked();
    bool isUntouchedSince(const struct stat* read) const;
    ErrorT replaceBy(std::string&& text, const struct stat& written);
    int writeTemporary(const std::string& text, const struct stat* like, struct stat& written) const;

    FileNameC m_path;
    StringC m_rootKey;
    StringC m_subKey;
    PrefsC m_confData;
    time_t m_lastMod = 0;
    time_t m_lastCheck = 0;
    UnxFilckerC m_lock;

    StampT m_lastStamp;
    bool m_hasFailedToSave = false;   // changes have to survive that the file is read again
    StringC m_baseKey;
    const std::string m_pathBytes;
    const std::string m_temporary;   // where new contents are written
    unsigned long m_generation = 1;
    SectionTreeC m_tree;   // of the contents, when it has been asked for
    std::vector<const PrefsKeyElem*> m_values;
    const PrefsSectionElem* m_valuesSection = nullptr;   // whose values they are
    std::vector<StringC> m_texts;                        // of values, by their keys' m_text less one
};

#endif   // TVXCMN_CONFAPI_CONFREGINIFILE_H
