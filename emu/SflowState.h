// What the driver keeps about sFlow: its sample counters and the drop
// threshold the library last set.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Emu {

struct SflowState {
  // Samples received and dropped, answered to "rxsflow" / "rxsflow_drop" in
  // decimal text.
  std::uint64_t samples = 0;
  std::uint64_t drops = 0;
  // A reply text to answer in place of the count (a driver answering
  // something that is not a number); written as it is, cut to the buffer.
  std::optional<std::string> samplesReply;
  std::optional<std::string> dropsReply;
  // The last "sflow_drop_threshold": the share of samples to drop over the
  // 32-bit range, and the chip family it is for.
  bool thresholdSet = false;
  std::uint32_t dropThreshold = 0;
  std::uint32_t fapType = 0;
};

}  // namespace Emu
