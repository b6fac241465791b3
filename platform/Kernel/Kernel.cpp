#include "Kernel/Kernel.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

namespace Kernel {
namespace {

int linuxOpen(const char* path, int flags) {
  return ::open(path, flags | O_CLOEXEC);
}
int linuxUsleep(unsigned int usec) {
  return ::usleep(usec);
}
const Ops kLinux = {
    linuxOpen, ::close,     detail::linuxIoctl,  ::read,    ::write,
    ::socket,  ::bind,      ::opendir,           ::readdir, ::closedir,
    ::sysconf, linuxUsleep, detail::linuxGetenv,
};

}  // namespace

namespace detail {
const Ops* activeOps = &kLinux;
int linuxIoctl(int fd, unsigned long request, void* arg) {
  return ::ioctl(fd, request, arg);
}
const char* linuxGetenv(const char* name) {
  if (!name[0] || !environ) return ::getenv(name);
  return findInEnvironment(environ, name);
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
