// prefsstore.h: the memory of one preference file, and the index of its names.
//
// Names, values, sections and keys live in a few large blocks, and the text of a loaded file is cut in place, so
// that a file of ten thousand lines costs some twenty allocations. All of it goes away at once.
//
// Thread safety: unlocked.
#ifndef TVXCMN_CMNLIB_PREFSSTORE_H
#define TVXCMN_CMNLIB_PREFSSTORE_H

#include "prefs.h"

#include "cmnlib/prefstext.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

class PrefsStoreC {
public:
    // Memory that lasts until the store is cleared; objects in it are never destroyed.
    void* allocate(size_t size)
    {
        size = (size + ALIGNMENT - 1) & ~(ALIGNMENT - 1);
        if (size > static_cast<size_t>(m_end - m_free)) addBlock(size);
        void* const result = m_free;
        m_free += size;
        return result;
    }
    template <class T, class... ArgT>
    T* make(ArgT&&... args)
    {
        return new (allocate(sizeof(T))) T{std::forward<ArgT>(args)...};
    }
    // `text`, terminated; itself when it is a terminated piece of the file that is being loaded.
    const char* keep(std::string_view text)
    {
        if (isLoading(text.data()) && text.data()[text.size()] == '\0') return text.data();
        char* const copy = static_cast<char*>(allocate(text.size() + 1));
        if (!text.empty()) std::memcpy(copy, text.data(), text.size());
        copy[text.size()] = '\0';
        return copy;
    }
    bool isLoading(const char* text) const
    {
        return m_isLoading && text >= m_text.data() && text < m_text.data() + m_text.size();
    }

    // The file that is being loaded: from here on pieces of it are kept without a copy.
    std::string& beginLoading(std::string&& text)
    {
        m_text = std::move(text);
        m_isLoading = true;
        return m_text;
    }
    void endLoading() { m_isLoading = false; }

    void clear();

private:
    static constexpr size_t ALIGNMENT = alignof(PrefsKeyElem);
    static constexpr size_t FIRST_BLOCK = 1024;

    void addBlock(size_t size);

    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_free = nullptr;
    char* m_end = nullptr;
    size_t m_blockSize = FIRST_BLOCK;
    std::string m_text;
    bool m_isLoading = false;
};

inline const char* nameOf(const PrefsKeyElem& key) { return key.ke_name_p; }
inline const char* nameOf(const PrefsSectionElem& section) { return section.ps_name_p; }

// Open addressing, at most three quarters full; what is marked as removed stays in it. An element without a name
// is `onNameless`' affair and equals nothing.
template <class ElemT, class NamelessT>
ElemT* findName(const PrefsIndexM<ElemT>& index, std::string_view name, HashValT hash, NamelessT onNameless)
{
    if (index.used == 0) return nullptr;
    for (size_t at = hash & index.mask; index.slots[at].elem != nullptr; at = (at + 1) & index.mask) {
        if (index.slots[at].hash != hash) continue;
        ElemT* const elem = index.slots[at].elem;
        if (nameOf(*elem) == nullptr) {
            onNameless();
        } else if (prefstext::areEqual(name, nameOf(*elem))) {
            return elem;
        }
    }
    return nullptr;
}

template <class ElemT>
void putIntoSlot(PrefsIndexM<ElemT>& index, ElemT* elem, HashValT hash)
{
    size_t at = hash & index.mask;
    while (index.slots[at].elem != nullptr) at = (at + 1) & index.mask;
    index.slots[at] = {elem, hash};
}

template <class ElemT>
void growIndex(PrefsIndexM<ElemT>& index, PrefsStoreC& store)
{
    const PrefsIndexM<ElemT> old = index;
    const size_t oldSize = old.slots != nullptr ? old.mask + 1 : 0;
    const size_t size = std::max<size_t>(4 * oldSize, 8);
    index.slots = static_cast<typename PrefsIndexM<ElemT>::SlotT*>(store.allocate(size * sizeof *index.slots));
    index.mask = size - 1;
    std::uninitialized_value_construct_n(index.slots, size);
    for (size_t i = 0; i < oldSize; ++i) {
        if (old.slots[i].elem != nullptr) putIntoSlot(index, old.slots[i].elem, old.slots[i].hash);
    }
}

// Requires: a name that is not in it.
template <class ElemT>
void addToIndex(PrefsIndexM<ElemT>& index, PrefsStoreC& store, ElemT* elem, HashValT hash)
{
    if (index.slots == nullptr || 4 * (index.used + 1) > 3 * (index.mask + 1)) growIndex(index, store);
    putIntoSlot(index, elem, hash);
    ++index.used;
}

#endif   // TVXCMN_CMNLIB_PREFSSTORE_H
