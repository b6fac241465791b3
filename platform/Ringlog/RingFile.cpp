#include "Ringlog/RingFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <map>

namespace Ringlog {
namespace {

constexpr char kMagic[8] = {'V', 'R', 'I', 'N', 'G', 'L', 'G', '1'};
constexpr std::uint32_t kVersion = 1;
constexpr std::uint32_t kHeaderSize = 4096;
constexpr std::uint32_t kSlotSize = 256;
constexpr std::uint32_t kDescriptorBytes = 64 * 1024;

// The file's first page. Field order and widths are the file format.
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
  std::int64_t monotonicAtStartNs;
  std::uint32_t pid;
  char process[64];
};
static_assert(sizeof(Header) <= kHeaderSize);
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

enum : std::uint8_t { kMessage = 0, kBlockEnd = 1 };
enum : std::uint8_t { kTypeInt = 1, kTypeUint = 2, kTypeStr = 3, kTypeDouble = 4 };

}  // namespace

// One record. `sequence` is written last: 0 while the slot is being written,
// the record's sequence number plus one once it is complete.
struct Slot {
  std::atomic<std::uint64_t> sequence;
  std::uint64_t timeNs;  // CLOCK_MONOTONIC
  std::uint32_t msgId;
  std::uint8_t kind;
  std::uint8_t argc;
  std::uint16_t payloadBytes;
  unsigned char payload[kSlotSize - 24];
};
static_assert(sizeof(Slot) == kSlotSize);

