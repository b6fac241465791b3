#include "HardwareVorn/VornDmaLags.h"

#include <utility>

namespace Hardware::Vorn {

// Nothing here assigns a LagDevice: its assignment lives in libvorn.so, which
// this layer does not link. Entries are replaced by erase and re-insert.

const LagMemberDevice* LagDevice::lagMemberDevice(const Mox::String& name) const {
  auto it = members_.find(name);
  return it == members_.end() ? nullptr : &it->second;
}

void LagDevice::lagMemberDeviceIs(const LagMemberDevice& member) {
  members_.insert_or_assign(member.name(), member);
}

void LagDevice::lagMemberDeviceIs(LagMemberDevice&& member) {
  Mox::String name = member.name();
  members_.insert_or_assign(std::move(name), std::move(member));
}

void LagDevice::lagMemberDeviceDel(const Mox::String& name) {
  members_.erase(name);
}

bool LagDevice::lagMemberConfig(const Mox::String& intfName) const {
  auto it = config_.find(intfName);
  return it != config_.end() && it->second;
}

void LagDevice::lagMemberConfigDel(const Mox::String& intfName) {
  config_.erase(intfName);
}

const LagDevice* VornDmaLags::lagDevice(const Mox::String& name) const {
  auto it = lags_.find(name);
  return it == lags_.end() ? nullptr : &it->second;
}

LagDevice& VornDmaLags::lagDeviceIs(const LagDevice& lag) {
  return lagDeviceIs(LagDevice(lag));
}

LagDevice& VornDmaLags::lagDeviceIs(LagDevice&& lag) {
  // One search: where the entry is, or where it goes.
  auto it = lags_.lower_bound(lag.name());
  if (it != lags_.end() && it->first == lag.name()) it = lags_.erase(it);
  Mox::String key = lag.name();
  return lags_.emplace_hint(it, std::move(key), std::move(lag))->second;
}

void VornDmaLags::lagDeviceDel(const Mox::String& name) {
  lags_.erase(name);
}

LagDevice* VornDmaLags::lagDeviceInPlace(const Mox::String& name) {
  auto it = lags_.find(name);
  return it == lags_.end() ? nullptr : &it->second;
}

bool VornDmaLags::lagDeviceMemberConfigIs(const Mox::String& lagName, Mox::String intfName,
                                          bool value) {
  LagDevice* lag = lagDeviceInPlace(lagName);
  if (lag == nullptr) return false;
  lag->lagMemberConfigIs(std::move(intfName), value);
  return true;
}

VornDmaLags::Ptr vornDmaLagsFactory(Mox::Name name) {
  return VornDmaLags::Ptr(new VornDmaLags(std::move(name)));
}

}  // namespace Hardware::Vorn
