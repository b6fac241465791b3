// Raw transmit through the real kernel: a child process in a network
// namespace of its own creates a TAP device named "txraw", sends with
// vornDmaTxRaw and reads back what the device carried. The child reports
// through a pipe; the checks run here.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "Vorn/VornDma.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using VornTest::ScopedEnv;
using VornTest::TraceCapture;

namespace {

using Bytes = std::vector<unsigned char>;

// What the child saw: the frames each send carried, its trace lines, or why
// it could not run.
struct NetnsReport {
  std::string skipped;
  std::vector<Bytes> frames;
  std::vector<std::string> traces;
};

// The child's side of the pipe: records of a tag byte, a length and bytes.
class Reporter {
 public:
  explicit Reporter(int fd) : fd_(fd) {}
  void record(char tag, const void* data, std::size_t n) {
    std::uint32_t len = static_cast<std::uint32_t>(n);
    writeAll(&tag, 1);
    writeAll(&len, sizeof len);
    writeAll(data, n);
  }
  [[noreturn]] void skip(const std::string& why) {
    std::string text = why + ": " + std::strerror(errno);
    record('S', text.data(), text.size());
    _exit(0);
  }

 private:
  void writeAll(const void* p, std::size_t n) {
    const char* c = static_cast<const char*>(p);
    while (n > 0) {
      ssize_t w = ::write(fd_, c, n);
      if (w <= 0) _exit(3);
      c += w;
      n -= static_cast<std::size_t>(w);
    }
  }
  int fd_;
};

// Creates the TAP device `name` (no packet information) and brings it up;
// returns its descriptor, non-blocking.
int tapUp(Reporter& out, const char* name) {
  int tap = ::open("/dev/net/tun", O_RDWR | O_NONBLOCK);
  if (tap < 0) out.skip("open /dev/net/tun");
  ifreq ifr{};
  std::strncpy(ifr.ifr_name, name, IFNAMSIZ - 1);
  ifr.ifr_flags = IFF_TAP | IFF_NO_PI;
  if (::ioctl(tap, TUNSETIFF, &ifr) < 0) out.skip("TUNSETIFF");
  // The kernel's own IPv6 chatter would mix with the frames under test.
  std::string knob = std::string("/proc/sys/net/ipv6/conf/") + name + "/disable_ipv6";
  if (int fd = ::open(knob.c_str(), O_WRONLY); fd >= 0) {
    (void)!::write(fd, "1", 1);
    ::close(fd);
  }
  int sock = ::socket(AF_INET, SOCK_DGRAM, 0);
  if (sock < 0 || ::ioctl(sock, SIOCGIFFLAGS, &ifr) < 0) out.skip("SIOCGIFFLAGS");
  ifr.ifr_flags = static_cast<short>(ifr.ifr_flags | IFF_UP);
  if (::ioctl(sock, SIOCSIFFLAGS, &ifr) < 0) out.skip("SIOCSIFFLAGS");
  ::close(sock);
  return tap;
}

// The first frame the device carries within `ms` that is not IPv6 multicast
// (33:33:...), or an empty one.
Bytes nextFrame(int tap, int ms) {
  unsigned char buf[2048];
  pollfd p{tap, POLLIN, 0};
  while (::poll(&p, 1, ms) > 0) {
    ssize_t n = ::read(tap, buf, sizeof buf);
    if (n <= 0) continue;
    if (n >= 2 && buf[0] == 0x33 && buf[1] == 0x33) continue;
    return Bytes(buf, buf + n);
  }
  return {};
}

// Runs `sends` in a child in a fresh network namespace with a TAP device
// `device`; after each send the child reports the frame the device carried.
NetnsReport inNetns(const char* device, const std::vector<std::function<void()>>& sends) {
  NetnsReport report;
  int pipefd[2];
  if (::pipe(pipefd) != 0) {
    report.skipped = "pipe failed";
    return report;
  }
  pid_t pid = ::fork();
  if (pid == 0) {
    ::close(pipefd[0]);
    Reporter out(pipefd[1]);
    if (::unshare(CLONE_NEWNET) != 0) out.skip("unshare(CLONE_NEWNET)");
    int tap = tapUp(out, device);
    TraceCapture trace;
    for (const auto& send : sends) {
      send();
      Bytes frame = nextFrame(tap, 500);
      out.record('F', frame.data(), frame.size());
    }
    for (const std::string& t : trace.texts()) out.record('T', t.data(), t.size());
    _exit(0);
  }
  ::close(pipefd[1]);
  std::string all;
  char chunk[4096];
  for (ssize_t n; (n = ::read(pipefd[0], chunk, sizeof chunk)) > 0;)
    all.append(chunk, static_cast<std::size_t>(n));
  ::close(pipefd[0]);
  int status = 0;
  ::waitpid(pid, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "child status " << status;
  for (std::size_t pos = 0; pos + 5 <= all.size();) {
    char tag = all[pos];
    std::uint32_t len;
    std::memcpy(&len, all.data() + pos + 1, sizeof len);
    std::string body = all.substr(pos + 5, len);
    pos += 5 + len;
    if (tag == 'S') report.skipped = body;
    if (tag == 'F') report.frames.emplace_back(body.begin(), body.end());
    if (tag == 'T') report.traces.push_back(body);
  }
  return report;
}

// The frame as the driver expects it, laid out field by field.
Bytes expectedFrame(const std::string& name, U32 destId, const Bytes& data) {
  Bytes f(72 + std::max<std::size_t>(data.size(), 60), 0);
  std::memcpy(f.data(), name.data(), name.size());
  f[64] = 0x00;
  f[65] = 0x02;
  f[66] = static_cast<unsigned char>(destId >> 24);
  f[67] = static_cast<unsigned char>(destId >> 16);
  f[68] = static_cast<unsigned char>(destId >> 8);
  f[69] = static_cast<unsigned char>(destId);
  std::copy(data.begin(), data.end(), f.begin() + 72);
  return f;
}

Bytes payload(std::size_t n, unsigned char seed) {
  Bytes p(n);
  for (std::size_t i = 0; i < n; ++i) p[i] = static_cast<unsigned char>(seed + 7 * i);
  return p;
}

class TxRawNetns : public testing::Test {
 protected:
  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
};

TEST_F(TxRawNetns, TheTxrawDeviceCarriesTheFrameByteForByte) {
  Bytes shortPayload = payload(10, 1), fullPayload = payload(183, 2);
  NetnsReport r =
      inNetns("txraw", {
                           [&] { vornDmaTxRaw("fap3", 0x01020304, 10, shortPayload.data()); },
                           [&] { vornDmaTxRaw("et1_fap0", 0xFEDCBA98, 183, fullPayload.data()); },
                           [&] { vornDmaTxRaw(std::string(63, 'q').c_str(), 0, 0, nullptr); },
                       });
  if (!r.skipped.empty()) GTEST_SKIP() << r.skipped;
  ASSERT_EQ(r.frames.size(), 3u);
  EXPECT_EQ(r.frames[0], expectedFrame("fap3", 0x01020304, shortPayload));
  EXPECT_EQ(r.frames[0].size(), 132u);
  EXPECT_EQ(r.frames[1], expectedFrame("et1_fap0", 0xFEDCBA98, fullPayload));
  EXPECT_EQ(r.frames[1].size(), 255u);
  EXPECT_EQ(r.frames[2], expectedFrame(std::string(63, 'q'), 0, {}));
  EXPECT_THAT(r.traces, IsEmpty());
}

TEST_F(TxRawNetns, WithoutATxrawDeviceTheFailureIsTracedAndNothingSent) {
  Bytes data = payload(20, 3);
  NetnsReport r = inNetns("other", {[&] { vornDmaTxRaw("fap3", 5, 20, data.data()); }});
  if (!r.skipped.empty()) GTEST_SKIP() << r.skipped;
  ASSERT_EQ(r.frames.size(), 1u);
  EXPECT_THAT(r.frames[0], IsEmpty());
  // Bound to no device, the socket cannot send: bind or write refuses it.
  EXPECT_THAT(r.traces, ElementsAre("vornDmaTxRaw SIOCGIFINDEX error Unknown error -1",
                                    AnyOf("vornDmaTxRaw bind returned Unknown error -1",
                                          "vornDmaTxRaw write returned Unknown error -1")));
}

}  // namespace
