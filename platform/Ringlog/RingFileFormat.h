// The layout of a ring trace file, shared by its writer and its reader. Field
// order and widths are the file format; a change of layout is a new version.
//
//   [header page][message descriptors][slot 0][slot 1]...
//
// Times are in the writer's clock ticks (the processor's time-stamp counter
// on x86, nanoseconds elsewhere). The header keeps what turns ticks into wall
// time without the writer: the ticks, monotonic and real time at creation, a
// measured tick rate, and a later (ticks, monotonic) pair that the writer
// refreshes about once a second, so that a long-lived file is read with the
// rate measured over its whole life.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#if defined(__x86_64__) || defined(__i386__)
#include <x86intrin.h>
#else
#include <time.h>
#endif

namespace Ringlog::format {

inline constexpr char kMagic[8] = {'V', 'R', 'I', 'N', 'G', 'L', 'G', '3'};
inline constexpr std::uint32_t kVersion = 3;
inline constexpr std::uint32_t kHeaderSize = 4096;
inline constexpr std::uint32_t kSlotSize = 256;
inline constexpr std::uint32_t kDescriptorBytes = 64 * 1024;

// A (ticks, monotonic nanoseconds) pair taken together.
struct ClockPair {
  std::uint64_t ticks;
  std::int64_t monotonicNs;
};

struct Header {
  char magic[8];
  std::uint32_t version;
  std::uint32_t headerSize;
  std::uint32_t slotSize;
  std::uint32_t slotCount;
  std::uint64_t descriptorOffset;
  std::uint32_t descriptorCapacity;
  std::atomic<std::uint32_t> descriptorUsed;
  std::atomic<std::uint64_t> nextSequence;
  std::int64_t realtimeAtStartNs;
  ClockPair start;
  double ticksPerNs;  // measured when the file was made
  // The latest pair is later[laterIndex]; the writer fills the other one and
  // then flips the index, so a reader never sees a half-written pair.
  ClockPair later[2];
  std::atomic<std::uint32_t> laterIndex;
  std::uint32_t pid;
  char process[64];
};
static_assert(sizeof(Header) <= kHeaderSize);
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
// The same layout for 32- and 64-bit writers: every field at its natural place.
static_assert(offsetof(Header, nextSequence) == 40 && offsetof(Header, ticksPerNs) == 72 &&
              offsetof(Header, process) == 120);

// What a slot holds.
enum Kind : std::uint8_t {
  kMessage = 0,
  kBlockEnd = 1,  // the end of a block whose opening slot was already reused
  kBlock = 2,     // a block timer's message; `elapsed` is 0 while it is open
};
// How an argument is stored in a payload: the type byte, then 8 bytes, or a
// 16-bit length and the bytes of a string.
enum ArgType : std::uint8_t { kTypeInt = 1, kTypeUint = 2, kTypeStr = 3, kTypeDouble = 4 };
// After a block's arguments, the message its thread wrote next, inside the
// block, at the block's opening time (a command function's driver command):
// this byte, the message id (4 bytes), its argument count (1 byte), then its
// arguments. It costs no slot, no sequence number and no clock read of its own.
inline constexpr std::uint8_t kFollowingMessage = 5;
inline constexpr std::size_t kFollowingHeader = 6;

// One record. `sequence` is written last: 0 while the slot is being written,
// the record's sequence number plus one once it is complete.
struct Slot {
  std::atomic<std::uint64_t> sequence;
  std::uint64_t ticks;
  std::atomic<std::uint64_t> elapsed;  // a block's length in ticks plus one; 0: open
  std::uint32_t msgId;
  std::uint8_t kind;
  std::uint8_t argc;
  std::uint16_t payloadBytes;
  unsigned char payload[kSlotSize - 32];
};
static_assert(sizeof(Slot) == kSlotSize && offsetof(Slot, msgId) == 24);

// The writer's clock.
inline std::uint64_t ticks() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  return __rdtsc();
#else
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<std::uint64_t>(ts.tv_sec) * 1000000000u +
         static_cast<std::uint64_t>(ts.tv_nsec);
#endif
}

}  // namespace Ringlog::format
