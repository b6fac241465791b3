// Raw transmit: the frame's layout, its limits, and failing socket calls.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "Kernel/Kernel.h"
#include "Ringlog/MemoryFile.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornDma.h"
#include "Vorn/VornDmaTxRawFrame.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using VornTest::ScopedEnv;
using VornTest::TraceCapture;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes payload(std::size_t n) {
  Bytes p(n);
  for (std::size_t i = 0; i < n; ++i) p[i] = static_cast<unsigned char>(0xA0 + i);
  return p;
}

Bytes frameOf(std::string_view name, U32 destId, const Bytes& data) {
  dma::TxRawFrame f = dma::txRawFrame(name, destId, data);
  return Bytes(f.bytes.begin(), f.bytes.begin() + static_cast<long>(f.size));
}

// Name (64 bytes, cut at 63 characters and at its first NUL), type 0x0002,
// destination id big-endian, two zero bytes, the payload padded to 60.
TEST(TxRawFrame, LayoutAndLengths) {
  Bytes f = frameOf("fap3", 0x01020304, payload(10));
  ASSERT_EQ(f.size(), 132u);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(f.data()), 5), std::string("fap3\0", 5));
  EXPECT_EQ(Bytes(f.begin() + 4, f.begin() + 64), Bytes(60, 0));
  EXPECT_EQ(Bytes(f.begin() + 64, f.begin() + 72), (Bytes{0x00, 0x02, 1, 2, 3, 4, 0, 0}));
  EXPECT_EQ(Bytes(f.begin() + 72, f.begin() + 82), payload(10));
  EXPECT_EQ(Bytes(f.begin() + 82, f.end()), Bytes(50, 0));
  for (const auto& [n, size] : std::initializer_list<std::pair<std::size_t, std::size_t>>{
           {0, 132}, {59, 132}, {60, 132}, {61, 133}, {183, 255}, {184, 0}})
    EXPECT_EQ(frameOf("x", 0, payload(n)).size(), size) << n;
  f = frameOf(std::string(70, 'n'), 0, {});
  EXPECT_EQ(Bytes(f.begin(), f.begin() + 63), Bytes(63, 'n'));
  EXPECT_EQ(f[63], 0);
  EXPECT_EQ(f[65], 2);
  f = frameOf(std::string_view("ab\0cd", 5), 0, {});
  EXPECT_EQ(Bytes(f.begin(), f.begin() + 5), (Bytes{'a', 'b', 0, 0, 0}));
}

// An AF_PACKET socket that logs each call ("name arguments;") and fails the
// one a test names, with EPERM.
struct FakePacketSocket {
  static constexpr int kFd = 4242;
  static inline std::string failing;  // "socket", "index", "bind" or "write"
  static inline std::string log;
  static inline Bytes written;

  static bool fails(const char* call, const std::string& arguments) {
    log += std::string(call) + " " + arguments + ";";
    errno = EPERM;
    return failing == call;
  }
  static int socket(int domain, int type, int protocol) {
    const bool packet = domain == AF_PACKET && type == SOCK_RAW;
    return fails("socket", std::to_string(packet) + std::to_string(protocol)) ? -1 : kFd;
  }
  static int ioctl(int fd, unsigned long request, void* arg) {
    auto* ifr = static_cast<ifreq*>(arg);
    if (fails("index", ifr->ifr_name) || fd != kFd || request != SIOCGIFINDEX) return -1;
    ifr->ifr_ifindex = 7;
    return 0;
  }
  static int bind(int fd, const sockaddr* addr, socklen_t len) {
    sockaddr_ll ll;
    std::memcpy(&ll, addr, sizeof ll);
    const bool packet = fd == kFd && ll.sll_family == AF_PACKET && ll.sll_protocol == 0;
    return fails("bind", std::to_string(packet) + " " + std::to_string(ll.sll_ifindex) + " " +
                             std::to_string(len))
               ? -1
               : 0;
  }
  static ssize_t write(int fd, const void* buf, std::size_t n) {
    if (fails("write", std::to_string(fd))) return -1;
    written.assign(static_cast<const unsigned char*>(buf),
                   static_cast<const unsigned char*>(buf) + n);
    return static_cast<ssize_t>(n);
  }
  static int close(int fd) { return fails("close", std::to_string(fd)) ? -1 : 0; }
};

