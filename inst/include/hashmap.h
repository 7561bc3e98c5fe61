// hashmap.h: typed maps on the hash table.
//
//     HashMapM<unsigned long, int> ages;          ages.put(7, 41);
//     StringMapM<long> counts;                    if (counts.exists(name)) ++counts.get(name).Value();
//
// A map holds its keys and values by copy, each pair in an element of its own that stays where it is until
// it is removed. Equal keys are possible (add); a search finds the newest of them.
//
// Ownership:     a map owns its elements. An element that put displaced or remove took out belongs to the
//                result that was returned, and may outlive the map.
// Thread safety: unlocked, const operations too. A result that owns its element is independent of the map.
#ifndef TVXCMN_HASHMAP_H
#define TVXCMN_HASHMAP_H

#include "assertfatal.h"
#include "contemplate.h"
#include "elempool.h"
#include "hashtbl.h"

#include <cstddef>
#include <type_traits>
#include <typeinfo>
#include <utility>

class StringC;

// The hash of a number: itself, cut to 32 bits. Good for numbers that differ in their low bits, such as
// handles; addresses, which do not, want a hash of their own.
template <class K>
struct hashOf {
    static_assert(std::is_integral<K>::value || std::is_enum<K>::value, "give the map a hash for keys of this type");
    HashValT operator()(const K& key) const { return static_cast<HashValT>(key); }
};

template <class S>
struct StringMapHashOf {
    HashValT operator()(const S& key) const { return key.hashCode(); }
};

template <class K>
struct equal {
    bool operator()(const K& a, const K& b) const { return a == b; }
};

// A key with its value.
template <class K, class V>
class HashElemM : public HashElemI {
public:
    HashElemM(const K& key_value, const V& value) : k(key_value), e(value) {}
    HashElemM(const HashElemM& other) : HashElemI(other), hash_val(other.hash_val), k(other.k), e(other.e) {}
    HashElemM& operator=(const HashElemM&) = delete;

    ListElemI** next_p() override { return &list_next; }
    HashValT& hash_r() override { return hash_val; }
    const void* key() const override { return &k; }
    BooleanT matches(const void* key_p, const HashTableC*) const override { return k == *static_cast<const K*>(key_p); }

    const K& Key() const { return k; }
    V& Value() { return e; }
    const V& Value() const { return e; }
    operator V&() { return e; }

private:
    template <class, class, class, class>
    friend class HashMapM;
    template <class, class, class, class>
    friend class HashIteratorM;

    ListElemI* list_next = nullptr;
    HashValT hash_val = 0;
    K k;
    V e;
};

template <class K, class V, class H, class E>
class HashMapM;

// What a search, a put or a remove came up with: an element, or none.
template <class K, class V, class H = hashOf<K>, class E = equal<K>>
class HashResultM {
public:
    typedef HashElemM<K, V> ElemT;
    typedef HashMapM<K, V, H, E> MapT;

    HashResultM() = default;
    // With `owns` the element ends with the result.
    HashResultM(const MapT* map, ElemT* elem, BooleanT owns) : mp(map), ep(elem), delete_elem(owns) {}
    // A copy of a result that owns its element gets an element of its own.
    HashResultM(const HashResultM& other) : mp(other.mp), ep(other.copiedElem()), delete_elem(other.delete_elem) {}
    HashResultM(HashResultM&& other) noexcept { swap(other); }
    ~HashResultM()
    {
        if (delete_elem && ep != nullptr) ep->destroy();
    }
    HashResultM& operator=(const HashResultM& other)
    {
        if (this != &other) HashResultM(other).swap(*this);
        return *this;
    }
    HashResultM& operator=(HashResultM&& other) noexcept
    {
        swap(other);
        return *this;
    }
    void swap(HashResultM& other) noexcept
    {
        std::swap(mp, other.mp);
        std::swap(ep, other.ep);
        std::swap(delete_elem, other.delete_elem);
    }

    bool found() const { return ep != nullptr; }
    // These require that there is an element ("found()"). Otherwise: a value of the calling thread's that
    // belongs to no map, made anew each time; types that cannot be made from nothing end the process.
    V& Value() const { return TVX_CHECK(found(), "found()") ? ep->Value() : nobody<V>(); }
    const K& Key() const { return TVX_CHECK(found(), "found()") ? ep->Key() : nobody<K>(); }
    V* operator->() const { return &Value(); }
    operator const V&() const { return Value(); }

private:
    ElemT* copiedElem() const { return delete_elem && ep != nullptr ? new ElemT(*ep) : ep; }

    template <class T>
    static T& nobody()
    {
        if constexpr (std::is_default_constructible<T>::value && std::is_move_assignable<T>::value) {
            static thread_local T value;
            return value = T();
        } else {
            Fatal(1, "%s", "found()");
        }
    }

    const MapT* mp = nullptr;
    ElemT* ep = nullptr;
    BooleanT delete_elem = false;
};

