// Host devices and raw transmit for real, in a network namespace of its own:
// the emulated driver makes a TAP device for each new port, and the library
// sets its MAC address and up flag through the kernel and runs the real
// /sbin/tc; a TAP device named "txraw" carries what vornDmaTxRaw sends.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"
#include "tests/Vorn/HostTestSupport.h"

using namespace Hardware::Vorn;
using VornTest::TraceCapture;

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
  switch (WEXITSTATUS(status)) {
    case 0:
      return "";
    case 1:
      return "unshare(CLONE_NEWNET) is not permitted";
    case 2:
      return "/dev/net/tun cannot be opened";
    default:
      return "TUNSETIFF is not permitted";
  }
}

// The kernel's view of a netdevice, asked through a socket of our own.
struct KernelView {
  int error = 0;  // of the first failed request
  unsigned char mac[6] = {};
  short flags = 0;
};

KernelView askKernel(const char* name) {
  KernelView view;
  int sock = socket(AF_INET, SOCK_DGRAM, 0);
  ifreq req{};
  std::snprintf(req.ifr_name, sizeof req.ifr_name, "%s", name);
  if (ioctl(sock, SIOCGIFHWADDR, &req) != 0) view.error = errno;
  std::memcpy(view.mac, req.ifr_hwaddr.sa_data, 6);
  if (!view.error && ioctl(sock, SIOCGIFFLAGS, &req) != 0) view.error = errno;
  view.flags = req.ifr_flags;
  close(sock);
  return view;
}

// The root qdisc of `name` as tc shows it.
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

