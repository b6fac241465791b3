#include "Ringlog/Ringlog.h"

#include <time.h>

#include <atomic>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <vector>

#include "Ringlog/MemoryFile.h"

namespace Ringlog {
namespace {

constexpr MsgId kMaxMessages = 4096;

struct Registry {
  std::mutex mutex;
  std::atomic<MsgId> count{0};
  std::atomic<const char*> formats[kMaxMessages];
};

Registry& registry() {
  static Registry r;
  return r;
}

}  // namespace

std::atomic<TraceFile*> detail::defaultFile{nullptr};

MsgId registerMessage(const char* format) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  MsgId id = r.count.load(std::memory_order_relaxed);
  if (id >= kMaxMessages) return kMaxMessages - 1;  // the last slot absorbs overflow
  r.formats[id].store(format, std::memory_order_relaxed);
  r.count.store(id + 1, std::memory_order_release);
  return id;
}

const char* messageFormat(MsgId id) noexcept {
  Registry& r = registry();
  if (id >= r.count.load(std::memory_order_acquire)) return nullptr;
  return r.formats[id].load(std::memory_order_relaxed);
}

MsgId messageCount() noexcept {
  return registry().count.load(std::memory_order_acquire);
}

void defaultFileIs(TraceFile* file) noexcept {
  detail::defaultFile.store(file, std::memory_order_release);
}

std::string render(const char* format, const Arg* args, unsigned count) {
  std::string out;
  unsigned next = 0;
  for (const char* p = format; p && *p; ++p) {
    if (*p != '%') {
      out += *p;
      continue;
    }
    if (p[1] == '%') {
      out += '%';
      ++p;
      continue;
    }
    // Skip flags, width and length modifiers up to the conversion letter.
    const char* q = p + 1;
    while (*q && std::strchr("-+ #0123456789.hlLqjzt", *q)) ++q;
    char conv = *q;
    if (!conv) break;
    p = q;
    if (next >= count) {
      out += "?";
      continue;
    }
    const Arg& a = args[next++];
    char buf[64];
    switch (a.kind) {
      case Arg::kStr:
        out.append(a.s, a.len);
        break;
      case Arg::kInt:
        if (conv == 'x' || conv == 'X')
          std::snprintf(buf, sizeof buf, "%" PRIx64, static_cast<std::uint64_t>(a.i));
        else
          std::snprintf(buf, sizeof buf, "%" PRId64, a.i);
        out += buf;
        break;
      case Arg::kUint:
        if (conv == 'x' || conv == 'X')
          std::snprintf(buf, sizeof buf, "%" PRIx64, a.u);
        else if (conv == 'o')
          std::snprintf(buf, sizeof buf, "%" PRIo64, a.u);
        else
          std::snprintf(buf, sizeof buf, "%" PRIu64, a.u);
        out += buf;
        break;
      case Arg::kDouble:
        std::snprintf(buf, sizeof buf, "%g", a.d);
        out += buf;
        break;
    }
  }
  return out;
}

void MemoryFile::write(MsgId id, const Arg* args, unsigned count) noexcept {
  try {
    std::string text = render(messageFormat(id), args, count);
    std::lock_guard<std::mutex> lock(mutex_);
    messages_.push_back(std::move(text));
  } catch (...) {
    // A trace must never take the caller down.
  }
}

std::vector<std::string> MemoryFile::messages() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return messages_;
}

void MemoryFile::clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  messages_.clear();
}

}  // namespace Ringlog
