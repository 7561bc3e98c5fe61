// faults.h: makes chosen system calls of the library fail. The linker hands the calls that
// tests/CMakeLists.txt lists to this; what the C library calls by itself is not touched.
#ifndef TVXCMN_TESTS_FAULTS_H
#define TVXCMN_TESTS_FAULTS_H

#include <atomic>
#include <functional>

// While it lives, calls of `call` number `skip` to `skip + count - 1` fail with `error`. The error 0 does
// not fail them but makes them move half of the bytes asked for. A failing close closes all the same.
class FaultC {
public:
    FaultC(const char* call, int error, int skip = 0, int count = 1);
    // Instead of failing, these calls are made after `action` has run.
    FaultC(const char* call, std::function<void()> action, int skip = 0, int count = 1);
    ~FaultC();
    FaultC(const FaultC&) = delete;
    FaultC& operator=(const FaultC&) = delete;

    // Calls so far, failing or not.
    int calls() const { return m_calls; }

    // What befalls the next call of `call`: -1 nothing, otherwise the error.
    static int next(const char* call);

private:
    void enter();

    const char* const m_call;
    const int m_error;
    const std::function<void()> m_action;
    const int m_skip;
    const int m_count;
    std::atomic<int> m_calls{0};
};

#endif   // TVXCMN_TESTS_FAULTS_H
