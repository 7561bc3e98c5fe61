// hashtbl.h: the library's one hash table.
//
// The table is intrusive: it allocates nothing per element. Every element carries its own link and its
// own cached hash value. The table grows by one bucket at a time (linear hashing), so no insertion ever
// rehashes all of it. Typed maps that make their own elements are in hashmap.h.
//
// The hash value of an element is computed when it is added and then kept; its key must not change while
// it is in the table. Within a bucket the newest element comes first, so that a search finds the newest
// of equal keys.
//
// Ownership:     the table owns its buckets. It unlinks elements and never deletes them, except through
//                destroy and destroyAll.
// Thread safety: unlocked, and that goes for const operations as well: one thread at a time may use a
//                table and its iterators.
#ifndef TVXCMN_HASHTBL_H
#define TVXCMN_HASHTBL_H

#include "basetypes.h"
#include "blobarr.h"
#include "contemplate.h"
#include "errornumbers.h"
#include "hashfunc.h"
#include "list.h"

#include <cstddef>
#include <cstdio>

class HashTableC;

// What can be in a table. The concrete element has two members, the link (null in every new element,
// copies included) and the cached hash value, and hands them out by next_p and hash_r.
class HashElemI : public ListElemI {
public:
    ListElemI** prev_p() override { return nullptr; }   // linked singly
    using ListElemI::dump;

    // The cached hash value, which the table sets.
    virtual HashValT& hash_r() = 0;
    // The key, in the form that the table's hashOf and matches expect.
    virtual const void* key() const = 0;
    // Whether this element's key equals `key`. `table` is the one that asks.
    virtual BooleanT matches(const void* key, const HashTableC* table) const = 0;
    // Ends the element; whoever added it made it with new.
    virtual void destroy() { delete this; }
    // Prints "ADDRESS(0xHASH)", the hash value in hexadecimal and AND `mask`.
    virtual void dump(FILE* stream, unsigned mask) const;

    // The following element of the same bucket; null at its end.
    HashElemI* next() const { return static_cast<HashElemI*>(ListElemI::next()); }
    bool inSomeTable() const { return inSomeList(); }
    // The table that the element is in; null when it is in none. Walks to the end of the bucket.
    HashTableC* getTable() const { return static_cast<HashTableC*>(getClosure()); }
};

// A bucket: a list of one word, whose closure is the table. It may be moved bytewise.
class HashListC : public ListLWC {
public:
    explicit HashListC(HashTableC* table) : ListLWC(static_cast<void*>(table)) {}

    // `after` null means at the head.
    bool insertAfter(HashElemI* elem, HashElemI* after);
    HashElemI* Head() const { return static_cast<HashElemI*>(ListLWC::Head()); }
    HashTableC* getTable() const { return static_cast<HashTableC*>(getClosure()); }
    // Prints a blank and its own dump for each element, then a newline.
    void dump(FILE* stream, unsigned mask) const;

    // The word that holds the first element or the end marker.
    ListElemI** headWord() { return &head; }
};

// The buckets of a table. The first ones are the blob array; the others come in segments that never move,
// because copying a large array would make the caller of one insertion wait.
//
// Each bucket has a byte of hints beside it: the bit hintOf(h) is set if an element with hash h is in the
// bucket, and possibly when there was one. Typed maps look there first: nine in ten searches in vain end
// without touching an element.
class HashArrayC : public BlobArrayC {
public:
    HashArrayC() : BlobArrayC(sizeof(HashListC)) {}
    ~HashArrayC() override;

    // Adds an empty bucket at the end.
    void grow(HashTableC* table);
    // Requires: n < size(); not checked.
    HashListC& operator[](size_t n) const { return m_segments[n / SEGMENT].buckets[n % SEGMENT]; }
    U8BitT& hints(size_t n) const { return m_segments[n / SEGMENT].hints[n % SEGMENT]; }
    size_t size() const noexcept { return m_size; }
    // Unlinks the elements of all buckets and drops the buckets.
    void clear() override;
    // Unlinks the elements of one bucket.
    void destroy(void* bucket) override;
    // Grows the room for the first buckets.
    void resize() override;

