// Hardware::Vorn::EgressBufferStatus: the egress buffer thresholds that the
// platform agents read to program the chips, one record per threshold
// profile, and a version that moves once per published change.
//
//   EgressBufferStatus::Ptr s(new EgressBufferStatus());
//   EgressBufThresholds::Ptr thr = s->egressBufThresholdsIs(egressBufThresholdsProfile0);
//   s->versionInc(1);
//   if (auto t = s->egressBufThresholds(egressBufThresholdsProfile1)) ...   // null if absent
#pragma once

#include "HardwareVorn/EgressBufThresholds.h"
#include "HardwareVorn/Enums.h"
#include "Mox/Collection.h"
#include "Mox/Ptr.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

class EgressBufferStatus : public Mox::PtrInterface {
 public:
  static constexpr const char kTypeName[] = "Hardware::Vorn::EgressBufferStatus";
  using Ptr = Mox::Ptr<EgressBufferStatus>;
  using PtrConst = Mox::Ptr<EgressBufferStatus const>;

  ~EgressBufferStatus() override;

  // The record of profile `p`, created empty if there is none yet.
  EgressBufThresholds::Ptr egressBufThresholdsIs(EgressBufThresholdsProfile p);
  // The record of profile `p`, or null.
  EgressBufThresholds::Ptr egressBufThresholds(EgressBufThresholdsProfile p) const;
  // The records present, by profile.
  const Mox::Collection<EgressBufThresholdsProfile, EgressBufThresholds::Ptr>& records()
      const noexcept {
    return records_;
  }

  U32 version() const noexcept { return version_; }
  // Adds `by` to the version (wrapping).
  void versionInc(U32 by) noexcept { version_ += by; }

 private:
  Mox::Collection<EgressBufThresholdsProfile, EgressBufThresholds::Ptr> records_;
  U32 version_ = 0;
};

}  // namespace Hardware::Vorn
