#include "tracing/tracelines.h"

#include "cmnlib/syscall.h"

namespace {

const size_t KEPT_ROOM = 64 * 1024;

// Goes on while something is accepted: a pipe may take a line in pieces. How much was.
size_t writeAll(int fd, const void* bytes, size_t n)
{
    const char* const all = static_cast<const char*>(bytes);
    size_t done = 0;
    while (done < n) {
        const ssize_t written = retryOnEintr([=] { return ::write(fd, all + done, n - done); });
        if (written <= 0) break;
        done += static_cast<size_t>(written);
    }
    return done;
}

}   // namespace

void TraceLinesC::beginLine()
{
    if (m_isLineOpen) endLine();
    m_isLineOpen = true;
}

void TraceLinesC::endLine()
{
    const UTF8T end = '\n';
    append(&end, 1);
    m_isLineOpen = false;
}

void TraceLinesC::drain(const UTF8T* bytes, size_t n) { m_bytes.append(reinterpret_cast<const char*>(bytes), n); }

void TraceLinesC::write(int fd)
{
    if (!m_bytes.empty()) flush();
    const char* const bytes = m_bytes.empty() ? reinterpret_cast<const char*>(collected()) : m_bytes.data();
    const size_t size = m_bytes.empty() ? collectedBytes() : m_bytes.size();
    if (m_isCut && writeAll(fd, "\n", 1) == 1) m_isCut = false;
    const size_t done = writeAll(fd, bytes, size);
    if (done > 0 && done < size) m_isCut = bytes[done - 1] != '\n';
    drop();
}

void TraceLinesC::drop()
{
    forget();
    m_bytes.clear();
    if (m_bytes.capacity() > KEPT_ROOM) m_bytes.shrink_to_fit();
}
