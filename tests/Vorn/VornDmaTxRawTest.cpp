// Raw transmit: the frame's layout, its limits, and what happens when the
// socket calls fail (through a kernel table that plays the socket).
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
using testing::IsEmpty;
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

// Name (64 bytes), type 0x0002, destination id big-endian, two zero bytes,
// then the payload padded to 60; nothing past 183 bytes of payload.
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
  f = frameOf("x", 0xFFFFFFFE, payload(183));
  EXPECT_EQ(Bytes(f.begin() + 66, f.begin() + 70), (Bytes{0xFF, 0xFF, 0xFF, 0xFE}));
  EXPECT_EQ(Bytes(f.begin() + 72, f.end()), payload(183));
}

TEST(TxRawFrame, NameIsCutAt63AndAtItsFirstNul) {
  Bytes f = frameOf(std::string(70, 'n'), 0, {});
  EXPECT_EQ(Bytes(f.begin(), f.begin() + 63), Bytes(63, 'n'));
  EXPECT_EQ(f[63], 0);
  EXPECT_EQ(f[65], 2);
  f = frameOf(std::string_view("ab\0cd", 5), 0, {});
  Bytes name{'a', 'b'};
  name.resize(64);
  EXPECT_EQ(Bytes(f.begin(), f.begin() + 64), name);
}

// A kernel table whose AF_PACKET socket records what the library does with
// it and fails where a test says.
struct FakePacketSocket {
  static constexpr int kFd = 4242;
  static inline int socketErrno = 0, bindErrno = 0, writeErrno = 0;
  static inline bool indexFails = false;
  static inline std::vector<std::string> calls;
  static inline sockaddr_ll bound{};
  static inline socklen_t boundLen = 0;
  static inline Bytes written;

  static void reset() {
    socketErrno = bindErrno = writeErrno = 0;
    indexFails = false;
    calls.clear();
    written.clear();
    bound = {};
    boundLen = 0;
  }
  static int socket(int domain, int type, int protocol) {
    calls.push_back("socket " + std::to_string(domain == AF_PACKET) +
                    std::to_string(type == SOCK_RAW) + std::to_string(protocol));
    if (socketErrno) return errno = socketErrno, -1;
    return kFd;
  }
  static int ioctl(int fd, unsigned long request, void* arg) {
    if (fd != kFd || request != SIOCGIFINDEX) return errno = EINVAL, -1;
    auto* ifr = static_cast<ifreq*>(arg);
    calls.push_back(std::string("index ") + ifr->ifr_name);
    if (indexFails) return errno = ENODEV, -1;
    ifr->ifr_ifindex = 7;
    return 0;
  }
  static int bind(int fd, const sockaddr* addr, socklen_t len) {
    calls.push_back("bind");
    if (fd != kFd) return errno = EBADF, -1;
    std::memcpy(&bound, addr, sizeof bound);
    boundLen = len;
    if (bindErrno) return errno = bindErrno, -1;
    return 0;
  }
  static ssize_t write(int fd, const void* buf, std::size_t n) {
    calls.push_back("write");
    if (fd != kFd) return errno = EBADF, -1;
    if (writeErrno) return errno = writeErrno, -1;
    written.assign(static_cast<const unsigned char*>(buf),
                   static_cast<const unsigned char*>(buf) + n);
    return static_cast<ssize_t>(n);
  }
  static int close(int fd) {
    calls.push_back("close " + std::to_string(fd));
    return 0;
  }
};

class TxRaw : public testing::Test {
 protected:
  TxRaw() {
    FakePacketSocket::reset();
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
  EXPECT_THAT(FakePacketSocket::calls,
              ElementsAre("socket 110", "index txraw", "bind", "write", "close 4242"));
  EXPECT_EQ(FakePacketSocket::bound.sll_family, AF_PACKET);
  EXPECT_EQ(FakePacketSocket::bound.sll_protocol, 0);
  EXPECT_EQ(FakePacketSocket::bound.sll_ifindex, 7);
  EXPECT_EQ(FakePacketSocket::boundLen, 20u);
  EXPECT_EQ(FakePacketSocket::written, frameOf("fap3", 0x01020304, payload(10)));
  EXPECT_THAT(ring.messages(), ElementsAre("vornDmaTxRaw name=fap3, destId=16909060, len=10"));
}

TEST_F(TxRaw, FailuresAreTracedNotReturned) {
  TraceCapture trace;
  FakePacketSocket::socketErrno = EPERM;
  send("fap3", 1, payload(1));
  EXPECT_THAT(FakePacketSocket::calls, ElementsAre("socket 110"));

  // No "txraw" device: traced, and the socket is bound to no device.
  FakePacketSocket::reset();
  FakePacketSocket::indexFails = true;
  send("fap3", 1, payload(1));
  EXPECT_EQ(FakePacketSocket::bound.sll_ifindex, 0);
  EXPECT_THAT(FakePacketSocket::calls.back(), "close 4242");

  FakePacketSocket::reset();
  FakePacketSocket::bindErrno = ENODEV;
  send("fap3", 1, payload(1));
  EXPECT_THAT(FakePacketSocket::calls,
              ElementsAre("socket 110", "index txraw", "bind", "close 4242"));

  FakePacketSocket::reset();
  FakePacketSocket::writeErrno = ENXIO;
  send("fap3", 1, payload(1));
  EXPECT_THAT(FakePacketSocket::calls.back(), "close 4242");

  // The call's return value (-1) names the error, not errno.
  EXPECT_THAT(trace.texts(), ElementsAre("vornDmaTxRaw socket Operation not permitted",
                                         "vornDmaTxRaw SIOCGIFINDEX error Unknown error -1",
                                         "vornDmaTxRaw bind returned Unknown error -1",
                                         "vornDmaTxRaw write returned Unknown error -1"));
}

// The payload is at most 183 bytes and the name at most 63 characters; one
// more of either ends the process on its assertion, before the payload is
// read.
CATALOGUE_TEST_F(TxRaw, PayloadAndNameLimitsEndTheProcess, "vornDmaTxRaw") {
  send("", 0, {});
  EXPECT_EQ(FakePacketSocket::written.size(), 132u);
  send(std::string(63, 'n').c_str(), UINT_MAX, payload(183));
  EXPECT_EQ(FakePacketSocket::written, frameOf(std::string(63, 'n'), UINT_MAX, payload(183)));
  EXPECT_DEATH(
      send("fap3", 1, payload(184)),
      "vornDmaTxRaw\\(Mox::String, U32, unsigned int, unsigned char\\*\\): Assertion `len < "
      "\\( CMDSZ - \\( sizeof \\( struct txrawhdr \\) \\+ 4 \\+ 2 \\) \\)' failed");
  EXPECT_DEATH(send(std::string(64, 'n').c_str(), 1, payload(1)),
               "Assertion `name.bytes\\(\\) < 64' failed");
}

}  // namespace
