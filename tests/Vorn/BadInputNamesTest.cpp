// Bad input to the interface-name helpers: vlanNameToId, vlanIdToFloodSet,
// isForwardingPlaneInterface, intfNameToDeviceName, intfShortName,
// isPortChannel, isRoutedPort, l3SecondHopPortChannel, portChannelId,
// isIntfMlag, cellNameToMrouteXactConfigDirName,
// cellNameToMrouteXactStatusDirName, cellNameToMcastXactConfigDirName,
// cellNameToMcastXactStatusDirName. Prefix tests compare the first
// characters only and never read past a short name; numbers are read as
// strtoul and strtol read them; bad text is a value, not an error.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/VornCommonUtils.h"

using VornTest::failedAssertion;
using Wirl::IntfId;

namespace {

const std::string kLong(5000, 'x');

CATALOGUE_TEST(BadInputNames, VlanNamesThatAreNotNumbers, "vlanNameToId") {
  const std::pair<std::string, U32> rows[] = {
      {"", 0},       {"Vlan10", 0},  // the caller passes the number text
      {"10abc", 10}, {"0x10", 16},  {"010", 8}, {"-1", UINT_MAX}, {"4294967295", UINT_MAX},
      {" 7", 7},     {kLong, 0},
  };
  for (const auto& [name, want] : rows)
    EXPECT_EQ(vlanNameToId(Mox::String(name.c_str())), want) << name.substr(0, 20);
}

TEST(BadInputNamesDeathTest, FloodSetsOutsideOneTo4095) {
  EXPECT_EQ(vlanIdToFloodSet(1), 1);
  EXPECT_EQ(vlanIdToFloodSet(4095), 4095);
  const std::string below =
      failedAssertion("vlanId >= Hardware::Vorn::MulticastId::vlanMulticastIdMin()");
  const std::string above =
      failedAssertion("vlanId <= Hardware::Vorn::MulticastId::vlanMulticastIdMax()");
  EXPECT_DEATH(vlanIdToFloodSet(0), below);
  for (U32 vlan : {4096u, 65537u, UINT_MAX}) EXPECT_DEATH(vlanIdToFloodSet(vlan), above) << vlan;
}
CATALOGUE_ENTRY_(BadInputNamesDeathTest, FloodSetsOutsideOneTo4095, "vlanIdToFloodSet");

// Prefix tests on names shorter than, equal to and one past their prefix.
CATALOGUE_TEST(BadInputNames, PrefixTestsAtTheirLengths, "isPortChannel", "isRoutedPort",
               "l3SecondHopPortChannel") {
  const struct {
    const char* name;
    bool portChannel, routed, secondHop;
  } rows[] = {
      {"", false, false, false},
      {"p", false, false, false},
      {"po", true, true, false},
      {"PO3", false, false, false},
      {"Port-Channe", false, false, false},
      {"Port-Channel", true, true, false},
      {"Ethernet", false, true, false},
      {"Etherne", false, false, false},
      {"L3SecondHopLA", false, false, false},
      {"L3SecondHopLAG", true, true, true},
      {" po1", false, false, false},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(isPortChannel(r.name), r.portChannel) << r.name;
    EXPECT_EQ(isRoutedPort(r.name), r.routed) << r.name;
    EXPECT_EQ(l3SecondHopPortChannel(r.name), r.secondHop) << r.name;
  }
  EXPECT_FALSE(isRoutedPort(Mox::String(kLong.c_str())));
}

CATALOGUE_TEST(BadInputNames, PortChannelNumbersAtTheirEdges, "portChannelId") {
  const std::pair<const char*, int> rows[] = {
      {"", -1},
      {"Port-Channel", 0},
      {"po", 0},
      {"po-3", -3},
      {"PO3", -1},
      {"poX", 0},
      {"Port-Channel 5", 5},
      {"L3SecondHopLAG3", -1},
      {"Port-Channel2147483647", INT_MAX},
  };
  for (const auto& [name, want] : rows) EXPECT_EQ(portChannelId(name), want) << name;
}

// Ids of every kind, and the empty id, to the id-taking helpers.
CATALOGUE_TEST(BadInputNames, IdsOfEveryKind, "isForwardingPlaneInterface", "intfShortName",
               "isIntfMlag") {
  const struct {
    const char* name;
    bool forwarding;
    const char* shortName;
  } rows[] = {
      {"Ethernet3/1", true, "Et3/1"},
      {"Port-Channel5.10", true, "Po5.10"},
      {"Vlan4094", true, "Vlan4094"},
      {"Vxlan1", true, "Vx1"},
      {"Loopback0", false, "Loopback0"},
      {"Management1", false, "Management1"},
      {"", true, ""},
  };
  Mlag::Status::Ptr mlag(new Mlag::Status());
  for (const auto& r : rows) {
    EXPECT_EQ(isForwardingPlaneInterface(IntfId(r.name)), r.forwarding) << r.name;
    EXPECT_EQ(intfShortName(IntfId(r.name)), r.shortName) << r.name;
    EXPECT_FALSE(isIntfMlag(mlag, IntfId(r.name))) << r.name;  // absent from the map
  }
  // A null status is allowed where it is not read: ids that are not
  // port-channels.
  EXPECT_FALSE(isIntfMlag(nullptr, IntfId()));
  EXPECT_FALSE(isIntfMlag(nullptr, IntfId("Ethernet3")));
}

TEST(BadInputNamesDeathTest, DeviceNamesOfOtherKinds) {
  EXPECT_EQ(intfNameToDeviceName(IntfId("Ethernet3/1.100")), "et3_1.100");
  EXPECT_EQ(intfNameToDeviceName(IntfId("Port-Channel5")), "po5");
  const std::string assertion =
      failedAssertion("false && \"intfNameToDeviceName: invalid intfName\"");
  for (const char* name : {"", "Vlan10", "Loopback0"})
    EXPECT_DEATH(
        intfNameToDeviceName(IntfId(name)),
        std::string("^intfNameToDeviceName intfName=") + name + " is unknown\n.*" + assertion)
        << name;
}
CATALOGUE_ENTRY_(BadInputNamesDeathTest, DeviceNamesOfOtherKinds, "intfNameToDeviceName");

// The cell name is formatted whole: empty, with format characters, long.
CATALOGUE_TEST(BadInputNames, CellNamesEmptyOddAndLong, "cellNameToMrouteXactConfigDirName",
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
    for (const std::string& cell : {std::string(), std::string("%s%n%d"), kLong})
      EXPECT_EQ(std::string(fn(Mox::String(cell.c_str())).charPtr()), prefix + cell) << prefix;
}

// Texts that are not interface names never become ids: the constructor
// throws, and every id-taking helper above is reached only with valid ids.
TEST(BadInputNames, InterfaceNamesThatAreNotInterfaceNames) {
  for (const char* bad : {"Ethernet", "Ethernet-1", "Ethernet1/", "Port-Channel", "Vlan0",
                          "Vlan4095", "ethernet1", "Ethernet1.0", "Ethernet1.x", " Ethernet1"})
    EXPECT_THROW(IntfId(Mox::String(bad)), Wirl::InvalidIntfName) << bad;
  EXPECT_EQ(IntfId(Mox::String("")), IntfId());
}

}  // namespace
