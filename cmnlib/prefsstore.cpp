#include "cmnlib/prefsstore.h"

namespace {

const size_t LAST_BLOCK = 64 * 1024;   // larger ones malloc may ask of the system each time

}   // namespace

void PrefsStoreC::addBlock(size_t size)
{
    size = std::max(size, m_blockSize);
    m_blocks.emplace_back(new char[size]);
    m_free = m_blocks.back().get();
    m_end = m_free + size;
    m_blockSize = std::min(2 * m_blockSize, LAST_BLOCK);
}

void PrefsStoreC::clear()
{
    m_blocks.clear();
    m_free = m_end = nullptr;
    m_blockSize = FIRST_BLOCK;
    m_text.clear();
    m_isLoading = false;
}
