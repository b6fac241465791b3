#include "Kernel/RemoteFabric.h"

#include <fcntl.h>
#include <net/if.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "Zell/Zell.h"

namespace Kernel::fabric {
namespace {

// A daemon that has not answered in this long is taken for gone.
constexpr timeval kAnswerTimeout = {10, 0};

char gPath[sizeof(sockaddr_un::sun_path)];

// The connections the seam handed out as descriptors, and what each stands
// for. One request and its answer at a time, for every connection of the
// process: the mutex also guards the table.
enum class Kind : unsigned char { kFree, kFabric, kHost };
struct Connection {
  int fd = -1;
  Kind kind = Kind::kFree;
};
std::mutex gMutex;
std::array<Connection, 64> gConnections;

Kind kindOf(int fd) {
  for (const Connection& c : gConnections)
    if (c.fd == fd && c.kind != Kind::kFree) return c.kind;
  return Kind::kFree;
}

bool remember(int fd, Kind kind) {
  for (Connection& c : gConnections)
    if (c.kind == Kind::kFree) {
      c = {fd, kind};
      return true;
    }
  return false;
}

void forget(int fd) {
  for (Connection& c : gConnections)
    if (c.fd == fd) c = {};
}

bool sendAll(int fd, iovec* iov, int count) {
  while (count > 0) {
    msghdr msg{};
    msg.msg_iov = iov;
    msg.msg_iovlen = static_cast<decltype(msg.msg_iovlen)>(count);
    ssize_t n = ::sendmsg(fd, &msg, MSG_NOSIGNAL);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    // A partial send (a signal, a full socket buffer): resume where it ended.
    while (count > 0 && static_cast<std::size_t>(n) >= iov->iov_len) {
      n -= static_cast<ssize_t>(iov->iov_len);
      ++iov, --count;
    }
    if (count > 0) {
      iov->iov_base = static_cast<char*>(iov->iov_base) + n;
      iov->iov_len -= static_cast<std::size_t>(n);
    }
  }
  return true;
}

bool receiveAll(int fd, void* buf, std::size_t size) {
  auto* p = static_cast<char*>(buf);
  while (size > 0) {
    ssize_t n = ::recv(fd, p, size, 0);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      if (n == 0) errno = ECONNRESET;
      return false;
    }
    p += n;
    size -= static_cast<std::size_t>(n);
  }
  return true;
}

// Sends the request and reads the answer's header and status; the payload
// still to read, or -1 with errno.
long long requestAnswer(int fd, Type type, const iovec* parts, int count, Status& status) {
  std::uint32_t length = 0;
  std::array<iovec, 4> iov{};
  if (count < 0 || count > 3) {
    errno = EINVAL;
    return -1;
  }
  for (int i = 0; i < count; ++i) {
    iov[static_cast<std::size_t>(i) + 1] = parts[i];
    length += static_cast<std::uint32_t>(parts[i].iov_len);
  }
  Frame frame = frameOf(type, length);
  iov[0] = {&frame, sizeof frame};
  if (!sendAll(fd, iov.data(), count + 1)) return -1;
  struct {
    Frame frame;
    Status status;
  } head;
  static_assert(sizeof head == sizeof(Frame) + sizeof(Status));
  if (!receiveAll(fd, &head, sizeof head)) return -1;
  if (head.frame.magic != kMagic || head.frame.version != kVersion ||
      head.frame.type != static_cast<std::uint16_t>(type) || head.frame.length < sizeof(Status)) {
    errno = EPROTO;
    return -1;
  }
  status = head.status;
  return head.frame.length - sizeof(Status);
}

// Opens a connection of `type` (kOpen, kListing, kHostOpen). The descriptor;
// -1 with errno = the daemon's status when it refused; -1 with `reached`
// false when no daemon could be reached.
int openConnection(Type type, std::uint32_t& flags, bool& reached) {
  reached = false;
  int fd = connectTo(gPath);
  if (fd < 0) return -1;
  flags = 0;
  const std::size_t answerSize = type == Type::kListing ? 0 : sizeof flags;
  int status = exchange(fd, type, nullptr, 0, &flags, answerSize);
  if (status != 0) {
    int error = errno;
    ::close(fd);
    reached = status > 0;
    errno = status > 0 ? status : error;
    return -1;
  }
  reached = true;
  return fd;
}

// A new connection of `type` under the descriptor `fd`, whose connection
// broke. True when one was made.
bool reconnect(int fd, Type type) {
  std::uint32_t flags;
  bool reached;
  int fresh = openConnection(type, flags, reached);
  if (fresh < 0) return false;
  bool moved = ::dup3(fresh, fd, O_CLOEXEC) == fd;
  ::close(fresh);
  return moved;
}

// One request on a connection the seam handed out; on a broken connection it
// is sent once more on a new one. 0, or -1 with errno (ENODEV: no daemon).
int requestOn(int fd, Type reopen, Type type, iovec* parts, int count, void* answer,
              std::size_t answerSize) {
  int status = exchange(fd, type, parts, count, answer, answerSize);
  if (status < 0 && errno != EPROTO && reconnect(fd, reopen))
    status = exchange(fd, type, parts, count, answer, answerSize);
  if (status < 0) {
    errno = ENODEV;
    return -1;
  }
  if (status > 0) {
    errno = status;
    return -1;
  }
  return 0;
}

int command(int fd, unsigned size, void* buf) {
  if (size > kMaxCommandSize) {
    errno = EINVAL;
    return -1;
  }
  if (!buf && size) {
    errno = EFAULT;
    return -1;
  }
  CommandHeader header{size};
  iovec parts[] = {{&header, sizeof header}, {buf, size}};
  return requestOn(fd, Type::kOpen, Type::kCommand, parts, 2, buf, size);
}

int hostRequest(int fd, unsigned long request, void* arg) {
  if (!arg) {
    errno = EFAULT;
    return -1;
  }
  auto& req = *static_cast<ifreq*>(arg);
  HostRequest host{};
  host.request = static_cast<std::uint32_t>(request);
  std::memcpy(host.name, req.ifr_name, sizeof host.name - 1);
  host.family = req.ifr_hwaddr.sa_family;
  host.flags = req.ifr_flags;
  if (request != SIOCGIFFLAGS && request != SIOCSIFFLAGS)
    std::memcpy(host.mac, req.ifr_hwaddr.sa_data, sizeof host.mac);
  iovec part = {&host, sizeof host};
  if (requestOn(fd, Type::kHostOpen, Type::kHostRequest, &part, 1, &host, sizeof host) != 0)
    return -1;
  if (request == SIOCGIFHWADDR) {
    req.ifr_hwaddr.sa_family = host.family;
    std::memcpy(req.ifr_hwaddr.sa_data, host.mac, sizeof host.mac);
  } else if (request == SIOCGIFFLAGS) {
    req.ifr_flags = host.flags;
  }
  return 0;
}

int remoteOpen(const char* path, int flags) {
  const bool fabric = std::strcmp(path, "/dev/fabric") == 0;
  if (!fabric && std::strcmp(path, "/proc/vorn-dma") != 0) return linuxOps().open(path, flags);
  std::lock_guard<std::mutex> lock(gMutex);
  std::uint32_t answered;
  bool reached;
  int fd = openConnection(fabric ? Type::kOpen : Type::kListing, answered, reached);
  if (fd < 0) {
    if (!reached) errno = ENOENT;
    return -1;
  }
  // The listing's text follows its answer: the caller reads the socket as it
  // would read the file.
  if (fabric && !remember(fd, Kind::kFabric)) {
    ::close(fd);
    errno = EMFILE;
    return -1;
  }
  return fd;
}

int remoteClose(int fd) {
  {
    std::lock_guard<std::mutex> lock(gMutex);
    forget(fd);
  }
  return ::close(fd);
}

int remoteIoctl(int fd, unsigned long request, void* arg) {
  std::lock_guard<std::mutex> lock(gMutex);
  switch (kindOf(fd)) {
    case Kind::kFabric:
      return command(fd, static_cast<unsigned>(request), arg);
    case Kind::kHost:
      return hostRequest(fd, request, arg);
    case Kind::kFree:
      break;
  }
  return linuxOps().ioctl(fd, request, arg);
}

int remoteSocket(int domain, int type, int protocol) {
  if (domain == AF_INET && (type & 0xf) == SOCK_DGRAM) {
    std::lock_guard<std::mutex> lock(gMutex);
    std::uint32_t flags;
    bool reached;
    int fd = openConnection(Type::kHostOpen, flags, reached);
    if (fd < 0 && reached) return -1;  // the emulated socket was refused
    if (fd >= 0 && (flags & kHostEmulated) && remember(fd, Kind::kHost)) return fd;
    if (fd >= 0) ::close(fd);
    // The daemon uses the host's own netdevices (or is not there): so do we.
  }
  return linuxOps().socket(domain, type, protocol);
}

int remoteTc(const char* command, void*) {
  std::size_t length = std::strlen(command);
  if (length > maxRequestPayload(static_cast<std::uint16_t>(Type::kTc))) return -1;
  std::string ignored;
  iovec part = {const_cast<char*>(command), length};
  return control(gPath, Type::kTc, &part, 1, ignored);
}

int remoteUsleep(unsigned int usec) {
  return ::usleep(usec);
}

// Constant: it may be chosen before this file's dynamic initialisers ran.
constexpr Ops kRemote = {
    remoteOpen,
    remoteClose,
    remoteIoctl,
    ::read,
    ::write,
    remoteSocket,
    ::bind,
    ::opendir,
    ::readdir,
    ::closedir,
    ::sysconf,
    remoteUsleep,
    Kernel::detail::linuxGetenv,
};

}  // namespace

