// The writing side of a ring trace file, expanded where a message is written:
// the arguments go from the caller's values straight into the record, with
// no argument array and no virtual call. RingFile is a RingWriter; the
// RINGLOG macros and the block timer take this path whenever the default
// trace file is one.
//
// A record is one slot of the ring (RingFileFormat.h): a sequence number
// taken with one atomic increment, a time-stamp counter read, the message id
// and the encoded arguments. Nothing here locks or calls the kernel.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>

#include "Ringlog/Arg.h"
#include "Ringlog/RingFileFormat.h"

namespace Ringlog {

// The record of the block this thread opened last in a ring file, while no
// message has followed it (slot null otherwise): the next message may be
// stored in it. Initial-exec and constant initialised: reading it is a load
// relative to the thread pointer, with no call and no test for an
// initialiser first.
struct OpenBlock {
  format::Slot* slot;
  std::uint64_t sequence;
  std::uint64_t start;
};
extern thread_local constinit OpenBlock tOpenBlock [[gnu::tls_model("initial-exec")]];

// Encodes arguments into a record's payload, as far as they fit: a number
// takes its type byte and 8 bytes; a string its type byte, a 16-bit length
// and as many of its bytes as the slot still holds. The first argument that
// finds fewer than 9 bytes left ends the payload.
class Payload {
 public:
  explicit Payload(unsigned char* begin) noexcept
      : Payload(begin, begin + sizeof(format::Slot::payload)) {}
  Payload(unsigned char* begin, unsigned char* end) noexcept : p_(begin), end_(end) {}

  void put(const Arg& a) noexcept {
    if (full_ || end_ - p_ < 9) {
      full_ = true;
      return;
    }
    if (a.kind == Arg::kStr) {
      const std::size_t room = static_cast<std::size_t>(end_ - p_) - 3;
      if (a.len > room) cut_ = true;
      const auto len = static_cast<std::uint16_t>(a.len < room ? a.len : room);
      *p_ = format::kTypeStr;
      std::memcpy(p_ + 1, &len, 2);
      std::memcpy(p_ + 3, a.s, len);
      p_ += 3 + len;
    } else {
      // The three number kinds share the union's 8 bytes.
      *p_ = a.kind == Arg::kInt    ? format::kTypeInt
            : a.kind == Arg::kUint ? format::kTypeUint
                                   : format::kTypeDouble;
      std::memcpy(p_ + 1, &a.u, 8);
      p_ += 9;
    }
    ++count_;
  }
  // A NUL-terminated string: copied as it is measured, in one pass, so a
  // short name costs no calls into the C library.
  void put(const char* s) noexcept {
    if (!s) s = "(null)";
    if (full_ || end_ - p_ < 9) {
      full_ = true;
      return;
    }
    // Through locals: a store through a char pointer may change end_, so a
    // loop on the member reloads it at every character.
    unsigned char* const text = p_ + 3;
    const std::size_t room = static_cast<std::size_t>(end_ - text);
    std::size_t len = 0;
    for (; len < room && s[len]; ++len) text[len] = static_cast<unsigned char>(s[len]);
    if (s[len]) cut_ = true;
    *p_ = format::kTypeStr;
    const auto len16 = static_cast<std::uint16_t>(len);
    std::memcpy(p_ + 1, &len16, 2);
    p_ = text + len;
    ++count_;
  }
  // A caller's value, through the same conversion as an argument array's.
  template <typename T>
  void put(const T& v) noexcept {
    put(arg(v));
  }

  unsigned count() const noexcept { return count_; }
  unsigned char* end() const noexcept { return p_; }
  // True when an argument was left out or a string shortened.
  bool cut() const noexcept { return full_ || cut_; }

 private:
  unsigned char* p_;
  unsigned char* const end_;
  unsigned count_ = 0;
  bool full_ = false;
  bool cut_ = false;
};

class RingWriter {
 public:
  // Message ids whose descriptors a file can hold.
  static constexpr unsigned kMaxStoredIds = 4096;

  // Writes a message with the arguments `a`.
  template <typename... A>
  void message(MsgId id, const A&... a) noexcept {
    tOpenBlock.slot = nullptr;
    std::uint64_t sequence;
    format::Slot* s = begin(id, format::kMessage, format::ticks(), sequence);
    Payload out(s->payload);
    (out.put(a), ...);
    finish(s, out, sequence);
  }

  // A message that may carry the opening time of the block this thread
  // opened last (see TraceFile::writeAtBlockStart): stored in the block's
  // record when it directly follows the opening and fits there whole,
  // otherwise a record of its own at the block's opening time.
  template <typename... A>
  void messageAtBlockStart(MsgId id, const A&... a) noexcept {
    messageAtBlockStartWith(id, sizeof...(A), [&](Payload& out) { (out.put(a), ...); });
  }

  // The same with arguments that `put` writes into a payload.
  template <typename Put>
  void messageAtBlockStartWith(MsgId id, unsigned count, const Put& put) noexcept {
    const OpenBlock block = tOpenBlock;
    tOpenBlock.slot = nullptr;
    if (block.slot && appendToBlock(block, id, count, put)) return;
    std::uint64_t sequence;
    format::Slot* s =
        begin(id, format::kMessage, block.slot ? block.start : format::ticks(), sequence);
    Payload out(s->payload);
    put(out);
    finish(s, out, sequence);
  }

