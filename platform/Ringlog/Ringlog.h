// Ringlog: the ring-buffer trace library.
//
// A message is a printf-style descriptor ("vornDmaIfdel ifname=%s"),
// registered once per call site, plus typed arguments. Messages go to the
// process's default trace file when there is one; when there is none,
// writing costs one load and a branch. The descriptor text is stored once,
// the arguments per message, so that a reader can render the messages
// without the process that wrote them.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "Mox/String.h"

namespace Ringlog {

using MsgId = std::uint32_t;

// One argument of a message. Strings are referenced, not copied: a file
// copies what it keeps before `write` returns.
struct Arg {
  enum Kind : std::uint8_t { kInt, kUint, kStr, kDouble };
  Kind kind;
  union {
    std::int64_t i;
    std::uint64_t u;
    double d;
  };
  const char* s;
  std::uint32_t len;
};

inline Arg arg(const char* s) {
  Arg a{};
  a.kind = Arg::kStr;
  a.s = s ? s : "(null)";
  a.len = static_cast<std::uint32_t>(std::char_traits<char>::length(a.s));
  return a;
}
inline Arg arg(const Mox::String& s) {
  Arg a{};
  a.kind = Arg::kStr;
  a.s = s.charPtr();
  a.len = static_cast<std::uint32_t>(s.bytes());
  return a;
}
inline Arg arg(std::string_view s) {
  Arg a{};
  a.kind = Arg::kStr;
  a.s = s.data();
  a.len = static_cast<std::uint32_t>(s.size());
  return a;
}
inline Arg arg(double v) {
  Arg a{};
  a.kind = Arg::kDouble;
  a.d = v;
  return a;
}
template <typename T, typename = std::enable_if_t<std::is_integral_v<T> || std::is_enum_v<T>>>
inline Arg arg(T v) {
  Arg a{};
  if constexpr (std::is_enum_v<T>) {
    a.kind = Arg::kInt;
    a.i = static_cast<std::int64_t>(v);
  } else if constexpr (std::is_signed_v<T>) {
    a.kind = Arg::kInt;
    a.i = v;
  } else {
    a.kind = Arg::kUint;
    a.u = v;
  }
  return a;
}

// Where an open block's message went, so that its file can close it.
struct BlockMark {
  std::uint64_t sequence = 0;
  std::uint64_t start = 0;  // the file's clock when the block opened
  void* record = nullptr;
  MsgId id = 0;
};

// A destination of messages. Implementations: MemoryFile (kept in memory, for
// tests) and RingFile (a memory-mapped post-mortem ring).
class TraceFile {
 public:
  virtual ~TraceFile() = default;
  // Writes one message.
  virtual void write(MsgId id, const Arg* args, unsigned count) noexcept = 0;
  // Writes the message that opens a block timer, and returns what
  // closeBlock needs to record its end. By default a plain message.
  virtual BlockMark openBlock(MsgId id, const Arg* args, unsigned count) noexcept {
    write(id, args, count);
    return {};
  }
  // Records the end of the block `mark` opened. By default nothing.
  virtual void closeBlock(const BlockMark& mark) noexcept { (void)mark; }
};

// Registers a message descriptor (a string literal that outlives the process's
// use of it) and returns its id. Thread-safe; each call site calls it once.
MsgId registerMessage(const char* format);
// The descriptor text of `id`, or null.
const char* messageFormat(MsgId id) noexcept;
// How many descriptors are registered.
MsgId messageCount() noexcept;

namespace detail {
extern std::atomic<TraceFile*> defaultFile;
}

// The process's default trace file, or null when there is none. One load: the
// check costs next to nothing when tracing is off.
inline TraceFile* defaultFile() noexcept {
  return detail::defaultFile.load(std::memory_order_acquire);
}
// Makes `file` the default trace file (null: none). The caller keeps
// ownership and keeps it alive while it is the default.
void defaultFileIs(TraceFile* file) noexcept;

// Renders a message the way a reader shows it: the descriptor with each
// conversion replaced by its argument.
std::string render(const char* format, const Arg* args, unsigned count);

template <typename... A>
inline void write(TraceFile* file, MsgId id, const A&... a) noexcept {
  if constexpr (sizeof...(A) == 0) {
    file->write(id, nullptr, 0);
  } else {
    const Arg args[] = {arg(a)...};
    file->write(id, args, sizeof...(A));
  }
}

// A message whose scope is timed: the message is written when the scope opens
// and its end is recorded when it closes, on every path.
class BlockTimer {
 public:
  template <typename... A>
  BlockTimer(MsgId id, const A&... a) noexcept : file_(defaultFile()) {
    if (!file_) return;
    if constexpr (sizeof...(A) == 0) {
      mark_ = file_->openBlock(id, nullptr, 0);
    } else {
      const Arg args[] = {arg(a)...};
      mark_ = file_->openBlock(id, args, sizeof...(A));
    }
  }
  ~BlockTimer() {
    if (file_) file_->closeBlock(mark_);
  }
  BlockTimer(const BlockTimer&) = delete;
  BlockTimer& operator=(const BlockTimer&) = delete;

 private:
  TraceFile* file_;
  BlockMark mark_;
};

}  // namespace Ringlog

#define RINGLOG_CAT2_(a, b) a##b
#define RINGLOG_CAT_(a, b) RINGLOG_CAT2_(a, b)

// Writes one message to the default trace file, if there is one. The
// descriptor is registered at the first call of this call site.
#define RINGLOG(format, ...)                                                     \
  do {                                                                           \
    if (::Ringlog::TraceFile* rl_file_ = ::Ringlog::defaultFile()) {             \
      static const ::Ringlog::MsgId rl_id_ = ::Ringlog::registerMessage(format); \
      ::Ringlog::write(rl_file_, rl_id_ __VA_OPT__(, ) __VA_ARGS__);             \
    }                                                                            \
  } while (0)

// Opens a block-timer message that ends with the enclosing scope.
#define RINGLOG_BLOCK(format, ...)                                     \
  static const ::Ringlog::MsgId RINGLOG_CAT_(rl_block_id_, __LINE__) = \
      ::Ringlog::registerMessage(format);                              \
  ::Ringlog::BlockTimer RINGLOG_CAT_(                                  \
      rl_block_, __LINE__)(RINGLOG_CAT_(rl_block_id_, __LINE__) __VA_OPT__(, ) __VA_ARGS__)
