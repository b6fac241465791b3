#!/usr/bin/env bash
# The tests' share of the project: non-blank lines of every file git knows
# under tests/, fuzz/ and bench/ (the fuzz seed corpus aside, which is data),
# against those plus the product's folders Vorn/, platform/, emu/ and tools/.
#   scripts/test-share.sh [--max PERCENT]   exits 1 above PERCENT
set -euo pipefail
cd "$(dirname "$0")/.."

lines() {
  git ls-files -co --exclude-standard -z -- "$@" | xargs -0 -r cat | grep -cv '^[[:space:]]*$' || true
}
tests=$(lines tests fuzz bench ':!fuzz/corpus')
product=$(lines Vorn platform emu tools)
share=$(awk -v t="$tests" -v p="$product" 'BEGIN { printf "%.1f", 100 * t / (t + p) }')
echo "tests, fuzz and bench: $tests lines; Vorn, platform, emu and tools: $product lines; share ${share} %"
if [ "${1:-}" = "--max" ] && awk -v s="$share" -v m="$2" 'BEGIN { exit !(s > m) }'; then
  echo "above ${2} %" >&2
  exit 1
fi
