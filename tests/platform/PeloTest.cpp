// The forwarding layer's next-hop group record and destinations.
#include <gtest/gtest.h>

#include "Pelo/NextHopGroupInfo.h"

namespace {

using Routing::NexthopGroup::DestIpIntf;

TEST(PeloNextHopGroupInfo, AnUnsetDestinationIsTheEmptyOne) {
  Mox::Ptr<Pelo::NextHopGroupInfo> info = Pelo::NextHopGroupInfoIs("nhg1");
  const DestIpIntf d(Wirl::IntfId("Ethernet2"), Wirl::IpGenAddr::ipv4(10, 0, 0, 2));
  info->destinationIs(3, d);
  EXPECT_EQ(info->destination(3), d);
  EXPECT_TRUE(info->destination(0).intfId().empty());
  EXPECT_EQ(info->destination(0).ipAddr().family(), Wirl::IpGenAddr::Family::none);
  info->destinationDel(3);
  EXPECT_EQ(info->destinations(), 0u);
}

}  // namespace
