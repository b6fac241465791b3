// EgressBufferSm: the egress buffering state machine. Created once at
// start-up, it computes the congestion-manager (CGM) and egress-queuing (EGQ)
// thresholds of both egress buffer threshold profiles from the chip constants
// of the FAP revisions present, publishes them in the shared
// EgressBufferStatus and bumps its version once. It runs only on the
// supervisor whose redundancy mode is 5 (active); elsewhere it publishes
// nothing.
//
//   auto sm = egressBufferingSmFactory(cliConfig, ebStatus, redundancyStatus, status);
//   // sm->initialized() is true; ebStatus->version() moved by 1 in mode 5.
#pragma once

#include <cstddef>
#include <span>

#include "HardwareVorn/CliConfig.h"
#include "HardwareVorn/EgqProfile.h"
#include "HardwareVorn/EgressBufferParameters.h"
#include "HardwareVorn/EgressBufferStatus.h"
#include "HardwareVorn/Enums.h"
#include "HardwareVorn/Status.h"
#include "Interface/EthSpeed.h"
#include "Mox/Ptr.h"
#include "Mox/Type.h"
#include "Mox/Value.h"
#include "Redundancy/RedundancyStatus.h"
#include "Vorn/Export.h"

namespace Hardware::Vorn {

// The share of the global multicast limits that SP0 multicast of each traffic
// class may use: 0.76 for class 0 rising to 1.0 for class 7. Writable; the
// CGM generator reads it.
VORN_EXPORT extern float tcMaxRatioSp[8];

// The multiplier of a multicast queue's shared limits per drop precedence:
// 0.70, 0.95, 0.60, 0.20 (not monotonic, on purpose). Writable; the EGQ
// generator reads it.
VORN_EXPORT extern float lowerDpMultiple[4];

// A port's flow-control threshold as a share of its drop threshold: 0.5 for
// every profile.
VORN_EXPORT float getPortFlowControlToDiscardRatio(EgqProfile prof);

// A queue's flow-control threshold as a share of its drop threshold: 0.55 on
// the 100G, 200G and 400G front-panel profiles of `p`, 0.34 on any other.
VORN_EXPORT float getQueueFlowControlToDiscardRatio(EgqProfile prof, EgressBufThresholdsProfile p);

// The egress buffering state machine: holds the CLI configuration, the
// egress-buffer status it publishes into, the redundancy status and the system
// status, and computes the thresholds once (handleInitialized). Made by
// egressBufferingSmFactory; its attributes are reachable by id through the
// framework's generic access.
class VORN_EXPORT EgressBufferingSm : public Mox::PtrInterface {
 public:
  // The shared pointer the framework hands the machine out as.
  using Ptr = Mox::Ptr<EgressBufferingSm>;

  // Attribute ids, in the order of the type's attribute table.
  enum AttrIds : Mox::AttrId {
    sysCliConfigAttrId = 258,
    ebParamsAttrId = 259,
    ebStatusAttrId = 260,
    redundancyStatusAttrId = 261,
    sysStatusAttrId = 262,
    initializedAttrId = 263,
    handleInitializedAttrId = 264,
    generateCgmConfigurationsAttrId = 265,
    generateEgqConfigurationsAttrId = 266,
    reservedMcPdFromSpeedAttrId = 267,
  };

  // EGQ profiles 5 to 15: the size of the per-profile working arrays of
  // fillFrontPanelPortThresholds, indexed by profile - 5.
  static constexpr std::size_t kEgqProfiles = EgqProfile::kLast - EgqProfile::kFirst + 1;

  // The allocation tracker's record of this type (egressBufferingSmFactory).
  static Mox::AllocTrackTypeInfo moxAllocTrackTypeInfo_;

  // Holds the four objects and runs handleInitialized(). `sysCliConfig` may
  // be null (the defaults of ebParams() apply); `ebStatus`,
  // `redundancyStatus` and `sysStatus` must not be.
  EgressBufferingSm(const Mox::Ptr<CliConfig const>& sysCliConfig,
                    const Mox::Ptr<EgressBufferStatus>& ebStatus,
                    const Mox::Ptr<Redundancy::RedundancyStatus const>& redundancyStatus,
                    const Mox::Ptr<Status const>& sysStatus);
  ~EgressBufferingSm() override;

