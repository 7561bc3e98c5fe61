#!/usr/bin/env bash
# Checks the sources without running them: format, shell scripts, layers, and clang-tidy over the
# library (tests, benchmarks and fuzz targets are left to the compilers' warnings).
#   scripts/lint.sh [--fix-format]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh base test crypto clang lint

# The tree may belong to somebody else than who runs the check.
tracked() { git -c safe.directory="$PWD" ls-files -- "$@"; }

if [ "${1:-}" = --fix-format ]; then
  tracked '*.h' '*.cpp' | xargs clang-format-14 -i
fi
tracked '*.h' '*.cpp' | xargs clang-format-14 --dry-run -Werror
echo "format: clean"

tracked '*.sh' .ci/run | xargs shellcheck
echo "shell scripts: clean"

scripts/check_layers.py

cmake --preset clang >/dev/null
unchecked='tests|bench|fuzz'
grep -q 'modules/tvxssl' build/clang/compile_commands.json || unchecked+='|modules'   # there is no OpenSSL
tracked '*.cpp' | grep -vE "^($unchecked)/" >build/tidy-sources.txt
xargs -P "$(nproc)" -n 3 clang-tidy-14 --quiet -p build/clang <build/tidy-sources.txt 2>build/tidy-notes.txt || {
  grep -E 'error:' build/tidy-notes.txt || true
  echo "clang-tidy: findings above" >&2
  exit 1
}
# A .clang-tidy that it cannot read makes it fall back to a few checks of its own, and succeed.
if grep 'Error parsing' build/tidy-notes.txt; then exit 1; fi
echo "clang-tidy: $(wc -l <build/tidy-sources.txt) sources clean"
