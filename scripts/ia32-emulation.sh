#!/usr/bin/env bash
# Makes sure this machine can run the -m32 build's programs. Some kernels are
# built or booted without IA32 emulation, and then every 32-bit program fails
# with "Exec format error"; there the programs run under qemu's user-mode
# emulator, registered with binfmt_misc so that anything that starts them
# (ctest, the death tests that start the test program again, popen) does so
# unchanged. Does nothing where 32-bit programs already run. Needs root.
set -euo pipefail

probe_dir="$(mktemp -d)"
trap 'rm -rf "$probe_dir"' EXIT
printf 'int main(void) { return 0; }\n' > "$probe_dir/probe.c"
gcc -m32 "$probe_dir/probe.c" -o "$probe_dir/probe"

if "$probe_dir/probe" 2>/dev/null; then
  exit 0
fi

sudo_cmd=""
[ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
echo "this kernel does not run 32-bit x86 programs; running them under qemu-i386"
if ! dpkg-query -W -f='${Status}' qemu-user-static 2>/dev/null | grep -q 'install ok installed'; then
  export DEBIAN_FRONTEND=noninteractive
  $sudo_cmd apt-get update -qq
  $sudo_cmd apt-get install -y -qq --no-install-recommends qemu-user-static
fi

binfmt=/proc/sys/fs/binfmt_misc
[ -e "$binfmt/register" ] || $sudo_cmd mount -t binfmt_misc binfmt_misc "$binfmt"
# Debian registers qemu for foreign architectures only, never for i386 on an
# x86-64 host, so the entry is written here: ELF, 32-bit, little-endian,
# executable or shared object, machine 3 (i386). F opens the interpreter now,
# so it also serves programs started in other mount namespaces.
if [ ! -e "$binfmt/vorn-i386" ]; then
  printf '%s' ':vorn-i386:M::\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00:\xff\xff\xff\xff\xff\xfe\xfe\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff:/usr/bin/qemu-i386-static:F' |
    $sudo_cmd tee "$binfmt/register" > /dev/null
fi

"$probe_dir/probe" || { echo "32-bit programs still do not run" >&2; exit 1; }
