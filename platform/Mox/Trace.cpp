#include "Mox/Trace.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace Mox {
namespace {

struct SinkState {
  std::atomic<TraceSink> sink{nullptr};
  std::atomic<void*> context{nullptr};
  std::atomic<std::FILE*> file{nullptr};
};

SinkState& sinkState() {
  static SinkState state;
  return state;
}

// Levels for `name` from VORN_TRACE ("VornDma=0-9,EgressBufferSm=3,8").
std::uint32_t levelsFromEnvironment(const char* name) {
  const char* env = std::getenv("VORN_TRACE");
  if (!env) return 0;
  std::uint32_t mask = 0;
  std::string config(env);
  std::size_t start = 0;
  bool mine = false;
  while (start <= config.size()) {
    std::size_t end = config.find_first_of(",;", start);
    if (end == std::string::npos) end = config.size();
    std::string item = config.substr(start, end - start);
    std::size_t eq = item.find('=');
    std::string levels = item;
    if (eq != std::string::npos) {
      std::string who = item.substr(0, eq);
      mine = (who == "*" || who == name);
      levels = item.substr(eq + 1);
    }
    if (mine && !levels.empty()) {
      int lo = std::atoi(levels.c_str());
      int hi = lo;
      std::size_t dash = levels.find('-');
      if (dash != std::string::npos) hi = std::atoi(levels.c_str() + dash + 1);
      for (int l = lo; l <= hi && l < 32; ++l) {
        if (l >= 0) mask |= 1u << l;
      }
    }
    start = end + 1;
  }
  return mask;
}

}  // namespace

TraceHandle::TraceHandle(const char* name) : name_(name) {
  levels_.store(levelsFromEnvironment(name), std::memory_order_relaxed);
}

void TraceHandle::levelIs(int level, bool on) noexcept {
  if (level < 0 || level > 31) return;
  if (on)
    levels_.fetch_or(1u << level, std::memory_order_relaxed);
  else
    levels_.fetch_and(~(1u << level), std::memory_order_relaxed);
}

void TraceHandle::allLevelsIs(bool on) noexcept {
  levels_.store(on ? 0xFFFFFFFFu : 0u, std::memory_order_relaxed);
}

TraceHandle& traceHandle(const char* name) {
  // Handles are few and live for the process; the map is only touched when a
  // unit's function-local static is first initialised.
  static std::mutex mutex;
  static std::map<std::string, std::unique_ptr<TraceHandle>>* handles =
      new std::map<std::string, std::unique_ptr<TraceHandle>>();
  std::lock_guard<std::mutex> lock(mutex);
  auto& slot = (*handles)[name];
  if (!slot) slot = std::make_unique<TraceHandle>(name);
  return *slot;
}

void traceSinkIs(TraceSink sink, void* context) noexcept {
  sinkState().context.store(context, std::memory_order_relaxed);
  sinkState().sink.store(sink, std::memory_order_release);
}

void traceFileIs(std::FILE* file) noexcept {
  sinkState().file.store(file, std::memory_order_relaxed);
  sinkState().sink.store(nullptr, std::memory_order_release);
}

void traceEmit(const TraceHandle& handle, int level, const char* file, unsigned line,
               std::string_view text) {
  TraceRecord record{handle.name(), level, file, line, text};
  SinkState& state = sinkState();
  if (TraceSink sink = state.sink.load(std::memory_order_acquire)) {
    sink(record, state.context.load(std::memory_order_relaxed));
    return;
  }
  std::FILE* out = state.file.load(std::memory_order_relaxed);
  if (!out) out = stderr;
  std::fprintf(out, "%s[%d] %s:%u %.*s\n", handle.name(), level, file, line,
               static_cast<int>(text.size()), text.data());
  std::fflush(out);
}

}  // namespace Mox