class TxRaw : public testing::Test {
 protected:
  TxRaw() {
    FakePacketSocket::failing.clear();
    FakePacketSocket::log.clear();
    FakePacketSocket::written.clear();
    ops.socket = FakePacketSocket::socket;
    ops.ioctl = FakePacketSocket::ioctl;
    ops.bind = FakePacketSocket::bind;
    ops.write = FakePacketSocket::write;
    ops.close = FakePacketSocket::close;
  }
  void send(const char* name, U32 destId, Bytes data) {
    vornDmaTxRaw(name, destId, static_cast<unsigned>(data.size()), data.data());
  }
  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Kernel::Ops ops = Kernel::linuxOps();
  Kernel::ScopedOps scoped{&ops};
};

TEST_F(TxRaw, BindsToTheTxrawDeviceAndWritesOneFrame) {
  Ringlog::ScopedMemoryFile ring;
  send("fap3", 0x01020304, payload(10));
  EXPECT_EQ(FakePacketSocket::log, "socket 10;index txraw;bind 1 7 20;write 4242;close 4242;");
  EXPECT_EQ(FakePacketSocket::written, frameOf("fap3", 0x01020304, payload(10)));
  EXPECT_THAT(ring.messages(), ElementsAre("vornDmaTxRaw name=fap3, destId=16909060, len=10"));
}

// Failures are traced, not returned; without a "txraw" device the socket is
// bound to no device; the later traces name the return value, not errno.
TEST_F(TxRaw, FailuresAreTracedNotReturned) {
  const struct {
    const char* failing;
    const char* log;
    const char* trace;
  } cases[] = {
      {"socket", "socket 10;", "vornDmaTxRaw socket Operation not permitted"},
      {"index", "socket 10;index txraw;bind 1 0 20;write 4242;close 4242;",
       "vornDmaTxRaw SIOCGIFINDEX error Unknown error -1"},
      {"bind", "socket 10;index txraw;bind 1 7 20;close 4242;",
       "vornDmaTxRaw bind returned Unknown error -1"},
      {"write", "socket 10;index txraw;bind 1 7 20;write 4242;close 4242;",
       "vornDmaTxRaw write returned Unknown error -1"},
  };
  for (const auto& c : cases) {
    FakePacketSocket::failing = c.failing;
    FakePacketSocket::log.clear();
    TraceCapture trace;
    send("fap3", 1, payload(1));
    EXPECT_EQ(FakePacketSocket::log, c.log) << c.failing;
    EXPECT_THAT(trace.texts(), ElementsAre(c.trace)) << c.failing;
  }
}

// One byte of payload past 183, or a character of name past 63, ends the
// process.
CATALOGUE_TEST_F(TxRaw, PayloadAndNameLimitsEndTheProcess, "vornDmaTxRaw") {
  send(std::string(63, 'n').c_str(), UINT_MAX, payload(183));
  const Bytes& written = FakePacketSocket::written;
  ASSERT_EQ(written.size(), 255u);
  EXPECT_EQ(Bytes(written.begin() + 72, written.end()), payload(183));
  EXPECT_DEATH(
      send("fap3", 1, payload(184)),
      "vornDmaTxRaw\\(Mox::String, U32, unsigned int, unsigned char\\*\\): Assertion `len < "
      "\\( CMDSZ - \\( sizeof \\( struct txrawhdr \\) \\+ 4 \\+ 2 \\) \\)' failed");
  EXPECT_DEATH(send(std::string(64, 'n').c_str(), 1, payload(1)),
               "Assertion `name.bytes\\(\\) < 64' failed");
}

}  // namespace
