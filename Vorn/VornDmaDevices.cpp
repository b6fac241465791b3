// Device commands: presence, naming, parameters, state, statistics, the
// multi-processor mode and the driver's device listings.
#include <csignal>
#include <cstdio>
#include <cstring>

#include "Mox/Assert.h"
#include "Vorn/VornDma.h"
#include "Vorn/VornDmaPrivate.h"

namespace Hardware::Vorn {

using dma::command;
using dma::simulation;

// The PCI address of `ham` as "%04x:%02x:%02x.%1x" in `buf`; -1 (nothing
// written) when no PCI device is behind it.
int pciName(Mox::Ptr<Fru::PciHam const> ham, char* buf, unsigned int size) {
  if (!ham) return -1;
  Fru::PciHamImpl::PtrConst impl = ham->pciHamImpl();
  if (!impl) return -1;
  Fru::PciAddress a = impl->address();
  dma::formatCommand(buf, size, "%04x:%02x:%02x.%1x", a.domain, a.bus, a.device, a.function);
  return 0;
}

bool vornDmaPresent(Mox::String name, Mox::Ptr<Fru::PciHam const> ham) {
  (void)name;  // the driver knows the device by its PCI address
  if (simulation()) return true;
  char pci[64];
  if (pciName(ham, pci, sizeof pci) != 0) return false;
  char buf[kCommandSize];
  command<"devpresent %s">(buf, pci);
  return dma::fabIoctl(buf, kCommandSize) == 0;
}

int vornDmaDeviceRename(Mox::String name, Mox::Ptr<Fru::PciHam const> ham) {
  if (simulation()) return 0;
  char pci[64];
  if (ham) {
    int rc = pciName(ham, pci, sizeof pci);
    if (rc != 0) {
      VORN_DMA_TRACE(0, "vornDmaDeviceRename", " ", name, " not hardwarePresent, error: ", rc);
      syserr("devname");
    }
  } else {
    std::snprintf(pci, sizeof pci, "%s", "nopcidev");
  }
  dma::CommandBuffer buf;
  if (command<"devname %s %s">(buf, name.charPtr(), pci) < 0) {
    VORN_DMA_TRACE(0, "vornDmaDeviceRename", " ", name, " buffer overflow ");
    syserr("devname");
  }
  int rc = dma::fabIoctl(buf);
  if (rc == 0 || rc == EEXIST) return rc;
  VORN_DMA_ERROR("vornDmaDeviceRename", buf, rc);
  if (rc == ENODEV) {
    // The device vanished under the driver: signal the caller, and still
    // answer 19 if the signal is caught or ignored.
    std::raise(7);
    return rc;
  }
  dma::refusalEndsProcess("devname", rc);
}

int vornDmaDeviceParam(Mox::String name, FapType type, FapId id, unsigned int p1, unsigned int p2,
                       unsigned int p3, unsigned int p4, unsigned int p5, unsigned int p6) {
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"devparams %s %u %u %u %u %u %u %u %u">(buf, name.charPtr(), static_cast<unsigned>(type),
                                                  static_cast<unsigned>(id.value()), p1, p2, p3, p4,
                                                  p5, p6);
  int rc = dma::fabIoctl(buf);
  if (rc == 0 || rc == EBUSY) return rc;
  VORN_DMA_ERROR("vornDmaDeviceParam", buf, rc);
  dma::refusalEndsProcess("devparams", rc);
}

int vornDmaDevcleanup(Mox::String name) {
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"devcleanup %s">(buf, name.charPtr());
  int rc = dma::fabIoctl(buf);
  if (rc != 0) VORN_DMA_ERROR("vornDmaDevcleanup", buf, rc);
  return rc;
}

namespace {

// Sends "devstate"; 19 means the device is gone already and is not traced.
// Expanded into its callers: no copy of the name, no call between them and
// the system call.
[[gnu::always_inline]] inline int setDeviceState(const Mox::String& name, bool up) {
  dma::CommandBuffer buf;
  command<"devstate %s %s">(buf, name.charPtr(), up ? "up" : "down");
  int rc = dma::fabIoctl(buf);
  if (rc != 0 && rc != ENODEV) VORN_DMA_ERROR("vornDmaSetDeviceState", buf, rc);
  return rc;
}

}  // namespace

int vornDmaSetDeviceState(Mox::String name, bool up) {
  return setDeviceState(name, up);
}

int vornDmaDeviceUp(Mox::String name) {
  if (simulation()) return 0;
  return setDeviceState(name, true);
}

int vornDmaDeviceDown(Mox::String name) {
  if (simulation()) return 0;
  return setDeviceState(name, false);
}

int vornDmaGetDevStats(Mox::String name, fabdevstats* stats) {
  if (simulation()) {
    stats->up = 0;
    return 0;
  }
  char* record = reinterpret_cast<char*>(stats);
  dma::writeCommandInto<"devstats %s">(record, kDevStatsSize, name.charPtr());
  int rc = dma::fabIoctl(record, kDevStatsSize);
  if (rc != 0) VORN_DMA_TRACE(0, "vornDmaGetDevStats", " ", name, " error ", std::strerror(rc));
  return rc;
}

int vornDmaIsDeviceUp(Mox::String name, bool* up) {
  if (simulation()) {
    *up = false;
    return 0;
  }
  fabdevstats stats;
  int rc = vornDmaGetDevStats(name, &stats);
  if (rc == 0) *up = stats.up != 0;
  return rc;
}

int vornDmaMpcMode(bool on) {
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"mpcmode %s">(buf, on ? "on" : "off");
  if (int rc = dma::fabIoctl(buf); rc != 0) dma::refusalEndsProcess(buf, rc);
  return 0;
}

namespace {

// Sends a listing request and returns its answer text. A refusal means the
// driver is broken: the process ends.
Mox::String listing(const char* keyword, const char* fn, const char* fnText) {
  char buf[kListingSize];
  std::snprintf(buf, sizeof buf, "%s", keyword);
  int rc = dma::fabIoctl(buf, kListingSize);
  if (rc != 0) {
    VORN_DMA_ERROR(fn, buf, rc);
    MOX_ASSERT_TEXT(false, "false", fnText);
  }
  // The driver terminates its answer; never read past the buffer if it did not.
  return Mox::String(buf, strnlen(buf, sizeof buf));
}

}  // namespace

Mox::String vornDmaListUpDevices() {
  if (simulation()) return Mox::String();
  return listing("devlist", "vornDmaListUpDevices",
                 "Mox::String Hardware::Vorn::vornDmaListUpDevices()");
}

Mox::String vornDmaListDeviceParams() {
  if (simulation()) return Mox::String();
  return listing("devparamslist", "vornDmaListDeviceParams",
                 "Mox::String Hardware::Vorn::vornDmaListDeviceParams()");
}

}  // namespace Hardware::Vorn
