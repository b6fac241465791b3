// The virtual fabric's wire protocol: how a process reaches the emulated
// driver that vorn-fabricd serves on a Unix stream socket.
//
// Every message, request or answer, is a `Frame` followed by `length` bytes of
// payload. Numbers have fixed widths and the host's byte order (both ends run
// on one machine), so 32- and 64-bit processes share one daemon. A request is
// answered by exactly one frame of the same type, whose payload opens with the
// status: 0, or the errno the driver answered (int32). One connection is one
// open descriptor of the client: a "/dev/fabric" descriptor (kOpen, then any
// number of kCommand), a "/proc/vorn-dma" reader (kListing: its answer is
// followed by the listing's text up to the end of the stream, so that the
// client reads it as it reads the file), an emulated datagram socket
// (kHostOpen, then kHostRequest), or a control connection (kTc, kFault*).
//
// The daemon checks every header before it reads a payload: a wrong magic or
// version, an unknown type or a length above the type's limit closes that one
// connection, and so does a payload that disagrees with its header (a
// kCommand whose length is not 4 + size, a kHostRequest of another length or
// whose name has no NUL, a kTc line holding a NUL, a kFaultAdd shorter than
// its FaultAdd). A value the daemon refuses is answered instead: EINVAL for a
// fault with a count of 0, an error outside 0..kMaxError or a prefix that is
// empty or not printable ASCII, ENOSPC for a new fault beyond kMaxFaults.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Kernel::fabric {

// "VRNF" as the first four bytes on a little-endian host.
inline constexpr std::uint32_t kMagic = 0x464e5256;
inline constexpr std::uint16_t kVersion = 1;
// The largest ioctl buffer carried (the driver's largest answer is a few
// kilobytes).
inline constexpr std::uint32_t kMaxCommandSize = 64 * 1024;

enum class Type : std::uint16_t {
  // "/dev/fabric" opened. Request: nothing. Answer: status, Flags.
  kOpen = 1,
  // One ioctl. Request: CommandHeader, then `size` bytes of the buffer.
  // Answer: status, then the `size` bytes of the buffer after the command.
  kCommand = 2,
  // "/proc/vorn-dma" opened. Request: nothing. Answer: status; the listing's
  // text follows, and the daemon ends the stream after it.
  kListing = 3,
  // An emulated AF_INET datagram socket. Request: nothing. Answer: status,
  // Flags (without kHostEmulated the client uses a socket of its own host).
  kHostOpen = 4,
  // One SIOCSIFHWADDR, SIOCGIFHWADDR, SIOCGIFFLAGS or SIOCSIFFLAGS request.
  // Request: HostRequest. Answer: status, then HostRequest as the driver left
  // it. Another request is answered ENOTTY (ENODEV first for an unknown
  // device), and any request on a connection without an emulated socket EBADF.
  kHostRequest = 5,
  // The host's traffic-control tool. Request: the command line (no NUL).
  // Answer: status (tc's exit status: the emulated tc's, or with real host
  // devices the host's own tc run by the daemon, which made those devices).
  kTc = 6,
  // Scripted answers for every client. Request: FaultAdd, then the command
  // prefix (no NUL). Answer: status.
  kFaultAdd = 7,
  // Request: nothing. Answer: status, then one "PREFIX ERRNO COUNT\n" line per
  // scripted answer still pending.
  kFaultList = 8,
  // Request: nothing. Answer: status.
  kFaultClear = 9,
};
inline constexpr std::uint16_t kFirstType = 1;
inline constexpr std::uint16_t kLastType = 9;

struct Frame {
  std::uint32_t magic;
  std::uint16_t version;
  std::uint16_t type;
  std::uint32_t length;  // bytes of payload after the frame
};
static_assert(sizeof(Frame) == 12 && alignof(Frame) == 4);

using Status = std::int32_t;

// Answer flags of kOpen and kHostOpen.
enum Flags : std::uint32_t {
  // The daemon emulates the host side: netdevice requests and tc go to it.
  kHostEmulated = 1,
};

struct CommandHeader {
  std::uint32_t size;  // the ioctl's buffer size (the request number)
};
static_assert(sizeof(CommandHeader) == 4);

// An ifreq reduced to what the four requests use, the same on every ABI.
struct HostRequest {
  std::uint32_t request;
  char name[16];  // NUL-terminated within its 16 bytes
  std::uint16_t family;
  std::int16_t flags;
  std::uint8_t mac[6];
  std::uint8_t reserved[2];
};
static_assert(sizeof(HostRequest) == 32);

struct FaultAdd {
  std::int32_t error;
  std::uint32_t count;  // how many matching commands get `error`; at least 1
};
static_assert(sizeof(FaultAdd) == 8);
// The longest command prefix of a FaultAdd, and the largest error it may
// script (errno values stay below it).
inline constexpr std::uint32_t kMaxFaultPrefix = 255;
inline constexpr std::int32_t kMaxError = 4095;
// Scripted answers pending at once, so that a kFaultList answer is bounded.
inline constexpr std::uint32_t kMaxFaults = 64;
// The longest tc command line carried.
inline constexpr std::uint32_t kMaxTcLine = 1024;

// The largest request payload of each type (a frame announcing more is
// malformed), or 0 for a type that is not one.
constexpr std::uint32_t maxRequestPayload(std::uint16_t type) noexcept {
  switch (static_cast<Type>(type)) {
    case Type::kOpen:
    case Type::kListing:
    case Type::kHostOpen:
    case Type::kFaultList:
    case Type::kFaultClear:
      return 0;
    case Type::kCommand:
      return sizeof(CommandHeader) + kMaxCommandSize;
    case Type::kHostRequest:
      return sizeof(HostRequest);
    case Type::kTc:
      return kMaxTcLine;
    case Type::kFaultAdd:
      return sizeof(FaultAdd) + kMaxFaultPrefix;
  }
  return 0;
}

// The largest answer payload of each type (for kListing, the status before
// the text), or 0 for a type that is not one. A kFaultList line holds the
// prefix and two numbers of at most 11 characters each.
constexpr std::uint32_t maxAnswerPayload(std::uint16_t type) noexcept {
  switch (static_cast<Type>(type)) {
    case Type::kOpen:
    case Type::kHostOpen:
      return sizeof(Status) + sizeof(std::uint32_t);
    case Type::kCommand:
      return sizeof(Status) + kMaxCommandSize;
    case Type::kHostRequest:
      return sizeof(Status) + sizeof(HostRequest);
    case Type::kFaultList:
      return sizeof(Status) + kMaxFaults * (kMaxFaultPrefix + 2 * 12 + 1);
    case Type::kListing:
    case Type::kTc:
    case Type::kFaultAdd:
    case Type::kFaultClear:
      return sizeof(Status);
  }
  return 0;
}

// Why a request's header is malformed, or null when it is well formed.
constexpr const char* requestHeaderError(const Frame& f) noexcept {
  if (f.magic != kMagic) return "bad magic";
  if (f.version != kVersion) return "unsupported protocol version";
  if (f.type < kFirstType || f.type > kLastType) return "unknown request type";
  if (f.length > maxRequestPayload(f.type)) return "payload longer than its type allows";
  return nullptr;
}

// A frame's header for `type` with `length` bytes of payload.
constexpr Frame frameOf(Type type, std::uint32_t length) noexcept {
  return Frame{kMagic, kVersion, static_cast<std::uint16_t>(type), length};
}

}  // namespace Kernel::fabric
