// Reading a ring trace file without the process that wrote it.
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>

#include "Ringlog/RingFile.h"
#include "Ringlog/RingFileFormat.h"

namespace Ringlog {

using format::Header;
using format::Slot;

namespace {

bool readWhole(const std::string& path, std::string& data, std::string& error) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    error = path + ": " + std::strerror(errno);
    return false;
  }
  struct stat st;
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
  return true;
}

// Turns the writer's ticks into wall-clock nanoseconds: the tick rate is the
// one measured between the file's first and latest clock pairs when they are
// far enough apart, else the one measured when the file was made.
class WallClock {
 public:
  explicit WallClock(const Header& h) : h_(h) {
    latest_ = h.later[h.laterIndex.load() & 1u];
    std::int64_t span = latest_.monotonicNs - h.start.monotonicNs;
    rate_ = h.ticksPerNs > 0 ? h.ticksPerNs : 1.0;
    if (span >= 100000000 && latest_.ticks > h.start.ticks)
      rate_ = static_cast<double>(latest_.ticks - h.start.ticks) / static_cast<double>(span);
  }
  std::int64_t wallNs(std::uint64_t ticks) const {
    double sinceLatest = (static_cast<double>(ticks) - static_cast<double>(latest_.ticks)) / rate_;
    std::int64_t monotonic = latest_.monotonicNs + static_cast<std::int64_t>(sinceLatest);
    return h_.realtimeAtStartNs + (monotonic - h_.start.monotonicNs);
  }
  std::uint64_t ns(std::uint64_t ticks) const {
    return static_cast<std::uint64_t>(static_cast<double>(ticks) / rate_ + 0.5);
  }

 private:
  const Header& h_;
  format::ClockPair latest_;
  double rate_;
};

// The `argc` arguments stored from `p` on, short of `end`; they point into
// the payload, and `p` is left after the last.
std::vector<Arg> payloadArgs(const unsigned char*& p, const unsigned char* end, unsigned argc) {
  std::vector<Arg> args;
  for (unsigned a = 0; a < argc && p < end; ++a) {
    Arg arg{};
    std::uint8_t type = *p++;
    if (type == format::kTypeStr && p + 2 <= end) {
      std::uint16_t len;
      std::memcpy(&len, p, 2);
      if (p + 2 + len > end) break;
      arg.kind = Arg::kStr;
      arg.s = reinterpret_cast<const char*>(p + 2);
      arg.len = len;
      p += 2 + len;
    } else if ((type == format::kTypeInt || type == format::kTypeUint ||
                type == format::kTypeDouble) &&
               p + 8 <= end) {
      arg.kind = type == format::kTypeInt    ? Arg::kInt
                 : type == format::kTypeUint ? Arg::kUint
                                             : Arg::kDouble;
      std::memcpy(&arg.u, p, 8);
      p += 8;
    } else {
      break;
    }
    args.push_back(arg);
  }
  return args;
}

}  // namespace

bool readRingFile(const std::string& path, std::vector<DecodedRecord>& out, std::string& error) {
  out.clear();
  std::string data;
  if (!readWhole(path, data, error)) return false;
  const auto* base = reinterpret_cast<const unsigned char*>(data.data());
  if (data.size() < format::kHeaderSize ||
      std::memcmp(base, format::kMagic, sizeof format::kMagic) != 0) {
    error = path + ": not a ring trace file";
    return false;
  }
  Header h;
  std::memcpy(static_cast<void*>(&h), base, sizeof h);
  if (h.version != format::kVersion || h.slotSize != format::kSlotSize ||
      h.descriptorOffset + h.descriptorCapacity + std::uint64_t{h.slotCount} * format::kSlotSize >
          data.size()) {
    error = path + ": unsupported or truncated ring trace file";
    return false;
  }
  std::map<MsgId, std::string> formats;
  std::uint32_t used = h.descriptorUsed.load();
  for (std::uint32_t at = 0; at + 8 <= used && at + 8 <= h.descriptorCapacity;) {
    std::uint32_t id, len;
    std::memcpy(&id, base + h.descriptorOffset + at, 4);
    std::memcpy(&len, base + h.descriptorOffset + at + 4, 4);
    if (len > h.descriptorCapacity - at - 8) break;
    formats[id].assign(reinterpret_cast<const char*>(base + h.descriptorOffset + at + 8), len);
    at += (8 + len + 3) & ~3u;
  }
  auto formatOf = [&formats](MsgId id) {
    auto f = formats.find(id);
    if (f != formats.end()) return f->second;
    std::string unknown = std::to_string(id);
    return unknown.insert(0, 1, '#');
  };
  const WallClock clock(h);
  const unsigned char* slotBase = base + h.descriptorOffset + h.descriptorCapacity;
  for (std::uint32_t i = 0; i < h.slotCount; ++i) {
    Slot s;
    std::memcpy(static_cast<void*>(&s), slotBase + std::size_t{i} * format::kSlotSize, sizeof s);
    std::uint64_t seq = s.sequence.load();
    if (seq == 0) continue;
    const unsigned char* p = s.payload;
    const unsigned char* end = s.payload + std::min<std::size_t>(s.payloadBytes, sizeof s.payload);
    std::vector<Arg> args = payloadArgs(p, end, s.argc);
    std::string text = formatOf(s.msgId);
    DecodedRecord r;
    r.sequence = seq - 1;
    r.wallNs = clock.wallNs(s.ticks);
    if (s.kind == format::kBlockEnd) {
      std::string name = text.substr(0, text.find_first_of(" %"));
      std::uint64_t ticks = args.empty() ? 0 : args[0].u;
      r.text = "end " + name + " after " + std::to_string(clock.ns(ticks)) + " ns";
    } else {
      r.text = render(text.c_str(), args.data(), static_cast<unsigned>(args.size()));
    }
    if (s.kind == format::kBlock) {
      std::uint64_t elapsed = s.elapsed.load();
      r.block = elapsed ? DecodedRecord::Block::kClosed : DecodedRecord::Block::kOpen;
      r.elapsedNs = elapsed ? clock.ns(elapsed - 1) : 0;
    }
    out.push_back(std::move(r));
    if (s.kind == format::kBlock && end - p >= std::ptrdiff_t{format::kFollowingHeader} &&
        *p == format::kFollowingMessage) {
      // The message written inside the block, at its opening time.
      MsgId id;
      std::memcpy(&id, p + 1, 4);
      const unsigned argc = p[5];
      p += format::kFollowingHeader;
      std::vector<Arg> inner = payloadArgs(p, end, argc);
      DecodedRecord following;
      following.sequence = seq - 1;
      following.wallNs = out.back().wallNs;
      following.text =
          render(formatOf(id).c_str(), inner.data(), static_cast<unsigned>(inner.size()));
      out.push_back(std::move(following));
    }
  }
  // Stable: a message stored in its block's record shares the block's number
  // and stays after it.
  std::stable_sort(out.begin(), out.end(), [](const DecodedRecord& a, const DecodedRecord& b) {
    return a.sequence < b.sequence;
  });
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

std::string formatRecord(const DecodedRecord& record) {
  std::string line = formatWallTime(record.wallNs) + " " + record.text;
  if (record.block == DecodedRecord::Block::kClosed)
    line += " [took " + std::to_string(record.elapsedNs) + " ns]";
  else if (record.block == DecodedRecord::Block::kOpen)
    line += " [still open]";
  return line;
}

}  // namespace Ringlog
