// The host side of the driver's devices: emulated netdevices and the socket
// requests on them, or, in real host-device mode, TAP devices in the caller's
// network namespace.
#include <fcntl.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <set>

#include "emu/FabricDriver.h"
#include "emu/HostSockets.h"

namespace Emu {
namespace hostsock {
namespace {

std::mutex gMutex;
std::set<int> gOpen;
int gNext = kFirstFd;

}  // namespace

bool isOpen(int fd) {
  std::lock_guard<std::mutex> lock(gMutex);
  return gOpen.count(fd) != 0;
}

int open() {
  std::lock_guard<std::mutex> lock(gMutex);
  if (gNext >= kFirstFd + kFdRange) {
    errno = EMFILE;
    return -1;
  }
  gOpen.insert(gNext);
  return gNext++;
}

int close(int fd) {
  std::lock_guard<std::mutex> lock(gMutex);
  if (gOpen.erase(fd)) return 0;
  errno = EBADF;
  return -1;
}

bool isEmulated(const FabricDriver& driver, int domain, int type) {
  return !driver.realHostDevices() && domain == AF_INET && (type & 0xF) == SOCK_DGRAM;
}

}  // namespace hostsock

namespace {

std::string nameOf(const ifreq& req) {
  return std::string(req.ifr_name, strnlen(req.ifr_name, IFNAMSIZ));
}

// Opens the TUN/TAP control node attached to the TAP device `name` (created
// if it is not there); the descriptor, or -1 with errno set.
int attachTap(const Kernel::Ops& sys, const std::string& name) {
  int fd = sys.open("/dev/net/tun", O_RDWR);
  if (fd < 0) return -1;
  ifreq req;
  std::memset(&req, 0, sizeof req);
  std::memcpy(req.ifr_name, name.data(), std::min(name.size(), std::size_t{IFNAMSIZ - 1}));
  req.ifr_flags = IFF_TAP | IFF_NO_PI;
  if (sys.ioctl(fd, TUNSETIFF, &req) < 0) {
    int err = errno;
    sys.close(fd);
    errno = err;
    return -1;
  }
  return fd;
}

// Makes the TAP device `name` outlive its control descriptor (or not: then it
// goes away with the descriptor). 0 or an errno.
int tapPersist(const Kernel::Ops& sys, const std::string& name, bool persist) {
  int fd = attachTap(sys, name);
  if (fd < 0) return errno;
  int rc = 0;
  if (sys.ioctl(fd, TUNSETPERSIST, reinterpret_cast<void*>(static_cast<long>(persist))) < 0)
    rc = errno;
  sys.close(fd);
  return rc;
}

}  // namespace

void FabricDriver::hostNetdevIs(const std::string& name) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  host_.netdevs[name];
}

void FabricDriver::realHostDevicesIs(bool on) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  realHost_ = on;
}

bool FabricDriver::realHostDevices() const {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  return realHost_;
}

void FabricDriver::hostRequestFailsNext(unsigned long request, int error, unsigned count) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  if (count) hostFaults_[request] = {error, count};
}

void FabricDriver::socketFailsNext(int error) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  socketFault_ = error;
}

int FabricDriver::hostSocket() {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  if (socketFault_) {
    errno = socketFault_;
    socketFault_ = 0;
    return -1;
  }
  return hostsock::open();
}

int FabricDriver::hostRequest(unsigned long request, void* arg) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  auto fault = hostFaults_.find(request);
  if (fault != hostFaults_.end()) {
    int error = fault->second.first;
    if (--fault->second.second == 0) hostFaults_.erase(fault);
    return error;
  }
  if (!arg) return EFAULT;
  ifreq& req = *static_cast<ifreq*>(arg);
  auto it = host_.netdevs.find(nameOf(req));
  if (it == host_.netdevs.end()) return ENODEV;
  HostNetdev& dev = it->second;
  switch (request) {
    case SIOCSIFHWADDR:
      if (req.ifr_hwaddr.sa_family != dev.hwFamily) return EINVAL;
      for (unsigned i = 0; i < 6; ++i)
        dev.mac.byteIs(i, static_cast<std::uint8_t>(req.ifr_hwaddr.sa_data[i]));
      return 0;
    case SIOCGIFHWADDR:
      req.ifr_hwaddr.sa_family = dev.hwFamily;
      for (unsigned i = 0; i < 6; ++i)
        req.ifr_hwaddr.sa_data[i] = static_cast<char>(dev.mac.byte(i));
      return 0;
    case SIOCGIFFLAGS:
      req.ifr_flags = static_cast<short>(dev.flags);
      return 0;
    case SIOCSIFFLAGS:
      dev.flags = static_cast<std::uint16_t>(req.ifr_flags);
      return 0;
    default:
      return ENOTTY;
  }
}

int FabricDriver::hostNetdevCreate(const std::string& name) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  if (realHost_) return tapPersist(next(), name, true);
  if (!host_.netdevs.emplace(name, HostNetdev{}).second) return EEXIST;
  return 0;
}

int FabricDriver::hostNetdevRemove(const std::string& name) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  if (realHost_) return tapPersist(next(), name, false);
  host_.netdevs.erase(name);
  return 0;
}

}  // namespace Emu
