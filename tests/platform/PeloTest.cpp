// The forwarding layer's next-hop group record and destinations.
#include <gtest/gtest.h>

#include "Pelo/NextHopGroupInfo.h"

namespace {

using Routing::NexthopGroup::DestIpIntf;

TEST(PeloDestIpIntf, DefaultIsTheEmptyInterfaceAndAddress) {
  const DestIpIntf none;
  EXPECT_TRUE(none.intfId().empty());
  EXPECT_TRUE(none.ipAddr().empty());
  EXPECT_EQ(none.ipAddr().family(), Wirl::IpGenAddr::Family::none);
  const DestIpIntf d(Wirl::IntfId("Ethernet1"), Wirl::IpGenAddr::ipv4(10, 0, 0, 1));
  EXPECT_FALSE(d == none);
  EXPECT_EQ(d.intfId().stringValue(), "Ethernet1");
}

TEST(PeloNextHopGroupInfo, CreationIsTrackedWithNotificationsActive) {
  const long live = Pelo::NextHopGroupInfo::moxAllocTrackTypeInfo_.live;
  {
    Mox::Ptr<Pelo::NextHopGroupInfo> info = Pelo::NextHopGroupInfoIs("nhg1");
    EXPECT_TRUE(info->hasNotificationActive());
    EXPECT_EQ(info->name(), "nhg1");
    EXPECT_EQ(Pelo::NextHopGroupInfo::moxAllocTrackTypeInfo_.live, live + 1);
    const DestIpIntf d(Wirl::IntfId("Ethernet2"), Wirl::IpGenAddr::ipv4(10, 0, 0, 2));
    info->destinationIs(3, d);
    EXPECT_EQ(info->destination(3), d);
    EXPECT_EQ(info->destination(0), DestIpIntf());
    info->destinationDel(3);
    EXPECT_EQ(info->destinations(), 0u);
  }
  EXPECT_EQ(Pelo::NextHopGroupInfo::moxAllocTrackTypeInfo_.live, live);
}

}  // namespace
