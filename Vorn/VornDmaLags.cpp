// LAG commands and the reader of the driver's LAG table.
#include <fcntl.h>

#include <cerrno>
#include <cstring>

#include "Kernel/Kernel.h"
#include "Mox/Assert.h"
#include "Ringlog/Ringlog.h"
#include "Vorn/VornDma.h"
#include "Vorn/VornDmaLagListing.h"
#include "Vorn/VornDmaPrivate.h"

namespace Hardware::Vorn {

using dma::command;
using dma::simulation;

namespace {

// The driver answers 19 while the member netdevice is not there yet (it is
// being created as the member is added): ask again after a pause, for at most
// 100 ms in all.
constexpr unsigned kMemberRetryPauseUs = 10000;
constexpr int kMemberMaxRetries = 10;

// The listing is read in pieces and split into lines here. The piece lives on
// the stack: a few system calls more than with a larger heap block, no
// allocation per call. (A /proc file hands out a page or so per read anyway.)
constexpr std::size_t kListingChunk = 16 * 1024;

constexpr const char kListLagsFn[] =
    "Hardware::Vorn::VornDmaLags::Ptr Hardware::Vorn::vornDmaListLags()";

// The member and config commands do nothing in SAI mode.
bool skipMemberCommand() {
  return simulation() || saimode();
}

// Closes a descriptor of the kernel seam on every path out of a scope.
class ScopedFd {
 public:
  explicit ScopedFd(int fd) noexcept : fd_(fd) {}
  ~ScopedFd() {
    if (fd_ >= 0) Kernel::close(fd_);
  }
  ScopedFd(const ScopedFd&) = delete;
  ScopedFd& operator=(const ScopedFd&) = delete;
  int get() const noexcept { return fd_; }

 private:
  int fd_;
};

// The failure policy of the listing: an id out of range throws, a malformed
// line ends the process.
[[noreturn]] void listingBroken(const dma::LineOutcome& outcome) {
  if (outcome.kind == dma::LineKind::kRangeError) Mox::throwRangeException(outcome.text);
  Mox::assertFail(outcome.text, __FILE__, __LINE__, kListLagsFn);
}

}  // namespace

int vornDmaSetLagMode(unsigned lagMode, unsigned lagParam, FapType fapType) {
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"drvparams %d %d %d">(buf, static_cast<int>(lagMode), static_cast<int>(lagParam),
                                static_cast<int>(fapType));
  int rc = dma::fabIoctl(buf);
  if (rc != 0) VORN_DMA_ERROR("vornDmaSetLagMode", buf, rc);
  return rc;
}

int vornDmaLagMemberAdd(const char* ifname, const char* membername, int memberId) {
  RINGLOG_BLOCK("vornDmaLagMemberAdd ifname=%s, membername=%s, memberId=%d", ifname, membername,
                memberId);
  if (skipMemberCommand()) return 0;
  dma::CommandBuffer buf;
  command<"lagmember_add %s %s %d">(buf, ifname, membername, memberId);
  int rc = dma::fabIoctl(buf);
  int retries = 0;
  while (rc == ENODEV && retries < kMemberMaxRetries) {
    Kernel::usleep(kMemberRetryPauseUs);
    ++retries;
    rc = dma::fabIoctl(buf);
  }
  if (retries == 0 && rc == 0) return 0;
  // Every other outcome leaves its line in the ring, a refusal at the first
  // send ("after 0 retries") as much as a success that needed retries.
  RINGLOG("vornDmaLagMemberAdd ifname=%s, membername=%sreturned %d after %d retries", ifname,
          membername, rc, retries);
  if (rc == 0) return 0;
  VORN_DMA_ERROR("vornDmaLagMemberAdd", buf, rc);
  return rc;
}

int vornDmaLagMemberDel(const char* ifname, int memberId) {
  RINGLOG_BLOCK("vornDmaLagMemberDel ifname=%s, memberId=%d", ifname, memberId);
  if (skipMemberCommand()) return 0;
  dma::CommandBuffer buf;
  command<"lagmember_del %s %d">(buf, ifname, memberId);
  int rc = dma::fabIoctl(buf);
  if (rc != 0) VORN_DMA_ERROR("vornDmaLagMemberDel", buf, rc);
  return rc;
}

int vornDmaLagMemberConfigAdd(const char* ifname, const char* membername) {
  RINGLOG_BLOCK("vornDmaLagMemberConfigAdd ifname=%s, membername=%s", ifname, membername);
  if (skipMemberCommand()) return 0;
  dma::CommandBuffer buf;
  command<"lagmemberconfig_add %s %s">(buf, ifname, membername);
  int rc = dma::fabIoctl(buf);
  if (rc != 0) {
    VORN_DMA_TRACE(0, "vornDmaLagMemberConfigAdd", " ifname=", ifname, ", membername=", membername,
                   " returned ", rc);
    RINGLOG("vornDmaLagMemberConfigAdd ifname=%s, membername=%sreturned %d", ifname, membername,
            rc);
  }
  return rc;
}

int vornDmaLagMemberConfigDel(const char* ifname, const char* membername) {
  RINGLOG_BLOCK("vornDmaLagMemberConfigDel ifname=%s, membername=%s", ifname, membername);
  if (skipMemberCommand()) return 0;
  dma::CommandBuffer buf;
  command<"lagmemberconfig_del %s %s">(buf, ifname, membername);
  int rc = dma::fabIoctl(buf);
  if (rc != 0) {
    // The pieces differ from the add's ("ifname=" without a blank before it,
    // " membername=" without a comma); readers of the trace match on them.
    VORN_DMA_TRACE(0, "vornDmaLagMemberConfigDel", "ifname=", ifname, " membername=", membername,
                   " returned ", rc);
    RINGLOG("vornDmaLagMemberConfigDel ifname=%s, membername=%sreturned %d", ifname, membername,
            rc);
  }
  return rc;
}

int vornDmaLagConfigMapDel(const char* lagname) {
  // The entry message has always read "vornDmaLagConfigDel"; kept for its readers.
  RINGLOG_BLOCK("vornDmaLagConfigDel lagname=%s", lagname);
  if (skipMemberCommand()) return 0;
  dma::CommandBuffer buf;
  command<"lagconfigmap_del %s">(buf, lagname);
  int rc = dma::fabIoctl(buf);
  if (rc != 0) {
    VORN_DMA_TRACE(0, "vornDmaLagConfigMapDel", " lagname=", lagname, " returned ", rc);
    RINGLOG("vornDmaLagConfigMapDel lagname=%s returned %d", lagname, rc);
  }
  return rc;
}

VornDmaLags::Ptr vornDmaListLags() {
  VornDmaLags::Ptr lags = vornDmaLagsFactory("vornDmaLags");
  if (simulation()) return lags;
  ScopedFd fd(Kernel::open("/proc/vorn-dma", O_RDONLY));
  if (fd.get() < 0) return lags;
  dma::LagListingParser parser(*lags);
  char chunk[kListingChunk];
  while (true) {
    ssize_t n = Kernel::read(fd.get(), chunk, kListingChunk);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    dma::LineOutcome outcome = parser.feed({chunk, static_cast<std::size_t>(n)});
    if (outcome.failed()) listingBroken(outcome);
  }
  dma::LineOutcome outcome = parser.finish();
  if (outcome.failed()) listingBroken(outcome);
  return lags;
}

}  // namespace Hardware::Vorn
