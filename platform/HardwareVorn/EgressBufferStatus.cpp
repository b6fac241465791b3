#include "HardwareVorn/EgressBufferStatus.h"

namespace Hardware::Vorn {

// Key functions: the types' records live in the platform library.
EgressBufThresholds::~EgressBufThresholds() = default;
EgressBufferStatus::~EgressBufferStatus() = default;

EgressBufThresholds::Ptr EgressBufferStatus::egressBufThresholdsIs(EgressBufThresholdsProfile p) {
  if (EgressBufThresholds::Ptr existing = egressBufThresholds(p)) return existing;
  EgressBufThresholds::Ptr created(new EgressBufThresholds());
  records_.is(p, created);
  return created;
}

EgressBufThresholds::Ptr EgressBufferStatus::egressBufThresholds(
    EgressBufThresholdsProfile p) const {
  return records_.valueOr(p, EgressBufThresholds::Ptr());
}

}  // namespace Hardware::Vorn
