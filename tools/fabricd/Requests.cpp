#include "fabricd/Requests.h"

#include <net/if.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "Zell/Zell.h"
#include "emu/HostSockets.h"

namespace fabricd {

using namespace Kernel::fabric;

namespace {

static_assert(sizeof(HostRequest::name) == IFNAMSIZ);

template <class T>
std::string_view bytesOf(const T& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

// An answer of `type`: its frame, `status`, then `body`.
Answer answer(Type type, int status, std::string_view body = {}) {
  const Status s = status;
  const Frame frame = frameOf(type, static_cast<std::uint32_t>(sizeof s + body.size()));
  Answer a;
  a.bytes.append(bytesOf(frame)).append(bytesOf(s)).append(body);
  return a;
}

Answer malformed(const char* why) {
  Answer a;
  a.malformed = why;
  return a;
}

// Carries `r` out as the ifreq the driver models; the fields the request
// reads back are copied into `r`. 0 or an errno: the model answers a request
// it does not know ENOTTY (ENODEV first for a device it does not know).
int applyHostRequest(Emu::FabricDriver& driver, HostRequest& r) {
  const bool hw = r.request == SIOCSIFHWADDR || r.request == SIOCGIFHWADDR;
  const bool flags = r.request == SIOCSIFFLAGS || r.request == SIOCGIFFLAGS;
  ifreq req{};
  std::memcpy(req.ifr_name, r.name, sizeof r.name);
  if (hw) {
    req.ifr_hwaddr.sa_family = r.family;
    std::memcpy(req.ifr_hwaddr.sa_data, r.mac, sizeof r.mac);
  } else if (flags) {
    req.ifr_flags = r.flags;
  }
  const int rc = driver.hostRequest(r.request, &req);
  if (hw) {
    r.family = req.ifr_hwaddr.sa_family;
    std::memcpy(r.mac, req.ifr_hwaddr.sa_data, sizeof r.mac);
  } else if (flags) {
    r.flags = req.ifr_flags;
  }
  return rc;
}

// The answer flags of kOpen and kHostOpen.
std::uint32_t hostFlags(const Emu::FabricDriver& driver) {
  return driver.realHostDevices() ? 0u : std::uint32_t{kHostEmulated};
}

bool printable(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

}  // namespace

Connection::~Connection() {
  if (hostFd_ >= 0) Emu::hostsock::close(hostFd_);
}

Answer Connection::serve(const Frame& frame, std::string_view payload) {
  if (const char* why = requestHeaderError(frame)) return malformed(why);
  if (payload.size() != frame.length) return malformed("payload size differs from its header");
  switch (static_cast<Type>(frame.type)) {
    case Type::kOpen:
      return answer(Type::kOpen, 0, bytesOf(hostFlags(driver_)));
    case Type::kCommand:
      return command(payload);
    case Type::kListing: {
      // The text follows the answer unframed, as the file's content.
      Answer a = answer(Type::kListing, 0);
      a.bytes += driver_.procListing();
      a.last = true;
      return a;
    }
    case Type::kHostOpen:
      return hostOpen();
    case Type::kHostRequest:
      return hostRequest(payload);
    case Type::kTc:
      return tc(payload);
    case Type::kFaultAdd:
      return faultAdd(payload);
    case Type::kFaultList:
      return faultList();
    case Type::kFaultClear:
      driver_.clearScriptedAnswers();
      return answer(Type::kFaultClear, 0);
  }
  return malformed("unknown request type");
}

Answer Connection::command(std::string_view payload) {
  CommandHeader header;
  if (payload.size() < sizeof header) return malformed("command shorter than its header");
  std::memcpy(&header, payload.data(), sizeof header);
  if (header.size > kMaxCommandSize || payload.size() - sizeof header != header.size)
    return malformed("command size disagrees with its payload");
  std::string buf(payload.substr(sizeof header));
  const int rc = driver_.command(buf.data(), header.size);
  driver_.clearLog();  // nobody reads the log here: it would only grow
  return answer(Type::kCommand, rc, buf);
}

// On a real host the client opens a socket of its own.
Answer Connection::hostOpen() {
  const std::uint32_t flags = hostFlags(driver_);
  if (flags && hostFd_ < 0) hostFd_ = driver_.hostSocket();
  return answer(Type::kHostOpen, flags && hostFd_ < 0 ? errno : 0, bytesOf(flags));
}

Answer Connection::hostRequest(std::string_view payload) {
  HostRequest r;
  if (payload.size() != sizeof r) return malformed("host request of the wrong size");
  std::memcpy(&r, payload.data(), sizeof r);
  if (!std::memchr(r.name, '\0', sizeof r.name))
    return malformed("host request name without its NUL");
  // Like a request on a closed descriptor, one without an emulated socket.
  const int rc = hostFd_ < 0 ? EBADF : applyHostRequest(driver_, r);
  return answer(Type::kHostRequest, rc, bytesOf(r));
}

Answer Connection::tc(std::string_view payload) {
  if (payload.find('\0') != std::string_view::npos) return malformed("tc command line holds a NUL");
  const std::string line(payload);
  if (driver_.realHostDevices()) return answer(Type::kTc, Zell::run(line.c_str()));
  const int rc = driver_.runTc(line.c_str());
  driver_.clearLog();
  return answer(Type::kTc, rc);
}

Answer Connection::faultAdd(std::string_view payload) {
  FaultAdd fault;
  if (payload.size() < sizeof fault) return malformed("fault shorter than its header");
  std::memcpy(&fault, payload.data(), sizeof fault);
  const std::string_view prefix = payload.substr(sizeof fault);
  if (prefix.empty() || !printable(prefix) || fault.count == 0 || fault.error < 0 ||
      fault.error > kMaxError)
    return answer(Type::kFaultAdd, EINVAL);
  const auto pending = driver_.scriptedAnswers();
  const bool replaces =
      std::ranges::any_of(pending, [&](const auto& a) { return a.prefix == prefix; });
  if (!replaces && pending.size() >= kMaxFaults) return answer(Type::kFaultAdd, ENOSPC);
  driver_.answerNext(prefix, fault.error, fault.count);
  return answer(Type::kFaultAdd, 0);
}

Answer Connection::faultList() {
  std::string text;
  for (const auto& a : driver_.scriptedAnswers())
    text += a.prefix + " " + std::to_string(a.error) + " " + std::to_string(a.remaining) + "\n";
  return answer(Type::kFaultList, 0, text);
}

}  // namespace fabricd
