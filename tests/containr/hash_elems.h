// hash_elems.h: a table and elements for the tests of the hash table.
#ifndef TVXCMN_TESTS_HASH_ELEMS_H
#define TVXCMN_TESTS_HASH_ELEMS_H

#include "hashtbl.h"

// A long as key. The hash is the key over 3, so that equal hashes and full buckets come up.
class NumberElemC : public HashElemI {
public:
    explicit NumberElemC(long key) : m_key(key) {}

    ListElemI** next_p() override { return &m_next; }
    HashValT& hash_r() override { return m_hash; }
    const void* key() const override { return &m_key; }
    BooleanT matches(const void* key, const HashTableC*) const override
    {
        return m_key == *static_cast<const long*>(key);
    }
    void destroy() override { m_isDestroyed = true; }

    long m_key;
    HashValT m_hash = 0;
    bool m_isDestroyed = false;

private:
    ListElemI* m_next = nullptr;
};

class NumberTableC : public HashTableC {
public:
    HashValT hashOf(const void* key) const override
    {
        return static_cast<HashValT>(*static_cast<const long*>(key) / 3);
    }
    size_t buckets() const { return array->size(); }

    using HashTableC::bits_mask;
    using HashTableC::empty_lists;
};

#endif   // TVXCMN_TESTS_HASH_ELEMS_H
