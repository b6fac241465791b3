// Host devices for real, in a network namespace of its own: the emulated
// driver makes a TAP device for each new port, and the library sets its MAC
// address and up flag through the kernel and runs the real /sbin/tc.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"
#include "tests/Vorn/HostTestSupport.h"

using namespace Hardware::Vorn;

namespace {

constexpr const char kTc[] = "/sbin/tc";

// Enters a network namespace of its own (with a user namespace when not
// root); 0 or the errno.
int enterOwnNetworkNamespace() {
  int flags = CLONE_NEWNET | (geteuid() == 0 ? 0 : CLONE_NEWUSER);
  return unshare(flags) == 0 ? 0 : errno;
}

// Why real host devices cannot be made here, or "" when they can: tried in a
// child so that this process keeps its namespace.
std::string whyNoRealHostDevices() {
  if (access(kTc, X_OK) != 0) return std::string(kTc) + " is not there";
  pid_t pid = fork();
  if (pid == 0) {
    if (enterOwnNetworkNamespace() != 0) _exit(1);
    int fd = open("/dev/net/tun", O_RDWR);
    if (fd < 0) _exit(2);
    ifreq req{};
    std::strcpy(req.ifr_name, "probe0");
    req.ifr_flags = IFF_TAP | IFF_NO_PI;
    _exit(ioctl(fd, TUNSETIFF, &req) == 0 ? 0 : 3);
  }
  int status = 0;
  if (pid < 0 || waitpid(pid, &status, 0) != pid || !WIFEXITED(status)) return "fork failed";
  static const char* const kWhy[] = {"", "unshare(CLONE_NEWNET) is not permitted",
                                     "/dev/net/tun cannot be opened", "TUNSETIFF is not permitted"};
  return kWhy[WEXITSTATUS(status)];
}

std::string rootQdisc(const char* name) {
  std::string cmd = std::string(kTc) + " qdisc show dev " + name;
  std::string out;
  if (FILE* p = popen(cmd.c_str(), "r")) {
    char line[256];
    while (std::fgets(line, sizeof line, p)) out += line;
    pclose(p);
  }
  return out;
}

// The child's part; failures are written to standard error.
bool portsInOwnNamespace() {
  bool ok = true;
  CHILD_CHECK(ok, enterOwnNetworkNamespace() == 0);
  ::unsetenv("SIMULATION_VMID");
  Emu::FabricDriver driver;
  driver.realHostDevicesIs(true);

  // The real tc's exit status is the answer: 0 where the kernel has prio.
  int rc = vornDmaIfadd("et1", 5, 0, "", false, false, "02:00:00:aa:bb:cc");
  const int sock = socket(AF_INET, SOCK_DGRAM, 0);  // the kernel's view, through our own socket
  ifreq req{};
  std::strcpy(req.ifr_name, "et1");
  CHILD_CHECK(ok, ioctl(sock, SIOCGIFHWADDR, &req) == 0);
  const unsigned char mac[6] = {2, 0, 0, 0xaa, 0xbb, 0xcc};
  CHILD_CHECK(ok, std::memcmp(req.ifr_hwaddr.sa_data, mac, 6) == 0);
  CHILD_CHECK(ok, ioctl(sock, SIOCGIFFLAGS, &req) == 0 && (req.ifr_flags & IFF_UP));
  close(sock);
  bool hasPrio = rootQdisc("et1").find("qdisc prio 1:") != std::string::npos;
  CHILD_CHECK(ok, hasPrio ? rc == 0 : rc > 0);
  unsigned flags = 0;
  CHILD_CHECK(ok, vornDmaIfFlags("et1", &flags) == 0 && (flags & IFF_UP));
  return ok;
}

TEST(HostNamespace, NewPortsGetTheirMacUpFlagAndQdiscFromTheKernel) {
  std::string why = whyNoRealHostDevices();
  if (!why.empty()) GTEST_SKIP() << "no real host devices here: " << why;
  EXPECT_EXIT(std::_Exit(portsInOwnNamespace() ? 0 : 1), testing::ExitedWithCode(0), "");
}

}  // namespace
