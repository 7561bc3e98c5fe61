#include "elempool.h"

#include <cstdlib>
#include <new>
#include <sys/single_threaded.h>

ElemPoolC::~ElemPoolC()
{
    while (BlockT* const block = m_blocks) {
        m_blocks = block->next;
        std::free(block);
    }
}

void* ElemPoolC::takeMore()
{
    m_free = m_given.exchange(nullptr, std::memory_order_acquire);
    if (m_free != nullptr) return take();

    BlockT* const block = static_cast<BlockT*>(std::malloc(BLOCK_BYTES));
    if (block == nullptr) throw std::bad_alloc();
    block->next = m_blocks;
    m_blocks = block;
    ++m_blockCount;
    m_fresh = reinterpret_cast<U8BitT*>(block + 1);
    m_end = m_fresh + placesOfBlock() * m_bytes;
    return take();
}

void ElemPoolC::takeBack(FreeT* freed)
{
    ASAN_POISON_MEMORY_REGION(freed + 1, hiddenBytes());
    FreeT* head = m_given.load(std::memory_order_relaxed);
    do {
        if (head == closedMark()) return leave(1);
        freed->next = head;
        if (__libc_single_threaded) {   // saves the locked instruction, which is most of the work
            m_given.store(freed, std::memory_order_relaxed);
            return;
        }
    } while (!m_given.compare_exchange_weak(head, freed, std::memory_order_release, std::memory_order_relaxed));
}

// The elements that are still out are counted down by their holders from now on, perhaps before they have
// been counted here: whoever brings the balance to 0 was the last.
void ElemPoolC::close(size_t ended)
{
    const FreeT* const given = m_given.exchange(closedMark(), std::memory_order_acquire);
    const size_t fresh = static_cast<size_t>(m_end - m_fresh) / m_bytes;
    const size_t free = fresh + lengthOf(m_free) + lengthOf(given) + ended;
    const long left = static_cast<long>(m_blockCount * placesOfBlock() - free);
    leave(-left);
}

void ElemPoolC::leave(long elements)
{
    if (m_left.fetch_sub(elements, std::memory_order_acq_rel) == elements) delete this;
}

size_t ElemPoolC::lengthOf(const FreeT* chain)
{
    size_t length = 0;
    for (; chain != nullptr; chain = chain->next) ++length;
    return length;
}