    static U8BitT hintOf(HashValT hash) { return static_cast<U8BitT>(1u << (hash * 0x9E3779B1u >> 29)); }

private:
    static constexpr size_t SEGMENT = 2048;   // buckets; small enough to be copied in a microsecond
    struct SegmentT {
        HashListC* buckets;
        U8BitT* hints;
    };

    // Buckets come by grow and go by clear only.
    using BlobArrayC::add;
    using BlobArrayC::addAt;
    using BlobArrayC::destroyAll;
    using BlobArrayC::put;
    using BlobArrayC::remove;
    using BlobArrayC::sort;

    void addSegment();

    size_t m_size = 0;                       // of all buckets
    SegmentT m_first = {nullptr, nullptr};   // in the blob array, and hints for as many as it has room for
    size_t m_hintRoom = 0;
    const SegmentT* m_segments = &m_first;   // all segments: m_first alone, or those of m_all
    ArrayM<SegmentT> m_all;
};

class HashTableC {
public:
    HashTableC();
    HashTableC(const HashTableC&) = delete;   // its address is in the end marker of every bucket
    HashTableC& operator=(const HashTableC&) = delete;
    virtual ~HashTableC();   // unlinks what is still in it

    // The hash of a key: a function of the key alone.
    virtual HashValT hashOf(const void* key) const = 0;
    // Whether an element has this key. Here: asks the element.
    virtual BooleanT matches(HashElemI* elem, const void* key) const { return elem->matches(key, this); }

    size_t size() const noexcept { return count; }
    // The newest element with this key; null when there is none.
    HashElemI* get(const void* key) const;
    // The next older element with the key of `current`; null when there is none. From null on: the one
    // after get(key), which must exist ("current"). Otherwise: null.
    HashElemI* next(HashElemI* current, const void* key) const;

    // Adds an element, also beside others with its key. Requires that it is in no table ("Element
    // incorrectly initialized or already in another hashtable"). Otherwise: nothing.
    void add(HashElemI* elem);
    // As add, but first removes the newest element with its key, if there is one, and returns that. It may
    // be `elem` itself, which is in the table again then.
    HashElemI* put(HashElemI* elem);
    // Unlinks an element. False if it is not in this table, or null.
    BooleanT remove(HashElemI* elem);
    // Unlinks the newest element with this key and returns it; null when there is none.
    HashElemI* remove(const void* key);
    BooleanT remove(const HashElemI* elem) = delete;   // would be taken for a key
    // Unlinks an element from the table that it is in. False if it is in none. Requires that the list
    // it is in belongs to a table ("Can't remove element, it isn't in any table"). Otherwise: false.
    static BooleanT removeElem(HashElemI* elem);
    // Unlinks and ends the newest element with this key. False when there is none.
    BooleanT destroy(const void* key);
    // Unlinks and ends all elements, or just unlinks them. The buckets stay.
    void destroyAll();
    void clear();

    // Prints a line about the table and one for each bucket that is not empty. Null is stdout.
    void dump(FILE* stream = nullptr) const;
    // Tells on stderr what does not fit together, mends the mask, and returns whether all was well.
    BooleanT checkConsistency();

    static HashValT hashString(const char* text) { return ::hashString(text); }
    static HashValT hashBlock(const void* block, size_t size) { return ::hashBlock(block, size); }

    // Adds one bucket, and moves to it what belongs there from the one that it splits.
    void grow();
    // The bucket of a hash value. Buckets past the last one do not exist yet; what will belong there is
    // still in the bucket whose index lacks the top bit of the mask.
    size_t shrinkHash(HashValT h) const
    {
        const HashValT bucket = h & bits_mask;
        return bucket & (bits_mask >> (bucket >= array->size()));   // no branch: it would be a guess
    }

protected:
    friend class HashIteratorC;

