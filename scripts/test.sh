#!/usr/bin/env bash
# Builds the library and its tests, and runs them.
#   scripts/test.sh [PRESET]     release (the default), dev, clang, asan, tsan or coverage
# ctest's own arguments come from CTEST_ARGUMENTS, for example CTEST_ARGUMENTS="-R Latch".
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

preset=${1:-release}
groups=(base test crypto)
case "$preset" in
  release | dev | asan | tsan | coverage) ;;
  clang) groups+=(clang) ;;
  *) echo "test.sh: no preset '$preset'" >&2; exit 2 ;;
esac

# The sanitizers of these compilers want memory where newer kernels put random things; the build runs a tool that it
# has made.
steady=()
case "$preset" in
  asan | tsan) if setarch -R true 2>/dev/null; then steady=(setarch -R); fi ;;
esac

scripts/setup.sh "${groups[@]}"
cmake --preset "$preset"
"${steady[@]}" cmake --build --preset "$preset"
# shellcheck disable=SC2086  # several arguments in one variable
"${steady[@]}" ctest --preset "$preset" -j "$(nproc)" ${CTEST_ARGUMENTS:-}
