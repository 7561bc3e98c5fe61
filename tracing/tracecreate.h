// tracecreate.h: opening a trace file under the name that a pattern gives. What the pattern says stands in
// traceconsumer.h.
//
// Thread safety: any thread.
#ifndef TVXCMN_TRACING_TRACECREATE_H
#define TVXCMN_TRACING_TRACECREATE_H

#include "errornumbers.h"

#include <ctime>
#include <string>

class FdOwnerC;

// The name for one attempt, counted from 0.
std::string traceFileName(const char* pattern, unsigned attempt, long taskId, const std::tm& local);

// Opens the file for appending. Returns 0, or why the last attempt failed.
ErrorT createTraceFile(const char* pattern, FdOwnerC& file);

#endif   // TVXCMN_TRACING_TRACECREATE_H
