#include "support/bench.h"

#include <clocale>
#include <condition_variable>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

namespace {

// A second thread that waits until its object goes. The C and C++ libraries leave out atomic operations
// in a process of one thread, which is not how a base library is used.
class ParkedThreadC {
public:
    ParkedThreadC() : m_thread([this] { wait(); }) {}
    ~ParkedThreadC()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_done = true;
        }
        m_condition.notify_all();
        m_thread.join();
    }

private:
    void wait()
    {
        std::unique_lock lock(m_mutex);
        m_condition.wait(lock, [this] { return m_done; });
    }

    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_done = false;
    std::thread m_thread;   // last: it uses the others
};

}   // namespace

DigestT digestOf(const void* data, size_t size)
{
    const unsigned char* p = static_cast<const unsigned char*>(data);
    DigestT digest = 0x9e3779b97f4a7c15ull ^ size;
    for (; size >= 8; p += 8, size -= 8) {
        DigestT word;
        std::memcpy(&word, p, 8);
        digest = (digest ^ word) * 0xff51afd7ed558ccdull;
        digest ^= digest >> 32;
    }
    for (; size > 0; ++p, --size) digest = (digest ^ *p) * 0x100000001b3ull;
    return digest;
}

void finishRow(benchmark::State& state, const std::string& workload, WorkT work, DigestT digest)
{
    static std::map<std::string, DigestT> expected;
    state.SetLabel(work.unit);
    state.counters["amount"] = work.amount;
    if (digest == UNCHECKED) return;
    const auto [entry, isFirst] = expected.emplace(workload, digest);
    if (!isFirst && entry->second != digest) state.SkipWithError("another result than the rows before");
}

int main(int argc, char** argv)
{
    std::setlocale(LC_ALL, "C.UTF-8");
    const ParkedThreadC parked;
    registerRows();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
