// catalog.h: one message catalog, read from its file (catalogformat.h).
//
// What a file says about itself is never trusted: a look-up reads what the file really holds, or finds nothing.
// The search goes over the index as it lies in the file, so the answer is the same from memory and from the disk,
// also for an index that is not sorted. Over one that is, as in all that a tool has made, lies a hash table, which
// also keeps each message that has been asked for. The table takes at most 48 bytes for each entry of the index
// and, like the file, no more than 64 MB in all; a catalog whose numbers do not spread over it does without.
//
// Thread safety: any thread.
#ifndef TVXCMN_ERROR_CATALOG_H
#define TVXCMN_ERROR_CATALOG_H

#include "errcatalog.h"

#include <atomic>
#include <memory>
#include <string>
#include <string_view>

struct ErrCatalogEntryT;

class ErrCatalogC final : public ErrCatalogI {
public:
    // Opens the file of that name; with "%L" in it, the first one of the user's language that there is. The empty
    // name is no file.
    explicit ErrCatalogC(const StringC& path);
    ~ErrCatalogC() override;
    ErrCatalogC(const ErrCatalogC&) = delete;
    ErrCatalogC& operator=(const ErrCatalogC&) = delete;

    StringC getMessage(ErrSevT& sev, ErrorT err, const char* def_str, const char* style) override;
    void setUserLevel(StringC p_userLevel) override;

    // Whether the catalog has a text for `err`, and its bytes, up to the first zero. They lie in the catalog or in
    // `buffer`.
    bool lookup(ErrorT err, std::string_view& text, std::string& buffer) const;
    // Whether it has one, and the message and severity of that.
    bool message(ErrorT err, StringC& text, ErrSevT& sev) const;

    // Directives are not held against arguments here: a text is handed on as it is.
    static StringC checkTypes(StringC text) { return text; }

    bool isOpen() const noexcept { return catd >= 0; }
    const StringC& path() const noexcept { return catpath; }

private:
    friend class ErrCatalogCellC;

    struct MessageT {
        StringC text;
        ErrSevT sev;
    };
    // A place of the hash table: free, or of one number, with its message once that has been asked for.
    struct SlotT {
        static const unsigned long FREE = ~0UL;
        unsigned long key = FREE;
        std::atomic<const MessageT*> message{nullptr};
        ~SlotT() { delete message.load(); }
    };

    // Opens a file for reading; the descriptor, or a negative value.
    static int opencat(const char* path);
    static int openFirst(std::string before, const std::string& behind);
    void readFile();
    void makeSlots();
    SlotT* slotOf(unsigned long key) const;
    bool search(unsigned long key, ErrCatalogEntryT& found) const;
    bool makeMessage(ErrorT err, MessageT& made) const;
    const char* bytesAt(unsigned long offset, size_t size, char* buffer) const;

    const StringC catpath;
    StringC userLevel;   // written only, see setUserLevel
    int catd = -1;       // -1: no file
    long nummsg = 0;
    std::unique_ptr<char[]> m_content;      // the whole file; null when it is too large for that
    size_t m_size = 0;                      // of m_content
    std::unique_ptr<SlotT[]> m_slots;       // null when there is no table
    unsigned m_slotBits = 0;                // 2 to the power of it is how many there are
    std::atomic<int> m_retiredReaders{0};   // the cell's, once it has another catalog (catalogcell.h)
};

#endif   // TVXCMN_ERROR_CATALOG_H
