// Interface-name helpers of the global namespace.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/VornCommonUtils.h"

using VornTest::assertionPattern;
using Wirl::IntfId;

namespace {

TEST(VlanNames, ConvertLikeStrtoulInBaseZero) {
  EXPECT_EQ(vlanNameToId("100"), 100u);
  EXPECT_EQ(vlanNameToId("0x10"), 16u);
  EXPECT_EQ(vlanNameToId("010"), 8u);
  EXPECT_EQ(vlanNameToId("abc"), 0u);
  EXPECT_EQ(vlanNameToId(""), 0u);
  EXPECT_EQ(vlanNameToId("12abc"), 12u);
  EXPECT_EQ(vlanNameToId("4294967295"), 4294967295u);
}

TEST(FloodSet, IsTheVlanWithinTheMulticastRange) {
  EXPECT_EQ(vlanIdToFloodSet(1), 1);
  EXPECT_EQ(vlanIdToFloodSet(100), 100);
  EXPECT_EQ(vlanIdToFloodSet(4095), 4095);
}

TEST(FloodSetDeath, OutsideTheRange) {
  EXPECT_DEATH(vlanIdToFloodSet(0),
               assertionPattern("U16 vlanIdToFloodSet(U32)",
                                "vlanId >= Hardware::Vorn::MulticastId::vlanMulticastIdMin()"));
  EXPECT_DEATH(vlanIdToFloodSet(4096),
               assertionPattern("U16 vlanIdToFloodSet(U32)",
                                "vlanId <= Hardware::Vorn::MulticastId::vlanMulticastIdMax()"));
  // 65537 would narrow to 1: the upper bound catches it.
  EXPECT_DEATH(vlanIdToFloodSet(65537), "vlanMulticastIdMax\\(\\)' failed");
}

TEST(ForwardingPlane, ManagementAndLoopbackAreNot) {
  EXPECT_FALSE(isForwardingPlaneInterface(IntfId("Management1")));
  EXPECT_FALSE(isForwardingPlaneInterface(IntfId("Management1/1")));
  EXPECT_FALSE(isForwardingPlaneInterface(IntfId("Loopback0")));
  for (const char* name : {"Ethernet3/1", "Port-Channel5", "Vlan10", "Vxlan1", "Ethernet3.100"})
    EXPECT_TRUE(isForwardingPlaneInterface(IntfId(name))) << name;
  EXPECT_TRUE(isForwardingPlaneInterface(IntfId()));
}

TEST(DeviceNames, OfEthernetAndPortChannels) {
  EXPECT_EQ(intfNameToDeviceName(IntfId("Ethernet3/1")), "et3_1");
  EXPECT_EQ(intfNameToDeviceName(IntfId("Ethernet12")), "et12");
  EXPECT_EQ(intfNameToDeviceName(IntfId("Port-Channel5")), "po5");
  EXPECT_EQ(intfNameToDeviceName(IntfId("Ethernet3/1.100")), "et3_1.100");
}

TEST(DeviceNamesDeath, OtherKindsWriteALineThenAssert) {
  const std::string assertion =
      assertionPattern("Mox::String intfNameToDeviceName(Wirl::IntfId)",
                       "false && \"intfNameToDeviceName: invalid intfName\"");
  for (const char* name : {"Vlan10", "Loopback0", "Management1", "Vxlan1"}) {
    EXPECT_DEATH(intfNameToDeviceName(IntfId(name)),
                 std::string("^intfNameToDeviceName intfName=") + name + " is unknown\n.*" +
                     assertion)
        << name;
  }
}

TEST(ShortNames, AbbreviateOnlyEthernetPortChannelAndVxlan) {
  EXPECT_EQ(intfShortName(IntfId("Ethernet3/1")), "Et3/1");
  EXPECT_EQ(intfShortName(IntfId("Port-Channel5")), "Po5");
  EXPECT_EQ(intfShortName(IntfId("Vxlan1")), "Vx1");
  EXPECT_EQ(intfShortName(IntfId("Ethernet3.100")), "Et3.100");
  EXPECT_EQ(intfShortName(IntfId("Vlan10")), "Vlan10");
  EXPECT_EQ(intfShortName(IntfId("Loopback0")), "Loopback0");
  EXPECT_EQ(intfShortName(IntfId("Management1")), "Management1");
}

TEST(PortChannelNames, PrefixTests) {
  for (const char* name : {"Port-Channel5", "po7", "portal", "po", "L3SecondHopLAG3",
                           "L3SecondHopLAG", "Port-Channel"})
    EXPECT_TRUE(isPortChannel(name)) << name;
  for (const char* name : {"Po1", "p", "", "Ethernet1", "Port-Channe", "L3SecondHopLA", "xpo1"})
    EXPECT_FALSE(isPortChannel(name)) << name;

  for (const char* name : {"Ethernet3/1", "Port-Channel5", "Ethernet", "po1", "L3SecondHopLAG1"})
    EXPECT_TRUE(isRoutedPort(name)) << name;
  for (const char* name : {"Vlan10", "Ethernt1", "ethernet1", "Loopback0", ""})
    EXPECT_FALSE(isRoutedPort(name)) << name;

  EXPECT_TRUE(l3SecondHopPortChannel("L3SecondHopLAG3"));
  EXPECT_FALSE(l3SecondHopPortChannel("Port-Channel3"));
  EXPECT_FALSE(l3SecondHopPortChannel("L3SecondHop"));
}

TEST(PortChannelNames, Numbers) {
  EXPECT_EQ(portChannelId("Port-Channel10"), 10);
  EXPECT_EQ(portChannelId("Port-Channel10.5"), 10);
  EXPECT_EQ(portChannelId("Port-Channel"), 0);
  EXPECT_EQ(portChannelId("po12"), 12);
  EXPECT_EQ(portChannelId("po"), 0);
  EXPECT_EQ(portChannelId("portal"), 0);
  EXPECT_EQ(portChannelId("L3SecondHopLAG3"), -1);
  EXPECT_EQ(portChannelId("Ethernet1"), -1);
  EXPECT_EQ(portChannelId("Po12"), -1);
  EXPECT_EQ(portChannelId(""), -1);
}

TEST(Mlag, OnlyPortChannelsInStateThree) {
  Mlag::Status::Ptr mlag(new Mlag::Status());
  mlag->intfStatusIs(IntfId("Port-Channel5"), Mlag::mlagStateActive);
  mlag->intfStatusIs(IntfId("Port-Channel6"), Mlag::mlagStateLocal);
  mlag->intfStatusIs(IntfId("Port-Channel7"), static_cast<Mlag::MlagState>(4));
  mlag->intfStatusIs(IntfId("Ethernet3"), Mlag::mlagStateActive);
  EXPECT_TRUE(isIntfMlag(mlag, IntfId("Port-Channel5")));
  EXPECT_FALSE(isIntfMlag(mlag, IntfId("Port-Channel6")));
  EXPECT_FALSE(isIntfMlag(mlag, IntfId("Port-Channel7")));
  EXPECT_FALSE(isIntfMlag(mlag, IntfId("Port-Channel8")));  // absent
  EXPECT_FALSE(isIntfMlag(mlag, IntfId("Ethernet3")));      // not a port-channel
  // A non-port-channel does not touch the status at all.
  EXPECT_FALSE(isIntfMlag(nullptr, IntfId("Ethernet3")));
}

TEST(CellDirectories, FormatTheCellName) {
  EXPECT_EQ(cellNameToMrouteXactConfigDirName("1"), "mrouteXactConfigDir-1");
  EXPECT_EQ(cellNameToMrouteXactStatusDirName("1"), "mrouteXactStatusDir-1");
  EXPECT_EQ(cellNameToMcastXactConfigDirName("2"), "mcastXactConfigDir-2");
  EXPECT_EQ(cellNameToMcastXactStatusDirName("cellB"), "mcastXactStatusDir-cellB");
  EXPECT_EQ(cellNameToMcastXactStatusDirName(""), "mcastXactStatusDir-");
}

}  // namespace
