// What the VornCommonUtils sources share and do not export.
#pragma once

#include "Mox/Trace.h"

namespace Hardware::Vorn::common {

// The source file that the unit's traces name.
inline constexpr const char kTraceFile[] = "Vorn/VornCommonUtils.cpp";

// The unit's trace handle "VornCommonUtils", created at its first use.
inline Mox::TraceHandle& trace() {
  static Mox::TraceHandle& handle = Mox::traceHandle("VornCommonUtils");
  return handle;
}

}  // namespace Hardware::Vorn::common

#define VORN_COMMON_TRACE(level, ...) \
  MOX_TRACE_AT(::Hardware::Vorn::common::trace(), level, ::Hardware::Vorn::common::kTraceFile, __VA_ARGS__)

#include "HardwareVorn/Enums.h"
#include "Mox/Assert.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

// The aggregate marker of a system port id: bit 15 on every supported chip
// family. Any other family fails the assertion "false".
inline U32 sysAggrPortMask(FapType fapType) {
  const bool supported = fapType == fapTypePetra || fapType == fapTypeArad || fapType == fapTypeJericho;
  MOX_ASSERT_TEXT(supported, "false", "U32 Hardware::Vorn::sysAggrPortMask(Hardware::Vorn::FapType)");
  return 0x8000;
}

}  // namespace Hardware::Vorn
