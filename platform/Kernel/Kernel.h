// The library's one way to the kernel.
//
// Every system call the library makes goes through the table of operations
// below. By default it is Linux itself, or, when the environment names a
// fabric daemon at the seam's first use (VORN_FABRIC=PATH), a table that
// sends the driver's requests to that daemon (see RemoteFabric.h) and the rest
// to Linux. The driver emulator and the tests
// install their own table (for example to answer "/dev/fabric" ioctls, or to
// point "/sys" and "/proc" paths at a directory they built). A call costs one
// indirect jump and allocates nothing; while the table in force keeps Linux's
// ioctl and getenv, those two run inline, because the command path makes
// them on every command.
#pragma once

#include <dirent.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

namespace Kernel {

struct Ops {
  int (*open)(const char* path, int flags);
  int (*close)(int fd);
  int (*ioctl)(int fd, unsigned long request, void* arg);
  ssize_t (*read)(int fd, void* buf, std::size_t count);
  ssize_t (*write)(int fd, const void* buf, std::size_t count);
  int (*socket)(int domain, int type, int protocol);
  int (*bind)(int fd, const struct sockaddr* addr, socklen_t len);
  DIR* (*opendir)(const char* path);
  struct dirent* (*readdir)(DIR* dir);
  int (*closedir)(DIR* dir);
  long (*sysconf)(int name);
  int (*usleep)(unsigned int usec);
  const char* (*getenv)(const char* name);
};

// The operations that call Linux.
const Ops& linuxOps() noexcept;
// The process's default operations: Linux's, or the fabric daemon's when
// VORN_FABRIC named one at the first use of the seam. Decided once.
const Ops& defaultOps() noexcept;
// The path of the fabric daemon the default operations reach, or null when
// they are Linux's.
const char* fabricPath() noexcept;

namespace detail {
// Until its first use the seam holds a table whose every operation settles
// the default table, installs it and forwards to it; after that, an acquire
// load of a pointer (a plain load on x86).
extern std::atomic<const Ops*> activeOps;
// The ioctl and getenv of the Linux table.
int linuxIoctl(int fd, unsigned long request, void* arg);
const char* linuxGetenv(const char* name);

// The value of `name` (not empty) in `env`, a null-terminated array of
// "NAME=value" texts, or null. Reads no byte past any text's end. An entry
// whose first character differs costs two loads, a compare and a branch: the
// command path scans the environment before every command.
[[gnu::always_inline]] inline const char* findInEnvironment(char* const* env,
                                                            const char* name) noexcept {
  const char first = name[0];
  for (; *env; ++env) {
    const char* entry = *env;
    if (entry[0] != first) continue;
    const char* n = name + 1;
    const char* v = entry + 1;
    while (*n && *v == *n) ++n, ++v;
    if (!*n && *v == '=') return v + 1;
  }
  return nullptr;
}

// ioctl's outcome as an error number: 0 when the request succeeded, else the
// positive error. On x86-64 the system call is made right here: a call into
// the C library would leave one more return pending across the system call,
// and each of those is mispredicted when the kernel comes back (its return
// stack is refilled). errno is not set on that path.
[[gnu::always_inline]] inline int linuxIoctlError(int fd, unsigned long request,
                                                  void* arg) noexcept {
#if defined(__x86_64__)
  long result;
  asm volatile("syscall"
               : "=a"(result)
               : "0"(long{SYS_ioctl}), "D"(long{fd}), "S"(request), "d"(arg)
               : "rcx", "r11", "memory");
  return result < 0 ? static_cast<int>(-result) : 0;
#else
  return ::ioctl(fd, request, arg) < 0 ? errno : 0;
#endif
}
}  // namespace detail

// The operations in force.
inline const Ops& ops() noexcept {
  return *detail::activeOps.load(std::memory_order_acquire);
}
// Installs `ops` (null: the default table again) and returns the table it replaces. The
// table must outlive its use; install it before the calls it should see.
const Ops* opsIs(const Ops* ops) noexcept;

// Installs a table for a scope and puts the previous one back after it.
class ScopedOps {
 public:
  explicit ScopedOps(const Ops* ops) noexcept : previous_(opsIs(ops)) {}
  ~ScopedOps() { opsIs(previous_); }
  ScopedOps(const ScopedOps&) = delete;
  ScopedOps& operator=(const ScopedOps&) = delete;

 private:
  const Ops* previous_;
};

inline int open(const char* path, int flags) {
  return ops().open(path, flags);
}
inline int close(int fd) {
  return ops().close(fd);
}
// While the table in force uses Linux's ioctl, the C library is called from
// here rather than through the table: every return still pending when a
// system call comes back is mispredicted, so the command path keeps its
// depth below the system call as small as a bare ioctl's.
inline int ioctl(int fd, unsigned long request, void* arg) {
  auto* const call = ops().ioctl;
  if (call == &detail::linuxIoctl) return ::ioctl(fd, request, arg);
  return call(fd, request, arg);
}
// ioctl, answered as 0 or the positive error number of the refused request,
// for the paths that want the number rather than errno (which it may leave
// alone). With Linux's ioctl in force, the system call is made inline.
[[gnu::always_inline]] inline int ioctlError(int fd, unsigned long request, void* arg) {
  auto* const call = ops().ioctl;
  if (call == &detail::linuxIoctl) return detail::linuxIoctlError(fd, request, arg);
  return call(fd, request, arg) < 0 ? errno : 0;
}
inline ssize_t read(int fd, void* buf, std::size_t n) {
  return ops().read(fd, buf, n);
}
inline ssize_t write(int fd, const void* buf, std::size_t n) {
  return ops().write(fd, buf, n);
}
inline int socket(int domain, int type, int protocol) {
  return ops().socket(domain, type, protocol);
}
inline int bind(int fd, const struct sockaddr* addr, socklen_t len) {
  return ops().bind(fd, addr, len);
}
inline DIR* opendir(const char* path) {
  return ops().opendir(path);
}
inline struct dirent* readdir(DIR* dir) {
  return ops().readdir(dir);
}
inline int closedir(DIR* dir) {
  return ops().closedir(dir);
}
inline long sysconf(int name) {
  return ops().sysconf(name);
}
inline int usleep(unsigned int usec) {
  return ops().usleep(usec);
}
// With Linux's getenv in force, the environment is scanned inline (no call
// on the command path); an empty name is left to the C library.
inline const char* getenv(const char* name) {
  auto* const call = ops().getenv;
  if (call == &detail::linuxGetenv && name[0] && environ)
    return detail::findInEnvironment(environ, name);
  return call(name);
}

}  // namespace Kernel
