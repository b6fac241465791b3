// Pelo::NextHopGroupInfo: what the forwarding layer keeps of one next-hop
// group: its name and its destinations by index.
//
//   auto info = Pelo::NextHopGroupInfoIs("nhg1");   // notifications active
//   info->destinationIs(0, Routing::NexthopGroup::DestIpIntf(intf, addr));
#pragma once

#include <map>

#include "Mox/Ptr.h"
#include "Mox/String.h"
#include "Mox/Type.h"
#include "Pelo/DestIpIntf.h"

namespace Pelo {

class NextHopGroupInfo : public Mox::PtrInterface {
 public:
  // The allocation tracker's record of this type (NextHopGroupInfoIs).
  static Mox::AllocTrackTypeInfo moxAllocTrackTypeInfo_;

  explicit NextHopGroupInfo(Mox::String name) : name_(std::move(name)) {}

  // The group's name.
  const Mox::String& name() const noexcept { return name_; }
  // The destination at `index`; the empty destination when there is none.
  Routing::NexthopGroup::DestIpIntf destination(U32 index) const;
  void destinationIs(U32 index, const Routing::NexthopGroup::DestIpIntf& dest);
  void destinationDel(U32 index) { destinations_.erase(index); }
  // How many destinations are set.
  std::size_t destinations() const noexcept { return destinations_.size(); }

 private:
  Mox::String name_;
  std::map<U32, Routing::NexthopGroup::DestIpIntf> destinations_;
};

// Creates the group's record through the allocation tracker, with its
// notifications active.
Mox::Ptr<NextHopGroupInfo> NextHopGroupInfoIs(Mox::String name);

}  // namespace Pelo
