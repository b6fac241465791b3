#!/usr/bin/env bash
# Installs, with apt-get, what a fresh Debian machine lacks to build and test
# the project. Safe to run again: packages already present are skipped.
set -euo pipefail

packages=(
  cmake ninja-build g++ g++-multilib clang clang-format clang-tidy
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  libcli11-dev nlohmann-json3-dev libasio-dev
  iproute2 gcovr valgrind libclang-rt-14-dev pkg-config
  doxygen help2man dpkg-dev fakeroot lintian man-db
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
  sudo_cmd=""
  [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo_cmd apt-get update -qq
  $sudo_cmd apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# The -m32 suite needs a kernel that runs 32-bit programs, or an emulator.
"$(dirname "$0")/ia32-emulation.sh"
