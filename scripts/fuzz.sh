#!/usr/bin/env bash
# Fuzzes one target, or all of them one after the other, for a number of seconds each.
#   scripts/fuzz.sh TARGET|all SECONDS [--keep]
# What it learns stays in build/fuzz-corpus/TARGET. --keep puts a small set of inputs that reaches all of
# the code reached so far into fuzz/corpus/TARGET, which every test run replays; inputs that somebody gave a
# name stay there in any case. An input that breaks a target is written to build/fuzz-found/.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

[ $# -ge 2 ] || { sed -n '2,6s/^# \?//p' "${BASH_SOURCE[0]}" >&2; exit 2; }
target=$1 seconds=$2 keep=${3:-}

if [ "$target" = all ]; then
  mapfile -t targets < <(sed -n 's/^tvxcmn_fuzz(\([a-z0-9_]*\).*/\1/p' fuzz/CMakeLists.txt)
else
  [ -f "fuzz/${target}_fuzz.cpp" ] || { echo "fuzz.sh: no target '$target'" >&2; exit 2; }
  targets=("$target")
fi

scripts/setup.sh base fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "${targets[@]/%/_fuzz}"

root=$PWD

# keepSmallest NAME: as few learned inputs as reach every edge, in place of those kept before.
keepSmallest() {
  local corpus=$root/fuzz/corpus/$1 smallest
  smallest=$(mktemp -d)
  "$root/build/fuzz/fuzz/${1}_fuzz" -set_cover_merge=1 -use_counters=0 -verbosity=0 \
    "$smallest" "$corpus" "$root/build/fuzz-corpus/$1"
  find "$corpus" -type f -regextype posix-extended -regex '.*/[0-9a-f]{40}' -delete
  (cd "$corpus" && find . -type f -exec sha1sum {} + | cut -c1-40) | (cd "$smallest" && xargs -r rm -f)
  find "$smallest" -type f -exec mv -t "$corpus" {} +
  rmdir "$smallest"
}

export ASSERT_CONTINUE=1   # malformed input is the point; properties are what counts
cd build/fuzz/fuzz/run     # where assert.log leads nowhere
for name in "${targets[@]}"; do
  learned=$root/build/fuzz-corpus/$name
  corpus=$root/fuzz/corpus/$name
  mkdir -p "$learned" "$corpus" "$root/build/fuzz-found"
  echo "== $name, $seconds s"
  "$root/build/fuzz/fuzz/${name}_fuzz" -max_total_time="$seconds" -timeout=20 -max_len=4096 -print_final_stats=1 \
    -verbosity=0 -artifact_prefix="$root/build/fuzz-found/$name-" "$learned" "$corpus"
  [ "$keep" != --keep ] || keepSmallest "$name"
done
