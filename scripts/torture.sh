#!/usr/bin/env bash
# Kills processes with SIGKILL in the middle of their changes to one INI file, and looks for every change that was
# acknowledged in the end.
#   scripts/torture.sh SECONDS [PROCESSES]
# Prints kills, acknowledged changes and those that are lost; exits with 1 if there is one.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

[ $# -ge 1 ] || { sed -n '2,5s/^# \?//p' "${BASH_SOURCE[0]}" >&2; exit 2; }
scripts/setup.sh base test
log=$(mktemp)
trap 'rm -f "$log"' EXIT
{ cmake --preset release && cmake --build --preset release --target torture_writer; } >"$log" 2>&1 ||
  { cat "$log" >&2; exit 1; }
python3 -B tests/confapi/torture.py build/release/tests/torture_writer "$@"