namespace {

std::int64_t clockNs(clockid_t clock) {
  timespec ts;
  clock_gettime(clock, &ts);
  return static_cast<std::int64_t>(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

Header* header(unsigned char* base) { return reinterpret_cast<Header*>(base); }

Slot* slots(unsigned char* base) {
  return reinterpret_cast<Slot*>(base + kHeaderSize + kDescriptorBytes);
}

}  // namespace

RingFile::RingFile(const std::string& path, std::size_t bytes) : path_(path) {
  const std::size_t minimum = kHeaderSize + kDescriptorBytes + 16 * kSlotSize;
  if (bytes < minimum) bytes = minimum;
  std::size_t slotCount = (bytes - kHeaderSize - kDescriptorBytes) / kSlotSize;
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
  Header* h = new (base_) Header();
  std::memcpy(h->magic, kMagic, sizeof kMagic);
  h->version = kVersion;
  h->headerSize = kHeaderSize;
  h->slotSize = kSlotSize;
  h->slotCount = static_cast<std::uint32_t>(slotCount);
  h->descriptorOffset = kHeaderSize;
  h->descriptorCapacity = kDescriptorBytes;
  h->realtimeAtStartNs = clockNs(CLOCK_REALTIME);
  h->monotonicAtStartNs = clockNs(CLOCK_MONOTONIC);
  h->pid = static_cast<std::uint32_t>(::getpid());
  std::snprintf(h->process, sizeof h->process, "%s", program_invocation_short_name);
}

RingFile::~RingFile() {
  if (base_) ::munmap(base_, size_);
}

std::uint32_t RingFile::slotCount() const noexcept { return base_ ? header(base_)->slotCount : 0; }

void RingFile::storeDescriptor(MsgId id) noexcept {
  if (id >= kMaxStoredIds) return;
  std::uint64_t bit = std::uint64_t{1} << (id % 64);
  if (stored_[id / 64].load(std::memory_order_acquire) & bit) return;
  std::lock_guard<std::mutex> lock(descriptorMutex_);
  if (stored_[id / 64].load(std::memory_order_relaxed) & bit) return;
  const char* text = messageFormat(id);
  if (!text) return;
  std::uint32_t len = static_cast<std::uint32_t>(std::strlen(text));
  Header* h = header(base_);
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

Slot* RingFile::claimSlot(MsgId id, std::uint8_t kind, std::uint64_t& seq) noexcept {
  Header* h = header(base_);
  seq = h->nextSequence.fetch_add(1, std::memory_order_relaxed);
  Slot* s = &slots(base_)[seq % h->slotCount];
  s->sequence.store(0, std::memory_order_relaxed);
  s->timeNs = static_cast<std::uint64_t>(clockNs(CLOCK_MONOTONIC));
  s->msgId = id;
  s->kind = kind;
  return s;
}

void RingFile::write(MsgId id, const Arg* args, unsigned count) noexcept {
  if (!base_) return;
  storeDescriptor(id);
  std::uint64_t seq;
  Slot* s = claimSlot(id, kMessage, seq);
  unsigned char* p = s->payload;
  unsigned char* const end = s->payload + sizeof s->payload;
  unsigned written = 0;
  for (unsigned i = 0; i < count && p + 9 <= end; ++i, ++written) {
    const Arg& a = args[i];
    switch (a.kind) {
      case Arg::kStr: {
        std::size_t room = static_cast<std::size_t>(end - p) - 3;
        std::uint16_t len = static_cast<std::uint16_t>(a.len < room ? a.len : room);
        *p++ = kTypeStr;
        std::memcpy(p, &len, 2);
        std::memcpy(p + 2, a.s, len);
        p += 2 + len;
        break;
      }
      case Arg::kInt:
        *p++ = kTypeInt;
        std::memcpy(p, &a.i, 8);
        p += 8;
        break;
      case Arg::kUint:
        *p++ = kTypeUint;
        std::memcpy(p, &a.u, 8);
        p += 8;
        break;
      case Arg::kDouble:
        *p++ = kTypeDouble;
        std::memcpy(p, &a.d, 8);
        p += 8;
        break;
    }
  }
  s->argc = static_cast<std::uint8_t>(written);
  s->payloadBytes = static_cast<std::uint16_t>(p - s->payload);
  s->sequence.store(seq + 1, std::memory_order_release);
}

void RingFile::writeBlockEnd(MsgId id, std::uint64_t elapsedNs) noexcept {
  if (!base_) return;
  storeDescriptor(id);
  std::uint64_t seq;
  Slot* s = claimSlot(id, kBlockEnd, seq);
  s->payload[0] = kTypeUint;
  std::memcpy(s->payload + 1, &elapsedNs, 8);
  s->argc = 1;
  s->payloadBytes = 9;
  s->sequence.store(seq + 1, std::memory_order_release);
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
  std::snprintf(path, sizeof path, "%s/%s-%d.rlog", dir.c_str(), name, static_cast<int>(::getpid()));
  auto* file = new RingFile(path, bytes);  // lives for the process
  if (!file->ok()) {
    delete file;
    return nullptr;
  }
  defaultFileIs(file);
  return file;
}

bool readRingFile(const std::string& path, std::vector<DecodedRecord>& out, std::string& error) {
  out.clear();
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    error = path + ": " + std::strerror(errno);
    return false;
  }
  struct stat st;
  std::string data;
  if (::fstat(fd, &st) == 0 && st.st_size > 0) {
    data.resize(static_cast<std::size_t>(st.st_size));
    std::size_t got = 0;
    while (got < data.size()) {
      ssize_t n = ::read(fd, data.data() + got, data.size() - got);
      if (n <= 0) break;
      got += static_cast<std::size_t>(n);
    }
    data.resize(got);
  }
  ::close(fd);
  const auto* base = reinterpret_cast<const unsigned char*>(data.data());
  Header h;
  if (data.size() < kHeaderSize || std::memcmp(base, kMagic, sizeof kMagic) != 0) {
    error = path + ": not a ring trace file";
    return false;
  }
  std::memcpy(static_cast<void*>(&h), base, sizeof h);
  if (h.version != kVersion || h.slotSize != kSlotSize ||
      h.descriptorOffset + h.descriptorCapacity + std::uint64_t{h.slotCount} * kSlotSize > data.size()) {
    error = path + ": unsupported or truncated ring trace file";
    return false;
  }
  std::map<MsgId, std::string> formats;
  std::uint32_t used = h.descriptorUsed.load();
  for (std::uint32_t at = 0; at + 8 <= used && at + 8 <= h.descriptorCapacity;) {
    std::uint32_t id, len;
    std::memcpy(&id, base + h.descriptorOffset + at, 4);
    std::memcpy(&len, base + h.descriptorOffset + at + 4, 4);
    if (at + 8 + len > h.descriptorCapacity) break;
    formats[id].assign(reinterpret_cast<const char*>(base + h.descriptorOffset + at + 8), len);
    at += (8 + len + 3) & ~3u;
  }
  const unsigned char* slotBase = base + h.descriptorOffset + h.descriptorCapacity;
  for (std::uint32_t i = 0; i < h.slotCount; ++i) {
    Slot s;
    std::memcpy(static_cast<void*>(&s), slotBase + std::size_t{i} * kSlotSize, sizeof s);
    std::uint64_t seq = s.sequence.load();
    if (seq == 0) continue;
    std::vector<Arg> args;
    const unsigned char* p = s.payload;
    const unsigned char* end = s.payload + std::min<std::size_t>(s.payloadBytes, sizeof s.payload);
    for (unsigned a = 0; a < s.argc && p < end; ++a) {
      Arg arg{};
      std::uint8_t type = *p++;
      if (type == kTypeStr && p + 2 <= end) {
        std::uint16_t len;
        std::memcpy(&len, p, 2);
        if (p + 2 + len > end) break;
        arg.kind = Arg::kStr;
        arg.s = reinterpret_cast<const char*>(p + 2);
        arg.len = len;
        p += 2 + len;
      } else if (type >= kTypeInt && type <= kTypeDouble && type != kTypeStr && p + 8 <= end) {
        arg.kind = type == kTypeInt ? Arg::kInt : type == kTypeUint ? Arg::kUint : Arg::kDouble;
        std::memcpy(&arg.u, p, 8);
        p += 8;
      } else {
        break;
      }
      args.push_back(arg);
    }
    auto f = formats.find(s.msgId);
    std::string format = f != formats.end() ? f->second : "#" + std::to_string(s.msgId);
    DecodedRecord r;
    r.sequence = seq - 1;
    r.wallNs = h.realtimeAtStartNs + (static_cast<std::int64_t>(s.timeNs) - h.monotonicAtStartNs);
    if (s.kind == kBlockEnd) {
      std::string name = format.substr(0, format.find_first_of(" %"));
      r.text = "end " + name + " after " + std::to_string(args.empty() ? 0 : args[0].u) + " ns";
    } else {
      r.text = render(format.c_str(), args.data(), static_cast<unsigned>(args.size()));
    }
    out.push_back(std::move(r));
  }
  std::sort(out.begin(), out.end(),
            [](const DecodedRecord& a, const DecodedRecord& b) { return a.sequence < b.sequence; });
  return true;
}

std::string formatWallTime(std::int64_t wallNs) {
  time_t secs = static_cast<time_t>(wallNs / 1000000000);
  long nanos = static_cast<long>(wallNs % 1000000000);
  struct tm tm;
  localtime_r(&secs, &tm);
  char buf[64];
  std::size_t n = std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &tm);
  std::snprintf(buf + n, sizeof buf - n, ".%09ld", nanos);
  return buf;
}

}  // namespace Ringlog
