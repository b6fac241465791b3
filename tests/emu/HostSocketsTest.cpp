// The emulated host side: datagram sockets and the netdevice requests on them.
#include <gtest/gtest.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Kernel/Kernel.h"
#include "emu/FabricDriver.h"
#include "emu/HostSockets.h"

namespace {

ifreq requestFor(const char* name) {
  ifreq req{};
  std::snprintf(req.ifr_name, sizeof req.ifr_name, "%s", name);
  return req;
}

TEST(HostSockets, RequestsActOnTheEmulatedNetdevices) {
  Emu::FabricDriver driver;
  driver.hostNetdevIs("et1");
  int sock = Kernel::socket(AF_INET, SOCK_DGRAM, 0);
  ASSERT_TRUE(Emu::hostsock::isSocketFd(sock));

  ifreq req = requestFor("et1"), got = requestFor("et1");
  req.ifr_hwaddr.sa_family = 1;
  const char mac[6] = {2, 0, 0, 0x11, 0x22, 0x33};
  std::memcpy(req.ifr_hwaddr.sa_data, mac, 6);
  ASSERT_EQ(Kernel::ioctl(sock, SIOCSIFHWADDR, &req), 0);
  ASSERT_EQ(Kernel::ioctl(sock, SIOCGIFHWADDR, &got), 0);
  EXPECT_EQ(std::memcmp(got.ifr_hwaddr.sa_data, mac, 6), 0);

  // A foreign address family, an unknown request (an unknown device the
  // library's flags test meets).
  req.ifr_hwaddr.sa_family = 772;  // loopback
  EXPECT_EQ(Kernel::ioctl(sock, SIOCSIFHWADDR, &req), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(Kernel::ioctl(sock, SIOCGIFINDEX, &got), -1);
  EXPECT_EQ(errno, ENOTTY);

  EXPECT_EQ(Kernel::close(sock), 0);
  EXPECT_EQ(Kernel::ioctl(sock, SIOCGIFFLAGS, &got), -1);
  EXPECT_EQ(errno, EBADF);
}

// Scripted failures last as many requests as asked; an emulated socket
// outlives its driver.
TEST(HostSockets, ScriptedFailuresOtherSocketsAndALaterDriver) {
  int sock;
  {
    Emu::FabricDriver first;
    sock = Kernel::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  }
  Emu::FabricDriver driver;
  driver.hostNetdevIs("et1");
  driver.hostRequestFailsNext(SIOCGIFFLAGS, EPERM, 2);
  ifreq req = requestFor("et1");
  EXPECT_EQ(Kernel::ioctl(sock, SIOCGIFFLAGS, &req), -1);
  EXPECT_EQ(Kernel::ioctl(sock, SIOCGIFFLAGS, &req), -1);
  EXPECT_EQ(errno, EPERM);
  EXPECT_EQ(Kernel::ioctl(sock, SIOCGIFFLAGS, &req), 0);
  Kernel::close(sock);

  int local = Kernel::socket(AF_UNIX, SOCK_DGRAM, 0);
  ASSERT_GE(local, 0);
  EXPECT_FALSE(Emu::hostsock::isSocketFd(local));
  Kernel::close(local);
}

}  // namespace
