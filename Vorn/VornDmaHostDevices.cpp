// Ports, VLANs and host devices: the driver's host network devices and their
// finishing on the host side (MAC address, up flag, queueing discipline).
//
// Trace levels: refusals and host-side failures at 0, the ifadd command text
// at 2, successes and the skipped port-channel delete at 8.
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "Mox/Assert.h"
#include "Ringlog/Ringlog.h"
#include "Vorn/VornDma.h"
#include "Vorn/VornDmaPrivate.h"
#include "Zell/Zell.h"

namespace Hardware::Vorn {
namespace {

using dma::command;
using dma::simulation;

// The datagram sockets of the host-device requests, one for setupIntf and one
// for vornDmaIfFlags, opened at first use and never closed. A first-use race
// may open one twice and leak the loser; relaxed atomics keep it defined.
std::atomic<int> setupSocket{-1};
std::atomic<int> flagsSocket{-1};

int cachedSocket(std::atomic<int>& cache) {
  int fd = cache.load(std::memory_order_relaxed);
  if (fd < 0) {
    fd = Kernel::socket(AF_INET, SOCK_DGRAM, 0);
    cache.store(fd, std::memory_order_relaxed);
  }
  return fd;
}

// A zeroed request naming `ifname`, cut to the kernel's name field and always
// terminated.
void requestFor(ifreq& req, const char* ifname) {
  std::memset(&req, 0, sizeof req);
  if (ifname) std::memcpy(req.ifr_name, ifname, strnlen(ifname, sizeof req.ifr_name - 1));
}

constexpr unsigned kMacBytes = 6;
constexpr unsigned short kArphrdEther = 1;

// The MAC text as the driver's callers write it, "02:00:00:aa:bb:cc": byte i
// is the hexadecimal number at character 3*i. Nothing is validated; a group
// beyond the end of a short text is 0.
void parseMac(const char* text, unsigned char (&mac)[kMacBytes]) {
  std::size_t len = text ? std::strlen(text) : 0;
  for (unsigned i = 0; i < kMacBytes; ++i)
    mac[i] = 3 * i < len ? static_cast<unsigned char>(std::strtoul(text + 3 * i, nullptr, 16)) : 0;
}

const char* keywordOf(bool ctrl) {
  return ctrl ? "ctrl" : "internallag";
}

}  // namespace

// Finishes a host device that the driver has just created: MAC address, up
// flag, then the prio queueing discipline. Stops at a failed MAC or flags
// read; a failed up flag is traced and the discipline is still added.
int setupIntf(const char* ifname, const char* macAddr) {
  int sock = cachedSocket(setupSocket);
  if (simulation()) return 0;
  if (sock < 0) {
    int err = errno;
    VORN_DMA_TRACE(0, "setupIntf", " socket error ", std::strerror(err));
    return err;
  }

  ifreq req;
  requestFor(req, ifname);
  req.ifr_hwaddr.sa_family = kArphrdEther;
  unsigned char mac[kMacBytes];
  parseMac(macAddr, mac);
  std::memcpy(req.ifr_hwaddr.sa_data, mac, kMacBytes);
  RINGLOG("vornDmaIfadd: SIOCSIFHWADDR ioctl ifname=%s macAddr=%s", ifname, macAddr);
  if (Kernel::ioctl(sock, SIOCSIFHWADDR, &req) == -1) {
    int err = errno;
    VORN_DMA_TRACE(0, "setupIntf", " SIOCSIFHWADDR error ", std::strerror(err));
    return err;
  }

  RINGLOG("vornDmaIfadd: SIOCSIFFLAGS ioctl ifname=%s", ifname);
  if (Kernel::ioctl(sock, SIOCGIFFLAGS, &req) == -1) {
    int err = errno;
    VORN_DMA_TRACE(0, "setupIntf", " SIOCGIFFLAGS error ", std::strerror(err));
    return err;
  }
  req.ifr_flags = static_cast<short>(req.ifr_flags | IFF_UP);
  if (Kernel::ioctl(sock, SIOCSIFFLAGS, &req) == -1) {
    // The set request has no label of its own in the traces operators read.
    VORN_DMA_TRACE(0, "setupIntf", " SIOCGIFFLAGS error ", std::strerror(errno));
  }

  char tc[kCommandSize];
  command<"/sbin/tc qdisc add dev %s root handle 1: prio">(tc, ifname);
  int rc = Zell::run(tc, -1, -1, -2, -1);
  if (rc < 0)
    VORN_DMA_TRACE(0, "setupIntf", " Failed to add prio qdisc for ", ifname, " error ",
                   std::strerror(rc));
  return rc;
}

int vornDmaIfadd(const char* ifname, int sysPort, int portArg, Mox::String devName, bool ctrl,
                 bool hwLag, const char* macAddr) {
  RINGLOG_BLOCK("vornDmaIfadd ifname=%s", ifname);
  if (simulation()) return 0;
  if (ctrl && hwLag) {
    VORN_DMA_TRACE(0, "vornDmaIfadd: interface ", ifname, " ctrl: ", ctrl, " hwLag: ", hwLag,
                   " Error: ctrl/hwLag are mutually exclusive");
    return EINVAL;
  }

  dma::CommandBuffer buf;
  if (hwLag) {
    sysPort = vornDmaInternalSysPortIdIs(static_cast<unsigned short>(sysPort));
    // In SAI mode the host namespace owns hardware LAGs; the driver never
    // hears of them.
    if (saimode()) return setupIntf(ifname, macAddr);
    if (devName.empty())
      command<"ifadd %s %d %d %s">(buf, ifname, sysPort, portArg, "");
    else
      command<"ifadd %s %d %d %s %s">(buf, ifname, sysPort, portArg, devName.charPtr(), "");
  } else if (devName.empty()) {
    // A plain port is announced as "internallag".
    command<"ifadd %s %d %d %s">(buf, ifname, sysPort, portArg, keywordOf(ctrl));
  } else if (saimode()) {
    // In SAI mode the driver takes the MAC with the device; without one the
    // caller is broken.
    MOX_ASSERT_TEXT(macAddr != nullptr, "macAddr",
                    "int Hardware::Vorn::vornDmaIfadd(const char*, int, int, Mox::String, bool, "
                    "bool, const char*)");
    command<"ifadd %s %d %d %s %s %s">(buf, ifname, sysPort, portArg, devName.charPtr(), macAddr,
                                       keywordOf(ctrl));
  } else {
    command<"ifadd %s %d %d %s %s">(buf, ifname, sysPort, portArg, devName.charPtr(),
                                    keywordOf(ctrl));
  }

  VORN_DMA_TRACE(2, "vornDmaIfadd: command ", buf.text);
  int rc = dma::fabIoctl(buf);
  if (rc == 0) return setupIntf(ifname, macAddr);
  if (rc == EEXIST) return 0;  // the device is there and set up already
  VORN_DMA_ERROR("vornDmaIfadd", buf, rc);
  return rc;
}

int vornDmaIfdel(const char* ifname) {
  RINGLOG_BLOCK("vornDmaIfdel ifname=%s", ifname);
  if (simulation()) return 0;
  if (saimode() && std::strncmp(ifname, "PortChannel", 11) == 0) {
    VORN_DMA_TRACE(8, "vornDmaIfdel", "(): Not deleting port-channel ", ifname,
                   " in host namespace");
    return 0;
  }
  dma::CommandBuffer buf;
  command<"ifdel %s">(buf, ifname);
  int rc = dma::fabIoctl(buf);
  if (rc != 0) VORN_DMA_ERROR("vornDmaIfdel", buf, rc);
  return rc;
}

namespace {

// Sends the command in `buf`; a refusal is traced under `fn` and returned.
[[gnu::always_inline]] inline int sendTraced(const char* fn, dma::CommandBuffer& buf,
                                             unsigned line) {
  int rc = dma::fabIoctl(buf);
  if (rc != 0) dma::errorTrace(fn, buf, rc, line);
  return rc;
}

}  // namespace

int vornDmaIfPortUpdate(const char* ifname, int sysPort) {
  RINGLOG_BLOCK("vornDmaIfPortUpdate ifname=%s sys_port=%d", ifname, sysPort);
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"ifportupdate %s %d">(buf, ifname, sysPort);
  return sendTraced("vornDmaIfPortUpdate", buf, __LINE__);
}

int vornDmaSetIntfState(Mox::String ifname, bool up) {
  if (simulation()) return 0;
  if (!saimode()) return 0;
  dma::CommandBuffer buf;
  command<"ifstate %s %s">(buf, ifname.charPtr(), up ? "up" : "down");
  int rc = dma::fabIoctl(buf);
  if (rc != 0 && rc != ENODEV) VORN_DMA_ERROR("vornDmaSetIntfState", buf, rc);
  return rc;
}

int vornDmaNativeVlan(const char* ifname, bool flag, unsigned short vlanId) {
  RINGLOG_BLOCK("vornDmaNativeVlan ifname=%s vlan %u", ifname, unsigned{vlanId});
  if (simulation()) return 0;
  if (std::strchr(ifname, '.')) return 0;  // sub-interfaces have no native VLAN
  dma::CommandBuffer buf;
  command<"native_vlan %s %d %d">(buf, ifname, flag ? 1 : 0, int{vlanId});
  return sendTraced("vornDmaNativeVlan", buf, __LINE__);
}

int vornDmaVlanVsiAdd(const char* ifname, unsigned short startVlanId, unsigned short endVlanId,
                      unsigned short innerVlanId, unsigned short vsi) {
  RINGLOG_BLOCK("vornDmaVlanVsiAdd ifname=%s start_vlanid %u end_vlanid %u inner_vlanid %u vsi %u",
                ifname, unsigned{startVlanId}, unsigned{endVlanId}, unsigned{innerVlanId},
                unsigned{vsi});
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"vlan_vsi_add %s %d %d %d %d">(buf, ifname, int{startVlanId}, int{endVlanId},
                                         int{innerVlanId}, int{vsi});
  return sendTraced("vornDmaVlanVsiAdd", buf, __LINE__);
}

int vornDmaVlanVsiDel(const char* ifname, unsigned short startVlanId, unsigned short endVlanId,
                      unsigned short innerVlanId) {
  RINGLOG_BLOCK("vornDmaVlanVsiDel ifname=%s start_vlanid %u end_vlanid %u inner_vlanid %u", ifname,
                unsigned{startVlanId}, unsigned{endVlanId}, unsigned{innerVlanId});
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"vlan_vsi_del %s %d %d %d">(buf, ifname, int{startVlanId}, int{endVlanId},
                                      int{innerVlanId});
  return sendTraced("vornDmaVlanVsiDel", buf, __LINE__);
}

int vornDmaRoutedPortSet(const char* ifname, unsigned int vlanId) {
  RINGLOG_BLOCK("vornDmaRoutedPortSet ifname=%s, vlanid=%u", ifname, vlanId);
  if (simulation()) return 0;
  // The driver knows a sub-interface's routed port by its parent's name.
  char cut[80];
  command<"%s">(cut, ifname);
  const char* name = ifname;
  if (char* dot = std::strchr(cut, '.')) {
    *dot = '\0';
    name = cut;
  }
  dma::CommandBuffer buf;
  command<"internalvlan %u %s">(buf, vlanId, name);
  int rc = dma::fabIoctl(buf);
  if (rc == ENODEV) {
    VORN_DMA_TRACE(0, "vornDmaRoutedPortSet: intfname ", name, ": vlanid ", vlanId,
                   " device not found");
    return 0;
  }
  if (rc != 0) {
    VORN_DMA_TRACE(0, "vornDmaRoutedPortSet: intfname ", name, ": vlanid ", vlanId,
                   " error:", std::strerror(rc));
    return rc;
  }
  VORN_DMA_TRACE(8, "vornDmaRoutedPortSet: intfname ", name, ": vlanid ", vlanId, " success");
  return 0;
}

int vornDmaRoutedPortEncapVlanMapSet(const char* ifname, unsigned int vlanTag) {
  RINGLOG_BLOCK("vornDmaRoutedPortEncapVlanMapSet ifname=%s vlanTag=%u", ifname, vlanTag);
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"encapvlan_routedport %s %u">(buf, ifname, vlanTag);
  VORN_DMA_TRACE(8, "vornDmaRoutedPortEncapVlanMapSet", " ", ifname, " ", vlanTag);
  return sendTraced("vornDmaRoutedPortEncapVlanMapSet", buf, __LINE__);
}

int vornDmaIfFlags(const char* ifname, unsigned int* flags) {
  if (simulation()) return 0;
  // A failed socket shows as the request's EBADF below.
  int sock = cachedSocket(flagsSocket);
  ifreq req;
  requestFor(req, ifname);
  if (Kernel::ioctl(sock, SIOCGIFFLAGS, &req) == -1) return errno;
  *flags = static_cast<unsigned int>(static_cast<int>(req.ifr_flags));
  return 0;
}

}  // namespace Hardware::Vorn