    // For tables that know their elements' members: `next` is the element's own link word.
    void link(HashElemI* elem, ListElemI*& next, HashValT hash);
    // `word` is the link that holds the element.
    void unlink(ListElemI** word, ListElemI*& next, HashValT hash);
    // After all buckets have been emptied.
    void forgetAll();
    // Elements lie anywhere in memory. Those of a bucket that is this far ahead have arrived by the time
    // that a walk over all buckets gets there.
    static constexpr size_t ITERATE_AHEAD = 12;
    void prefetchBucket(size_t n) const
    {
        if (n < array->size()) __builtin_prefetch(*(*array)[n].headWord());
    }

    size_t count = 0;         // elements
    HashValT bits_mask = 0;   // all ones below the smallest power of two that is at least the buckets
    HashArrayC* array;        // owned; never empty
    size_t empty_lists = 0;   // buckets without an element
    size_t generation = 0;    // raised by each change of membership; iterators compare it

private:
    bool isFull() const { return 10 * count > 9 * array->size(); }   // more than 0.9 elements a bucket
    HashElemI* find(const void* key, HashValT hash) const;
    void split(size_t from, size_t to, HashValT split_bit);
    bool checkMask();
    bool checkElement(HashElemI* elem, size_t bucket);
};

inline void HashTableC::link(HashElemI* elem, ListElemI*& next, HashValT hash)
{
    ++generation;
    ++count;
    while (isFull()) grow();
    const size_t bucket = shrinkHash(hash);
    ListElemI** const word = (*array)[bucket].headWord();
    if (ListElemI::isMarked(*word)) --empty_lists;
    next = *word;
    *word = elem;
    array->hints(bucket) |= HashArrayC::hintOf(hash);
}

inline void HashTableC::unlink(ListElemI** word, ListElemI*& next, HashValT hash)
{
    ++generation;
    --count;
    *word = next;
    next = nullptr;
    const size_t bucket = shrinkHash(hash);
    if (!(*array)[bucket].isEmpty()) return;
    ++empty_lists;
    array->hints(bucket) = 0;
}

// Visits the buckets in order and each of them from its head. A change of the table's membership other
// than by the iterator's own remove makes it stale: its operations then set `status` to
// TVXERR_COLLECTION_CHANGED and return null, until rewind.
class HashIteratorC {
public:
    // Without `allow_dups` only the newest of equal keys is visited.
    HashIteratorC(const HashTableC* hash_table, BooleanT with_dups) : table(hash_table), allow_dups(with_dups)
    {
        rewind();
    }

    void rewind();
    // Goes on to the next element, from the start after rewind, and returns it; null at the end.
    HashElemI* next(long& status);
    // The element that next returned last; the first one if there was none yet.
    HashElemI* current(long& status);
    // Takes the current element out of the table and returns it. The one that followed it is current
    // then, so a loop goes on with current, not with next.
    HashElemI* remove(long& status);

protected:
    // Sets `status`, and tells whether it is 0.
    bool isFresh(long& status) const
    {
        status = generation == table->generation ? 0 : TVXERR_COLLECTION_CHANGED;
        return status == 0;
    }
    // The head of the first bucket from `n` on that is not empty; `n` becomes its number.
    HashElemI* headFrom(size_t& n) const;

    const HashTableC* table;
    size_t list_num;     // the current bucket; the number of buckets at the end
    HashElemI* curr;     // null before the start and at the end
    size_t generation;   // the table's, when the iterator was last in step with it
    BooleanT allow_dups;

private:
    HashElemI* getNext(size_t& n, HashElemI* from) const;
    bool isNewest(HashElemI* elem, size_t n) const;
};

inline HashElemI* HashIteratorC::headFrom(size_t& n) const
{
    const HashArrayC& buckets = *table->array;
    for (const size_t size = buckets.size(); n < size; ++n) {
        table->prefetchBucket(n + HashTableC::ITERATE_AHEAD);
        HashElemI* const head = buckets[n].Head();
        if (head != nullptr) return head;
    }
    return nullptr;
}

#endif   // TVXCMN_HASHTBL_H
