// Interface-name helpers of the global namespace. Prefix tests compare the
// first characters only and never read past a short name; numbers are read
// as strtoul and strtol read them; bad text is a value, not an error.
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
      {"100", 100}, {"", 0},          {"Vlan10", 0}, {"12abc", 12},
      {"0x10", 16}, {"-1", UINT_MAX}, {kLong, 0},
  };
  for (const auto& [name, want] : rows)
    EXPECT_EQ(vlanNameToId(Mox::String(name.c_str())), want) << name.substr(0, 20);
}

CATALOGUE_TEST(FloodSetDeathTest, IsTheVlanWithinOneTo4095, "vlanIdToFloodSet") {
  EXPECT_EQ(vlanIdToFloodSet(1), 1);
  EXPECT_EQ(vlanIdToFloodSet(4095), 4095);
  EXPECT_DEATH(vlanIdToFloodSet(0),
               failedAssertion("vlanId >= Hardware::Vorn::MulticastId::vlanMulticastIdMin()"));
  // 65537 would narrow to 1: the upper bound catches it.
  for (U32 vlan : {4096u, 65537u})
    EXPECT_DEATH(vlanIdToFloodSet(vlan),
                 failedAssertion("vlanId <= Hardware::Vorn::MulticastId::vlanMulticastIdMax()"))
        << vlan;
}

// Names shorter than, equal to and one past their prefix.
CATALOGUE_TEST(PortChannelNames, PrefixTests, "isPortChannel", "isRoutedPort",
               "l3SecondHopPortChannel") {
  for (const char* name : {"po", "po12", "portal", "Port-Channel5", "L3SecondHopLAG3"})
    EXPECT_TRUE(isPortChannel(name) && isRoutedPort(name)) << name;
  for (const char* name : {"", "p", "Po1", "Port-Channe", "Ethernet", "L3SecondHopLA", " po1"})
    EXPECT_FALSE(isPortChannel(name)) << name;
  for (const char* name : {"Ethernet", "Ethernet3/1"}) EXPECT_TRUE(isRoutedPort(name)) << name;
  for (const char* name : {"", "Etherne", "ethernet1", "Vlan10", kLong.c_str()})
    EXPECT_FALSE(isRoutedPort(name)) << name;
  EXPECT_TRUE(l3SecondHopPortChannel("L3SecondHopLAG3"));
  for (const char* name : {"L3SecondHopLA", "Port-Channel3", "po"})
    EXPECT_FALSE(l3SecondHopPortChannel(name)) << name;
}

CATALOGUE_TEST(PortChannelNames, Numbers, "portChannelId") {
  for (const char* name : {"", "Po12", "L3SecondHopLAG3", "Ethernet1"})
    EXPECT_EQ(portChannelId(name), -1) << name;
  for (const char* name : {"Port-Channel", "po", "portal"})
    EXPECT_EQ(portChannelId(name), 0) << name;
  EXPECT_EQ(portChannelId("Port-Channel10"), 10);
  EXPECT_EQ(portChannelId("Port-Channel10.5"), 10);
  EXPECT_EQ(portChannelId("po12"), 12);
  EXPECT_EQ(portChannelId("po-3"), -3);
  EXPECT_EQ(portChannelId("Port-Channel2147483647"), INT_MAX);
}

// Ids of every kind, and the empty id.
CATALOGUE_TEST(IntfIds, ForwardingPlaneAndShortNames, "isForwardingPlaneInterface",
               "intfShortName") {
  for (const char* name : {"Ethernet3/1", "Port-Channel5.10", "Vlan4094", "Vxlan1", ""})
    EXPECT_TRUE(isForwardingPlaneInterface(IntfId(name))) << name;
  for (const char* name : {"Loopback0", "Management1", "Management1/1"}) {
    EXPECT_FALSE(isForwardingPlaneInterface(IntfId(name))) << name;
    EXPECT_EQ(intfShortName(IntfId(name)), name);
  }
  EXPECT_EQ(intfShortName(IntfId("Ethernet3/1")), "Et3/1");
  EXPECT_EQ(intfShortName(IntfId("Port-Channel5.10")), "Po5.10");
  EXPECT_EQ(intfShortName(IntfId("Vlan4094")), "Vlan4094");
  EXPECT_EQ(intfShortName(IntfId()), "");
}

CATALOGUE_TEST(DeviceNamesDeathTest, EthernetAndPortChannelsOnly, "intfNameToDeviceName") {
  EXPECT_EQ(intfNameToDeviceName(IntfId("Ethernet3/1")), "et3_1");
  EXPECT_EQ(intfNameToDeviceName(IntfId("Ethernet12")), "et12");
  EXPECT_EQ(intfNameToDeviceName(IntfId("Port-Channel5")), "po5");
  EXPECT_EQ(intfNameToDeviceName(IntfId("Ethernet3/1.100")), "et3_1.100");
  const std::string assertion =
      failedAssertion("false && \"intfNameToDeviceName: invalid intfName\"");
  for (const char* name : {"", "Vxlan1"})
    EXPECT_DEATH(
        intfNameToDeviceName(IntfId(name)),
        std::string("^intfNameToDeviceName intfName=") + name + " is unknown\n.*" + assertion)
        << name;
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
  // Ids that are not port-channels do not touch the status at all.
  EXPECT_FALSE(isIntfMlag(nullptr, IntfId("Ethernet3")) || isIntfMlag(nullptr, IntfId()));
}

// The cell name is formatted whole: plain, empty, with format characters, long.
CATALOGUE_TEST(CellDirectories, FormatTheCellName, "cellNameToMrouteXactConfigDirName",
               "cellNameToMrouteXactStatusDirName", "cellNameToMcastXactConfigDirName",
               "cellNameToMcastXactStatusDirName") {
  using Fn = Mox::String (*)(Mox::String);
  const std::pair<Fn, std::string> functions[] = {
      {cellNameToMrouteXactConfigDirName, "mrouteXactConfigDir-"},
      {cellNameToMrouteXactStatusDirName, "mrouteXactStatusDir-"},
      {cellNameToMcastXactConfigDirName, "mcastXactConfigDir-"},
      {cellNameToMcastXactStatusDirName, "mcastXactStatusDir-"},
  };
  for (const auto& [fn, prefix] : functions)
    for (const std::string& cell :
         {std::string("cellB"), std::string(), std::string("%s%n%d"), kLong})
      EXPECT_EQ(std::string(fn(Mox::String(cell.c_str())).charPtr()), prefix + cell) << prefix;
}

}  // namespace
