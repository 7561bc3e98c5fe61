#include "assertfatal.h"

#include "cmnlib/syscall.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

const char MESSAGE_FORMAT[] = "Assertion (%s) failed file %s line %d\nBreak on assertFatal() in cmnlib to debug\n";

// Appends the text with one write: on an append descriptor that keeps the entries of concurrent
// threads and processes whole. A log that cannot be written is ignored: there is nobody to tell.
void appendToLog(const char* text, size_t size)
{
    const int fd =
        retryOnEintr([] { return open("assert.log", O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666); });
    if (fd < 0) return;
    const ssize_t written = write(fd, text, size);
    (void)written;
    close(fd);
}

}   // namespace

int assertFatal(const char* expr, const char* filename, int line_no)
{
    static const bool assert_continue = std::getenv("ASSERT_CONTINUE") != nullptr;
    static const bool assert_debug = std::getenv("ASSERT_DEBUG") != nullptr;
    const int saved_errno = errno;

    char entry[1 + 1024] = "\n";
    char* const assert_msg = entry + 1;
    std::snprintf(assert_msg, sizeof entry - 1, MESSAGE_FORMAT, expr, filename, line_no);
    appendToLog(entry, std::strlen(entry));

    if (assert_debug) std::abort();
    if (!assert_continue) Fatal(1, MESSAGE_FORMAT, expr, filename, line_no);
    errno = saved_errno;
    return 0;
}
