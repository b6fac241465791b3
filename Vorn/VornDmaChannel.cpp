// The command channel: the one function that talks to "/dev/fabric", the
// fatal exit, the SAI-mode switch and the presence probes.
#include <fcntl.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "Ringlog/Ringlog.h"
#include "Vorn/StatisticsPoll.h"
#include "Vorn/VornDma.h"
#include "Vorn/VornDmaPrivate.h"

namespace Hardware::Vorn {
namespace dma {

std::atomic<int> fabricFd{-1};

void errorTraceLine(const char* fn, const char* cmd, int rc, unsigned line) {
  Mox::traceLine(trace(), 0, kTraceFile, line, fn, " cmd: ", cmd, " error ", std::strerror(rc));
}

void ringCommand(const char* buf, std::size_t length) noexcept {
  // The statistics poll is frequent; it stays out of the ring trace.
  // Written right after the command was formatted: inside a command
  // function's block it carries the block's opening time.
  if (!isStatisticsPoll(buf, length))
    RINGLOG_AT_BLOCK_START("fab_ioctl buf=%s", std::string_view(buf, length));
}

void refusalEndsProcess(const char* what, int rc) {
  errno = rc;
  syserr(what);
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
  int rc = dma::fabIoctl(buf, size);
  // Its callers may read errno as after a failed ioctl; the command
  // functions take the number from the result and skip this store.
  if (rc != 0) errno = rc;
  return rc;
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
