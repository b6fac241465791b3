// The emulated datagram sockets that the host-device requests go through.
//
// Their descriptors live in a range of their own above the emulated
// "/dev/fabric", and stay valid across drivers: the library caches its
// sockets for the life of the process, as it does the device descriptor.
#pragma once

namespace Emu {

class FabricDriver;

namespace hostsock {

inline constexpr int kFirstFd = (1 << 24) + (1 << 21);
inline constexpr int kFdRange = 1 << 20;

inline bool isSocketFd(int fd) {
  return fd >= kFirstFd && fd < kFirstFd + kFdRange;
}
// True for an emulated descriptor that is open.
bool isOpen(int fd);
// A new descriptor.
int open();
// Closes an emulated descriptor: 0, or -1 with EBADF.
int close(int fd);
// True when `driver` emulates sockets of this domain and type (AF_INET
// datagram sockets outside real host-device mode).
bool isEmulated(const FabricDriver& driver, int domain, int type);

}  // namespace hostsock
}  // namespace Emu