// Runs tc as Zell does, but with a qdisc kind no kernel has.
int runWithUnknownQdisc(const char* command, void*) {
  std::string line(command);
  line.replace(line.rfind("prio"), 4, "nosuchqdisc");
  int status = std::system((line + " 2>/dev/null").c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// The child's part: everything in a network namespace of its own. Returns
// whether every check held; failures are written to standard error.
bool portsInOwnNamespace() {
  bool ok = true;
  CHILD_CHECK(ok, enterOwnNetworkNamespace() == 0);
  ::unsetenv("SIMULATION_VMID");
  Emu::FabricDriver driver;
  driver.realHostDevicesIs(true);
  TraceCapture trace;

  // The real tc: its exit status is the answer. Whether this kernel has
  // the prio qdisc decides which one.
  int rc = vornDmaIfadd("et1", 5, 0, "", false, false, "02:00:00:aa:bb:cc");
  KernelView et1 = askKernel("et1");
  CHILD_CHECK(ok, et1.error == 0);
  const unsigned char mac[6] = {2, 0, 0, 0xaa, 0xbb, 0xcc};
  CHILD_CHECK(ok, std::memcmp(et1.mac, mac, 6) == 0);
  CHILD_CHECK(ok, et1.flags & IFF_UP);
  bool hasPrio = rootQdisc("et1").find("qdisc prio 1:") != std::string::npos;
  CHILD_CHECK(ok, hasPrio ? rc == 0 : rc > 0);
  unsigned flags = 0;
  CHILD_CHECK(ok, vornDmaIfFlags("et1", &flags) == 0 && (flags & IFF_UP));

  // tc runs and fails: its status is returned, untraced, after the MAC
  // and the up flag are set.
  Zell::runnerIs(runWithUnknownQdisc, nullptr);
  rc = vornDmaIfadd("et2", 6, 0, "", false, false, "02:00:00:00:00:02");
  Zell::runnerIs(nullptr, nullptr);
  CHILD_CHECK(ok, rc > 0);
  for (const std::string& line : trace.texts())
    CHILD_CHECK(ok, line.find("Failed to add prio qdisc") == std::string::npos);
  KernelView et2 = askKernel("et2");
  CHILD_CHECK(ok, et2.error == 0 && et2.mac[5] == 2 && (et2.flags & IFF_UP));

  // A device the kernel refuses: setup stops at the MAC address.
  CHILD_CHECK(ok,
              vornDmaIfadd("et3", 7, 0, "", false, false, "01:00:00:00:00:03") == EADDRNOTAVAIL);
  CHILD_CHECK(ok, !(askKernel("et3").flags & IFF_UP));
  CHILD_CHECK(
      ok, trace.texts().back() == "setupIntf SIOCSIFHWADDR error Cannot assign requested address");

  // Deleting the port removes the device from the kernel.
  CHILD_CHECK(ok, vornDmaIfdel("et1") == 0);
  CHILD_CHECK(ok, askKernel("et1").error == ENODEV);
  CHILD_CHECK(ok, vornDmaIfFlags("et1", &flags) == ENODEV);
  return ok;
}

TEST(HostNamespace, NewPortsGetTheirMacUpFlagAndQdiscFromTheKernel) {
  std::string why = whyNoRealHostDevices();
  if (!why.empty()) GTEST_SKIP() << "no real host devices here: " << why;
  EXPECT_EXIT(std::_Exit(portsInOwnNamespace() ? 0 : 1), testing::ExitedWithCode(0), "");
}

using Bytes = std::vector<unsigned char>;

// The first frame the TAP device carries within half a second that is not
// the kernel's own IPv6 multicast (33:33:...), or an empty one.
Bytes nextFrame(int tap) {
  unsigned char buf[2048];
  pollfd p{tap, POLLIN, 0};
  while (::poll(&p, 1, 500) > 0) {
    ssize_t n = ::read(tap, buf, sizeof buf);
    if (n >= 2 && !(buf[0] == 0x33 && buf[1] == 0x33)) return Bytes(buf, buf + n);
  }
  return {};
}

// The frame as the driver expects it, laid out field by field.
Bytes expectedFrame(const std::string& name, U32 destId, const Bytes& data) {
  Bytes f(72 + std::max<std::size_t>(data.size(), 60), 0);
  std::memcpy(f.data(), name.data(), name.size());
  f[65] = 0x02;
  for (int i = 0; i < 4; ++i) f[66 + i] = static_cast<unsigned char>(destId >> (24 - 8 * i));
  std::copy(data.begin(), data.end(), f.begin() + 72);
  return f;
}

// The child's part: a TAP device `device`, frames sent and read back.
bool txRawInOwnNamespace(const char* device) {
  bool ok = true;
  CHILD_CHECK(ok, enterOwnNetworkNamespace() == 0);
  ::unsetenv("SIMULATION_VMID");
  int tap = open("/dev/net/tun", O_RDWR | O_NONBLOCK);
  ifreq req{};
  std::snprintf(req.ifr_name, sizeof req.ifr_name, "%s", device);
  req.ifr_flags = IFF_TAP | IFF_NO_PI;
  CHILD_CHECK(ok, ioctl(tap, TUNSETIFF, &req) == 0);
  std::string knob = std::string("/proc/sys/net/ipv6/conf/") + device + "/disable_ipv6";
  if (int fd = open(knob.c_str(), O_WRONLY); fd >= 0) {
    (void)!write(fd, "1", 1);
    close(fd);
  }
  int sock = socket(AF_INET, SOCK_DGRAM, 0);
  CHILD_CHECK(ok, ioctl(sock, SIOCGIFFLAGS, &req) == 0);
  req.ifr_flags = static_cast<short>(req.ifr_flags | IFF_UP);
  CHILD_CHECK(ok, ioctl(sock, SIOCSIFFLAGS, &req) == 0);
  close(sock);
  TraceCapture trace;
  Bytes shortPayload(10, 0x5a), fullPayload(183);
  for (std::size_t i = 0; i < fullPayload.size(); ++i)
    fullPayload[i] = static_cast<unsigned char>(7 * i);
  vornDmaTxRaw("fap3", 0x01020304, 10, shortPayload.data());
  const Bytes first = nextFrame(tap);
  if (std::string(device) != "txraw") {
    // Bound to no device, the socket cannot send: bind or write refuses it.
    CHILD_CHECK(ok, first.empty());
    const std::vector<std::string> texts = trace.texts();
    CHILD_CHECK(
        ok, texts.size() == 2 && texts[0] == "vornDmaTxRaw SIOCGIFINDEX error Unknown error -1");
    return ok;
  }
  CHILD_CHECK(ok, first == expectedFrame("fap3", 0x01020304, shortPayload));
  vornDmaTxRaw("et1_fap0", 0xFEDCBA98, 183, fullPayload.data());
  CHILD_CHECK(ok, nextFrame(tap) == expectedFrame("et1_fap0", 0xFEDCBA98, fullPayload));
  vornDmaTxRaw(std::string(63, 'q').c_str(), 0, 0, nullptr);
  CHILD_CHECK(ok, nextFrame(tap) == expectedFrame(std::string(63, 'q'), 0, {}));
  CHILD_CHECK(ok, trace.texts().empty());
  return ok;
}

TEST(HostNamespace, TheTxrawDeviceCarriesTheFrameByteForByte) {
  std::string why = whyNoRealHostDevices();
  if (!why.empty()) GTEST_SKIP() << "no real host devices here: " << why;
  for (const char* device : {"txraw", "other"})
    EXPECT_EXIT(std::_Exit(txRawInOwnNamespace(device) ? 0 : 1), testing::ExitedWithCode(0), "")
        << device;
}

}  // namespace
