// elempool.h: where a typed map (hashmap.h) takes the memory of its elements from.
//
// Elements of one size are cut from blocks, which saves the heap's work and space for each of them and
// lets elements that were added together lie together. To users of a map nothing differs from elements
// that are made by new and ended by delete one at a time.
//
// Ownership:     a map makes a pool and closes it in its end. Elements that were taken out of the map may
//                live on: a closed pool goes with the last of them.
// Thread safety: give may be called by any thread at any time, since an element that was taken out is
//                nobody's but its holder's. All else is unlocked, for the map's owner.
#ifndef TVXCMN_ELEMPOOL_H
#define TVXCMN_ELEMPOOL_H

#include "basetypes.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

// The address sanitizer sees elements that are gone as it would see deleted ones.
#ifdef __has_feature
#define TVX_HAS_FEATURE(feature) __has_feature(feature)
#else
#define TVX_HAS_FEATURE(feature) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || TVX_HAS_FEATURE(address_sanitizer)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#endif

class ElemPoolC {
public:
    // Whether a pool is worth while for elements of this size, and can align them.
    static constexpr bool isMeantFor(size_t bytes, size_t alignment)
    {
        return bytes <= 256 && alignment <= sizeof(void*);
    }

    // `elem_bytes` is a multiple of the size of a pointer.
    explicit ElemPoolC(size_t elem_bytes) : m_bytes(sizeof(ElemPoolC*) + elem_bytes) {}
    ElemPoolC(const ElemPoolC&) = delete;
    ElemPoolC& operator=(const ElemPoolC&) = delete;

    // Memory for an element.
    void* take()
    {
        if (m_free != nullptr) {
            FreeT* const freed = m_free;
            m_free = freed->next;
            ASAN_UNPOISON_MEMORY_REGION(freed + 1, hiddenBytes());
            return freed;
        }
        if (m_fresh == m_end) return takeMore();
        ElemPoolC** const place = reinterpret_cast<ElemPoolC**>(m_fresh);
        m_fresh += m_bytes;
        *place = this;
        return place + 1;
    }

    // The pool that an element is from.
    static ElemPoolC* of(void* elem) { return static_cast<ElemPoolC**>(elem)[-1]; }
    // Takes the memory of an element back into the pool that it is from.
    static void give(void* elem) { of(elem)->takeBack(static_cast<FreeT*>(elem)); }
    // The same, for the map's owner and an element from this pool.
    void giveOwn(void* elem)
    {
        FreeT* const freed = static_cast<FreeT*>(elem);
        ASAN_POISON_MEMORY_REGION(freed + 1, hiddenBytes());
        freed->next = m_free;
        m_free = freed;
    }

    // The map ends. `ended` of its elements were ended without being given back. Deletes the pool, at
    // once or with the last element.
    void close(size_t ended);

private:
    struct FreeT {
        FreeT* next;
    };
    // The head of a block. Places follow: the pool's address, then the element.
    struct BlockT {
        BlockT* next;
    };
    static constexpr size_t BLOCK_BYTES = 16384 - 16;   // leaves room for the heap's own header

    ~ElemPoolC();   // by close, or the last give
    void* takeMore();
    void takeBack(FreeT* freed);
    size_t hiddenBytes() const { return m_bytes - sizeof(ElemPoolC*) - sizeof(FreeT); }
    size_t placesOfBlock() const { return (BLOCK_BYTES - sizeof(BlockT)) / m_bytes; }
    static size_t lengthOf(const FreeT* chain);
    static FreeT* closedMark() { return reinterpret_cast<FreeT*>(uintptr_t{1}); }
    void leave(long elements);

    const size_t m_bytes;        // of a place
    FreeT* m_free = nullptr;     // places to be used again
    U8BitT* m_fresh = nullptr;   // places of the newest block that were never used
    U8BitT* m_end = nullptr;
    BlockT* m_blocks = nullptr;   // owned
    size_t m_blockCount = 0;

    std::atomic<FreeT*> m_given{nullptr};   // what give took back since takeMore looked; the mark once closed
    std::atomic<long> m_left{0};            // elements that outlive the map, once that is known
};

#endif   // TVXCMN_ELEMPOOL_H
