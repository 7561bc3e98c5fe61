// catalogcell.h: where a catalog is kept that may be replaced while others look texts up in it.
//
// Readers are counted. A catalog that has been replaced is retired, and deleted by whoever finds that nobody is
// reading: readers who come later can only get the new one. So neither side ever waits, which also keeps the child
// of a fork from waiting for a reader that it does not have; what was retired at that moment may stay for good.
//
// Invariant: a reader that holds a retired catalog has been counted since before the catalog was retired.
//
// Thread safety: any thread.
// Ownership:     the cell owns its catalogs. Constant-initialised; who needs it to have an end calls `replace`.
#ifndef TVXCMN_ERROR_CATALOGCELL_H
#define TVXCMN_ERROR_CATALOGCELL_H

#include "error/api/catalog.h"

#include <atomic>
#include <memory>

class ErrCatalogCellC {
public:
    constexpr ErrCatalogCellC() noexcept = default;
    ErrCatalogCellC(const ErrCatalogCellC&) = delete;
    ErrCatalogCellC& operator=(const ErrCatalogCellC&) = delete;

    // The message of `err` and its severity, if the catalog knows the number. As long as there has been no file this
    // is one load and a branch.
    bool message(ErrorT err, StringC& text, ErrSevT& sev)
    {
        return m_hasHadFile.load(std::memory_order_acquire) && find(err, text, sev);
    }
    void setUserLevel(const StringC& level);

    // The catalog, only to be compared; null before the first one.
    const ErrCatalogC* current() const noexcept { return m_current.load(); }
    // Puts another catalog, or none, in place of the current one.
    void replace(std::unique_ptr<ErrCatalogC> catalog);
    // The same, if the current one is still `expected`; whether it was.
    bool replaceIf(const ErrCatalogC* expected, std::unique_ptr<ErrCatalogC> catalog);

private:
    class ReaderC;

    bool find(ErrorT err, StringC& text, ErrSevT& sev);
    void retire(ErrCatalogC* catalog);
    void pushRetired(ErrCatalogC* first);
    void deleteRetired();

    std::atomic<ErrCatalogC*> m_current{nullptr};
    std::atomic<ErrCatalogC*> m_retired{nullptr};   // a chain
    std::atomic<int> m_readers{0};
    std::atomic<bool> m_hasHadFile{false};
};

#endif   // TVXCMN_ERROR_CATALOGCELL_H
