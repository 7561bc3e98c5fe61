#include "hashtbl.h"

#include "assertfatal.h"

#include <new>

namespace {

// Growth splits the buckets in order. Their elements are fetched this many steps before.
const size_t SPLIT_AHEAD = 4;

bool isFree(const HashElemI* elem)
{
    return TVX_CHECK(!elem->inSomeTable(), "Element incorrectly initialized or already in another hashtable");
}

}   // namespace

// --- elements and buckets -------------------------------------------------------------------------

void HashElemI::dump(FILE* stream, unsigned mask) const
{
    const unsigned long hash = const_cast<HashElemI*>(this)->hash_r() & mask;
    std::fprintf(stream, "%p(0x%lX)", static_cast<const void*>(this), hash);
}

bool HashListC::insertAfter(HashElemI* elem, HashElemI* after)
{
    return after != nullptr ? ListLWC::insertAfter(elem, after) : prepend(elem);
}

void HashListC::dump(FILE* stream, unsigned mask) const
{
    for (const HashElemI* elem = Head(); elem != nullptr; elem = elem->next()) {
        std::fputc(' ', stream);
        elem->dump(stream, mask);
    }
    std::fputc('\n', stream);
}

HashArrayC::~HashArrayC() { HashArrayC::clear(); }

void HashArrayC::grow(HashTableC* table)
{
    const size_t n = m_size++;
    if (n < SEGMENT) {
        addAt(n);
        m_first.buckets = static_cast<HashListC*>(BlobArrayC::operator[](0));   // may have moved
    } else if (n % SEGMENT == 0) {
        addSegment();
    }
    new (&(*this)[n]) HashListC(table);
    hints(n) = 0;
}

void HashArrayC::addSegment()
{
    if (m_all.size() == 0) m_all << m_first;
    // The hints come first: the first bucket then has its own on the same page, and one new page is enough.
    U8BitT* const storage = static_cast<U8BitT*>(resizedStorage(nullptr, SEGMENT + SEGMENT * sizeof(HashListC)));
    m_all << SegmentT{reinterpret_cast<HashListC*>(storage + SEGMENT), storage};
    m_segments = m_all.begin();
}

void HashArrayC::resize()
{
    BlobArrayC::resize();
    m_hintRoom = nextCapacity(m_hintRoom);
    m_first.hints = static_cast<U8BitT*>(resizedStorage(m_first.hints, m_hintRoom));
}

void HashArrayC::clear()
{
    for (size_t n = 0; n < m_size; ++n) HashArrayC::destroy(&(*this)[n]);
    for (size_t i = 1; i < m_all.size(); ++i) freeStorage(m_all[i].hints);
    freeStorage(m_first.hints);
    m_all.clear();
    m_first = {nullptr, nullptr};
    m_segments = &m_first;
    m_hintRoom = 0;
    m_size = 0;
    BlobArrayC::clear();
}

void HashArrayC::destroy(void* bucket) { static_cast<HashListC*>(bucket)->clear(); }

// --- the table ------------------------------------------------------------------------------------

HashTableC::HashTableC() : array(new HashArrayC) { grow(); }

HashTableC::~HashTableC() { delete array; }

HashElemI* HashTableC::get(const void* key) const { return find(key, hashOf(key)); }

// Every element of the bucket is asked: what matches a key may have another hash.
HashElemI* HashTableC::find(const void* key, HashValT hash) const
{
    HashElemI* elem = (*array)[shrinkHash(hash)].Head();
    while (elem != nullptr && !matches(elem, key)) elem = elem->next();
    return elem;
}

HashElemI* HashTableC::next(HashElemI* current, const void* key) const
{
    if (current == nullptr) current = get(key);
    if (!TVX_CHECK(current != nullptr, "current")) return nullptr;
    HashElemI* elem = current->next();
    while (elem != nullptr && !matches(elem, key)) elem = elem->next();
    return elem;
}

void HashTableC::add(HashElemI* elem)
{
    if (!isFree(elem)) return;
    const HashValT hash = elem->hash_r() = hashOf(elem->key());
    link(elem, *elem->next_p(), hash);
}

HashElemI* HashTableC::put(HashElemI* elem)
{
    const HashValT hash = hashOf(elem->key());
    HashElemI* const displaced = find(elem->key(), hash);
    if (displaced != elem && !isFree(elem)) return nullptr;
    remove(displaced);
    elem->hash_r() = hash;
    link(elem, *elem->next_p(), hash);
    return displaced;
}

BooleanT HashTableC::remove(HashElemI* elem)
{
    if (elem == nullptr || !elem->inSomeTable()) return false;
    const HashValT hash = elem->hash_r();
    ListElemI** word = (*array)[shrinkHash(hash)].headWord();
    while (*word != elem) {
        if (ListElemI::isMarked(*word)) return false;
        word = (*word)->next_p();
    }
    unlink(word, *elem->next_p(), hash);
    return true;
}

HashElemI* HashTableC::remove(const void* key)
{
    HashElemI* const elem = get(key);
    remove(elem);
    return elem;
}

