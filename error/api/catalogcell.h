// catalogcell.h: where a catalog is kept that may be replaced while others look texts up in it.
//
// Readers are counted in the very word that names the current catalog, so that a reader gets the catalog and is
// counted in it by one step. Whoever replaces a catalog takes its readers off that word with it and hands their
// number to the catalog, from which each of them then takes itself; the last one deletes it. So neither side ever
// waits, and what has been replaced lives as long as its own readers. The child of a fork never gets those of its
// parent's other threads back: catalogs that these had in hand at the fork stay, all others go.
//
// Invariants: fewer than 65536 readers at once; catalogs lie below 2 to the power of 48, as all of a process does that
//             does not ask for more.
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
    const ErrCatalogC* current() const noexcept { return catalogIn(m_current.load()); }
    // Puts another catalog, or none, in place of the current one.
    void replace(std::unique_ptr<ErrCatalogC> catalog);
    // The same, if the current one is still `expected`; whether it was.
    bool replaceIf(const ErrCatalogC* expected, std::unique_ptr<ErrCatalogC> catalog);

private:
    class ReaderC;

    bool find(ErrorT err, StringC& text, ErrSevT& sev);
    // A word: the address of a catalog, with the number of its readers in the upper 16 bits. Without readers it is
    // the mere address. That of no catalog counts readers for nothing, and may overflow.
    static const unsigned long ONE_READER = 1UL << 48;
    static ErrCatalogC* catalogIn(unsigned long word) noexcept
    {
        return reinterpret_cast<ErrCatalogC*>(word & (ONE_READER - 1));
    }
    static unsigned long wordOf(ErrCatalogC* catalog) noexcept { return reinterpret_cast<unsigned long>(catalog); }
    static void retire(unsigned long word);
    static void addReaders(ErrCatalogC* retired, int change);

    std::atomic<unsigned long> m_current{0};
    std::atomic<bool> m_hasHadFile{false};
};

#endif   // TVXCMN_ERROR_CATALOGCELL_H
