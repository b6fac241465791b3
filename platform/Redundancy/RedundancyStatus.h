// Redundancy::RedundancyStatus: the supervisor's redundancy state as the
// redundancy agent publishes it. The library reads its mode only.
//
//   Redundancy::RedundancyStatus::Ptr r(new Redundancy::RedundancyStatus());
//   r->modeIs(Redundancy::redundancyModeActive);
#pragma once

#include "Mox/Ptr.h"
#include "Mox/Types.h"

namespace Redundancy {

// The supervisor's redundancy mode. Mode 5 is the one that owns the
// hardware (the egress thresholds are computed only there); the agent's other
// modes matter to the library only as "not 5".
enum RedundancyMode : U32 {
  redundancyModeUnknown = 0,
  redundancyModeDisabled = 1,
  redundancyModeStandby = 2,
  redundancyModeSwitchover = 3,
  redundancyModeSimplex = 4,
  redundancyModeActive = 5,
};

class RedundancyStatus : public Mox::PtrInterface {
 public:
  static constexpr const char kTypeName[] = "Redundancy::RedundancyStatus";
  using Ptr = Mox::Ptr<RedundancyStatus>;
  using PtrConst = Mox::Ptr<RedundancyStatus const>;

  ~RedundancyStatus() override;

  RedundancyMode mode() const noexcept { return mode_; }
  void modeIs(RedundancyMode mode) noexcept { mode_ = mode; }

 private:
  RedundancyMode mode_ = redundancyModeUnknown;
};

}  // namespace Redundancy
