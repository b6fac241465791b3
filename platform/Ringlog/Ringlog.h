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

#include "Ringlog/Arg.h"
#include "Ringlog/RingWriter.h"

namespace Ringlog {

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
  // Writes a message that follows the opening of its thread's innermost block
  // so closely that it may carry the block's opening time instead of reading
  // the clock again (a clock read costs as much as the rest of a record). A
  // file that keeps no times writes a plain message.
  virtual void writeAtBlockStart(MsgId id, const Arg* args, unsigned count) noexcept {
    write(id, args, count);
  }

  // The file's in-place writer, when it is a mapped ring file: the inline
  // writers below use it rather than the virtual functions.
  RingWriter* inPlace() const noexcept { return inPlace_; }

 protected:
  RingWriter* inPlace_ = nullptr;
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
  if (RingWriter* ring = file->inPlace()) {
    ring->message(id, a...);
  } else if constexpr (sizeof...(A) == 0) {
    file->write(id, nullptr, 0);
  } else {
    const Arg args[] = {arg(a)...};
    file->write(id, args, sizeof...(A));
  }
}

// write(), through TraceFile::writeAtBlockStart.
template <typename... A>
inline void writeAtBlockStart(TraceFile* file, MsgId id, const A&... a) noexcept {
  if (RingWriter* ring = file->inPlace()) {
    ring->messageAtBlockStart(id, a...);
  } else {
    const Arg args[] = {arg(a)...};
    file->writeAtBlockStart(id, args, sizeof...(A));
  }
}

// A message whose scope is timed: the message is written when the scope opens
// and its end is recorded when it closes, on every path.
class BlockTimer {
 public:
  // Without a trace file this is a load and a branch, expanded in place: a
  // call to the whole constructor cost a command function 27 to 31
  // instructions. The mark is then left unset, since nothing reads it.
  template <typename... A>
  [[gnu::always_inline]] BlockTimer(MsgId id, const A&... a) noexcept : file_(defaultFile()) {
    if (file_) [[unlikely]]
      open(id, a...);
  }
  ~BlockTimer() {
    if (!file_) return;
    if (RingWriter* ring = file_->inPlace())
      ring->closeBlock(mark_);
    else
      file_->closeBlock(mark_);
  }
  BlockTimer(const BlockTimer&) = delete;
  BlockTimer& operator=(const BlockTimer&) = delete;

 private:
  template <typename... A>
  [[gnu::noinline]] void open(MsgId id, const A&... a) noexcept {
    if (RingWriter* ring = file_->inPlace()) {
      mark_ = ring->openBlock(id, a...);
    } else if constexpr (sizeof...(A) == 0) {
      mark_ = file_->openBlock(id, nullptr, 0);
    } else {
      const Arg args[] = {arg(a)...};
      mark_ = file_->openBlock(id, args, sizeof...(A));
    }
  }

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

// RINGLOG for the message that a block's function writes as soon as it has
// done its first step (the driver command of a command function): in a ring
// file it carries the block's opening time, if no other message came between.
// Takes at least one argument.
#define RINGLOG_AT_BLOCK_START(format, ...)                                      \
  do {                                                                           \
    if (::Ringlog::TraceFile* rl_file_ = ::Ringlog::defaultFile()) {             \
      static const ::Ringlog::MsgId rl_id_ = ::Ringlog::registerMessage(format); \
      ::Ringlog::writeAtBlockStart(rl_file_, rl_id_, __VA_ARGS__);               \
    }                                                                            \
  } while (0)

// Opens a block-timer message that ends with the enclosing scope.
#define RINGLOG_BLOCK(format, ...)                                     \
  static const ::Ringlog::MsgId RINGLOG_CAT_(rl_block_id_, __LINE__) = \
      ::Ringlog::registerMessage(format);                              \
  ::Ringlog::BlockTimer RINGLOG_CAT_(                                  \
      rl_block_, __LINE__)(RINGLOG_CAT_(rl_block_id_, __LINE__) __VA_OPT__(, ) __VA_ARGS__)
