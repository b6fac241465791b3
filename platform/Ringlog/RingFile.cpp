#include "Ringlog/RingFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Ringlog/RingFileFormat.h"

namespace Ringlog {

constinit thread_local OpenBlock tOpenBlock [[gnu::tls_model("initial-exec")]] = {};

using format::Header;
using format::Slot;

namespace {

std::int64_t clockNs(clockid_t clock) {
  timespec ts;
  clock_gettime(clock, &ts);
  return static_cast<std::int64_t>(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

format::ClockPair clockPair() {
  // The tightest of a few tries, its ticks read on both sides of the clock: a
  // pair split by the scheduler skews the rate measured from it, by hundreds
  // of times when a loaded machine deschedules the writer for a while.
  format::ClockPair best{};
  std::uint64_t bestSpread = UINT64_MAX;
  for (int attempt = 0; attempt < 5; ++attempt) {
    const std::uint64_t before = format::ticks();
    const std::int64_t mono = clockNs(CLOCK_MONOTONIC);
    const std::uint64_t spread = format::ticks() - before;
    if (spread < bestSpread) {
      bestSpread = spread;
      best = {before + spread / 2, mono};
    }
  }
  return best;
}

// Ticks per nanosecond, measured against the monotonic clock over a
// millisecond: the rate a file's reader uses until the writer has refreshed
// its later clock pair.
double measureTickRate() {
  format::ClockPair a = clockPair();
  format::ClockPair b;
  do {
    b = clockPair();
  } while (b.monotonicNs - a.monotonicNs < 1000000);
  return static_cast<double>(b.ticks - a.ticks) /
         static_cast<double>(b.monotonicNs - a.monotonicNs);
}

Slot* slots(unsigned char* base) {
  return reinterpret_cast<Slot*>(base + format::kHeaderSize + format::kDescriptorBytes);
}

}  // namespace

RingFile::RingFile(const std::string& path, std::size_t bytes) : path_(path) {
  using namespace format;
  const std::size_t minimum = kHeaderSize + kDescriptorBytes + 16 * kSlotSize;
  if (bytes < minimum) bytes = minimum;
  // A power of two: the slot of a sequence number is a mask, not a division.
  std::size_t slotCount = std::bit_floor((bytes - kHeaderSize - kDescriptorBytes) / kSlotSize);
  size_ = kHeaderSize + kDescriptorBytes + slotCount * kSlotSize;
  int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return;
  if (::ftruncate(fd, static_cast<off_t>(size_)) != 0) {
    ::close(fd);
    return;
  }
  void* map = ::mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  ::close(fd);
  if (map == MAP_FAILED) return;
  base_ = static_cast<unsigned char*>(map);
  mask_ = slotCount - 1;
  slots_ = slots(base_);
  Header* h = header_ = new (base_) Header();
  h->version = kVersion;
  h->headerSize = kHeaderSize;
  h->slotSize = kSlotSize;
  h->slotCount = static_cast<std::uint32_t>(slotCount);
  h->descriptorOffset = kHeaderSize;
  h->descriptorCapacity = kDescriptorBytes;
  h->ticksPerNs = measureTickRate();
  h->realtimeAtStartNs = clockNs(CLOCK_REALTIME);
  h->start = clockPair();
  h->later[0] = h->start;
  h->pid = static_cast<std::uint32_t>(::getpid());
  std::snprintf(h->process, sizeof h->process, "%s", program_invocation_short_name);
  refreshTicks_ = static_cast<std::uint64_t>(h->ticksPerNs * 1e9);
  nextRefresh_.store(h->start.ticks + refreshTicks_, std::memory_order_relaxed);
  // The magic last: a reader of a half-made file finds none.
  std::memcpy(h->magic, kMagic, sizeof kMagic);
  inPlace_ = this;
}

RingFile::~RingFile() {
  if (base_) ::munmap(base_, size_);
}

void RingWriter::storeNewDescriptor(MsgId id) noexcept {
  if (id >= kMaxStoredIds) return;
  std::uint64_t bit = std::uint64_t{1} << (id % 64);
  std::lock_guard<std::mutex> lock(descriptorMutex_);
  if (stored_[id / 64].load(std::memory_order_relaxed) & bit) return;
  const char* text = messageFormat(id);
  if (!text) return;
  std::uint32_t len = static_cast<std::uint32_t>(std::strlen(text));
  Header* h = header_;
  std::uint32_t used = h->descriptorUsed.load(std::memory_order_relaxed);
  std::uint32_t need = (8 + len + 3) & ~3u;
  if (used + need > h->descriptorCapacity) return;  // full: records render as "#id"
  unsigned char* at = base_ + h->descriptorOffset + used;
  std::memcpy(at, &id, 4);
  std::memcpy(at + 4, &len, 4);
  std::memcpy(at + 8, text, len);
  h->descriptorUsed.store(used + need, std::memory_order_release);
  stored_[id / 64].fetch_or(bit, std::memory_order_release);
}

// About once a second of ticks, one writer stores a fresh clock pair, so the
// reader measures the tick rate over the file's whole life.
void RingWriter::refreshClock(std::uint64_t now) noexcept {
  std::uint64_t due = nextRefresh_.load(std::memory_order_relaxed);
  if (now < due ||
      !nextRefresh_.compare_exchange_strong(due, now + refreshTicks_, std::memory_order_relaxed))
    return;
  Header* h = header_;
  std::uint32_t next = h->laterIndex.load(std::memory_order_relaxed) ^ 1u;
  h->later[next] = clockPair();
  h->laterIndex.store(next, std::memory_order_release);
}

Slot* RingFile::writeRecord(MsgId id, std::uint8_t kind, const Arg* args, unsigned count,
                            std::uint64_t ticks, std::uint64_t& sequence) noexcept {
  Slot* s = begin(id, kind, ticks, sequence);
  Payload out(s->payload);
  for (unsigned i = 0; i < count; ++i) out.put(args[i]);
  finish(s, out, sequence);
  return s;
}

void RingFile::write(MsgId id, const Arg* args, unsigned count) noexcept {
  tOpenBlock.slot = nullptr;
  if (!base_) return;
  std::uint64_t sequence;
  writeRecord(id, format::kMessage, args, count, format::ticks(), sequence);
}

void RingFile::writeAtBlockStart(MsgId id, const Arg* args, unsigned count) noexcept {
  if (!base_) return;
  messageAtBlockStartWith(id, count, [&](Payload& out) {
    for (unsigned i = 0; i < count; ++i) out.put(args[i]);
  });
}

BlockMark RingFile::openBlock(MsgId id, const Arg* args, unsigned count) noexcept {
  BlockMark mark{};
  if (!base_) return mark;
  mark.id = id;
  mark.start = format::ticks();
  mark.record = writeRecord(id, format::kBlock, args, count, mark.start, mark.sequence);
  tOpenBlock = {static_cast<Slot*>(mark.record), mark.sequence, mark.start};
  return mark;
}

void RingFile::closeBlock(const BlockMark& mark) noexcept {
  RingWriter::closeBlock(mark);
}

void RingWriter::closeOutlivedBlock(const BlockMark& mark, std::uint64_t elapsed) noexcept {
  // The ring came round while the block was open: its end is a record of
  // its own.
  std::uint64_t sequence;
  Slot* s = begin(mark.id, format::kBlockEnd, format::ticks(), sequence);
  Payload out(s->payload);
  out.put(elapsed);
  finish(s, out, sequence);
}

std::string defaultRingDirectory() {
  const char* dir = std::getenv("VORN_RINGLOG_DIR");
  return dir && *dir ? dir : "/tmp/vorn-ringlog";
}

RingFile* openDefaultRingFile(const char* name) {
  std::string dir = defaultRingDirectory();
  ::mkdir(dir.c_str(), 0755);
  std::size_t bytes = 1 << 20;
  if (const char* size = std::getenv("VORN_RINGLOG_SIZE")) {
    unsigned long long v = std::strtoull(size, nullptr, 0);
    if (v) bytes = static_cast<std::size_t>(v);
  }
  char path[4096];
  std::snprintf(path, sizeof path, "%s/%s-%d.rlog", dir.c_str(), name,
                static_cast<int>(::getpid()));
  auto* file = new RingFile(path, bytes);  // lives for the process
  if (!file->ok()) {
    delete file;
    return nullptr;
  }
  defaultFileIs(file);
  return file;
}

}  // namespace Ringlog
