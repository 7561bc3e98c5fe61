// prefs.h: one preference file (an INI file) in memory: read it, ask it, change it, save it.
//
// Grammar of a file, line by line, where white space (blank, tab, carriage return) around a line and around
// names and values does not count. Lines end with "\n", "\r\n" or "\r".
//
//     ; text          a comment
//     [name] text     begins the section `name`; a section that comes again is the same section
//     key = value     a value of the section; of a key that comes again the later value is the one in force
//
// Anything else is an invalid line: "[" without "]", an empty section name, a line without "=" or with nothing in
// front of it, a key before the first header. Names and values are bytes up to the first NUL; a UTF-8 mark at
// the front of a file is no part of its text. What is stored is not looked at: a line break, or a "]" or "=" in a
// name, gives a file that reads back as something else.
//
// What is no regular file, like a pipe, is not read, nor is UTF-16, told by the mark in front: its bytes are no lines,
// and a merge would destroy it. Nor are files of more than 64 MiB, which are not written either.
//
// Names are compared without regard to case: that of all characters where a name is UTF-8 (as StringC::equalCI
// does), that of A to Z in any case. A null or empty section or key name makes every call that takes one fail.
//
// What has been removed is only marked, so that a merge can drop its lines, and goes away with the object or
// with Clear.
//
// Errors:        operations tell failure by their result alone. What fails underneath while a file is read or
//                saved is taken back from the error buffer.
// Thread safety: unlocked. The arrays that the listing calls return belong to the calling thread and are shared by
//                all objects: each is good until the same thread asks any object for a list of the same kind.
// Ownership:     everything that is returned belongs to the object. Sections and keys live until Clear, Load or
//                the object's end, the text of a value until it is set again.
#ifndef TVXCMN_PREFS_H
#define TVXCMN_PREFS_H

#include "basetypes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

class PrefsSectionC;
class PrefsStoreC;

enum SectionStatusE : int {
    SEC_CLEAN = 0,    // as loaded
    SEC_NEW = 1,      // made in memory
    SEC_REMOVE = 2,   // marked as removed
};

enum KeyStatusE : int {
    KEY_CLEAN = 0,    // as loaded
    KEY_CHANGE = 1,   // to be saved
    KEY_REMOVE = 2,   // marked as removed
};

// One key with its value. Callers read it; it is changed through the operations of its section and object.
struct PrefsKeyElem {
    const char* ke_name_p;   // empty for a line that is a value alone
    const char* ke_value_p;
    KeyStatusE ke_dirty;
    PrefsKeyElem* ke_next_p;   // in the order of the file, then of their making
    bool ke_visited;           // the merge has dealt with it
    bool m_isTextGood;         // m_text is the number of a text made of this very value
    uint32_t m_valueRoom;      // bytes that a new value may take in place of the old one
    uint32_t m_text;           // among the texts that the registry keeps of values; 0: none
};

// One section. Callers read it.
struct PrefsSectionElem {
    const char* ps_name_p;
    PrefsSectionC* ps_sec_p;       // its keys
    PrefsSectionElem* ps_next_p;   // in the order of the file, then of their making
    SectionStatusE ps_dirty;
    bool ps_visited;   // the merge has dealt with it
};

// The names of one kind, found by hash; for PrefsC and PrefsSectionC alone. Lives in the memory of its store.
template <class ElemT>
struct PrefsIndexM {
    struct SlotT {
        ElemT* elem;   // null: free
        HashValT hash;
    };
    SlotT* slots = nullptr;
    size_t mask = 0;   // their number less one
    size_t used = 0;
};

// The keys of one section. Made by PrefsC.
class PrefsSectionC {
public:
    explicit PrefsSectionC(PrefsStoreC* store) : m_store(store) {}
    PrefsSectionC(const PrefsSectionC&) = delete;
    PrefsSectionC& operator=(const PrefsSectionC&) = delete;

    // Gives `keyname_p` (empty: a further value without a key) a copy of `value_p` (null: the empty text), of
    // which blanks and tabs in front and white space behind are taken off. A removed key is there again. The key
    // is to be saved (KEY_CHANGE) if `dirty`. Null names nothing: nothing happens.
    void SetValue(const char* keyname_p, const char* value_p, bool dirty = true);

