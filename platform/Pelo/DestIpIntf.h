// Routing::NexthopGroup::DestIpIntf (built with the forwarding layer): one destination of a
// next-hop group, an IP address reached through an interface.
//
//   Routing::NexthopGroup::DestIpIntf none;   // empty interface and address
//   Routing::NexthopGroup::DestIpIntf d(Wirl::IntfId("Ethernet1"),
//                                       Wirl::IpGenAddr::ipv4(10, 0, 0, 1));
#pragma once

#include <utility>

#include "Wirl/IntfId.h"
#include "Wirl/IpGenAddr.h"

namespace Routing::NexthopGroup {

class DestIpIntf {
 public:
  // The empty destination: the empty interface id and the empty address.
  DestIpIntf() noexcept;
  DestIpIntf(Wirl::IntfId intfId, Wirl::IpGenAddr ipAddr) noexcept
      : intfId_(std::move(intfId)), ipAddr_(ipAddr) {}

  const Wirl::IntfId& intfId() const noexcept { return intfId_; }
  const Wirl::IpGenAddr& ipAddr() const noexcept { return ipAddr_; }
  bool operator==(const DestIpIntf& o) const noexcept {
    return intfId_ == o.intfId_ && ipAddr_ == o.ipAddr_;
  }

 private:
  Wirl::IntfId intfId_;
  Wirl::IpGenAddr ipAddr_;
};

}  // namespace Routing::NexthopGroup
