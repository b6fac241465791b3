// The egress buffering state machine's framework side: its type record,
// construction, generic access and the parameters it reads. The generators
// are in EgressBufferSmBody.cpp.
#include "Vorn/EgressBufferSm.h"

#include <optional>

#include "Mox/Boxed.h"

namespace Hardware::Vorn {
namespace {

using Sm = EgressBufferingSm;

constexpr U8 kGet = Mox::attrGet_;
constexpr Mox::AttrInfo kAttrs[] = {
    {"sysCliConfig", Sm::sysCliConfigAttrId, kGet},
    {"ebParams", Sm::ebParamsAttrId, kGet},
    {"ebStatus", Sm::ebStatusAttrId, kGet},
    {"redundancyStatus", Sm::redundancyStatusAttrId, kGet},
    {"sysStatus", Sm::sysStatusAttrId, kGet},
    {"initialized", Sm::initializedAttrId, Mox::attrGet_ | Mox::attrSet_},
    {"handleInitialized", Sm::handleInitializedAttrId, Mox::attrCall_},
    {"generateCgmConfigurations", Sm::generateCgmConfigurationsAttrId, Mox::attrCall_},
    {"generateEgqConfigurations", Sm::generateEgqConfigurationsAttrId, Mox::attrCall_},
    {"reservedMcPdFromSpeed", Sm::reservedMcPdFromSpeedAttrId, Mox::attrCall_},
};
// The arguments of the one call that takes any.
constexpr Mox::ArgInfo kReservedMcPdFromSpeedArgs[] = {{"speed", "Interface::EthSpeed"}};

constexpr Mox::ArgInfo kCtorArgs[] = {
    {"sysCliConfig", CliConfig::kTypeName},
    {"ebStatus", EgressBufferStatus::kTypeName},
    {"redundancyStatus", Redundancy::RedundancyStatus::kTypeName},
    {"sysStatus", Status::kTypeName},
};

constinit const Mox::TypeRecord kType("Hardware::Vorn::EgressBufferingSm", kAttrs, kCtorArgs,
                                      &Sm::moxNewFromArgs);
const Mox::TypeRegistration kRegistration(kType);

bool isOwn(Mox::AttrId id) noexcept {
  return kType.attr(id) != nullptr;
}

}  // namespace

Mox::AllocTrackTypeInfo EgressBufferingSm::moxAllocTrackTypeInfo_{
    "Hardware::Vorn::EgressBufferingSm"};

EgressBufferingSm::EgressBufferingSm(
    const Mox::Ptr<CliConfig const>& sysCliConfig, const Mox::Ptr<EgressBufferStatus>& ebStatus,
    const Mox::Ptr<Redundancy::RedundancyStatus const>& redundancyStatus,
    const Mox::Ptr<Status const>& sysStatus)
    : sysCliConfig_(sysCliConfig),
      ebStatus_(ebStatus),
      redundancyStatus_(redundancyStatus),
      sysStatus_(sysStatus) {
  handleInitialized();
}

EgressBufferingSm::~EgressBufferingSm() = default;

EgressBufferParameters EgressBufferingSm::ebParams() const {
  return sysCliConfig_ ? sysCliConfig_->egressBufferParameters() : EgressBufferParameters();
}

bool EgressBufferingSm::initialized() const noexcept {
  return initialized_;
}

void EgressBufferingSm::initializedIs(bool initialized) noexcept {
  initialized_ = initialized;
}

const Mox::TypeRecord* EgressBufferingSm::fwkType() const noexcept {
  return &kType;
}

Mox::Activity* EgressBufferingSm::moxFwkActivity() const noexcept {
  return nullptr;
}

void EgressBufferingSm::moxDoZombieReactors(bool zombie) noexcept {
  moxMarkedForDeletionIs(zombie);
}

void EgressBufferingSm::hasNotificationActiveIs(bool active) noexcept {
  PtrInterface::hasNotificationActiveIs(active);
}

Mox::AttrResult EgressBufferingSm::attrGet(Mox::AttrId id, Mox::Value& out) const {
  switch (id) {
    case sysCliConfigAttrId:
      out = sysCliConfig_;
      return Mox::AttrResult::done;
    case ebParamsAttrId:
      out = Mox::boxed(ebParams());
      return Mox::AttrResult::done;
    case ebStatusAttrId:
      out = ebStatus_;
      return Mox::AttrResult::done;
    case redundancyStatusAttrId:
      out = redundancyStatus_;
      return Mox::AttrResult::done;
    case sysStatusAttrId:
      out = sysStatus_;
      return Mox::AttrResult::done;
    case initializedAttrId:
      out = initialized_;
      return Mox::AttrResult::done;
    default:
      return isOwn(id) ? Mox::AttrResult::notAllowed : PtrInterface::attrGet(id, out);
  }
}

Mox::AttrResult EgressBufferingSm::attrSet(Mox::AttrId id, const Mox::Value& in) {
  if (id != initializedAttrId)
    return isOwn(id) ? Mox::AttrResult::notAllowed : PtrInterface::attrSet(id, in);
  std::optional<bool> value = in.as<bool>();
  if (!value) return Mox::AttrResult::notAllowed;
  initializedIs(*value);
  return Mox::AttrResult::done;
}

Mox::AttrResult EgressBufferingSm::attrCall(Mox::AttrId id, std::span<const Mox::Value> args,
                                            Mox::Value& out) {
  if (!isOwn(id)) return PtrInterface::attrCall(id, args, out);
  if (id == reservedMcPdFromSpeedAttrId) {
    if (args.size() != std::size(kReservedMcPdFromSpeedArgs)) return Mox::AttrResult::notAllowed;
    std::optional<Interface::EthSpeed> speed = args[0].as<Interface::EthSpeed>();
    if (!speed) return Mox::AttrResult::notAllowed;
    out = reservedMcPdFromSpeed(*speed);
    return Mox::AttrResult::done;
  }
  void (EgressBufferingSm::*operation)() = nullptr;
  switch (id) {
    case handleInitializedAttrId:
      operation = &EgressBufferingSm::handleInitialized;
      break;
    case generateCgmConfigurationsAttrId:
      operation = &EgressBufferingSm::generateCgmConfigurations;
      break;
    case generateEgqConfigurationsAttrId:
      operation = &EgressBufferingSm::generateEgqConfigurations;
      break;
    default:
      return Mox::AttrResult::notAllowed;  // a value, not an operation
  }
  if (!args.empty()) return Mox::AttrResult::notAllowed;
  (this->*operation)();
  return Mox::AttrResult::done;
}

Mox::Ptr<Mox::PtrInterface> EgressBufferingSm::moxNewFromArgs(const Mox::TypeRecord& type,
                                                              std::span<const Mox::Value> args) {
  return egressBufferingSmFactory(
      Mox::ctorArg<Mox::Ptr<CliConfig const>>(type, args, 0),
      Mox::ctorArg<Mox::Ptr<EgressBufferStatus>>(type, args, 1),
      Mox::ctorArg<Mox::Ptr<Redundancy::RedundancyStatus const>>(type, args, 2),
      Mox::ctorArg<Mox::Ptr<Status const>>(type, args, 3));
}

Mox::Ptr<EgressBufferingSm> egressBufferingSmFactory(
    const Mox::Ptr<CliConfig const>& sysCliConfig, const Mox::Ptr<EgressBufferStatus>& ebStatus,
    const Mox::Ptr<Redundancy::RedundancyStatus const>& redundancyStatus,
    const Mox::Ptr<Status const>& sysStatus) {
  return Mox::allocTracked<EgressBufferingSm>(EgressBufferingSm::moxAllocTrackTypeInfo_,
                                              sysCliConfig, ebStatus, redundancyStatus, sysStatus);
}

}  // namespace Hardware::Vorn
