#include "assertfatal.h"

#include "atomicm.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <pthread.h>
#include <unistd.h>

namespace {

const unsigned LONGEST_EXIT = 10;   // seconds

// Ends the process once. exit() runs handlers that may come here again, and two threads in exit() are
// undefined: whoever is first exits, and from a handler there is only the short way out. So there is when the
// first one does not come to an end: its handlers may be waiting for what this thread holds, or for its end.
[[noreturn]] void exitOnce(int exit_val)
{
    static AtomicM<pthread_t> exiting_thread{0};   // no thread of glibc has the id 0
    const pthread_t self = pthread_self();
    const pthread_t first = exiting_thread.exchangeCmp(self, 0);
    if (first == self) _exit(exit_val);
    if (first != 0) {
        for (unsigned left = LONGEST_EXIT; left > 0;) left = sleep(left);
        _exit(exit_val);
    }
    std::exit(exit_val);
}

}   // namespace

void Fatal(int exit_val, const char* fmt_p, ...)
{
    std::fflush(stdout);

    std::va_list args;
    va_start(args, fmt_p);
    std::vfprintf(stderr, fmt_p, args);
    va_end(args);
    std::fputc('\n', stderr);

    if (std::getenv("COREDUMP") != nullptr) std::abort();
    exitOnce(exit_val);
}
