// errimpl.h: the error buffer behind getErrBuf.
//
// Sequence numbers rise from entry to entry, as entries are only ever appended.
//
// Announcements run consumers of the tracer, and those may report errors and take entries out of the very
// buffer that announces. So entries are taken out before they are announced, and no operation relies on
// places in the array across an announcement.
//
// Thread safety: per-thread, but retain, release and checkpoint may come from any thread.
#ifndef TVXCMN_ERROR_ERRIMPL_H
#define TVXCMN_ERROR_ERRIMPL_H

#include "atomicm.h"
#include "error/impl/errentry.h"

class ErrBufImplC final : public ErrBufI, private ErrEntryArrayC {
public:
    ErrBufImplC() = default;
    ErrBufImplC(const ErrBufImplC&) = delete;
    ErrBufImplC& operator=(const ErrBufImplC&) = delete;

    void error(ErrorT err, ErrSevT sev, StringC str) override;
    unsigned long count() const override { return size(); }
    ErrEntryI* get(unsigned long index) const override { return index < size() ? (*this)[index] : nullptr; }
    void reset() override;
    ErrSequenceT checkpoint() override { return next; }
    void rollback(ErrSequenceT which) override;
    StringC coalesce(ErrSevT& worst) override;
    void retain() override { refCount.incr(); }
    void release() override;
    void destroy(unsigned long index) override { ErrEntryArrayC::destroy(index); }

private:
    using ErrEntryArrayC::destroy;

    AtomicM<ErrSequenceT> next{1};   // the number of the next entry
    AtomicM<int> refCount{1};
    ErrEntryChainC m_coalesced;   // read out but still readable, until the next coalesce or reset
};

// The calling thread lets go of its buffer, if it has one. It gets a new one when it asks again.
void destroyErrBuf();
// What happens to `buffer` when its thread ends.
void CleanUpErrBuf(void* buffer);

#endif   // TVXCMN_ERROR_ERRIMPL_H
