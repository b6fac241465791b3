// The LAG input configuration stays consistent both ways.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Lag/InputConfig.h"

using testing::ElementsAre;
using Wirl::IntfId;

namespace {

TEST(LagInputConfig, MembershipBothWays) {
  Lag::Input::Config config;
  config.memberIs(IntfId("Ethernet4"), IntfId("Port-Channel5"));
  config.memberIs(IntfId("Ethernet3"), IntfId("Port-Channel5"));
  config.memberIs(IntfId("Ethernet7"), IntfId("Port-Channel6"));
  // Moving a port takes it out of its old LAG; the last member takes the LAG.
  config.memberIs(IntfId("Ethernet7"), IntfId("Port-Channel5"));
  EXPECT_EQ(config.members().find(IntfId("Port-Channel6")), nullptr);
  EXPECT_EQ(config.members().find(IntfId("Port-Channel5"))->size(), 3u);
  config.memberDel(IntfId("Ethernet3"));
  config.memberDel(IntfId("Ethernet9"));  // not a member: nothing happens
  EXPECT_FALSE(config.membership().contains(IntfId("Ethernet3")));
  EXPECT_THAT(*config.members().find(IntfId("Port-Channel5")),
              ElementsAre(IntfId("Ethernet4"), IntfId("Ethernet7")));
}

}  // namespace
