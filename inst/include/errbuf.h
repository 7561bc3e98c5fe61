// errbuf.h: the error buffer of a thread, and its entries.
//
// Whatever fails in a thread is recorded in that thread's buffer, oldest first, until the thread reads
// and empties it. Recording goes through Error (errorapi.h), which also knows the texts; the buffer
// itself comes from getErrBuf (tvxcmn.h).
//
// A text has up to three parts, problem, reason and solution, with the character U+0001 between them.
// That character in the value of an argument shifts the parts.
//
// Thread safety: per-thread. Only retain, release and checkpoint may be called from another thread.
// Ownership:     the buffer is its thread's and ends with the thread, unless somebody retains it; the
//                entries are the buffer's.
#ifndef TVXCMN_ERRBUF_H
#define TVXCMN_ERRBUF_H

#include "errornumbers.h"
#include "stringc.h"

enum ErrSevT : int {
    ERR_SEV_NONE = 0,   // not worth recording
    ERR_SEV_MONITOR = 1,
    ERR_SEV_INFO = 2,
    ERR_SEV_WARN = 3,
    ERR_SEV_ERROR = 4,
    ERR_SEV_FATAL = 5
};

// The place of an entry in the history of its buffer: the first is 1, and numbers are not used again.
typedef unsigned long ErrSequenceT;

// The character between problem, reason and solution.
constexpr UCS4 ERR_TEXT_SEPARATOR = 1;

class ErrEntryI {
public:
    virtual ErrorT error() const = 0;
    // The whole text: problem, then reason and solution on lines of their own when they are not empty.
    virtual StringC message() const = 0;
    virtual ErrSevT severity() const = 0;
    virtual ErrSequenceT sequence() const = 0;
    virtual void setSeverity(ErrSevT severity) = 0;
    virtual StringC problem() const = 0;
    virtual StringC reason() const = 0;
    virtual StringC solution() const = 0;
    virtual ~ErrEntryI() = default;

    operator StringC() const { return message(); }
};

class ErrBufI {
public:
    // Records `str`, whatever `sev`, and announces it on the tracer as "Occurrence".
    virtual void error(ErrorT err, ErrSevT sev, StringC str) = 0;
    virtual unsigned long count() const = 0;
    // The entry at `index`, 0 being the oldest; null when there is none. It stays readable until it is
    // taken out by reset, rollback or destroy, and, after coalesce, until the next coalesce or reset.
    virtual ErrEntryI* get(unsigned long index) const = 0;
    // Takes all entries out and announces each as "Report".
    virtual void reset() = 0;
    // The sequence number that the next entry will get.
    virtual ErrSequenceT checkpoint() = 0;
    // Takes out the entries whose sequence number is `which` or above, newest first, and announces each as
    // "Recovery".
    virtual void rollback(ErrSequenceT which) = 0;
    // Takes all entries out and announces each as "Report". Returns their messages, one after the other on
    // lines of their own, and sets `worst` to the highest of their severities.
    virtual StringC coalesce(ErrSevT& worst) = 0;
    // One holder more. The buffer begins with one, its thread.
    virtual void retain() = 0;
    // One holder less; the last one takes the buffer with it.
    virtual void release() = 0;
    // Takes one entry out in silence. Requires: index < count() ("Attempt to destroy element past end of
    // BlobArrayC"). Otherwise: nothing.
    virtual void destroy(unsigned long index) = 0;
    virtual ~ErrBufI() = default;
};

#endif   // TVXCMN_ERRBUF_H
