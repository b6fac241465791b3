// What the VornDma sources share and do not export.
#pragma once

#include <cstdarg>
#include <cstdio>

#include "Kernel/Kernel.h"
#include "Vorn/CommandFormat.h"
#include "Mox/Trace.h"

namespace Hardware::Vorn::dma {

// The source file that the module's traces name.
inline constexpr const char kTraceFile[] = "/src/Vorn/VornDma";

// The module's trace handle "VornDma", created at its first use.
inline Mox::TraceHandle& trace() {
  static Mox::TraceHandle& handle = Mox::traceHandle("VornDma");
  return handle;
}

// True when SIMULATION_VMID is set (read at every call).
inline bool simulation() { return Kernel::getenv("SIMULATION_VMID") != nullptr; }

// Formats a command into `buf`: the bytes and result of snprintf, faster.
template <std::size_t N>
__attribute__((format(printf, 2, 3))) inline int command(char (&buf)[N], const char* fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  int n = formatCommandV(buf, N, fmt, ap);
  va_end(ap);
  return n;
}

// The error trace of a refused command: fn " cmd: " cmd " error " strerror(rc).
void errorTrace(const char* fn, const char* cmd, int rc, unsigned line);

}  // namespace Hardware::Vorn::dma

#define VORN_DMA_TRACE(level, ...) \
  MOX_TRACE_AT(::Hardware::Vorn::dma::trace(), level, ::Hardware::Vorn::dma::kTraceFile, __VA_ARGS__)
#define VORN_DMA_ERROR(fn, cmd, rc) ::Hardware::Vorn::dma::errorTrace(fn, cmd, rc, __LINE__)
