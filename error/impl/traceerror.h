// traceerror.h: announces on the tracer what happens to the entries of error buffers.
//
// Thread safety: any thread.
#ifndef TVXCMN_ERROR_TRACEERROR_H
#define TVXCMN_ERROR_TRACEERROR_H

#include "errbuf.h"

// Traces, as "Error Occurrence (s434m1): Problem: P, Reason: R", what has happened to a failure, under a
// class of its own, such as Error/Occurrence/Warning/12/5. `action` is a constant text: "Occurrence",
// "Report" or "Recovery". Does nothing inside a consumer of the tracer. Leaves errno as it was.
//
// The classes cost no detail (tracecontroller.h), and there are as many as there are different failures.
void TraceError(const char* action, ErrorT err, ErrSevT sev, const StringC& str);

#endif   // TVXCMN_ERROR_TRACEERROR_H
