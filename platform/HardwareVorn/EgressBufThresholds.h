// Hardware::Vorn::EgressBufThresholds: the egress buffer thresholds of one
// threshold profile, as the egress buffering state machine publishes them in
// EgressBufferStatus: the congestion manager's global and SP0 limits and the
// egress queuing thresholds of every EgqProfile.
//
//   EgressBufThresholds::Ptr thr = status->egressBufThresholdsIs(egressBufThresholdsProfile0);
//   thr->globalUcThresholdsIs({1000, 1000});
//   thr->sp0McPerTcThresholdsIs(TrafficClassId(7), {1001, 2000});
//   thr->egressProfilesIs(EgqProfile(6), egqThresholds);
#pragma once

#include "HardwareVorn/EgqProfile.h"
#include "HardwareVorn/EgqThresholds.h"
#include "HardwareVorn/EgressResource.h"
#include "HardwareVorn/QueueIds.h"
#include "Mox/Collection.h"
#include "Mox/Ptr.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

class EgressBufThresholds : public Mox::PtrInterface {
 public:
  using Ptr = Mox::Ptr<EgressBufThresholds>;
  using PtrConst = Mox::Ptr<EgressBufThresholds const>;

  ~EgressBufThresholds() override;

  // What unicast and multicast traffic may use of the egress buffers in all.
  EgressResource globalUcThresholds() const noexcept { return globalUcThresholds_; }
  void globalUcThresholdsIs(EgressResource r) noexcept { globalUcThresholds_ = r; }
  EgressResource globalMcThresholds() const noexcept { return globalMcThresholds_; }
  void globalMcThresholdsIs(EgressResource r) noexcept { globalMcThresholds_ = r; }
  // The reserved limits of scheduling priority 0.
  EgressResource sp0MaxReservedThresholds() const noexcept { return sp0MaxReservedThresholds_; }
  void sp0MaxReservedThresholdsIs(EgressResource r) noexcept { sp0MaxReservedThresholds_ = r; }

  // The SP0 multicast limits and reserved buffers of each traffic class.
  const Mox::Collection<TrafficClassId, EgressResource>& sp0McPerTcThresholds() const noexcept {
    return sp0McPerTcThresholds_;
  }
  void sp0McPerTcThresholdsIs(TrafficClassId tc, EgressResource r) {
    sp0McPerTcThresholds_.is(tc, r);
  }
  const Mox::Collection<TrafficClassId, U32>& sp0McReservedBuffersPerTc() const noexcept {
    return sp0McReservedBuffersPerTc_;
  }
  void sp0McReservedBuffersPerTcIs(TrafficClassId tc, U32 buffers) {
    sp0McReservedBuffersPerTc_.is(tc, buffers);
  }

  // The egress queuing thresholds of each profile.
  const Mox::Collection<EgqProfile, EgqThresholds>& egressProfiles() const noexcept {
    return egressProfiles_;
  }
  void egressProfilesIs(EgqProfile prof, const EgqThresholds& t) { egressProfiles_.is(prof, t); }

  // How many multicast queues of a port may be full at once, as applied.
  U8 maxQueuesFullPerPortMcApplied() const noexcept { return maxQueuesFullPerPortMcApplied_; }
  void maxQueuesFullPerPortMcAppliedIs(U8 v) noexcept { maxQueuesFullPerPortMcApplied_ = v; }

 private:
  EgressResource globalUcThresholds_;
  EgressResource globalMcThresholds_;
  EgressResource sp0MaxReservedThresholds_;
  Mox::Collection<TrafficClassId, EgressResource> sp0McPerTcThresholds_;
  Mox::Collection<TrafficClassId, U32> sp0McReservedBuffersPerTc_;
  Mox::Collection<EgqProfile, EgqThresholds> egressProfiles_;
  U8 maxQueuesFullPerPortMcApplied_ = 0;
};

}  // namespace Hardware::Vorn