std::string defaultSocketPath() {
  const char* runtime = ::getenv("XDG_RUNTIME_DIR");
  if (::geteuid() == 0) return "/run/vorn/fabric.sock";
  return runtime && *runtime ? std::string(runtime) + "/vorn/fabric.sock" : std::string();
}

int connectTo(const char* path) noexcept {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::size_t length = strnlen(path, sizeof address.sun_path);
  if (length == sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return -1;
  }
  std::memcpy(address.sun_path, path, length);
  int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &kAnswerTimeout, sizeof kAnswerTimeout);
  ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &kAnswerTimeout, sizeof kAnswerTimeout);
  if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    ::close(fd);
    errno = ENOENT;
    return -1;
  }
  return fd;
}

int exchange(int fd, Type type, const iovec* parts, int count, void* answer,
             std::size_t answerSize) noexcept {
  Status status = 0;
  long long rest = requestAnswer(fd, type, parts, count, status);
  if (rest < 0) return -1;
  if (static_cast<unsigned long long>(rest) != answerSize) {
    errno = EPROTO;
    return -1;
  }
  if (!receiveAll(fd, answer, answerSize)) return -1;
  return status;
}

int control(const char* path, Type type, const iovec* parts, int count, std::string& text) {
  int fd = connectTo(path);
  if (fd < 0) return -1;
  Status status = 0;
  long long rest = requestAnswer(fd, type, parts, count, status);
  // An answer longer than its type allows is not the daemon's.
  if (rest >= 0 && static_cast<unsigned long long>(rest) + sizeof(Status) >
                       maxAnswerPayload(static_cast<std::uint16_t>(type)))
    errno = EPROTO, rest = -1;
  if (rest >= 0) {
    text.resize(static_cast<std::size_t>(rest));
    if (!receiveAll(fd, text.data(), text.size())) rest = -1;
  }
  int error = errno;
  ::close(fd);
  errno = error;
  return rest < 0 ? -1 : status;
}

namespace detail {

const Ops* remoteOps(const char* path) noexcept {
  static const bool made = [path] {
    std::size_t length = strnlen(path, sizeof gPath);
    if (length == 0 || length == sizeof gPath) return false;
    std::memcpy(gPath, path, length);
    // The host's tc goes to the daemon too: it runs it against the netdevices
    // it emulates, or on its own host.
    Zell::runnerIs(remoteTc, nullptr);
    return true;
  }();
  return made ? &kRemote : nullptr;
}

const char* remotePath() noexcept {
  return gPath;
}

}  // namespace detail
}  // namespace Kernel::fabric
