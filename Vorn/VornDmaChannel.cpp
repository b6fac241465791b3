// The command channel: the one function that talks to "/dev/fabric", the
// fatal exit, the SAI-mode switch and the presence probes.
#include <fcntl.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Ringlog/Ringlog.h"
#include "Vorn/VornDma.h"
#include "Vorn/VornDmaPrivate.h"

namespace Hardware::Vorn {
namespace {

// The "/dev/fabric" descriptor, opened at first use and never closed. Two
// threads racing at the first use may both open it; the last one stored wins
// and the other descriptor leaks. Relaxed atomics keep that race defined.
std::atomic<int> fabricFd{-1};

}  // namespace

namespace dma {

void errorTrace(const char* fn, const char* cmd, int rc, unsigned line) {
  if (trace().enabled(0))
    Mox::traceLine(trace(), 0, kTraceFile, line, fn, " cmd: ", cmd, " error ", std::strerror(rc));
}

}  // namespace dma

namespace {

// True when "devstats " stands anywhere in the NUL-terminated `buf`.
bool isStatisticsPoll(const char* buf) {
  for (const char* p = buf; (p = std::strchr(p, 'd')) != nullptr; ++p)
    if (std::strncmp(p, "devstats ", 9) == 0) return true;
  return false;
}

}  // namespace

int fab_ioctl(char* buf, unsigned int size) {
  // The statistics poll is frequent; it stays out of the ring trace. The test
  // costs nothing when there is no ring file to write to.
  if (Ringlog::defaultFile() && !isStatisticsPoll(buf)) RINGLOG("fab_ioctl buf=%s", buf);

  int fd = fabricFd.load(std::memory_order_relaxed);
  if (fd < 0) {
    fd = Kernel::open("/dev/fabric", O_RDWR);
    fabricFd.store(fd, std::memory_order_relaxed);
    if (fd < 0) {
      char what[256];
      std::snprintf(what, sizeof what, "%s: open /dev/fabric", "fab_ioctl");
      syserr(what);
    }
  }
  if (Kernel::ioctl(fd, size, buf) >= 0) return 0;
  return errno;
}

void syserr(const char* what) {
  std::perror(what);
  std::abort();
}

bool saimode() {
  static const char* const mode = Kernel::getenv("KRIX_MODE");
  static const bool sai = mode != nullptr && std::strcmp(mode, "sai") == 0;
  return sai;
}

namespace {

bool canOpen(const char* path) {
  int fd = Kernel::open(path, O_RDWR);
  if (fd < 0) return false;
  Kernel::close(fd);
  return true;
}

}  // namespace

bool vornDmaProcVornDmaPresent() {
  if (dma::simulation()) return true;
  return canOpen("/proc/vorn-dma");
}

bool vornDmaDevFabricPresent() { return canOpen("/dev/fabric"); }

}  // namespace Hardware::Vorn
