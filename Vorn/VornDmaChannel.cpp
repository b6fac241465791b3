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
namespace dma {

std::atomic<int> fabricFd{-1};

void errorTrace(const char* fn, const char* cmd, int rc, unsigned line) {
  if (trace().enabled(0))
    Mox::traceLine(trace(), 0, kTraceFile, line, fn, " cmd: ", cmd, " error ", std::strerror(rc));
}

namespace {

// True when "devstats " stands anywhere in the NUL-terminated `buf`.
bool isStatisticsPoll(const char* buf) {
  for (const char* p = buf; (p = std::strchr(p, 'd')) != nullptr; ++p)
    if (std::strncmp(p, "devstats ", 9) == 0) return true;
  return false;
}

}  // namespace

void ringCommand(const char* buf) noexcept {
  // The statistics poll is frequent; it stays out of the ring trace.
  if (!isStatisticsPoll(buf)) RINGLOG("fab_ioctl buf=%s", buf);
}

int openFabric() {
  int fd = Kernel::open("/dev/fabric", O_RDWR);
  fabricFd.store(fd, std::memory_order_relaxed);
  if (fd < 0) {
    char what[256];
    std::snprintf(what, sizeof what, "%s: open /dev/fabric", "fab_ioctl");
    syserr(what);
  }
  return fd;
}

}  // namespace dma

int fab_ioctl(char* buf, unsigned int size) {
  return dma::fabIoctl(buf, size);
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

bool vornDmaDevFabricPresent() {
  return canOpen("/dev/fabric");
}

}  // namespace Hardware::Vorn
