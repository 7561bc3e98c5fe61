// strkeyed.h: a hash table of elements that have a string for their key.
//
// The table gets keys as addresses of a StringC: table.get(&name). The rules of hashtbl.h hold.
//
// Ownership:     as of every HashTableC: it deletes elements through destroy and destroyAll only.
// Thread safety: unlocked.
#ifndef TVXCMN_STRKEYED_H
#define TVXCMN_STRKEYED_H

#include "hashtbl.h"
#include "stringc.h"

#include <cstdio>
#include <utility>

class StringKeyedHashC : public HashTableC {
public:
    explicit StringKeyedHashC(BooleanT case_independent = false) : case_indep(case_independent) {}

    HashValT hashOf(const void* key) const override { return hashOf(*static_cast<const StringC*>(key), case_indep); }
    BooleanT isCaseIndependent() const noexcept { return case_indep; }

    // How all tables of strings hash and compare, with and without regard to case.
    static HashValT hashOf(const StringC& key, BooleanT case_independent)
    {
        return case_independent ? key.hashCodeCI() : key.hashCode();
    }
    static BooleanT areEqual(const StringC& a, const StringC& b, BooleanT case_independent)
    {
        return case_independent ? a.equalCI(b) : a == b;
    }

private:
    const BooleanT case_indep;
};

// The base of the elements of such a table, and of no other.
class StringKeyedHashElemC : public HashElemI {
public:
    explicit StringKeyedHashElemC(StringC key) : keyval(std::move(key)) {}
    StringKeyedHashElemC(const StringKeyedHashElemC& other) : HashElemI(), keyval(other.keyval) {}   // in no table
    StringKeyedHashElemC& operator=(const StringKeyedHashElemC&) = delete;

    ListElemI** next_p() override { return &hash_next; }
    HashValT& hash_r() override { return hash_val; }
    const void* key() const override { return &keyval; }
    BooleanT matches(const void* key, const HashTableC* table) const override;
    // Prints as every element does, and the key behind it.
    void dump(FILE* stream, unsigned mask) const override;
    using HashElemI::dump;

private:
    const StringC keyval;
    ListElemI* hash_next = nullptr;
    HashValT hash_val = 0;
};

#endif   // TVXCMN_STRKEYED_H