  //@{
  // The four objects the machine was made with, as given.
  const Mox::Ptr<CliConfig const>& sysCliConfig() const noexcept { return sysCliConfig_; }
  const Mox::Ptr<EgressBufferStatus>& ebStatus() const noexcept { return ebStatus_; }
  const Mox::Ptr<Redundancy::RedundancyStatus const>& redundancyStatus() const noexcept {
    return redundancyStatus_;
  }
  const Mox::Ptr<Status const>& sysStatus() const noexcept { return sysStatus_; }
  //@}

  // The egress-buffer parameters of the configuration, or their defaults when
  // there is none.
  EgressBufferParameters ebParams() const;
  // Whether the one-time work has run.
  bool initialized() const noexcept;
  // Records whether the one-time work has run; handleInitialized sets it.
  void initializedIs(bool initialized) noexcept;

  // The one-time work: in redundancy mode 5, generates the CGM and EGQ
  // thresholds and bumps the status version once; in every mode marks the
  // machine initialized. A second run fails the assertion "!initialized()".
  void handleInitialized();
  // The congestion manager's global, SP0 and per-class limits of both
  // threshold profiles; creates the profiles' records.
  void generateCgmConfigurations();
  // The port and queue thresholds of EGQ profiles 5 to 15 of both threshold
  // profiles, from the global limits that generateCgmConfigurations wrote.
  void generateEgqConfigurations();
  // Fills, for the profile of each front-panel port speed of threshold
  // profile `egrBufThreshProf`, the ports that may fill without HOLB and the
  // reserved multicast descriptors. Each array holds kEgqProfiles entries.
  void fillFrontPanelPortThresholds(EgressBufThresholdsProfile egrBufThreshProf, U32* mcHolbPorts,
                                    U32* ucHolbPorts, U32* reservedMcPd);
  // The reserved multicast descriptors of a port of `speed`: the
  // configuration's per-unit count times the speed's factor. A speed without
  // a factor fails the assertion false && "Invalid Speed".
  U32 reservedMcPdFromSpeed(Interface::EthSpeed speed) const;

  //@{
  // Framework operations: the type record "Hardware::Vorn::EgressBufferingSm";
  // no activity; no reactors (the deletion mark is only recorded).
  const Mox::TypeRecord* fwkType() const noexcept override;
  Mox::Activity* moxFwkActivity() const noexcept override;
  void moxDoZombieReactors(bool zombie) noexcept override;
  void hasNotificationActiveIs(bool active) noexcept override;
  //@}
  //@{
  // Generic access: get on the four objects, ebParams (a
  // Mox::Boxed<EgressBufferParameters>) and initialized; set on initialized
  // (a bool); calls of the three generators and of reservedMcPdFromSpeed (one
  // integer speed, answering a U32). Anything else on these attributes, or a
  // call with the wrong arguments, is not allowed; other ids go to the base.
  Mox::AttrResult attrGet(Mox::AttrId id, Mox::Value& out) const override;
  Mox::AttrResult attrSet(Mox::AttrId id, const Mox::Value& in) override;
  Mox::AttrResult attrCall(Mox::AttrId id, std::span<const Mox::Value> args,
                           Mox::Value& out) override;
  //@}
  // Construction from generic arguments: "Hardware::Vorn::CliConfig",
  // "Hardware::Vorn::EgressBufferStatus", "Redundancy::RedundancyStatus",
  // "Hardware::Vorn::Status", in the constructor's order.
  static Mox::Ptr<Mox::PtrInterface> moxNewFromArgs(const Mox::TypeRecord& type,
                                                    std::span<const Mox::Value> args);

 private:
  // Declared in the order of taking; released in reverse.
  Mox::Ptr<CliConfig const> sysCliConfig_;
  Mox::Ptr<EgressBufferStatus> ebStatus_;
  Mox::Ptr<Redundancy::RedundancyStatus const> redundancyStatus_;
  Mox::Ptr<Status const> sysStatus_;
  bool initialized_ = false;
};

// Allocates an EgressBufferingSm through the allocation tracker; constructing
// it runs its one-time work.
VORN_EXPORT Mox::Ptr<EgressBufferingSm> egressBufferingSmFactory(
    const Mox::Ptr<CliConfig const>& sysCliConfig, const Mox::Ptr<EgressBufferStatus>& ebStatus,
    const Mox::Ptr<Redundancy::RedundancyStatus const>& redundancyStatus,
    const Mox::Ptr<Status const>& sysStatus);

}  // namespace Hardware::Vorn
