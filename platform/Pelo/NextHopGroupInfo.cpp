#include "Pelo/NextHopGroupInfo.h"

namespace Pelo {

Mox::AllocTrackTypeInfo NextHopGroupInfo::moxAllocTrackTypeInfo_{"Pelo::NextHopGroupInfo"};

Routing::NexthopGroup::DestIpIntf NextHopGroupInfo::destination(U32 index) const {
  auto it = destinations_.find(index);
  return it == destinations_.end() ? Routing::NexthopGroup::DestIpIntf() : it->second;
}

void NextHopGroupInfo::destinationIs(U32 index, const Routing::NexthopGroup::DestIpIntf& dest) {
  destinations_[index] = dest;
}

Mox::Ptr<NextHopGroupInfo> NextHopGroupInfoIs(Mox::String name) {
  Mox::Ptr<NextHopGroupInfo> info = Mox::allocTracked<NextHopGroupInfo>(
      NextHopGroupInfo::moxAllocTrackTypeInfo_, std::move(name));
  info->hasNotificationActiveIs(true);
  return info;
}

}  // namespace Pelo
