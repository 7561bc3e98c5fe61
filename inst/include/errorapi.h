// errorapi.h: reporting failures, and taking them back.
//
// A report is a number and a default text. The text that is recorded comes from the message catalogs
// when one of them knows the number, and otherwise is the system's own text if the number is that of an
// errno (which is an error), or the default text. Texts may say their severity:
//
//     "{w} Disk nearly full"     a mark of the letters e error, w warning, i information, m monitor, f fatal,
//                                # not recorded at all; the last letter counts
//     "Disk full"                without a mark: an error
//     "\1\1{e}\1Disk full\1The log has grown\1Remove old logs"
//                                variants: style name (empty: for everybody), mark, problem, reason, solution
//
// A text without an argument list stands as it is; with one, even an empty one, it is a format
// (StringC::format), and the difference shows in its percent signs.
//
// No function changes errno, and "%!" in a text means the errno with which the caller came.
//
// Thread safety: any thread; what is recorded goes into the calling thread's buffer (errbuf.h).
#ifndef TVXCMN_ERRORAPI_H
#define TVXCMN_ERRORAPI_H

#include "arglist.h"
#include "errbuf.h"
#include "errornumbers.h"
#include "stringc.h"

#include <cstdarg>

// Report `err` and return it, so that a caller can report and return in one statement. `def_str` is the
// text when no catalog knows the number; null stands for the empty text.
//
// The arguments of a va_list are read as `def_str` says; as the text of the catalog only when there is no
// `def_str`. A text with more directives than arguments is an assertion of the formatter ("a != 0").
ErrorT Error(ErrorT err, const char* def_str);
ErrorT Error(ErrorT err, const char* def_str, ArgListC arglist);
ErrorT ErrorVA(ErrorT err, const char* def_str, std::va_list params);
// Reports a failure of the system under its errno.
ErrorT ErrorErrno(int error);

// The text for a number, and its severity, without recording anything. The parts of the text are
// separated as in errbuf.h.
StringC ErrorString(ErrSevT& sev, ErrorT err, const char* def_str);
StringC ErrorString(ErrSevT& sev, ErrorT err, const char* def_str, ArgListC arglist);
StringC ErrorStringVA(ErrSevT& sev, ErrorT err, const char* def_str, std::va_list params);

// A text of the user's language that need not be an error.
StringC getL10NMessage(ErrorT err, const char* def_str);
StringC getL10NMessage(ErrorT err, const char* def_str, ArgListC arglist);

// A point in the calling thread's buffer, and the way back to it: ErrorRollback takes out what has been
// recorded since, because the caller has recovered from it.
ErrSequenceT ErrorCheckpoint();
void ErrorRollback(ErrSequenceT which);

// A checkpoint to go back to, if need be. For one thread, the one that made it.
class ErrorCheckpointC {
public:
    ErrorCheckpointC() : m_sequence(ErrorCheckpoint()) {}
    void rollback() const { ErrorRollback(m_sequence); }

private:
    const ErrSequenceT m_sequence;
};

// A scope whose failures are all taken back when it ends. One that ends on another thread than it began
// on rolls back that thread's buffer.
class AutoRollbackErrorCheckpointC {
public:
    AutoRollbackErrorCheckpointC() : m_sequence(ErrorCheckpoint()) {}
    ~AutoRollbackErrorCheckpointC() { ErrorRollback(m_sequence); }
    AutoRollbackErrorCheckpointC(const AutoRollbackErrorCheckpointC&) = delete;
    AutoRollbackErrorCheckpointC& operator=(const AutoRollbackErrorCheckpointC&) = delete;

    // The sequence number of the first entry that the scope will take back.
    [[nodiscard]] ErrSequenceT sequence() const noexcept { return m_sequence; }

private:
    const ErrSequenceT m_sequence;
};

#endif   // TVXCMN_ERRORAPI_H
