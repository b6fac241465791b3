#!/usr/bin/env bash
# The tests' share of the project: non-blank lines under tests/, fuzz/ and
# bench/ (the fuzz seed corpus aside, which is data) against those plus the
# product's folders Vorn/, platform/, emu/ and tools/. Counted twice: over
# every file git knows (documentation, expected outputs and build files
# included), and over the C++ sources alone (.cpp and .h), as the before-stop
# hook counts them.
#   scripts/test-share.sh [--max PERCENT] [--max-code PERCENT]
# exits 1 when a share is above its bound.
set -euo pipefail
cd "$(dirname "$0")/.."

lines() {
  local pattern=$1
  shift
  git ls-files -co --exclude-standard -z -- "$@" | grep -zE "$pattern" | xargs -0 -r cat |
    grep -cv '^[[:space:]]*$' || true
}
status=0
report() {  # name pattern bound
  local tests product share
  tests=$(lines "$2" tests fuzz bench ':!fuzz/corpus')
  product=$(lines "$2" Vorn platform emu tools)
  share=$(awk -v t="$tests" -v p="$product" 'BEGIN { printf "%.1f", 100 * t / (t + p) }')
  echo "$1: tests, fuzz and bench $tests lines; Vorn, platform, emu and tools $product lines; share ${share} %"
  if [ -n "$3" ] && awk -v s="$share" -v m="$3" 'BEGIN { exit !(s > m) }'; then
    echo "  above ${3} %" >&2
    status=1
  fi
}
max="" maxCode=""
while [ $# -gt 0 ]; do
  case "$1" in
    --max) max=$2; shift 2 ;;
    --max-code) maxCode=$2; shift 2 ;;
    *) echo "usage: $0 [--max PERCENT] [--max-code PERCENT]" >&2; exit 2 ;;
  esac
done
report "every file" '.' "$max"
report "C++ sources" '\.(cpp|h)$' "$maxCode"
exit $status
