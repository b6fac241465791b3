// Named trace handles with per-level enabling.
//
// Each source unit of the library owns one handle ("VornDma",
// "VornCommonUtils", ...), created at its first use. A line is formatted only
// when its level (0 to 9) is enabled on the handle, so a disabled trace costs
// one relaxed load and allocates nothing. Lines go to one process-wide sink:
// standard error by default, a file, or a function that a test installs.
//
// The environment variable VORN_TRACE enables levels when a handle is created:
// "VornDma=0-9,EgressBufferSm=3,8" or "*=0-9".
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

#include "Mox/Name.h"
#include "Mox/String.h"

namespace Mox {

// One formatted trace line as the sink receives it.
struct TraceRecord {
  const char* handle;
  int level;
  const char* file;
  unsigned line;
  std::string_view text;
};

using TraceSink = void (*)(const TraceRecord& record, void* context);

class TraceHandle {
 public:
  explicit TraceHandle(const char* name);
  const char* name() const noexcept { return name_; }
  bool enabled(int level) const noexcept {
    return (levels_.load(std::memory_order_relaxed) >> level) & 1u;
  }
  void levelIs(int level, bool on) noexcept;
  void allLevelsIs(bool on) noexcept;

 private:
  const char* name_;
  std::atomic<std::uint32_t> levels_{0};
};

// The handle named `name` (a string literal), created once with thread-safe
// initialisation on first use and living for the process.
TraceHandle& traceHandle(const char* name);

// Where trace lines go. A null sink restores standard error.
void traceSinkIs(TraceSink sink, void* context) noexcept;
// Sends trace lines to `file` (for example stderr or an fopen'ed file).
void traceFileIs(std::FILE* file) noexcept;

// Hands one finished line to the sink.
void traceEmit(const TraceHandle& handle, int level, const char* file, unsigned line,
               std::string_view text);

namespace detail {
// Appends one piece of a trace line; pieces are concatenated as they stand.
inline void tracePiece(std::ostream& os, bool v) { os << (v ? 1 : 0); }
inline void tracePiece(std::ostream& os, unsigned char v) { os << static_cast<unsigned>(v); }
inline void tracePiece(std::ostream& os, signed char v) { os << static_cast<int>(v); }
inline void tracePiece(std::ostream& os, const char* v) { os << (v ? v : "(null)"); }
template <typename T>
void tracePiece(std::ostream& os, const T& v) {
  os << v;
}
}  // namespace detail

template <typename... Pieces>
void traceLine(const TraceHandle& handle, int level, const char* file, unsigned line,
               const Pieces&... pieces) {
  std::ostringstream os;
  (detail::tracePiece(os, pieces), ...);
  const std::string text = os.str();
  traceEmit(handle, level, file, line, text);
}

}  // namespace Mox

// Writes the pieces, concatenated, as one line at `level` of `handle` when that
// level is enabled.
#define MOX_TRACE(handle, level, ...)                                               \
  do {                                                                              \
    const ::Mox::TraceHandle& mox_th_ = (handle);                                   \
    if (mox_th_.enabled(level)) ::Mox::traceLine(mox_th_, level, __FILE__, __LINE__, __VA_ARGS__); \
  } while (0)
// As MOX_TRACE, naming the source file explicitly.
#define MOX_TRACE_AT(handle, level, file, ...)                                      \
  do {                                                                              \
    const ::Mox::TraceHandle& mox_th_ = (handle);                                   \
    if (mox_th_.enabled(level)) ::Mox::traceLine(mox_th_, level, file, __LINE__, __VA_ARGS__); \
  } while (0)
