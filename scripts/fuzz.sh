#!/usr/bin/env bash
# Builds the fuzz targets (clang preset) and runs each for a bounded time on
# its seed corpus. Any finding fails the run; the crashing input is kept
# under build/fuzz/findings/ to become a test.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${VORN_FUZZ_SECONDS:-60}"

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

mkdir -p build/fuzz/findings
status=0
for target in build/fuzz/fuzz/*; do
  [ -x "$target" ] && [ -f "$target" ] || continue
  name=$(basename "$target")
  seeds="fuzz/corpus/$name"
  work="build/fuzz/work/$name"
  mkdir -p "$work" "$seeds"
  echo "== fuzz $name for ${seconds}s"
  if ! "$target" -max_total_time="$seconds" -print_final_stats=0 \
       -artifact_prefix="build/fuzz/findings/$name-" "$work" "$seeds" >"build/fuzz/$name.log" 2>&1; then
    echo "finding in $name:"; tail -n 40 "build/fuzz/$name.log"
    status=1
  else
    grep -E '^(Done|#[0-9]+.*DONE)' "build/fuzz/$name.log" | tail -n 1 || true
  fi
done
exit $status
