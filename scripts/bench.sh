#!/usr/bin/env bash
# Measures the library beside other public libraries and prints one table for each group.
#   scripts/bench.sh [GROUP...] [--json | --markdown] [--svg FILE] [--filter REGEX]
# All rows of a group run in one process on one processor, their repetitions interleaved at random, so
# that a disturbance of the machine does not fall on one library. BENCH_CPU (the last one),
# BENCH_REPETITIONS (7) and BENCH_MIN_TIME (0.05, in seconds) change how.
set -euo pipefail
caller=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")/.."

groups=() report=() filter=.
while [ $# -gt 0 ]; do
  case "$1" in
    --json | --markdown) report+=("$1") ;;
    --svg) report+=(--svg "$(cd "$caller" && realpath -m "${2:?}")"); shift ;;
    --filter) filter=${2:?}; shift ;;
    -*) sed -n '2,6s/^# \?//p' "${BASH_SOURCE[0]}" >&2; exit 2 ;;
    *) groups+=("$1") ;;
  esac
  shift
done
mapfile -t known < <(sed -n 's/^tvxcmn_bench(\([a-z0-9_]*\).*/\1/p' bench/CMakeLists.txt)
[ ${#groups[@]} -gt 0 ] || groups=("${known[@]}")
for group in "${groups[@]}"; do
  [ -f "bench/${group}_bench.cpp" ] || { echo "bench.sh: no group '$group'; there are: ${known[*]}" >&2; exit 2; }
done

results=build/bench/results
log=$results/log
mkdir -p "$results"
{
  scripts/setup.sh base bench
  cmake --preset bench
  cmake --build --preset bench --target "${groups[@]/%/_bench}"
} >"$log" 2>&1 || { cat "$log" >&2; exit 1; }

files=()
for group in "${groups[@]}"; do
  echo "measuring $group ..." >&2
  files+=("$results/$group.json")
  taskset -c "${BENCH_CPU:-$(($(nproc) - 1))}" "build/bench/bench/${group}_bench" --benchmark_filter="$filter" \
    --benchmark_repetitions="${BENCH_REPETITIONS:-7}" --benchmark_min_time="${BENCH_MIN_TIME:-0.05}" \
    --benchmark_enable_random_interleaving=true --benchmark_out="$results/$group.json" \
    --benchmark_out_format=json >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
done
bench/report.py "${report[@]}" "${files[@]}"
