#include "error/api/catalogcell.h"

// Keeps the catalog that it has found in the cell readable.
class ErrCatalogCellC::ReaderC {
public:
    explicit ReaderC(ErrCatalogCellC& cell) : m_cell(cell), m_catalog(catalogIn(cell.m_current.fetch_add(ONE_READER)))
    {
    }
    ~ReaderC()
    {
        if (m_catalog == nullptr) return;
        unsigned long word = m_cell.m_current.load();
        while (catalogIn(word) == m_catalog) {
            if (m_cell.m_current.compare_exchange_weak(word, word - ONE_READER)) return;
        }
        addReaders(m_catalog, -1);
    }
    ReaderC(const ReaderC&) = delete;
    ReaderC& operator=(const ReaderC&) = delete;

    ErrCatalogC* catalog() const { return m_catalog; }

private:
    ErrCatalogCellC& m_cell;
    ErrCatalogC* m_catalog;   // null: there is none
};

bool ErrCatalogCellC::find(ErrorT err, StringC& text, ErrSevT& sev)
{
    const ReaderC reader(*this);
    return reader.catalog() != nullptr && reader.catalog()->message(err, text, sev);
}

void ErrCatalogCellC::setUserLevel(const StringC& level)
{
    const ReaderC reader(*this);
    if (reader.catalog() != nullptr) reader.catalog()->setUserLevel(level);
}

void ErrCatalogCellC::replace(std::unique_ptr<ErrCatalogC> catalog)
{
    if (catalog != nullptr && catalog->isOpen()) m_hasHadFile.store(true, std::memory_order_release);
    retire(m_current.exchange(wordOf(catalog.release())));
}

bool ErrCatalogCellC::replaceIf(const ErrCatalogC* expected, std::unique_ptr<ErrCatalogC> catalog)
{
    if (catalog != nullptr && catalog->isOpen()) m_hasHadFile.store(true, std::memory_order_release);
    unsigned long before = m_current.load();
    do {
        if (catalogIn(before) != expected) return false;
    } while (!m_current.compare_exchange_weak(before, wordOf(catalog.get())));
    (void)catalog.release();
    retire(before);
    return true;
}

// Those of its readers who have left meanwhile are taken off already.
void ErrCatalogCellC::retire(unsigned long word)
{
    if (catalogIn(word) != nullptr) addReaders(catalogIn(word), static_cast<int>(word / ONE_READER));
}

void ErrCatalogCellC::addReaders(ErrCatalogC* retired, int change)
{
    if (retired->m_retiredReaders.fetch_add(change) + change == 0) delete retired;
}
