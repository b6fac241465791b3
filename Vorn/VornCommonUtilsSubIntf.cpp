// Sub-interfaces, and the correspondence between a LAG's sub-interfaces and
// those of its member ports.
#include "Mox/Assert.h"
#include "Vorn/VornCommonUtils.h"
#include "Vorn/VornCommonUtilsPrivate.h"

namespace Hardware::Vorn {

namespace {

// "<parent>.<n>" as an id: Port-Channel5 and 100 give Port-Channel5.100.
Wirl::IntfId subIntfOf(const Wirl::IntfId& parent, U16 n) {
  return Wirl::IntfId(Mox::format("%s.%d", parent.stringValue().charPtr(), static_cast<int>(n)));
}

}  // namespace

bool isSubIntf(const Status::PtrConst& vornStatus, SystemPhyPortId sppid) {
  const U32 minSppid = vornStatus->subIntfSysPortMin();
  MOX_ASSERT_TEXT(minSppid > 0, "minSppid > 0",
                  "bool Hardware::Vorn::isSubIntf(const Hardware::Vorn::Status::PtrConst&, "
                  "Hardware::Vorn::SystemPhyPortId)");
  const U32 maxSppid = minSppid + vornStatus->numSubIntfSysPorts() - 1;
  VORN_COMMON_TRACE(9, "isSubIntf", " subIntfSysPortMin:", minSppid, " subIntfSysPortMax:",
                    maxSppid, " sppid:", sppid);
  return sppid.value() >= minSppid && sppid.value() <= maxSppid;
}

bool isEthSubIntf(Wirl::IntfId intfId) {
  const bool eth = Wirl::SubIntfId::isSubIntfId(intfId) &&
                   !Wirl::PortChannelIntfId::isPortChannelIntfId(
                       Wirl::SubIntfId::parentIntfId(intfId));
  VORN_COMMON_TRACE(8, "isEthSubIntf", " intfId:", intfId, " isEthSubIntf:", eth);
  return eth;
}

bool isLagSubIntf(Wirl::IntfId subIntfId) {
  MOX_ASSERT_TEXT(Wirl::SubIntfId::isSubIntfId(subIntfId),
                  "Wirl::SubIntfId::isSubIntfId( subIntfId )",
                  "bool Hardware::Vorn::isLagSubIntf(Wirl::IntfId)");
  return Wirl::PortChannelIntfId::isPortChannelIntfId(Wirl::SubIntfId::parentIntfId(subIntfId));
}

Wirl::IntfId obtainLagSubIntfIdFromMemberSubIntfId(
    Lag::Input::Config::PtrConst lagConfig, Interface::SubIntfStatusDir::PtrConst subIntfStatus,
    SubIntfPortStatusDir::PtrConst portStatus, Wirl::IntfId memberSubIntfId, bool mustExist,
    bool useConfig) {
  VORN_COMMON_TRACE(8, "obtainLagSubIntfIdFromMemberSubIntfId", " memberSubIntfId:",
                    memberSubIntfId, " mustExist:", mustExist, " useConfig:", useConfig);
  const U16 n = Wirl::EthIntfId::subIntf(memberSubIntfId);
  const Wirl::IntfId parent = Wirl::SubIntfId::parentIntfId(memberSubIntfId);
  Wirl::IntfId result;
  if (!useConfig) {
    if (!portStatus) return result;
    for (const auto& [lagSub, phy] : portStatus->lagSubIntfToPhyIntfStatus()) {
      if (phy == parent && Wirl::PortChannelIntfId::subIntf(lagSub) == n) return lagSub;
    }
    return result;
  }
  const Wirl::IntfId* lag = lagConfig ? lagConfig->membership().find(parent) : nullptr;
  if (!lag) return result;
  const Wirl::IntfId candidate = subIntfOf(*lag, n);
  if (!mustExist) return candidate;
  if (subIntfStatus && subIntfStatus->intfStatus().contains(candidate)) result = candidate;
  return result;
}

const Wirl::IntfId obtainMemberSubIntfIdFromLagSubIntfId(Lag::Input::Config::PtrConst lagConfig,
                                                         SubIntfPortStatusDir::PtrConst portStatus,
                                                         Wirl::IntfId lagSubIntfId,
                                                         bool useConfig) {
  const Wirl::IntfId& intfId = lagSubIntfId;
  MOX_ASSERT_TEXT(Wirl::PortChannelIntfId::isPortChannelIntfId(intfId),
                  "Wirl::PortChannelIntfId::isPortChannelIntfId( intfId )",
                  "const Wirl::IntfId Hardware::Vorn::obtainMemberSubIntfIdFromLagSubIntfId("
                  "Lag::Input::Config::PtrConst, Hardware::Vorn::SubIntfPortStatusDir::PtrConst, "
                  "Wirl::IntfId, bool)");
  const U16 n = Wirl::PortChannelIntfId::subIntf(intfId);
  Wirl::IntfId result;
  if (useConfig) {
    const Wirl::IntfId parent = Wirl::SubIntfId::parentIntfId(intfId);
    if (lagConfig) {
      // The first member the walk meets: the configuration's order decides.
      for (const auto& [member, lag] : lagConfig->membership()) {
        if (lag == parent) {
          result = subIntfOf(member, n);
          break;
        }
      }
    }
  } else if (portStatus) {
    if (const Wirl::IntfId* phy = portStatus->lagSubIntfToPhyIntfStatus().find(intfId))
      result = subIntfOf(*phy, n);
  }
  VORN_COMMON_TRACE(8, "obtainMemberSubIntfIdFromLagSubIntfId", " lagSubIntfId:", intfId,
                    " memberSubIntfId:", result);
  return result;
}

bool isLagMemberPresent(Lag::Input::Config::PtrConst lagConfig, Wirl::IntfId lagSubIntfId,
                        Wirl::IntfId memberIntfId) {
  MOX_ASSERT_TEXT(Wirl::PortChannelIntfId::isPortChannelIntfId(lagSubIntfId),
                  "Wirl::PortChannelIntfId::isPortChannelIntfId( lagSubIntfId )",
                  "bool Hardware::Vorn::isLagMemberPresent(Lag::Input::Config::PtrConst, "
                  "Wirl::IntfId, Wirl::IntfId)");
  const Wirl::IntfId parent = Wirl::SubIntfId::parentIntfId(lagSubIntfId);
  if (!lagConfig) return false;
  for (const auto& [member, lag] : lagConfig->membership()) {
    if (member == memberIntfId && lag == parent) return true;
  }
  return false;
}

}  // namespace Hardware::Vorn