// The typed form of HashIteratorC. As a boolean it tells whether an element is current, so a loop begins
// with one step: for (++it; it; ++it) use(*it);
template <class K, class V, class H = hashOf<K>, class E = equal<K>>
class HashIteratorM : public HashIteratorC {
public:
    typedef HashElemM<K, V> ElemT;
    typedef HashMapM<K, V, H, E> MapT;

    HashIteratorM(const MapT* map, BooleanT with_dups) : HashIteratorC(map, with_dups) {}

    ElemT* next(long& status)
    {
        if (!isFresh(status)) return nullptr;
        ElemT* const elem = curr != nullptr ? following(static_cast<ElemT*>(curr)) : nullptr;
        if (elem != nullptr) {
            curr = elem;
        } else {
            if (curr != nullptr) ++list_num;
            curr = map().headFrom(list_num);
        }
        return static_cast<ElemT*>(curr);
    }
    ElemT* current(long& status)
    {
        if (curr == nullptr) return next(status);
        return isFresh(status) ? static_cast<ElemT*>(curr) : nullptr;
    }

    // As next; a stale iterator has no current element afterwards.
    HashIteratorM& operator++()
    {
        long status;
        if (next(status) == nullptr) curr = nullptr;
        return *this;
    }
    // Requires an element: the current one, or the first one after rewind.
    ElemT& operator*()
    {
        long status;
        return *current(status);
    }
    ElemT* operator->() { return &**this; }
    operator BooleanT() const { return curr != nullptr; }

private:
    const MapT& map() const { return *static_cast<const MapT*>(table); }

    ElemT* following(ElemT* elem) const
    {
        while ((elem = static_cast<ElemT*>(ListElemI::nullIfMarked(elem->list_next))) != nullptr) {
            if (allow_dups || map().isNewest(elem)) return elem;
        }
        return nullptr;
    }
};

// H hashes a key and E compares two. Both are functions of the keys alone.
template <class K, class V, class H = hashOf<K>, class E = equal<K>>
class HashMapM : public HashTableC {
public:
    typedef HashElemM<K, V> ElemT;
    typedef HashResultM<K, V, H, E> ResultT;
    typedef HashIteratorM<K, V, H, E> IteratorT;

    HashMapM() = default;
    ~HashMapM() override
    {
        const size_t ended = endAll(true);
        if (m_pool != nullptr) m_pool->close(ended);
    }

    // What the table asks; `key` points at a K.
    HashValT hashOf(const void* key) const final { return hashFunc(*static_cast<const K*>(key)); }
    BooleanT matches(HashElemI* elem, const void* key) const final
    {
        return equalFunc(static_cast<const ElemT*>(elem)->Key(), *static_cast<const K*>(key));
    }

    // The newest element with this key. The result does not own it.
    ResultT get(const K& key) const { return ResultT(this, find(key), false); }
    bool exists(const K& key) const { return find(key) != nullptr; }
    // Adds a pair, also beside others with its key.
    void add(const K& key, const V& value) { insert(newElem(key, value), hashFunc(key)); }
    // Adds a pair in place of the newest one with its key, which the result owns, if there was one.
    ResultT put(const K& key, const V& value)
    {
        const HashValT hash = hashFunc(key);
        ElemT* const elem = newElem(key, value);   // first: both may refer to what is displaced
        ElemT* const displaced = takeOut(elem->k, hash);
        insert(elem, hash);
        return ResultT(this, displaced, true);
    }
    // Takes the newest element with this key out. The result owns it.
    ResultT remove(const K& key) { return ResultT(this, takeOut(key, hashFunc(key)), true); }
    // Ends all elements.
    void clear() { endAll(false); }

    // Without `allow_dups` only the newest of equal keys is visited.
    IteratorT getIter(BooleanT allow_dups = false) const { return IteratorT(this, allow_dups); }
    // The addresses of all values and keys, those of older equal keys included. Valid while their elements
    // are in the map.
    ArrayM<V*> values() const;
    ArrayM<const K*> keys() const;

private:
    friend class HashIteratorM<K, V, H, E>;

    // An element in the pool. Deleting it, by whatever base, gives its memory back.
    class PooledElemT final : public ElemT {
    public:
        using ElemT::ElemT;
        static void* operator new(size_t, ElemPoolC* pool) { return pool->take(); }
        static void operator delete(void* place, ElemPoolC* pool) { pool->giveOwn(place); }   // K or V threw
        // NOLINTNEXTLINE(misc-new-delete-overloads,cert-dcl54-cpp): its counterpart is the new of a pool
        static void operator delete(void* place) { ElemPoolC::give(place); }
    };
    static constexpr bool IS_POOLED = ElemPoolC::isMeantFor(sizeof(PooledElemT), alignof(PooledElemT));
    // Maps that stay as small as this take their elements from the heap.
    static constexpr size_t SMALL_MAP = 16;

