// What the VornDma sources share and do not export.
#pragma once

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "Kernel/Kernel.h"
#include "Mox/Trace.h"
#include "Ringlog/Ringlog.h"
#include "Vorn/CommandFormat.h"
#include "Vorn/CommandWriter.h"

namespace Hardware::Vorn::dma {

// The source file that the module's traces name.
inline constexpr const char kTraceFile[] = "/src/Vorn/VornDma";

// The module's trace handle "VornDma", created at its first use.
inline Mox::TraceHandle& trace() {
  static Mox::TraceHandle& handle = Mox::traceHandle("VornDma");
  return handle;
}

// True when SIMULATION_VMID is set (read at every call).
inline bool simulation() {
  return Kernel::getenv("SIMULATION_VMID") != nullptr;
}

// The "/dev/fabric" descriptor, opened at the first command and never closed.
// Two threads racing at the first use may both open it; the last one stored
// wins and the other descriptor leaks. Relaxed atomics keep that race defined.
extern std::atomic<int> fabricFd;

// Opens "/dev/fabric" into fabricFd and returns it; a failed open ends the
// process.
int openFabric();

// A command function's buffer and the length of the text formatted into it,
// so that the ring trace copies the command without measuring it again. It
// stands wherever the text is wanted as a char*.
struct CommandBuffer {
  char text[kCommandSize];
  std::size_t length = 0;

  // NOLINTNEXTLINE(google-explicit-constructor): the buffer is its text
  operator char*() noexcept { return text; }
};

// Formats a command into `b` and keeps its length (snprintf's result, cut to
// what the buffer holds).
template <CommandFormatText F, typename... A>
inline int command(CommandBuffer& b, A... args) noexcept {
  const int n = writeCommandInto<F>(b.text, sizeof b.text, args...);
  b.length = n < static_cast<int>(sizeof b.text) ? static_cast<std::size_t>(n) : sizeof b.text - 1;
  return n;
}

// Writes the driver-command message of the `length` characters at `buf` to
// the default ring trace file, unless it is the frequent statistics poll.
// Needs a default file.
void ringCommand(const char* buf, std::size_t length) noexcept;

// A request whose text was not measured by its writer.
inline constexpr std::size_t kUnmeasured = static_cast<std::size_t>(-1);

// fab_ioctl, expanded into each command function: the command path keeps no
// call between the command function and the C library's ioctl, because every
// return pending across a system call is mispredicted when it comes back.
// `length` is the text's length in `buf`, for the ring trace; an unmeasured
// text is measured there, within the request's `size` bytes.
[[gnu::always_inline]] inline int fabIoctl(char* buf, unsigned size,
                                           std::size_t length = kUnmeasured) {
  if (Ringlog::defaultFile()) ringCommand(buf, length == kUnmeasured ? strnlen(buf, size) : length);
  int fd = fabricFd.load(std::memory_order_relaxed);
  if (fd < 0) [[unlikely]]
    fd = openFabric();
  return Kernel::ioctlError(fd, size, buf);
}
// The same for a command function's buffer.
[[gnu::always_inline]] inline int fabIoctl(CommandBuffer& b) {
  return fabIoctl(b.text, kCommandSize, b.length);
}

// Ends the process through syserr(what) for the driver's refusal `rc`: the
// command path takes the refusal as a number and leaves errno alone, so it
// is set here for the text syserr prints.
[[noreturn]] void refusalEndsProcess(const char* what, int rc);

// Writes the error trace line of a refused command.
void errorTraceLine(const char* fn, const char* cmd, int rc, unsigned line);

// The error trace of a refused command: fn " cmd: " cmd " error " strerror(rc).
// The level test is inline: a refusal is an answer like any other, and the
// trace is usually off.
[[gnu::always_inline]] inline void errorTrace(const char* fn, const char* cmd, int rc,
                                              unsigned line) {
  if (trace().enabled(0)) [[unlikely]]
    errorTraceLine(fn, cmd, rc, line);
}

}  // namespace Hardware::Vorn::dma

#define VORN_DMA_TRACE(level, ...)                                                       \
  MOX_TRACE_AT(::Hardware::Vorn::dma::trace(), level, ::Hardware::Vorn::dma::kTraceFile, \
               __VA_ARGS__)
#define VORN_DMA_ERROR(fn, cmd, rc) ::Hardware::Vorn::dma::errorTrace(fn, cmd, rc, __LINE__)
