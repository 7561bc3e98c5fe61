#include "error/api/catalogcell.h"

#include <utility>

// Keeps the catalog that it has found in the cell readable.
class ErrCatalogCellC::ReaderC {
public:
    explicit ReaderC(ErrCatalogCellC& cell) : m_cell(cell)
    {
        m_cell.m_readers.fetch_add(1);
        m_catalog = m_cell.m_current.load();
    }
    ~ReaderC()
    {
        if (m_cell.m_readers.fetch_sub(1) == 1 && m_cell.m_retired.load() != nullptr) m_cell.deleteRetired();
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
    retire(m_current.exchange(catalog.release()));
}

bool ErrCatalogCellC::replaceIf(const ErrCatalogC* expected, std::unique_ptr<ErrCatalogC> catalog)
{
    ErrCatalogC* before = const_cast<ErrCatalogC*>(expected);
    if (catalog != nullptr && catalog->isOpen()) m_hasHadFile.store(true, std::memory_order_release);
    if (!m_current.compare_exchange_strong(before, catalog.get())) return false;
    (void)catalog.release();
    retire(before);
    return true;
}

void ErrCatalogCellC::retire(ErrCatalogC* catalog)
{
    if (catalog == nullptr) return;
    pushRetired(catalog);
    if (m_readers.load() == 0) deleteRetired();
}

void ErrCatalogCellC::pushRetired(ErrCatalogC* first)
{
    ErrCatalogC* last = first;
    while (last->m_nextRetired != nullptr) last = last->m_nextRetired;
    ErrCatalogC* head = m_retired.load();
    do {
        last->m_nextRetired = head;
    } while (!m_retired.compare_exchange_weak(head, first));
}

// Takes the chain before it looks for readers: one that comes after that look finds another catalog.
void ErrCatalogCellC::deleteRetired()
{
    while (ErrCatalogC* chain = m_retired.exchange(nullptr)) {
        if (m_readers.load() == 0) {
            while (chain != nullptr) delete std::exchange(chain, chain->m_nextRetired);
        } else {
            pushRetired(chain);
            if (m_readers.load() != 0) return;   // the last one of them comes here
        }
    }
}
