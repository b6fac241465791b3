// Outside input at its boundaries and beyond, family by family: each gets the
// outcome the library gives it (an error number, a range exception, a value
// that means "not found", a clean end of the process), never a memory error
// or a silently wrong command. Cases that other suites already cover at
// length (LAG listings, frame limits, identifier ranges, CoPP ports) are not
// repeated here; the fuzz targets take the same inputs at random.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "Mox/RangeException.h"
#include "Vorn/VornCommonUtils.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;

namespace {

class DriverInput : public testing::Test {
 protected:
  VornTest::ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
  void SetUp() override { driver.tcEmulatedIs(true); }
};

// A name longer than the command buffer is cut at its capacity, terminated,
// and answered by the driver like any name it does not know.
TEST_F(DriverInput, OverlongNamesAreCutAtTheBufferNotBeyondIt) {
  const std::string longest(300, 'n');
  EXPECT_EQ(vornDmaIfdel(longest.c_str()), ENODEV);
  EXPECT_EQ(vornDmaDevcleanup(Mox::String(longest.c_str())), ENODEV);
  EXPECT_EQ(vornDmaLagMemberConfigDel(longest.c_str(), longest.c_str()), EINVAL);
  for (const std::string& sent : driver.commands()) EXPECT_EQ(sent.size(), kCommandSize - 1);
  EXPECT_EQ(driver.commands()[0], "ifdel " + longest.substr(0, kCommandSize - 1 - 6));
}

TEST_F(DriverInput, EmptyNamesReachTheDriverAsTheyAre) {
  EXPECT_EQ(vornDmaIfdel(""), ENODEV);
  EXPECT_EQ(vornDmaDeviceUp(""), ENODEV);
  EXPECT_THAT(driver.commands(), ElementsAre("ifdel ", "devstate  up"));
}

// The MAC text is parsed without validation: missing groups are 0, garbage
// converts as strtoul converts it, and nothing past the text is read.
TEST_F(DriverInput, MacTextsShortEmptyOrGarbage) {
  const std::pair<const char*, Wirl::EthAddr> cases[] = {
      {"02:00:00:aa:bb:cc", Wirl::EthAddr(2, 0, 0, 0xaa, 0xbb, 0xcc)},
      {"02:00", Wirl::EthAddr(2, 0, 0, 0, 0, 0)},
      {"", Wirl::EthAddr()},
      {"zz:zz:zz:zz:zz:zz", Wirl::EthAddr()},
      {"0a-0b-0c-0d-0e-0f", Wirl::EthAddr(10, 11, 12, 13, 14, 15)},
      // A group read past its two digits keeps its low 8 bits; the next group
      // then starts at a separator and reads 0.
      {"102:00:00:00:00:03", Wirl::EthAddr(2, 0, 0, 0, 0, 0)},
  };
  for (const auto& [text, want] : cases) {
    ASSERT_EQ(vornDmaIfadd("et1", 100, 0, Mox::String(), false, false, text), 0) << text;
    EXPECT_EQ(driver.host().netdevs.at("et1").mac, want) << text;
    ASSERT_EQ(vornDmaIfdel("et1"), 0);
  }
}

TEST_F(DriverInput, NullMacIsAllowedOutsideSaiMode) {
  EXPECT_EQ(vornDmaIfadd("et2", 101, 0, Mox::String("eth2"), false, false, nullptr), 0);
  EXPECT_EQ(driver.host().netdevs.at("et2").mac, Wirl::EthAddr());
}

TEST_F(DriverInput, NumbersAtTheirWidths) {
  EXPECT_EQ(vornDmaVlanVsiAdd("et3", 65535, 65535, 65535, 65535), EINVAL);  // no such VLAN
  EXPECT_EQ(vornDmaIfPortUpdate("et3", -1), ENODEV);
  EXPECT_EQ(vornDmaVcableSetProto(0xFFFF), 0u);
  EXPECT_THAT(driver.commands(), ElementsAre("vlan_vsi_add et3 65535 65535 65535 65535",
                                             "ifportupdate et3 -1", "vcable_proto ffff"));
  EXPECT_EQ(vornDmaInternalSysPortIdIs(0xFFFF), 0x7FFF);
}

TEST(NameInput, VlanNamesThatAreNotNumbers) {
  EXPECT_EQ(vlanNameToId(""), 0u);
  EXPECT_EQ(vlanNameToId("Vlan10"), 0u);  // the caller passes the number text
  EXPECT_EQ(vlanNameToId("10abc"), 10u);
  EXPECT_EQ(vlanNameToId("4294967295"), 4294967295u);
}

TEST(NameInput, PortChannelNamesAtTheirEdges) {
  EXPECT_EQ(portChannelId(""), -1);
  EXPECT_EQ(portChannelId("Port-Channel"), 0);
  EXPECT_EQ(portChannelId("po"), 0);
  EXPECT_EQ(portChannelId("po-3"), -3);
  EXPECT_EQ(portChannelId("PO3"), -1);
  EXPECT_FALSE(isPortChannel(""));
  EXPECT_FALSE(isRoutedPort("Ether"));
}

TEST(NameInput, FapNamesWithTheWordButLittleElse) {
  EXPECT_EQ(fapNameToLinecardName("Fap"), "FixedSystem");
  EXPECT_EQ(fapNameToLinecardName("Fap/"), "Linecard0");
  EXPECT_EQ(fapNameToLinecardName("Jericho-7/1"), "Linecard-7");
}

TEST(NameInputDeathTest, FapNameWithoutAKnownWordEndsTheProcess) {
  EXPECT_DEATH(fapNameToLinecardName(""), "^Failed\\(false\\) Incorrect fapName \n");
}

TEST(NameInput, InterfaceNamesThatAreNotInterfaceNames) {
  for (const char* bad : {"Ethernet", "Ethernet-1", "Ethernet1/", "Port-Channel", "Vlan0",
                          "Vlan4095", "ethernet1", "Ethernet1.0", "Ethernet1.x", " Ethernet1"})
    EXPECT_THROW(Wirl::IntfId(Mox::String(bad)), Wirl::InvalidIntfName) << bad;
  EXPECT_EQ(Wirl::IntfId(Mox::String("")), Wirl::IntfId());
}

}  // namespace
