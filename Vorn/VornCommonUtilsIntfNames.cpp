// Interface names: VLAN numbers and flood sets, device and short names,
// port-channel names, MLAG membership and the multicast transaction
// directories of a cell.
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "Mox/Assert.h"
#include "Vorn/VornCommonUtils.h"

namespace {

constexpr const char kPortChannel[] = "Port-Channel";
constexpr const char kPo[] = "po";
constexpr const char kL3SecondHopLag[] = "L3SecondHopLAG";
constexpr const char kEthernet[] = "Ethernet";

// Whether `name` begins with `prefix`: its first strlen(prefix) characters
// equal `prefix`; a shorter name has a shorter head and fails.
template <std::size_t N>
bool beginsWith(const Mox::String& name, const char (&prefix)[N]) {
  return name.substr(0, N - 1) == prefix;
}

}  // namespace

U32 vlanNameToId(Mox::String name) {
  return static_cast<U32>(std::strtoul(name.charPtr(), nullptr, 0));
}

U16 vlanIdToFloodSet(U32 vlanId) {
  MOX_ASSERT_TEXT(vlanId >= Hardware::Vorn::MulticastId::vlanMulticastIdMin(),
                  "vlanId >= Hardware::Vorn::MulticastId::vlanMulticastIdMin()",
                  "U16 vlanIdToFloodSet(U32)");
  MOX_ASSERT_TEXT(vlanId <= Hardware::Vorn::MulticastId::vlanMulticastIdMax(),
                  "vlanId <= Hardware::Vorn::MulticastId::vlanMulticastIdMax()",
                  "U16 vlanIdToFloodSet(U32)");
  return static_cast<U16>(vlanId);
}

bool isForwardingPlaneInterface(Wirl::IntfId intfId) {
  if (Wirl::MgmtIntfId::isMgmtIntfId(intfId)) return false;
  return !Wirl::LoopbackIntfId::isLoopbackIntfId(intfId);
}

Mox::String intfNameToDeviceName(Wirl::IntfId intfId) {
  if (Wirl::EthIntfId::isEthIntfId(intfId) || Wirl::PortChannelIntfId::isPortChannelIntfId(intfId))
    return intfDeviceName(intfId);
  std::cerr << "intfNameToDeviceName" << " intfName=" << intfId << " is unknown" << std::endl;
  MOX_ASSERT_TEXT(false, "false && \"intfNameToDeviceName: invalid intfName\"",
                  "Mox::String intfNameToDeviceName(Wirl::IntfId)");
  return Mox::String();
}

Mox::String intfShortName(Wirl::IntfId intfId) {
  if (Wirl::EthIntfId::isEthIntfId(intfId) || Wirl::PortChannelIntfId::isPortChannelIntfId(intfId) ||
      Wirl::VxlanTunnelIntfId::isVxlanTunnelIntfId(intfId))
    return intfId.shortName();
  return intfId.stringValue();
}

bool isPortChannel(Mox::String name) {
  return beginsWith(name, kPortChannel) || beginsWith(name, kPo) ||
         beginsWith(name, kL3SecondHopLag);
}

bool isRoutedPort(Mox::String name) { return isPortChannel(name) || beginsWith(name, kEthernet); }

bool l3SecondHopPortChannel(Mox::String name) { return beginsWith(name, kL3SecondHopLag); }

int portChannelId(Mox::String name) {
  std::size_t numberAt;
  if (beginsWith(name, kPortChannel))
    numberAt = sizeof kPortChannel - 1;
  else if (beginsWith(name, kPo))
    numberAt = sizeof kPo - 1;
  else
    return -1;
  // The prefix matched, so the name is at least that long.
  return static_cast<int>(std::strtol(name.charPtr() + numberAt, nullptr, 10));
}

bool isIntfMlag(Mox::Ptr<Mlag::Status const> status, Wirl::IntfId intfId) {
  if (!Wirl::PortChannelIntfId::isPortChannelIntfId(intfId)) return false;
  const Mlag::IntfStatus* record = status->intfStatus().find(intfId);
  return record && record->mlagState == Mlag::mlagStateActive;
}

Mox::String cellNameToMrouteXactConfigDirName(Mox::String cellName) {
  return Mox::format("mrouteXactConfigDir-%s", cellName.charPtr());
}

Mox::String cellNameToMrouteXactStatusDirName(Mox::String cellName) {
  return Mox::format("mrouteXactStatusDir-%s", cellName.charPtr());
}

Mox::String cellNameToMcastXactConfigDirName(Mox::String cellName) {
  return Mox::format("mcastXactConfigDir-%s", cellName.charPtr());
}

Mox::String cellNameToMcastXactStatusDirName(Mox::String cellName) {
  return Mox::format("mcastXactStatusDir-%s", cellName.charPtr());
}
