#include "tracing/tracelines.h"

#include "cmnlib/syscall.h"

namespace {

const size_t KEPT_ROOM = 64 * 1024;

// Goes on while something is accepted: a pipe may take a line in pieces.
void writeAll(int fd, const void* bytes, size_t n)
{
    const char* at = static_cast<const char*>(bytes);
    while (n > 0) {
        const ssize_t written = retryOnEintr([=] { return ::write(fd, at, n); });
        if (written <= 0) return;
        at += written;
        n -= static_cast<size_t>(written);
    }
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
    if (m_bytes.empty()) {
        writeAll(fd, collected(), collectedBytes());
    } else {
        flush();
        writeAll(fd, m_bytes.data(), m_bytes.size());
    }
    drop();
}

void TraceLinesC::drop()
{
    forget();
    m_bytes.clear();
    if (m_bytes.capacity() > KEPT_ROOM) m_bytes.shrink_to_fit();
}
