// vorn-fabricd as clients meet it: a real daemon on a socket in the scratch
// directory, fed malformed frames and clients that vanish mid-request, and
// started where it must refuse to serve; and, without a socket, the answers
// the daemon gives that a process test would need many steps to reach.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "Zell/Zell.h"
#include "fabricd/Requests.h"
#include "support/Process.h"

using testing::HasSubstr;
using namespace Kernel::fabric;

namespace {

template <class T>
std::string bytesOf(const T& value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

std::string request(Type type, std::string_view payload = {}) {
  return bytesOf(frameOf(type, static_cast<std::uint32_t>(payload.size()))) + std::string(payload);
}

// A kCommand carrying `text` in a buffer of 256 bytes.
std::string command(std::string text) {
  text.resize(256);
  return request(Type::kCommand, bytesOf(CommandHeader{256}) + text);
}

sockaddr_un address(const std::string& path) {
  sockaddr_un a{};
  a.sun_family = AF_UNIX;
  std::strncpy(a.sun_path, path.c_str(), sizeof a.sun_path - 1);
  return a;
}

// Sends `bytes` on a new connection, ends its writing side unless told not
// to, and returns what the daemon sent back before it closed the connection.
std::string roundTrip(const std::string& socket, const std::string& bytes, bool endWriting = true) {
  const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
  const timeval limit{5, 0};
  ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  sockaddr_un a = address(socket);
  EXPECT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a), 0) << socket;
  ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  if (endWriting) ::shutdown(fd, SHUT_WR);
  std::string out;
  char buf[4096];
  ssize_t n;
  while ((n = ::read(fd, buf, sizeof buf)) > 0) out.append(buf, n);
  EXPECT_FALSE(n < 0 && errno == EAGAIN) << "the daemon did not end the stream";
  ::close(fd);
  return out;
}

// The listing's text, read as a client reads "/proc/vorn-dma": up to the end
// of the stream, which the daemon marks.
std::string listing(const std::string& socket) {
  return roundTrip(socket, request(Type::kListing), false).substr(sizeof(Frame) + sizeof(Status));
}

// A daemon on `socket` with two chips present, serving once constructed;
// stopped with SIGTERM when the object goes, whatever the test did. Its
// errors are its output.
struct Daemon : VornTest::Process {
  explicit Daemon(const std::string& socket)
      : Process(
            {FABRICD_PATH, "--pci", "0000:03:00.0", "--pci", "0000:04:00.0", "--socket", socket}) {
    EXPECT_TRUE(waitFor("serving")) << output();
  }
  ~Daemon() { stop(); }
  int stop() {
    signal(SIGTERM);
    return wait();
  }
};

std::string scratchDir() {
  std::string dir = testing::TempDir() + "vorn-fabricd-XXXXXX";
  EXPECT_NE(::mkdtemp(dir.data()), nullptr);
  return dir;
}

class FabricDaemon : public testing::Test {
 protected:
  ~FabricDaemon() override { std::filesystem::remove_all(dir_); }
  const std::string dir_ = scratchDir();
  const std::string socket_ = dir_ + "/fabric.sock";
};

// Each bad request closes its own connection after the good one before it,
// is logged with the connection's number, and leaves the state as it was; a
// request after it is never served.
TEST_F(FabricDaemon, MalformedFramesCloseOnlyTheirConnection) {
  Daemon daemon(socket_);
  const std::string open = request(Type::kOpen);
  roundTrip(socket_, open + command("devname fap0 0000:03:00.0"));
  const std::string before = listing(socket_);
  EXPECT_THAT(before, HasSubstr("fap0 0000:03:00.0 down\n"));
  const std::string opened =
      bytesOf(frameOf(Type::kOpen, 8)) + bytesOf(Status{0}) + bytesOf(std::uint32_t{kHostEmulated});
  const std::string later = command("devname fap1 0000:04:00.0");
  const struct {
    const char* name;
    std::string bytes;
    const char* logged;
  } cases[] = {
      {"bad magic", bytesOf(Frame{0x12345678, kVersion, 1, 0}) + later, "bad magic"},
      {"version", bytesOf(Frame{kMagic, kVersion + 1, 1, 0}) + later,
       "unsupported protocol version"},
      {"type", bytesOf(Frame{kMagic, kVersion, kLastType + 1, 0}) + later, "unknown request type"},
      {"oversized", bytesOf(frameOf(Type::kTc, kMaxTcLine + 1)) + later,
       "payload longer than its type allows"},
      {"size", request(Type::kCommand, bytesOf(CommandHeader{256}) + "devname fap1") + later,
       "command size disagrees with its payload"},
      {"truncated frame", open.substr(0, 6), "closed in the middle of a request"},
      {"half a command", later.substr(0, 40), "closed in the middle of a request"},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(roundTrip(socket_, open + cases[i].bytes), opened) << cases[i].name;
    EXPECT_TRUE(daemon.waitFor("vorn-fabricd: connection " + std::to_string(i + 3) + ": " +
                               cases[i].logged + "\n"))
        << cases[i].name << ": " << daemon.output();
  }
  EXPECT_EQ(listing(socket_), before);
  EXPECT_EQ(daemon.stop(), 0);
}

