#include "Kernel/Kernel.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

extern char** environ;

namespace Kernel {
namespace {

int linuxOpen(const char* path, int flags) {
  return ::open(path, flags | O_CLOEXEC);
}
int linuxUsleep(unsigned int usec) {
  return ::usleep(usec);
}
// getenv without its per-entry string compare set-up: the library asks for
// SIMULATION_VMID before every command, so this scan is on the command path.
const char* linuxGetenv(const char* name) {
  const char first = name[0];
  if (!first || !environ) return ::getenv(name);
  for (char** e = environ; *e; ++e) {
    const char* entry = *e;
    if (entry[0] != first) continue;
    const char* n = name + 1;
    const char* v = entry + 1;
    while (*n && *v == *n) ++n, ++v;
    if (!*n && *v == '=') return v + 1;
  }
  return nullptr;
}

const Ops kLinux = {
    linuxOpen, ::close,   detail::linuxIoctl, ::read,    ::write,     ::socket,    ::bind,
    ::opendir, ::readdir, ::closedir,         ::sysconf, linuxUsleep, linuxGetenv,
};

}  // namespace

namespace detail {
const Ops* activeOps = &kLinux;
int linuxIoctl(int fd, unsigned long request, void* arg) {
  return ::ioctl(fd, request, arg);
}
}  // namespace detail

const Ops& linuxOps() noexcept {
  return kLinux;
}

const Ops* opsIs(const Ops* ops) noexcept {
  const Ops* previous = detail::activeOps;
  detail::activeOps = ops ? ops : &kLinux;
  return previous;
}

}  // namespace Kernel
