// A debugging aid: the driver's listing, copied to standard error.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "Kernel/Kernel.h"
#include "Vorn/VornDma.h"

namespace Hardware::Vorn {

namespace {

// Writes all `n` bytes to standard error; false when a write fails.
bool writeAll(const char* p, ssize_t n) {
  while (n > 0) {
    ssize_t w = Kernel::write(STDERR_FILENO, p, static_cast<std::size_t>(n));
    if (w <= 0) return false;
    p += w;
    n -= w;
  }
  return true;
}

}  // namespace

void vornDmaDump() {
  static constexpr const char kPath[] = "/proc/vorn-dma";
  int fd = Kernel::open(kPath, O_RDONLY);
  if (fd < 0) {
    std::perror(kPath);
    return;
  }
  char buf[1024];
  ssize_t n;
  bool wrote = true;
  while ((n = Kernel::read(fd, buf, sizeof buf)) > 0)
    if (!(wrote = writeAll(buf, n))) break;
  if (!wrote || n < 0) std::perror(kPath);
  if (Kernel::close(fd) != 0) std::perror(kPath);
}

}  // namespace Hardware::Vorn
