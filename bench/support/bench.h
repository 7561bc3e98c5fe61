// bench.h: the frame that all groups of benchmarks share.
//
// A row is one library doing one workload. All rows of a workload get the same input (workload.h) and
// have to return the same digest, so a row that does less, or something else, shows up as a fault and
// not as a fast row. Our own rows are named "ours"; the rows of limits are named "limit" and stand for
// what the machine needs at least, not for a competitor.
#ifndef TVXCMN_BENCH_BENCH_H
#define TVXCMN_BENCH_BENCH_H

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

typedef uint64_t DigestT;
const DigestT UNCHECKED = ~DigestT{0};   // of limits, whose work has no comparable result

// What one operation of a row amounts to.
struct WorkT {
    const char* unit;   // "item" or "byte"
    double amount;      // how many of them
};
inline WorkT items(size_t count) { return {"item", static_cast<double>(count)}; }
inline WorkT bytes(size_t count) { return {"byte", static_cast<double>(count)}; }

// A digest of a whole result, computed outside of the timed loop.
DigestT digestOf(const void* data, size_t size);
inline DigestT digestOf(std::string_view text) { return digestOf(text.data(), text.size()); }

// Makes the optimiser believe that the value is read and, unless it is const, changed here.
template <class T>
inline void keep(T& value)
{
    if constexpr (std::is_pointer_v<T> || std::is_integral_v<T>) {
        asm volatile("" : "+r"(value) : : "memory");
    } else {
        asm volatile("" : : "r"(&value) : "memory");
    }
}
template <class T>
inline void keep(const T& value)
{
    asm volatile("" : : "r"(&value) : "memory");
}

// Marks the row as faulty unless all rows of the workload gave this digest; describes its unit.
void finishRow(benchmark::State& state, const std::string& workload, WorkT work, DigestT digest);

// Adds a row whose `op` does the work once and returns a cheap digest of its result. The first call is
// not timed: it makes what is made on first use.
template <class OpT>
void addRow(const std::string& workload, const std::string& library, WorkT work, OpT op)
{
    benchmark::RegisterBenchmark((workload + "/" + library).c_str(),
                                 [=, fresh = true](benchmark::State& state) mutable {
                                     if (std::exchange(fresh, false)) op();
                                     DigestT digest = 0;
                                     for ([[maybe_unused]] auto _ : state) {
                                         digest = op();
                                         keep(digest);
                                     }
                                     finishRow(state, workload, work, digest);
                                 });
}

// Adds a row whose `op(whole)` computes the digest of the whole result only when asked to.
template <class OpT>
void addVerifiedRow(const std::string& workload, const std::string& library, WorkT work, OpT op)
{
    benchmark::RegisterBenchmark((workload + "/" + library).c_str(), [=](benchmark::State& state) mutable {
        const DigestT digest = op(true);
        for ([[maybe_unused]] auto _ : state) {
            DigestT cheap = op(false);
            keep(cheap);
        }
        finishRow(state, workload, work, digest);
    });
}

// Adds a row that has something to prepare for each operation: `prepare()` is not timed, `op(prepared)`
// is.
template <class PrepareT, class OpT>
void addPreparedRow(const std::string& workload, const std::string& library, WorkT work, PrepareT prepare, OpT op)
{
    benchmark::RegisterBenchmark((workload + "/" + library).c_str(), [=](benchmark::State& state) mutable {
        DigestT digest = 0;
        for ([[maybe_unused]] auto _ : state) {
            state.PauseTiming();
            {
                auto prepared = prepare();
                state.ResumeTiming();
                digest = op(prepared);
                keep(digest);
                state.PauseTiming();
            }
            state.ResumeTiming();
        }
        finishRow(state, workload, work, digest);
    });
}

// Adds a row whose `op` tells itself how many seconds count, once per repetition.
template <class OpT>
void addTimedRow(const std::string& workload, const std::string& library, WorkT work, OpT op)
{
    benchmark::RegisterBenchmark((workload + "/" + library).c_str(),
                                 [=](benchmark::State& state) mutable {
                                     for ([[maybe_unused]] auto _ : state) state.SetIterationTime(op());
                                     finishRow(state, workload, work, UNCHECKED);
                                 })
        ->UseManualTime()
        ->Iterations(1);
}

// Every group defines this; main calls it once.
void registerRows();

#endif   // TVXCMN_BENCH_BENCH_H