BooleanT HashTableC::removeElem(HashElemI* elem)
{
    if (elem == nullptr || !elem->inSomeTable()) return false;
    HashTableC* const table = elem->getTable();
    if (!TVX_CHECK(table != nullptr, "Can't remove element, it isn't in any table")) return false;
    return table->remove(elem);
}

BooleanT HashTableC::destroy(const void* key)
{
    HashElemI* const elem = remove(key);
    if (elem == nullptr) return false;
    elem->destroy();
    return true;
}

void HashTableC::destroyAll()
{
    for (size_t n = 0; n < array->size(); ++n) {
        HashListC& bucket = (*array)[n];
        while (HashElemI* const elem = bucket.Head()) {
            bucket.remove(elem);
            elem->destroy();
        }
    }
    forgetAll();
}

void HashTableC::clear()
{
    for (size_t n = 0; n < array->size(); ++n) (*array)[n].clear();
    forgetAll();
}

void HashTableC::forgetAll()
{
    for (size_t n = 0; n < array->size(); ++n) array->hints(n) = 0;
    empty_lists = array->size();
    count = 0;
    ++generation;
}

// --- growth ---------------------------------------------------------------------------------------

void HashTableC::grow()
{
    const size_t n = array->size();
    array->grow(this);
    ++empty_lists;
    if (n > bits_mask) bits_mask = bits_mask * 2 + 1;
    const HashValT low_mask = bits_mask >> 1;   // what told the buckets apart before this round of splits
    const size_t from = n & low_mask;
    if (from == n) return;   // the very first bucket
    split(from, n, low_mask + 1);
    prefetchBucket(from + SPLIT_AHEAD);
}

// Shares the elements of one bucket out by a bit of their hash. Each side keeps their order. Links are
// written in place: both buckets end with the same marker.
void HashTableC::split(size_t from, size_t to, HashValT split_bit)
{
    struct SideT {
        ListElemI** word;   // where the next element of this side goes
        U8BitT hints;
    };
    if ((*array)[from].isEmpty()) return;
    SideT sides[2] = {{(*array)[from].headWord(), 0}, {(*array)[to].headWord(), 0}};
    ListElemI* const marker = *sides[1].word;

    for (ListElemI* p = *sides[0].word; !ListElemI::isMarked(p);) {
        HashElemI* const elem = static_cast<HashElemI*>(p);
        const HashValT hash = elem->hash_r();
        SideT& side = sides[(hash & split_bit) != 0];
        *side.word = elem;
        side.word = elem->next_p();
        side.hints |= HashArrayC::hintOf(hash);
        p = *side.word;
    }
    *sides[0].word = marker;
    *sides[1].word = marker;
    array->hints(from) = sides[0].hints;
    array->hints(to) = sides[1].hints;
    if (sides[0].hints == 0) ++empty_lists;
    if (sides[1].hints != 0) --empty_lists;
}

// --- the listing ----------------------------------------------------------------------------------

void HashTableC::dump(FILE* stream) const
{
    if (stream == nullptr) stream = stdout;
    std::fprintf(stream, "Dumping table at %p, size=%d (%d empty), mask=%X\n", static_cast<const void*>(this),
                 static_cast<int>(array->size()), static_cast<int>(empty_lists), bits_mask);
    for (size_t n = 0; n < array->size(); ++n) {
        const HashListC& bucket = (*array)[n];
        if (bucket.isEmpty()) continue;
        std::fprintf(stream, "\t0x%X:", static_cast<unsigned>(n));
        bucket.dump(stream, bits_mask);
    }
}

// --- iterators ------------------------------------------------------------------------------------

void HashIteratorC::rewind()
{
    list_num = 0;
    curr = nullptr;
    generation = table->generation;
}

HashElemI* HashIteratorC::next(long& status)
{
    if (!isFresh(status)) return nullptr;
    return curr = getNext(list_num, curr);
}

HashElemI* HashIteratorC::current(long& status)
{
    if (curr == nullptr) return next(status);
    return isFresh(status) ? curr : nullptr;
}

HashElemI* HashIteratorC::remove(long& status)
{
    if (!isFresh(status)) return nullptr;
    if (curr == nullptr) curr = getNext(list_num, nullptr);
    if (curr == nullptr) return nullptr;

    size_t n = list_num;
    HashElemI* const following = getNext(n, curr);
    HashElemI* const removed = curr;
    const_cast<HashTableC*>(table)->remove(removed);
    generation = table->generation;
    list_num = n;
    curr = following;
    return removed;
}

HashElemI* HashIteratorC::getNext(size_t& n, HashElemI* from) const
{
    if (from != nullptr) {
        for (HashElemI* elem = from->next(); elem != nullptr; elem = elem->next()) {
            if (allow_dups || isNewest(elem, n)) return elem;
        }
        ++n;
    }
    return headFrom(n);
}

bool HashIteratorC::isNewest(HashElemI* elem, size_t n) const
{
    const void* const key = elem->key();
    HashElemI* first = (*table->array)[n].Head();
    while (first != elem && !table->matches(first, key)) first = first->next();
    return first == elem;
}
