#!/usr/bin/env bash
# User-space instructions per unit of the library's work (a command, a ring
# message, a line of the LAG listing, an egress threshold generation),
# counted by callgrind in vorn_instructions and set against the budgets in
# bench/instruction-budgets.txt. Instructions do not move with the machine or
# its load, so CI checks these where it cannot check times. A figure more than
# 3 % over its budget fails, and so does one more than 3 % under it: a change
# that saves instructions lowers the budget with it (--record).
#   bench/instructions.sh [--build DIR] [--record]
# DIR is a build folder with vorn_instructions (default: build/default).
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/default record=0
while [ $# -gt 0 ]; do
  case "$1" in
    --build) build=$2; shift 2 ;;
    --record) record=1; shift ;;
    *) echo "usage: $0 [--build DIR] [--record]" >&2; exit 2 ;;
  esac
done
driver="$build/bench/vorn_instructions"
budgets=bench/instruction-budgets.txt
[ -x "$driver" ] || { echo "$driver is not built" >&2; exit 2; }
command -v valgrind >/dev/null || { echo "valgrind is missing (scripts/setup.sh installs it)" >&2; exit 2; }

# The command path scans the environment before every command, so the count
# depends on it: every figure is taken in this one, 24 variables of a
# service's usual kind, none named like SIMULATION_VMID.
environment=(HOME=/root USER=root LOGNAME=root SHELL=/bin/bash PATH=/usr/sbin:/usr/bin:/sbin:/bin
  LANG=C.UTF-8 TERM=xterm PWD=/ SHLVL=1 INVOCATION_ID=0123456789abcdef JOURNAL_STREAM=8:12345
  SYSTEMD_EXEC_PID=1234 XDG_RUNTIME_DIR=/run/user/0 KRIX_MODE=native KRIX_AGENT=Fabric
  SERVICE_NAME=fabric TZ=UTC MALLOC_ARENA_MAX=2 LC_ALL=C.UTF-8 HOSTNAME=switch EDITOR=vi
  PAGER=less MAIL=/var/mail/root OLDPWD=/)
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

# count FIGURE CALLS: prints "instructions units" for CALLS calls of FIGURE.
count() {
  local units
  units=$(env -i "${environment[@]}" TMPDIR="$scratch" valgrind --tool=callgrind \
    --callgrind-out-file="$scratch/$1.out" --collect-atstart=no --toggle-collect=vorn_measure \
    "$driver" "$1" "$2" 2>"$scratch/$1.log") || { cat "$scratch/$1.log" >&2; exit 1; }
  local ir
  ir=$(awk '/^summary:/ { print $2 }' "$scratch/$1.out")
  [[ "$ir" =~ ^[0-9]+$ && "$units" =~ ^[1-9][0-9]*$ ]] || { echo "no count for $1" >&2; exit 1; }
  echo "$ir $units"
}

# What the measuring loop itself costs per call, taken off every figure. A
# count that fails ends the script (set -e sees the assignment fail).
result=$(count nothing 1000)
read -r loop _ <<<"$result"
cache() { grep -E "^$1:" "$build/CMakeCache.txt" | cut -d= -f2; }
echo "Instructions per unit ($("$(cache CMAKE_CXX_COMPILER)" --version | head -1); $(cache \
  CMAKE_BUILD_TYPE) build; the measuring loop's $((loop / 1000)) per call taken off):"
status=0
new=()
while IFS= read -r line; do
  case "$line" in '#'* | '') new+=("$line"); continue ;; esac
  read -r figure budget calls what <<<"$line"
  result=$(count "$figure" "$calls")
  read -r ir units <<<"$result"
  value=$(awk -v i="$ir" -v l="$loop" -v c="$calls" -v u="$units" \
    'BEGIN { printf "%.1f", (i - l * c / 1000) / u }')
  verdict=$(awk -v v="$value" -v b="$budget" 'BEGIN {
    if (v > b * 1.03) print "OVER"; else if (v < b * 0.97) print "UNDER"; else print "ok" }')
  printf '  %-20s %10s  budget %8s  %-5s %s\n' "$figure" "$value" "$budget" "$verdict" "$what"
  [ "$verdict" = ok ] || status=1
  new+=("$(printf '%-20s %8s %6s %s' "$figure" "$(awk -v v="$value" 'BEGIN { printf "%.0f", v }')" \
    "$calls" "$what")")
done <"$budgets"
if [ "$record" = 1 ]; then
  printf '%s\n' "${new[@]}" | sed 's/ *$//' >"$budgets"
  echo "budgets recorded in $budgets"
  exit 0
fi
[ "$status" = 0 ] || echo "a figure is more than 3 % off its budget: find why, or record" \
  "the new figures with $0 --record in the change that moves them" >&2
exit $status
