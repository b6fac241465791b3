// What the two units of the egress buffering state machine share.
#pragma once

#include "Mox/Trace.h"

namespace Hardware::Vorn::EgressBufferSmPrivate {

// The unit's trace handle, "EgressBufferSm": level 8 for entries and
// summaries, level 3 for per-profile progress.
inline Mox::TraceHandle& trace() {
  return Mox::traceHandle("EgressBufferSm");
}

// Every assertion of the state machine names the state machine's source
// file, wherever its body is compiled, so that the lines it names (62, 189,
// 210, 365, 367) read as one file's.
inline constexpr const char kSourceFile[] = "Vorn/EgressBufferSm.cpp";

}  // namespace Hardware::Vorn::EgressBufferSmPrivate
