#!/usr/bin/env bash
# Installs the default build into a scratch prefix and builds and runs a
# small project of its own against it, through find_package(Vorn) and through
# pkg-config.
set -euo pipefail
cd "$(dirname "$0")/.."
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install build/default --prefix "$prefix" >/dev/null
cmake -S tests/install -B "$prefix/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$prefix/consumer" >/dev/null
test "$("$prefix/consumer/agent")" = 32773
flags=$(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config --cflags --libs vorn)
c++ -std=c++20 tests/install/main.cpp $flags -Wl,-rpath,"$prefix/lib" -o "$prefix/agent-pc"
test "$("$prefix/agent-pc")" = 32773
echo "installed library: find_package(Vorn) and pkg-config both build and run"