    static ElemT* elemOf(ListElemI* p) { return static_cast<ElemT*>(p); }

    ElemT* newElem(const K& key, const V& value)
    {
        if (!IS_POOLED || count < SMALL_MAP) return new ElemT(key, value);
        if (m_pool == nullptr) m_pool = new ElemPoolC(sizeof(PooledElemT));
        return new (m_pool) PooledElemT(key, value);
    }
    void insert(ElemT* elem, HashValT hash)
    {
        elem->hash_val = hash;
        link(elem, elem->list_next, hash);
    }

    // The link that holds the newest element with this key; null when there is none.
    ListElemI** findLink(const K& key, HashValT hash) const
    {
        const size_t bucket = shrinkHash(hash);
        if ((array->hints(bucket) & HashArrayC::hintOf(hash)) == 0) return nullptr;
        ListElemI** word = (*array)[bucket].headWord();
        for (; !ListElemI::isMarked(*word); word = &elemOf(*word)->list_next) {
            const ElemT* const elem = elemOf(*word);
            if (elem->hash_val == hash && equalFunc(elem->k, key)) return word;
        }
        return nullptr;
    }
    ElemT* find(const K& key) const
    {
        ListElemI** const word = findLink(key, hashFunc(key));
        return word != nullptr ? elemOf(*word) : nullptr;
    }
    ElemT* takeOut(const K& key, HashValT hash)
    {
        ListElemI** const word = findLink(key, hash);
        if (word == nullptr) return nullptr;
        ElemT* const elem = elemOf(*word);
        unlink(word, elem->list_next, hash);
        return elem;
    }
    // The head of the first bucket from `n` on that is not empty; `n` becomes its number.
    ElemT* headFrom(size_t& n) const
    {
        for (const size_t size = array->size(); n < size; ++n) {
            prefetchChain(n);
            if (ElemT* const head = elemOf((*array)[n].Head())) return head;
        }
        return nullptr;
    }
    // For a walk over all buckets that has come to `n`: the second element of a bucket is only known once
    // the first one has arrived.
    void prefetchChain(size_t n) const
    {
        prefetchBucket(n + 2 * ITERATE_AHEAD);
        if (n + ITERATE_AHEAD >= array->size()) return;
        ListElemI* const* const word = (*array)[n + ITERATE_AHEAD].headWord();
        __builtin_prefetch(*(ListElemI::isMarked(*word) ? word : &elemOf(*word)->list_next));
    }
    // A key that does not equal itself, such as a NaN, is not found: its element is the only one with it.
    bool isNewest(ElemT* elem) const
    {
        ListElemI** const word = findLink(elem->k, elem->hash_val);
        return word == nullptr || *word == elem;
    }

    // Not so for elements that came through the base, from the heap or out of another map. Comparing addresses
    // is faster; that of a type may differ between modules, and then the element is ended like those.
    bool isFromOwnPool(ElemT* elem) const
    {
        return &typeid(*elem) == &typeid(PooledElemT) && ElemPoolC::of(static_cast<PooledElemT*>(elem)) == m_pool;
    }

    size_t endAll(bool for_good);

    H hashFunc{};
    E equalFunc{};
    ElemPoolC* m_pool = nullptr;   // null while the map is small; ends with the last of its elements
};

// Unlinks and ends all elements. Returns how many from the pool were not given back to it, because it ends
// as well.
template <class K, class V, class H, class E>
size_t HashMapM<K, V, H, E>::endAll(bool for_good)
{
    size_t ended = 0;
    for (size_t bucket = 0; bucket < array->size(); ++bucket) {
        prefetchChain(bucket);
        ListElemI** const head = (*array)[bucket].headWord();
        while (!ListElemI::isMarked(*head)) {
            ElemT* const elem = elemOf(*head);
            *head = elem->list_next;
            elem->list_next = nullptr;
            if (!isFromOwnPool(elem)) {
                elem->destroy();
                continue;
            }
            static_cast<PooledElemT*>(elem)->~PooledElemT();
            for_good ? void(++ended) : m_pool->giveOwn(elem);
        }
    }
    forgetAll();
    return ended;
}

template <class V, class S = StringC>
class StringMapM : public HashMapM<S, V, StringMapHashOf<S>, equal<S>> {
};

template <class K, class V, class H, class E>
ArrayM<V*> HashMapM<K, V, H, E>::values() const
{
    ArrayM<V*> all;
    all.reserve(count);
    IteratorT it = getIter(true);
    for (++it; it; ++it) all << &it->Value();
    return all;
}

template <class K, class V, class H, class E>
ArrayM<const K*> HashMapM<K, V, H, E>::keys() const
{
    ArrayM<const K*> all;
    all.reserve(count);
    IteratorT it = getIter(true);
    for (++it; it; ++it) all << &it->Key();
    return all;
}

#endif   // TVXCMN_HASHMAP_H