  // Writes a block timer's record and returns what closeBlock needs.
  template <typename... A>
  BlockMark openBlock(MsgId id, const A&... a) noexcept {
    BlockMark mark{};
    mark.id = id;
    mark.start = format::ticks();
    format::Slot* s = begin(id, format::kBlock, mark.start, mark.sequence);
    Payload out(s->payload);
    (out.put(a), ...);
    finish(s, out, mark.sequence);
    mark.record = s;
    tOpenBlock = {s, mark.sequence, mark.start};
    return mark;
  }

  // Writes the block's length into its record, or, when the ring has reused
  // that slot meanwhile, a record of its own.
  void closeBlock(const BlockMark& mark) noexcept {
    tOpenBlock.slot = nullptr;
    if (!mark.record) return;
    const std::uint64_t elapsed = format::ticks() - mark.start;
    auto* s = static_cast<format::Slot*>(mark.record);
    if (s->sequence.load(std::memory_order_acquire) == mark.sequence + 1) {
      s->elapsed.store(elapsed + 1, std::memory_order_release);
      return;
    }
    closeOutlivedBlock(mark, elapsed);
  }

 protected:
  // Claims the next slot and fills its header; `sequence` receives the
  // record's number. The slot reads as unwritten until finish().
  format::Slot* begin(MsgId id, std::uint8_t kind, std::uint64_t ticks,
                      std::uint64_t& sequence) noexcept {
    storeDescriptor(id);
    sequence = header_->nextSequence.fetch_add(1, std::memory_order_relaxed);
    format::Slot* s = &slots_[sequence & mask_];
    s->sequence.store(0, std::memory_order_relaxed);
    s->ticks = ticks;
    s->elapsed.store(0, std::memory_order_relaxed);
    s->msgId = id;
    s->kind = kind;
    return s;
  }

  // Publishes the slot `begin` claimed, with the payload `out` wrote.
  void finish(format::Slot* s, const Payload& out, std::uint64_t sequence) noexcept {
    s->argc = static_cast<std::uint8_t>(out.count());
    s->payloadBytes = static_cast<std::uint16_t>(out.end() - s->payload);
    s->sequence.store(sequence + 1, std::memory_order_release);
    if (s->ticks >= nextRefresh_.load(std::memory_order_relaxed)) refreshClock(s->ticks);
  }

  // Stores message `id`, with the `count` arguments `put` writes, after the
  // arguments of the open block's record; false (nothing published) when the
  // block is another file's, the ring has reused its slot or the message
  // does not fit there whole. The record's payload length is published last,
  // so a reader sees the message whole or not at all.
  template <typename Put>
  bool appendToBlock(const OpenBlock& block, MsgId id, unsigned count, const Put& put) noexcept {
    format::Slot* const s = block.slot;
    // A block opened in a file that has since stopped being the default (and
    // may be gone) is not read: the slot must lie in this file's ring.
    const std::uintptr_t offset =
        reinterpret_cast<std::uintptr_t>(s) - reinterpret_cast<std::uintptr_t>(slots_);
    if (offset > mask_ * sizeof(format::Slot)) return false;
    if (s->sequence.load(std::memory_order_acquire) != block.sequence + 1) return false;
    unsigned char* const at = s->payload + s->payloadBytes;
    unsigned char* const end = s->payload + sizeof s->payload;
    if (static_cast<std::size_t>(end - at) < format::kFollowingHeader) return false;
    Payload out(at + format::kFollowingHeader, end);
    put(out);
    if (out.cut()) return false;
    storeDescriptor(id);
    at[0] = format::kFollowingMessage;
    std::memcpy(at + 1, &id, 4);
    at[5] = static_cast<unsigned char>(count);
    std::atomic_ref<std::uint16_t>(s->payloadBytes)
        .store(static_cast<std::uint16_t>(out.end() - s->payload), std::memory_order_release);
    return true;
  }

  // Stores the descriptor of `id` in the file the first time it is used.
  void storeDescriptor(MsgId id) noexcept {
    if (id < kMaxStoredIds &&
        (stored_[id / 64].load(std::memory_order_acquire) >> (id % 64) & 1u) != 0)
      return;
    storeNewDescriptor(id);
  }

  void storeNewDescriptor(MsgId id) noexcept;
  void refreshClock(std::uint64_t now) noexcept;
  void closeOutlivedBlock(const BlockMark& mark, std::uint64_t elapsed) noexcept;

  unsigned char* base_ = nullptr;  // the mapping; null when the file failed
  format::Header* header_ = nullptr;
  format::Slot* slots_ = nullptr;
  std::uint64_t mask_ = 0;          // slot count - 1: the count is a power of two
  std::uint64_t refreshTicks_ = 0;  // about a second of ticks
  std::atomic<std::uint64_t> nextRefresh_{0};
  std::mutex descriptorMutex_;
  std::atomic<std::uint64_t> stored_[kMaxStoredIds / 64] = {};
};

}  // namespace Ringlog
