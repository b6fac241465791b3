// Hardware::Vorn::EgqProfile: the egress queuing profiles of the chip type
// library. Of it this header gives the threshold profile each FAP revision
// uses.
#pragma once

#include "HardwareVorn/Enums.h"

namespace Hardware::Vorn {

class EgqProfile {
 public:
  // The egress buffer threshold profile of revision `rev`. Revisions 7 to 9
  // (the generation with 128 FAP ports and 128 NIF ports, whose buffers hold
  // twice the reserved descriptors) use profile 1; revisions 0 to 6, unknown
  // included, use profile 0.
  static constexpr EgressBufThresholdsProfile egrBufThresholdProfileForFapRevMajor(
      FapRevMajor rev) noexcept {
    return rev >= fapRevMajor7 && rev <= fapRevMajor9 ? egressBufThresholdsProfile1
                                                      : egressBufThresholdsProfile0;
  }
};

}  // namespace Hardware::Vorn
