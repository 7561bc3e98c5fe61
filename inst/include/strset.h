// strset.h: a set of strings.
//
// Ownership:     its entries, which its destructor deletes. Through a HashTableC&, clear would only unlink
//                them; here it deletes them.
// Thread safety: unlocked.
#ifndef TVXCMN_STRSET_H
#define TVXCMN_STRSET_H

#include "hashtbl.h"
#include "stringc.h"

#include <cstdio>
#include <utility>

class StringSetC : public HashTableC {
public:
    explicit StringSetC(BooleanT case_independent = false) : case_indep(case_independent) {}
    ~StringSetC() override { destroyAll(); }

    // Adds a string in place of an equal one: of those that differ in case only, the last one stays.
    void add(StringC text);
    // Whether there was such a string.
    bool remove(const StringC& text) { return destroy(&text) != 0; }
    bool contains(const StringC& text) const { return get(&text) != nullptr; }
    void clear() { destroyAll(); }

    HashValT hashOf(const void* key) const override;
    BooleanT isCaseIndependent() const noexcept { return case_indep; }

private:
    const BooleanT case_indep;
};

// What an iterator over a set finds. The entry is its own key.
class StringSetEntryC : public StringC, public HashElemI {
public:
    explicit StringSetEntryC(StringC text) : StringC(std::move(text)) {}
    StringSetEntryC(const StringSetEntryC& other) : StringC(other), HashElemI() {}   // in no set
    StringSetEntryC& operator=(const StringSetEntryC&) = delete;

    ListElemI** next_p() override { return &hash_next; }
    HashValT& hash_r() override { return hash_val; }
    // Not `this`: the string does not lie at the front of the object.
    const void* key() const override { return static_cast<const StringC*>(this); }
    BooleanT matches(const void* key, const HashTableC* table) const override;
    // Prints as every element does, and the string behind it.
    void dump(FILE* stream, unsigned mask) const override;
    using HashElemI::dump;

private:
    ListElemI* hash_next = nullptr;
    HashValT hash_val = 0;
};

#endif   // TVXCMN_STRSET_H