    // The value of a key that is there and not removed, or null.
    const char* GetValue(const char* keyname_p) const;
    // The key of that name, or null; never one without a name.
    PrefsKeyElem* FindKey(const char* keyname_p, bool include_removed_keys = false) const;
    // The same by a name that need not be terminated, and is nobody's when it holds a NUL.
    PrefsKeyElem* FindKey(std::string_view name, bool include_removed_keys = false) const;

    // Goes over all keys, removed ones included: the first after ResetIterator, then one after the other, then null.
    void ResetIterator() { it_p = nullptr; }
    PrefsKeyElem* operator()();

private:
    friend class PrefsC;
    friend class PrefsMergeC;

    PrefsKeyElem* append(const char* name, size_t size, HashValT hash);
    void storeValue(PrefsKeyElem& key, const char* value) const;

    PrefsKeyElem* keylist_p = nullptr;
    PrefsKeyElem* it_p = nullptr;   // the key returned last
    PrefsStoreC* m_store;           // whose memory the keys live in
    PrefsKeyElem* m_last = nullptr;
    PrefsIndexM<PrefsKeyElem> m_index;
};

class PrefsC {
public:
    PrefsC();
    // Empty, with a copy of the name as the one that Save takes; nothing is read. Null is no name.
    explicit PrefsC(const char* file);
    virtual ~PrefsC();
    PrefsC(const PrefsC&) = delete;
    PrefsC& operator=(const PrefsC&) = delete;

    // Sets a value (PrefsSectionC::SetValue) in a section, which is made (or is there again) if need be. False for
    // a null or empty section or key name. Load stores every pair through this slot, with `dirty` false.
    virtual bool SetAttr(const char* section_p, const char* key_p, const char* value_p, bool dirty = true);
    // Appends a line that is a value alone. Load never reads such a line back, and while the object is not loaded
    // again, each merge appends it again.
    virtual bool SetAttrWithoutKey(const char* section_p, const char* value_p, bool dirty = true);

    // Where values come from that are missing here: an object that outlives this one, or null. A ring of objects
    // is gone round once.
    void SetDefaults(PrefsC* defaults) { defaults_p = defaults; }

    // Reads a file in place of what is held. An invalid line is left out; with `exit_on_parse_error` it ends the
    // loading with false and an empty object. With `continuation` a line that ends with an odd number of
    // backslashes goes on, without the last of them, in the next line. False with everything as it was when there
    // is no name, the file cannot be opened and read to its end, or it is none to be read (see above); errno tells
    // why not: of those not to be read EINVAL or EISDIR, EILSEQ for UTF-16, EFBIG. Takes no lock.
    // Requires: not the object's own name ("filename_p != CurrentFileName_p"). Otherwise: false.
    [[nodiscard]] bool Load(const char* filename_p, bool exit_on_parse_error = false, bool continuation = false);

    // Saves to `filename_p`, null standing for the file loaded last or the constructor's. Saving leaves all marks as
    // they are; who goes on with the object loads it again.
    //
    // Without `merge` the file is emptied and written: no comments, no order but that of the object. The same file
    // stays in place, with its links; a process that is killed meanwhile loses it. One that another process holds
    // locked is not touched.
    //
    // With `merge` the lines of the file (or of `mergefrom_p`, where one is named) are kept and only what was
    // changed or removed is written in its place or dropped, new keys at the end of their section, new sections at
    // the end of the file. Runs of empty lines become one, lines end with "\n". To be known:
    //   - of a key that comes twice the first line is kept, while Load takes the later value
    //   - a header that comes again is dropped; its keys join those under the first one
    //   - a header with blanks inside its brackets, or nothing, begins an unknown section, which is copied
    //   - lines are not joined, as with `continuation`
    //   - a section that was loaded but is not in the file loses what was not changed
    // The result replaces `filename_p` in one step by a new file of the same mode and, if the process may, owner;
    // a link is replaced itself. Whatever fails leaves the file untouched and nothing behind. Last the directory is
    // brought to the disk; where that fails the file is the new one all the same, which a power cut may undo. With
    // `mergefrom_p` `filename_p` is written as without `merge`, after all of `mergefrom_p` has been read.
    //
    // A file that is not there to merge with is an empty one; one that cannot be read, or is none to be read, is a failure.
    [[nodiscard]] bool Save(const char* filename_p = nullptr, bool merge = false, const char* mergefrom_p = nullptr);

