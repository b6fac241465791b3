#include "Kernel/Kernel.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

#include "Kernel/RemoteFabric.h"

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

// The default table, chosen from the environment the first time it is asked
// for (the C library's getenv: the seam is not settled yet).
const Ops* chooseDefault() {
  const char* path = ::getenv("VORN_FABRIC");
  if (path && *path)
    if (const Ops* remote = fabric::detail::remoteOps(path)) return remote;
  return &kLinux;
}

extern const Ops kFirstUse;

// Installs the default table in place of the first-use one (unless a table
// was installed meanwhile) and returns it for the call that settled it.
const Ops& settle() {
  const Ops& chosen = defaultOps();
  const Ops* expected = &kFirstUse;
  detail::activeOps.compare_exchange_strong(expected, &chosen, std::memory_order_acq_rel);
  return chosen;
}

const Ops kFirstUse = {
    [](const char* p, int f) { return settle().open(p, f); },
    [](int fd) { return settle().close(fd); },
    [](int fd, unsigned long r, void* a) { return settle().ioctl(fd, r, a); },
    [](int fd, void* b, std::size_t n) { return settle().read(fd, b, n); },
    [](int fd, const void* b, std::size_t n) { return settle().write(fd, b, n); },
    [](int d, int t, int p) { return settle().socket(d, t, p); },
    [](int fd, const sockaddr* a, socklen_t l) { return settle().bind(fd, a, l); },
    [](const char* p) { return settle().opendir(p); },
    [](DIR* d) { return settle().readdir(d); },
    [](DIR* d) { return settle().closedir(d); },
    [](int n) { return settle().sysconf(n); },
    [](unsigned int us) { return settle().usleep(us); },
    [](const char* n) { return settle().getenv(n); },
};

}  // namespace

namespace detail {
std::atomic<const Ops*> activeOps{&kFirstUse};
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

const Ops& defaultOps() noexcept {
  static const Ops* const chosen = chooseDefault();
  return *chosen;
}

const char* fabricPath() noexcept {
  return &defaultOps() == &kLinux ? nullptr : fabric::detail::remotePath();
}

const Ops* opsIs(const Ops* ops) noexcept {
  return detail::activeOps.exchange(ops ? ops : &defaultOps(), std::memory_order_acq_rel);
}

}  // namespace Kernel
