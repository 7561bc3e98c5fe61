#include "error/impl/errimpl.h"

#include "cmnlib/neverdestroyed.h"
#include "error/impl/traceerror.h"
#include "threadptr.h"
#include "tvxcmn.h"

#include <algorithm>
#include <memory>

namespace {

// The calling thread's buffer. Looked up at every report, so it does without the call that a key, or another
// model of thread-local storage, takes.
__attribute__((tls_model("initial-exec"))) constinit thread_local ErrBufImplC* threadBuffer = nullptr;

// Only its clean-up at the end of a thread is needed. Never destroyed, so that threads which are still running
// while the process exits can have buffers.
ThreadSpecificPointerM<ErrBufImplC>& errbuf_ptr()
{
    static NeverDestroyedM<ThreadSpecificPointerM<ErrBufImplC>> pointer(CleanUpErrBuf);
    return *pointer;
}

void announce(const char* action, const ErrEntryC& entry)
{
    TraceError(action, entry.error(), entry.severity(), entry.text());
}

void setThreadBuffer(ErrBufImplC* buffer)
{
    threadBuffer = buffer;
    errbuf_ptr() = buffer;
}

}   // namespace

extern "C" ErrBufI* getErrBuf(int)
{
    if (__builtin_expect(threadBuffer == nullptr, 0)) setThreadBuffer(new ErrBufImplC);
    return threadBuffer;
}

void destroyErrBuf()
{
    ErrBufImplC* const buffer = threadBuffer;
    if (buffer == nullptr) return;
    setThreadBuffer(nullptr);
    buffer->release();
}

void CleanUpErrBuf(void* buffer)
{
    if (buffer == nullptr) return;
    threadBuffer = nullptr;   // what ends after this may still report, and gets a new one
    static_cast<ErrBufImplC*>(buffer)->release();
}

void ErrBufImplC::error(ErrorT err, ErrSevT sev, StringC str)
{
    add(new ErrEntryC(err, str, sev, next.incr()));
    TraceError("Occurrence", err, sev, str);
}

void ErrBufImplC::reset()
{
    const ErrEntryChainC taken(*this);
    m_coalesced.destroyAll();
    for (const ErrEntryC* entry = taken.first(); entry != nullptr; entry = ErrEntryChainC::after(entry)) {
        announce("Report", *entry);
    }
}

void ErrBufImplC::rollback(ErrSequenceT which)
{
    const ErrSequenceT end = next;
    for (size_t n = size(); n-- > 0;) {
        if (n >= size() || (*this)[n]->sequence() >= end) continue;   // a consumer took entries out, or added some
        if ((*this)[n]->sequence() < which) return;
        const std::unique_ptr<const ErrEntryC> entry(remove(n));
        announce("Recovery", *entry);
    }
}

StringC ErrBufImplC::coalesce(ErrSevT& worst)
{
    worst = ERR_SEV_NONE;
    m_coalesced.destroyAll();
    ErrEntryChainC taken(*this);
    StringC text = taken.first() != nullptr ? taken.first()->text() : StringC();
    for (const ErrEntryC* entry = taken.first(); entry != nullptr; entry = ErrEntryChainC::after(entry)) {
        if (entry != taken.first()) {
            text += UCS4{'\n'};
            text += entry->text();
        }
        announce("Report", *entry);
        worst = std::max(worst, entry->severity());
    }
    m_coalesced.prepend(taken);
    return text;
}

void ErrBufImplC::release()
{
    if (refCount.decr() != 1) return;
    if (threadBuffer == this) setThreadBuffer(nullptr);
    delete this;
}
