// errentry.h: the entries of an error buffer, and the array that holds them.
//
// Thread safety: per-thread, as the buffer that they belong to.
#ifndef TVXCMN_ERROR_ERRENTRY_H
#define TVXCMN_ERROR_ERRENTRY_H

#include "errbuf.h"
#include "objarray.h"

#include <optional>

// What has been reported once. Nothing of it changes but the severity.
class ErrEntryC final : public ErrEntryI {
public:
    // Takes `text` apart at its separators; what follows a third one is dropped.
    ErrEntryC(ErrorT error, const StringC& text, ErrSevT severity, ErrSequenceT sequence);
    ErrEntryC(const ErrEntryC&) = delete;
    ErrEntryC& operator=(const ErrEntryC&) = delete;

    ErrorT error() const override { return err; }
    StringC message() const override { return text(); }
    ErrSevT severity() const override { return sev; }
    ErrSequenceT sequence() const override { return seq; }
    void setSeverity(ErrSevT severity) override { sev = severity; }
    StringC problem() const override { return m_problem; }
    StringC reason() const override { return m_reason; }
    StringC solution() const override { return m_solution; }

    const StringC& text() const { return m_message.has_value() ? *m_message : m_problem; }   // the message

private:
    friend class ErrEntryChainC;

    void takeApart(const StringC& text);

    const ErrorT err;
    StringC m_problem;
    StringC m_reason;
    StringC m_solution;
    ErrSevT sev;
    const ErrSequenceT seq;
    std::optional<StringC> m_message;   // of more than the problem
    ErrEntryC* m_next = nullptr;        // in a chain
};

// Owns its entries, except those that are removed, replaced by put or forgotten by clear.
class ErrEntryArrayC : public ObjArrayC {
public:
    ~ErrEntryArrayC() override { destroyAll(); }

    using ObjArrayC::destroy;
    void destroy(void* entry) override { delete static_cast<ErrEntryC*>(entry); }

    // As in ObjArrayC.
    ErrEntryC* operator[](size_t n) const { return static_cast<ErrEntryC*>(ObjArrayC::operator[](n)); }
    void add(size_t index, ErrEntryC* entry) { ObjArrayC::add(index, entry); }
    void add(ErrEntryC* entry) { add(size(), entry); }
    void put(size_t index, ErrEntryC* entry) { ObjArrayC::put(index, entry); }
    ErrEntryC* remove(size_t index) { return static_cast<ErrEntryC*>(ObjArrayC::remove(index)); }
};

// Entries on their way out of a buffer, first to last. Owns them. They are linked through themselves: a
// buffer is emptied as often as it is filled, and should not need memory for that.
class ErrEntryChainC {
public:
    ErrEntryChainC() = default;
    // Takes all entries out of an array.
    explicit ErrEntryChainC(ErrEntryArrayC& array);
    ~ErrEntryChainC() { destroyAll(); }
    ErrEntryChainC(const ErrEntryChainC&) = delete;
    ErrEntryChainC& operator=(const ErrEntryChainC&) = delete;

    void destroyAll();
    // Moves all entries of `other` to the front.
    void prepend(ErrEntryChainC& other);

    ErrEntryC* first() const { return m_first; }
    static ErrEntryC* after(const ErrEntryC* entry) { return entry->m_next; }

private:
    ErrEntryC* m_first = nullptr;
};

#endif   // TVXCMN_ERROR_ERRENTRY_H