// A stale socket file (a killed daemon's) is replaced, the live one is the
// owner's alone and goes with its daemon; paths it cannot serve are refused.
TEST_F(FabricDaemon, SocketPaths) {
  const int stale = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un a = address(socket_);
  ASSERT_EQ(::bind(stale, reinterpret_cast<sockaddr*>(&a), sizeof a), 0);
  ::close(stale);
  Daemon daemon(socket_);
  struct stat st {};
  EXPECT_EQ(::stat(socket_.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0600u);
  const std::pair<std::string, const char*> refused[] = {
      {dir_ + "/missing/fabric.sock", "no such directory"},
      {dir_ + "/" + std::string(120, 'x'), "a socket path has 1 to 107 bytes"},
      {socket_, "a daemon already answers there"},
      {dir_, "exists and is not a socket"},
  };
  for (const auto& [path, why] : refused) {
    VornTest::Process p({FABRICD_PATH, "--socket", path});
    EXPECT_EQ(p.wait(), 2) << path;
    EXPECT_THAT(p.output(), HasSubstr(why)) << path;
  }
  EXPECT_EQ(daemon.stop(), 0);
  EXPECT_NE(::access(socket_.c_str(), F_OK), 0);
}

// The answer's status and what follows it; status -1 for a malformed request.
struct Reply {
  Status status = -1;
  std::string body;
};

Reply ask(fabricd::Connection& c, const std::string& bytes) {
  Frame f;
  std::memcpy(&f, bytes.data(), sizeof f);
  const fabricd::Answer a = c.serve(f, std::string_view(bytes).substr(sizeof f));
  Reply r;
  if (a.malformed) return r;
  std::memcpy(&r.status, a.bytes.data() + sizeof f, sizeof r.status);
  r.body = a.bytes.substr(sizeof f + sizeof r.status);
  return r;
}

std::string hostRequest(std::uint32_t request, const char* name, std::int16_t flags = 0) {
  HostRequest r{};
  r.request = request;
  std::memcpy(r.name, name, std::min(std::strlen(name), sizeof r.name));
  r.flags = flags;
  return ::request(Type::kHostRequest, bytesOf(r));
}

std::string fault(std::int32_t error, std::uint32_t count, const std::string& prefix) {
  return request(Type::kFaultAdd, bytesOf(FaultAdd{error, count}) + prefix);
}

// Host requests act on the connection's own emulated socket; faults are
// checked and bounded; with a real host the clients open their own sockets
// and the daemon runs the host's tc.
TEST(FabricRequests, HostRequestsFaultsAndTheRealHost) {
  Emu::FabricDriver driver;
  driver.hostNetdevIs("et1");
  fabricd::Connection c(driver);
  const std::pair<std::string, Status> cases[] = {
      {hostRequest(SIOCGIFFLAGS, "et1"), EBADF},  // before kHostOpen
      {request(Type::kHostOpen), 0},
      {hostRequest(SIOCSIFFLAGS, "et1", 0x1043), 0},
      {hostRequest(SIOCGIFMTU, "et1"), ENOTTY},
      {hostRequest(SIOCGIFFLAGS, "et1_____________"), -1},  // no NUL: malformed
      {fault(5, 0, "devstate"), EINVAL},
      {fault(5, 1, "dev\tstate"), EINVAL},
      {fault(kMaxError + 1, 1, "devstate"), EINVAL},
      {fault(5, 1, "devstate fap0"), 0},
      {command("devstate fap0 up"), 5},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i)
    EXPECT_EQ(ask(c, cases[i].first).status, cases[i].second) << "case " << i;
  HostRequest got;
  std::memcpy(&got, ask(c, hostRequest(SIOCGIFFLAGS, "et1")).body.data(), sizeof got);
  EXPECT_EQ(got.flags, 0x1043);
  for (unsigned i = 0; i < kMaxFaults; ++i) ask(c, fault(5, 1, std::to_string(i)));
  EXPECT_EQ(ask(c, fault(5, 1, "one too many")).status, ENOSPC);
  EXPECT_THAT(ask(c, request(Type::kFaultList)).body, HasSubstr("\n63 5 1\n"));
  driver.realHostDevicesIs(true);
  EXPECT_EQ(ask(c, request(Type::kOpen)).body, bytesOf(std::uint32_t{0}));
  // The host's own tc runs the line: the daemon made those devices.
  static std::string ran;
  Zell::runnerIs([](const char* line, void*) { return ran = line, 7; }, nullptr);
  EXPECT_EQ(ask(c, request(Type::kTc, "/sbin/tc qdisc add dev et1 root")).status, 7);
  Zell::runnerIs(nullptr, nullptr);
  EXPECT_EQ(ran, "/sbin/tc qdisc add dev et1 root");
}

}  // namespace
