// errnokeeper.h: a scope that leaves errno as it found it.
//
// Reporting and tracing happen in the middle of other people's failures, whose errno must survive; and
// "%!" in a message means the errno with which its caller came.
//
// Thread safety: per-thread, as errno is.
#ifndef TVXCMN_CMNLIB_ERRNOKEEPER_H
#define TVXCMN_CMNLIB_ERRNOKEEPER_H

#include <cerrno>

class ErrnoKeeperC {
public:
    ErrnoKeeperC() noexcept : m_error(errno) {}
    ~ErrnoKeeperC() { restore(); }
    ErrnoKeeperC(const ErrnoKeeperC&) = delete;
    ErrnoKeeperC& operator=(const ErrnoKeeperC&) = delete;

    int error() const noexcept { return m_error; }
    void restore() const noexcept { errno = m_error; }

private:
    const int m_error;
};

#endif   // TVXCMN_CMNLIB_ERRNOKEEPER_H
