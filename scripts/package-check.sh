#!/usr/bin/env bash
# Builds the amd64 Debian packages (the package workflow), checks them with
# lintian, unpacks them into a scratch root and builds and runs a project of
# its own against that root, through find_package(Vorn) and pkg-config; the
# tool and its manual page are tried from the root too.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --workflow --preset package >/dev/null 2>&1 || cmake --workflow --preset package
debs=(build/package/*_"$(dpkg --print-architecture)".deb)

# Warnings lintian may give, each for a reason that holds for these packages:
#  initial-upload-closes-no-bugs: they go into the switch OS images, not to
#    Debian's archive, so there is no bug of an upload to close.
#  maintscript-calls-ldconfig: CPack adds an ldconfig call to the library's
#    postinst and postrm; the ldconfig trigger does the work, the call repeats
#    it harmlessly.
tolerated=initial-upload-closes-no-bugs,maintscript-calls-ldconfig
lintian --fail-on error,warning --suppress-tags "$tolerated" "${debs[@]}" 2> >(grep -v 'root privileges' >&2)

root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
for deb in "${debs[@]}"; do dpkg -x "$deb" "$root"; done
libdir=$(dirname "$(find "$root/usr/lib" -name 'libvorn.so.1' -print -quit)")

cmake -S tests/install -B "$root/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$root/usr" >/dev/null
cmake --build "$root/consumer" >/dev/null
test "$(LD_LIBRARY_PATH="$libdir" "$root/consumer/agent")" = 32773
flags=$(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --cflags --libs vorn)
c++ -std=c++20 tests/install/main.cpp $flags -o "$root/agent-pc"
test "$(LD_LIBRARY_PATH="$libdir" "$root/agent-pc")" = 32773

LD_LIBRARY_PATH="$libdir" "$root/usr/bin/vornctl" --version >/dev/null
MANPATH="$root/usr/share/man" man vornctl 2>/dev/null | grep -q '^COMMANDS'
LD_LIBRARY_PATH="$libdir" "$root/usr/bin/vorn-fabricd" --version >/dev/null
MANPATH="$root/usr/share/man" man vorn-fabricd 2>/dev/null | grep -q '^OPTIONS'
echo "packages: lintian clean; the unpacked packages build and run a consumer, vornctl, vorn-fabricd and their manual pages"
