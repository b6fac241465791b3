// Interface-name helpers of the global namespace.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornCommonUtils.h"

using VornTest::failedAssertion;
using Wirl::IntfId;

namespace {

const std::string kLong(5000, 'x');

CATALOGUE_TEST(VlanNames, ConvertLikeStrtoulInBaseZero, "vlanNameToId") {
  const std::pair<std::string, U32> rows[] = {
      {"100", 100}, {"", 0}, {"Vlan10", 0}, {"12abc", 12}, {"0x10", 16}, {"-1", UINT_MAX},
  };
  for (const auto& [name, want] : rows)
    EXPECT_EQ(vlanNameToId(Mox::String(name.c_str())), want) << name.substr(0, 20);
}

CATALOGUE_TEST(FloodSetDeathTest, IsTheVlanWithinOneTo4095, "vlanIdToFloodSet") {
  EXPECT_EQ(vlanIdToFloodSet(1), 1);
  EXPECT_EQ(vlanIdToFloodSet(4095), 4095);
  EXPECT_DEATH(vlanIdToFloodSet(0),
               failedAssertion("vlanId >= Hardware::Vorn::MulticastId::vlanMulticastIdMin()"));
  EXPECT_DEATH(vlanIdToFloodSet(4096),
               failedAssertion("vlanId <= Hardware::Vorn::MulticastId::vlanMulticastIdMax()"));
}

CATALOGUE_TEST(PortChannelNames, PrefixTests, "isPortChannel", "isRoutedPort",
               "l3SecondHopPortChannel") {
  for (const char* name : {"po", "po12", "portal", "Port-Channel5", "L3SecondHopLAG3"})
    EXPECT_TRUE(isPortChannel(name) && isRoutedPort(name)) << name;
  for (const char* name : {"", "p", "Po1", "Port-Channe", "L3SecondHopLA", " po1"})
    EXPECT_FALSE(isPortChannel(name)) << name;
  for (const char* name : {"Ethernet", "Ethernet3/1"}) EXPECT_TRUE(isRoutedPort(name)) << name;
  for (const char* name : {"", "Etherne", "ethernet1", kLong.c_str()})
    EXPECT_FALSE(isRoutedPort(name)) << name;
  EXPECT_TRUE(l3SecondHopPortChannel("L3SecondHopLAG3"));
  for (const char* name : {"L3SecondHopLA", "po"})
    EXPECT_FALSE(l3SecondHopPortChannel(name)) << name;
}

CATALOGUE_TEST(PortChannelNames, Numbers, "portChannelId") {
  const std::pair<const char*, int> rows[] = {
      {"", -1},      {"Po12", -1}, {"L3SecondHopLAG3", -1},  {"Port-Channel", 0},
      {"portal", 0}, {"po-3", -3}, {"Port-Channel10.5", 10}, {"po12", 12},
  };
  for (const auto& [name, want] : rows) EXPECT_EQ(portChannelId(name), want) << name;
  EXPECT_EQ(portChannelId("Port-Channel2147483647"), INT_MAX);
}

CATALOGUE_TEST(IntfIds, ForwardingPlaneAndShortNames, "isForwardingPlaneInterface",
               "intfShortName") {
  for (const char* name : {"Ethernet3/1", "Port-Channel5.10", "Vlan4094", "Vxlan1", ""})
    EXPECT_TRUE(isForwardingPlaneInterface(IntfId(name))) << name;
  for (const char* name : {"Loopback0", "Management1/1"}) {
    EXPECT_FALSE(isForwardingPlaneInterface(IntfId(name))) << name;
    EXPECT_EQ(intfShortName(IntfId(name)), name);
  }
  EXPECT_EQ(intfShortName(IntfId("Ethernet3/1")), "Et3/1");
  EXPECT_EQ(intfShortName(IntfId("Port-Channel5.10")), "Po5.10");
  EXPECT_EQ(intfShortName(IntfId()), "");
}

CATALOGUE_TEST(DeviceNamesDeathTest, EthernetAndPortChannelsOnly, "intfNameToDeviceName") {
  EXPECT_EQ(intfNameToDeviceName(IntfId("Ethernet3/1")), "et3_1");
  EXPECT_EQ(intfNameToDeviceName(IntfId("Port-Channel5")), "po5");
  EXPECT_EQ(intfNameToDeviceName(IntfId("Ethernet3/1.100")), "et3_1.100");
  EXPECT_DEATH(intfNameToDeviceName(IntfId("Vxlan1")),
               "^intfNameToDeviceName intfName=Vxlan1 is unknown\n.*" +
                   failedAssertion("false && \"intfNameToDeviceName: invalid intfName\""));
}

CATALOGUE_TEST(Mlag, OnlyPortChannelsInStateThree, "isIntfMlag") {
  Mlag::Status::Ptr mlag(new Mlag::Status());
  mlag->intfStatusIs(IntfId("Port-Channel5"), Mlag::mlagStateActive);
  mlag->intfStatusIs(IntfId("Port-Channel6"), Mlag::mlagStateLocal);
  mlag->intfStatusIs(IntfId("Port-Channel7"), static_cast<Mlag::MlagState>(4));
  mlag->intfStatusIs(IntfId("Ethernet3"), Mlag::mlagStateActive);
  EXPECT_TRUE(isIntfMlag(mlag, IntfId("Port-Channel5")));
  for (const char* name : {"Port-Channel6", "Port-Channel7", "Port-Channel8", "Ethernet3", ""})
    EXPECT_FALSE(isIntfMlag(mlag, IntfId(name))) << name;
  EXPECT_FALSE(isIntfMlag(nullptr, IntfId("Ethernet3")) || isIntfMlag(nullptr, IntfId()));
}

CATALOGUE_TEST(CellDirectories, FormatTheCellName, "cellNameToMrouteXactConfigDirName",
               "cellNameToMrouteXactStatusDirName", "cellNameToMcastXactConfigDirName",
               "cellNameToMcastXactStatusDirName") {
  EXPECT_EQ(cellNameToMrouteXactConfigDirName("c%s"), "mrouteXactConfigDir-c%s");
  EXPECT_EQ(cellNameToMrouteXactStatusDirName("c%s"), "mrouteXactStatusDir-c%s");
  EXPECT_EQ(cellNameToMcastXactConfigDirName("c%s"), "mcastXactConfigDir-c%s");
  EXPECT_EQ(cellNameToMcastXactStatusDirName("c%s"), "mcastXactStatusDir-c%s");
}

}  // namespace
