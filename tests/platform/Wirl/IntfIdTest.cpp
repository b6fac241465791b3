// Interface ids.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Wirl/IntfId.h"

using Wirl::IntfId;
using Kind = Wirl::IntfId::Kind;

namespace {

TEST(IntfId, ParsesEveryKind) {
  struct Row {
    const char* name;
    Kind kind;
    const char* shortName;
    U16 module;
    U16 subIntf;
  };
  const Row rows[] = {
      {"Ethernet3", Kind::ethernet, "Et3", 0, 0},
      {"Ethernet3.100", Kind::ethernet, "Et3.100", 0, 100},
      {"Ethernet12/1/2.7", Kind::ethernet, "Et12/1/2.7", 12, 7},
      {"Port-Channel5.100", Kind::portChannel, "Po5.100", 0, 100},
      {"Vlan4094", Kind::vlan, "Vl4094", 0, 0},
      {"Loopback0", Kind::loopback, "Lo0", 0, 0},
      {"Management1/1", Kind::management, "Ma1/1", 0, 0},
      {"Vxlan1", Kind::vxlanTunnel, "Vx1", 0, 0},
      {"Ethernet65535.65535", Kind::ethernet, "Et65535.65535", 0, 65535},
  };
  for (const Row& row : rows) {
    const IntfId id(row.name);
    EXPECT_EQ(id.kind(), row.kind) << row.name;
    EXPECT_EQ(id.stringValue(), row.name);
    EXPECT_EQ(id.shortName(), row.shortName) << row.name;
    EXPECT_EQ(Wirl::EthIntfId::module(id), row.module) << row.name;
    EXPECT_EQ(id.subIntf(), row.subIntf) << row.name;
  }
}

TEST(IntfId, RejectsWhatIsNoInterfaceName) {
  for (const char* name :
       {"Ethernet", "Ethernet3/", "Ethernet3/1/2/4", "Ethernet03", "Ethernet1234567",
        "Ethernet65536", "Ethernet3.", "Ethernet3.0", "Ethernet3.65536", "Ethernet3x", "Et3",
        "Port-Channel5/1", "Vlan0", "Vlan4095", "Vlan10.1"})
    EXPECT_THROW(IntfId{name}, Wirl::InvalidIntfName) << name;
  EXPECT_THAT([] { IntfId("Bogus7"); }, testing::ThrowsMessage<Wirl::InvalidIntfName>(
                                            testing::StrEq("invalid interface name: \"Bogus7\"")));
}

// What the library's name helpers do not reach.
TEST(IntfId, KindsParentsAndDeviceNames) {
  const IntfId po("Port-Channel5.100");
  EXPECT_EQ(Wirl::SubIntfId::parentIntfId(po), IntfId("Port-Channel5"));
  EXPECT_EQ(Wirl::PortChannelIntfId::subIntf(po), 100);
  EXPECT_EQ(Wirl::SubIntfId::parentIntfId(IntfId("Port-Channel5")), IntfId("Port-Channel5"));
  EXPECT_FALSE(Wirl::SubIntfId::isSubIntfId(IntfId()));
  EXPECT_TRUE(Wirl::VlanIntfId::isVlanIntfId(IntfId("Vlan5")));
  EXPECT_FALSE(Wirl::VlanIntfId::isVlanIntfId(IntfId("Vxlan1")));
  EXPECT_FALSE(Wirl::EthIntfId::isEthIntfId(IntfId("Vlan5")));
  EXPECT_EQ(Wirl::intfDeviceName(IntfId("Ethernet3/1/2")), "et3_1_2");
  EXPECT_EQ(Wirl::intfDeviceName(po), "po5.100");
  EXPECT_EQ(Wirl::intfDeviceName(IntfId("Vlan5")), "");
  std::ostringstream os;
  os << po << "|" << IntfId();
  EXPECT_EQ(os.str(), "Port-Channel5.100|");
  EXPECT_NE(IntfId("Ethernet3").hash(), IntfId("Ethernet4").hash());
}

}  // namespace
