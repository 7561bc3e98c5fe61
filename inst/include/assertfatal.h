// assertfatal.h: broken invariants and unrecoverable errors.
//
// A failed assertion appends an entry to "assert.log" in the current directory and ends the process
// with status 1. The environment changes that; it is read once, at the first failure:
//   ASSERT_DEBUG     abort instead, so that a debugger or a core dump catches it
//   ASSERT_CONTINUE  carry on: the failing operation returns its neutral value
// COREDUMP, read at each call, makes Fatal abort instead of exiting.
//
// Thread safety: any thread, no lock. Each linked image (program, module, library) holds its own copy
// of this code and reads the same environment.
#ifndef TVXCMN_ASSERTFATAL_H
#define TVXCMN_ASSERTFATAL_H

// Reports that the invariant `expr` does not hold at `filename`:`line_no`.
// Returns 0 under ASSERT_CONTINUE and does not return otherwise.
int assertFatal(const char* expr, const char* filename, int line_no) __attribute__((cold));

// Writes the printf-formatted message and a newline to standard error, after flushing standard
// output, and ends the process with `exit_val`, running its exit handlers. A call that comes from one
// of those handlers ends the process at once, without running the rest of them; a call from a second
// thread of the same image waits for the first one's exit, for ten seconds, and then does likewise.
[[noreturn]] void Fatal(int exit_val, const char* fmt_p, ...) __attribute__((cold, format(printf, 2, 3)));

// True when `cond` holds. Otherwise reports `text` and is false, so that the neutral value can stand
// in the same statement: if (!TVX_CHECK(n >= 0, "n >= 0")) return nullptr;
#define TVX_CHECK(cond, text) (__builtin_expect(!!(cond), 1) || assertFatal((text), __FILE_NAME__, __LINE__) != 0)

#endif   // TVXCMN_ASSERTFATAL_H