    // The value; or that of the defaults; or `default_p`.
    const char* GetAttr(const char* section, const char* key, const char* default_p) const;
    // The value as strtol reads it: decimal, octal after 0, hexadecimal after 0x; 0 when it is no number.
    long GetLongAttr(const char* section, const char* key, long default_value) const;
    // True for "true" and the locale's word for yes, false for "false" and the locale's word for no, in any case;
    // anything else is `default_value`.
    bool GetBoolAttr(const char* section, const char* key, bool default_value) const;

    // Makes an empty section; false if it is there. One that was removed is there again, without its keys, and is
    // only saved when it gets some.
    bool AddSection(const char* name);
    // The section of that name: if there is one in any state it becomes SEC_CLEAN, else a new one is SEC_CLEAN or
    // SEC_NEW. Null for no name.
    // Requires: names and keys of sections ("current_p->ps_name_p != 0"; otherwise not that section,
    // "current_p->ps_sec_p != 0"; otherwise it gets an empty one).
    PrefsSectionElem* NewSection(const char* name_p, bool loaded_from_file);
    PrefsSectionElem* FindSection(const char* name_p, bool include_removed_sections = false) const;
    // Marks the section and its keys as removed. False when there is none; or, with `only_if_empty`, when it has
    // a key, removed ones included.
    bool RemoveSection(const char* section_p, bool only_if_empty = false);
    bool RemoveKey(const char* section, const char* key);
    // The first section, removed ones included; null when there is none.
    const PrefsSectionElem* sections() const { return sectlist_p; }

    // What is not removed, followed by null. Null when there is nowhere to keep the array ("gk_data_p"); GetKeys and
    // GetKeyElems: also when there is no such section.
    const char** GetKeys(const char* section) const;
    const char** GetSectNames() const;
    PrefsKeyElem** GetKeyElems(const char* section) const;

    // Forgets all sections and keys, and the file's name.
    void Clear();
    // Clears the marks that a merge leaves on what it has dealt with.
    void Unvisit();

private:
    friend class PrefsBytesC;
    friend class PrefsMergeC;

    const char* findValue(const char* section, const char* key) const;
    PrefsSectionElem* ensureSection(const char* name);
    PrefsSectionElem* appendSection(const char* name, HashValT hash);
    bool storeLine(char* line, size_t size, const char*& section);
    bool parse(bool exit_on_parse_error, bool continuation);
    bool SaveOverwrite(const char* filename);
    bool SaveMerge(const char* filename);
    bool SaveMergeAs(const char* infilename, const char* outfilename);

    std::unique_ptr<char[]> CurrentFileName_p;
    PrefsSectionElem* sectlist_p = nullptr;
    PrefsC* defaults_p = nullptr;
    [[maybe_unused]] PrefsC* next_p = nullptr;   // for chains of objects that callers keep
    PrefsSectionElem* m_lastSection = nullptr;
    PrefsSectionElem* m_storedSection = nullptr;   // into which SetAttr stored last
    PrefsIndexM<PrefsSectionElem> m_index;
    std::unique_ptr<PrefsStoreC> m_store;   // the memory of names, values, sections and keys
};

// The arrays that the listing calls return to one thread. They only grow.
class PrefsStaticDataC {
public:
    size_t gk_nkeys = 0;   // room of gk_keys_pp
    std::unique_ptr<const char*[]> gk_keys_pp;
    size_t gk_data_sz = 0;   // room of gk_data_p
    std::unique_ptr<char[]> gk_data_p;
    std::unique_ptr<char[]> gsn_text_p;
    std::unique_ptr<const char*[]> gsn_list_p;
    size_t gke_nkeys = 0;   // room of gke_key_elems_pp
    std::unique_ptr<PrefsKeyElem*[]> gke_key_elems_pp;
};

#endif   // TVXCMN_PREFS_H
