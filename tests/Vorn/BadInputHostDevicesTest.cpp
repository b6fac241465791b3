// Bad input to the host-device commands: vornDmaIfadd, vornDmaIfdel,
// vornDmaIfPortUpdate, vornDmaSetIntfState, vornDmaNativeVlan,
// vornDmaVlanVsiAdd, vornDmaVlanVsiDel, vornDmaRoutedPortSet,
// vornDmaRoutedPortEncapVlanMapSet, vornDmaIfFlags. Host device names are
// at most 15 characters; longer ones are cut at the buffers they are copied
// into and answered as names the driver does not know. MAC texts are parsed
// without validation. Numbers go out at their full width.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <string>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/HostTestSupport.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string kLongest(15, 'a');  // the longest host device name
const std::string kOnePast(16, 'a');
const std::string kOverlong(300, 'n');  // longer than any command buffer

class BadInputHost : public testing::Test {
 protected:
  VornTest::ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
  void SetUp() override { driver.tcEmulatedIs(true); }
  int add(const std::string& name, int sysPort = 100, bool hwLag = false) {
    return vornDmaIfadd(name.c_str(), sysPort, 0, Mox::String(), false, hwLag, "02:00:00:00:00:01");
  }
};

CATALOGUE_TEST_F(BadInputHost, IfaddNamesAndPorts, "vornDmaIfadd") {
  EXPECT_EQ(add(kLongest), 0);
  EXPECT_EQ(driver.tcCommands().back(),
            "/sbin/tc qdisc add dev " + kLongest + " root handle 1: prio");
  EXPECT_EQ(add(kOnePast), EINVAL);
  EXPECT_EQ(add(""), EINVAL);
  EXPECT_EQ(add(kOverlong), EINVAL);
  EXPECT_EQ(driver.commands().back().size(), kCommandSize - 1);
  // System ports at the ends of an int; a hardware LAG's port is narrowed to
  // 16 bits and remapped (bit 15 to bit 14).
  EXPECT_EQ(add("et1", INT_MIN), 0);
  EXPECT_EQ(add("et2", INT_MAX), 0);
  EXPECT_EQ(add("po3", 0x18001, true), 0);
  const std::vector<std::string> sent = driver.commands();
  EXPECT_THAT(std::vector<std::string>(sent.end() - 3, sent.end()),
              ElementsAre("ifadd et1 -2147483648 0 internallag",
                          "ifadd et2 2147483647 0 internallag", "ifadd po3 16385 0 "));
  // Control and hardware LAG together: refused before anything is sent.
  driver.clearLog();
  EXPECT_EQ(vornDmaIfadd("et4", 1, 0, Mox::String(), true, true, nullptr), EINVAL);
  EXPECT_THAT(driver.commands(), IsEmpty());
}

// The MAC text is parsed without validation: missing groups are 0, garbage
// converts as strtoul converts it, and nothing past the text is read.
CATALOGUE_TEST_F(BadInputHost, IfaddMacTextsShortEmptyOrGarbage, "vornDmaIfadd") {
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
  // Outside SAI mode a null MAC is allowed: the address stays all zero.
  EXPECT_EQ(vornDmaIfadd("et2", 101, 0, Mox::String("eth2"), false, false, nullptr), 0);
  EXPECT_EQ(driver.host().netdevs.at("et2").mac, Wirl::EthAddr());
}

TEST_F(BadInputHost, IfaddNullMacInSaiModeEndsTheProcess) {
  EXPECT_DEATH(
      {
        ::setenv("KRIX_MODE", "sai", 1);
        vornDmaIfadd("et1", 100, 0, Mox::String("eth1"), false, false, nullptr);
      },
      VornTest::assertionPattern("int Hardware::Vorn::vornDmaIfadd(const char*, int, int, "
                                 "Mox::String, bool, bool, const char*)",
                                 "macAddr"));
}
CATALOGUE_ENTRY_(BadInputHost, IfaddNullMacInSaiModeEndsTheProcess, "vornDmaIfadd");

// A name longer than the command buffer is cut at its capacity, terminated,
// and answered by the driver like any name it does not know; so is the empty
// name, which is sent as it is.
CATALOGUE_TEST_F(BadInputHost, NameCommandsWithEmptyAndOverlongNames, "vornDmaIfdel",
                 "vornDmaIfPortUpdate", "vornDmaNativeVlan", "vornDmaVlanVsiAdd",
                 "vornDmaVlanVsiDel", "vornDmaRoutedPortEncapVlanMapSet") {
  // The overlong name leaves no room for the arguments after it: the driver
  // cannot parse what is left.
  using Call = int (*)(const char*);
  const struct {
    Call call;
    int empty, overlong;
  } calls[] = {
      {[](const char* n) { return vornDmaIfdel(n); }, ENODEV, ENODEV},
      {[](const char* n) { return vornDmaIfPortUpdate(n, 1); }, ENODEV, EINVAL},
      {[](const char* n) { return vornDmaNativeVlan(n, true, 10); }, ENODEV, EINVAL},
      {[](const char* n) { return vornDmaVlanVsiAdd(n, 10, 20, 0, 5); }, ENODEV, EINVAL},
      {[](const char* n) { return vornDmaVlanVsiDel(n, 10, 20, 0); }, ENODEV, EINVAL},
      {[](const char* n) { return vornDmaRoutedPortEncapVlanMapSet(n, 10); }, ENODEV, EINVAL},
  };
  for (const auto& c : calls) {
    driver.clearLog();
    EXPECT_EQ(c.call(""), c.empty);
    EXPECT_EQ(c.call(kOverlong.c_str()), c.overlong);
    ASSERT_EQ(driver.commands().size(), 2u);
    EXPECT_EQ(driver.commands()[1].size(), kCommandSize - 1) << driver.commands()[1];
  }
}

CATALOGUE_TEST_F(BadInputHost, NumbersAtTheirWidths, "vornDmaIfPortUpdate", "vornDmaVlanVsiAdd",
                 "vornDmaVlanVsiDel", "vornDmaNativeVlan", "vornDmaRoutedPortEncapVlanMapSet") {
  ASSERT_EQ(add("et3"), 0);
  driver.clearLog();
  EXPECT_EQ(vornDmaIfPortUpdate("et3", -1), 0);
  EXPECT_EQ(vornDmaIfPortUpdate("et3", INT_MIN), 0);
  EXPECT_EQ(vornDmaVlanVsiAdd("et3", 65535, 65535, 65535, 65535), EINVAL);  // no such VLAN
  EXPECT_EQ(vornDmaVlanVsiDel("et3", 65535, 65535, 65535), EINVAL);
  EXPECT_EQ(vornDmaNativeVlan("et3", false, 65535), EINVAL);
  EXPECT_EQ(vornDmaRoutedPortEncapVlanMapSet("et3", UINT_MAX), EINVAL);
  EXPECT_THAT(
      driver.commands(),
      ElementsAre("ifportupdate et3 -1", "ifportupdate et3 -2147483648",
                  "vlan_vsi_add et3 65535 65535 65535 65535", "vlan_vsi_del et3 65535 65535 65535",
                  "native_vlan et3 0 65535", "encapvlan_routedport et3 4294967295"));
}

// A name with "." is a sub-interface: skipped by the native VLAN, cut at its
// first "." by the routed port, which copies the name into 80 bytes first:
// a "." beyond the copy is not seen.
CATALOGUE_TEST_F(BadInputHost, DotsInNames, "vornDmaNativeVlan", "vornDmaRoutedPortSet") {
  for (const char* sub : {".", "et1.", ".10"})
    EXPECT_EQ(vornDmaNativeVlan(sub, true, 10), 0) << sub;
  EXPECT_THAT(driver.commands(), IsEmpty());
  const std::string dotInCopy = std::string(78, 'a') + ".5";
  const std::string dotBeyondCopy = std::string(79, 'a') + ".5";
  // Unknown devices answer 19, which this command reports as success.
  for (const std::string& name : {std::string(".10"), std::string(""), dotInCopy, dotBeyondCopy})
    EXPECT_EQ(vornDmaRoutedPortSet(name.c_str(), 1006), 0) << name;
  EXPECT_EQ(vornDmaRoutedPortSet("et1", UINT_MAX), EINVAL);  // not a VLAN the driver knows
  EXPECT_THAT(driver.commands(),
              ElementsAre("internalvlan 1006 ", "internalvlan 1006 ",
                          "internalvlan 1006 " + std::string(78, 'a'),
                          "internalvlan 1006 " + dotBeyondCopy, "internalvlan 4294967295 et1"));
}

// Interface state is sent in SAI mode only; there an empty or overlong name
// is the driver's unknown device, returned without a trace. (SAI mode is
// fixed at the first test of it, so the child tests it first.)
CATALOGUE_TEST_F(BadInputHost, IntfStateNamesInSaiMode, "vornDmaSetIntfState") {
  EXPECT_IN_SAI_MODE([&] {
    bool ok = true;
    VornTest::TraceCapture trace;
    CHILD_CHECK(ok, vornDmaSetIntfState("", false) == ENODEV);
    CHILD_CHECK(ok, vornDmaSetIntfState(Mox::String(kOverlong.c_str()), true) == EINVAL);
    CHILD_CHECK(ok, driver.commands().size() == 2);
    CHILD_CHECK(ok, driver.commands()[0] == "ifstate  down");
    CHILD_CHECK(ok, driver.commands()[1].size() == kCommandSize - 1);
    CHILD_CHECK(ok, trace.lines().size() == 1);  // the refusal other than 19
    return ok;
  });
}

CATALOGUE_TEST_F(BadInputHost, IntfStateNamesOutsideSaiMode, "vornDmaSetIntfState") {
  EXPECT_EQ(vornDmaSetIntfState("", true), 0);
  EXPECT_EQ(vornDmaSetIntfState(Mox::String(kOverlong.c_str()), true), 0);
  EXPECT_THAT(driver.commands(), IsEmpty());
}

// The interface request holds 16 bytes and the kernel reads at most 15
// characters of it: a longer name is the device its first 15 characters
// name, if there is one. A failed read leaves the flags as they were.
CATALOGUE_TEST_F(BadInputHost, FlagsOfNamesAtTheRequestsEdge, "vornDmaIfFlags") {
  ASSERT_EQ(add(kLongest), 0);
  for (const std::string& name : {kLongest, kOnePast, kLongest + "aa"}) {
    unsigned flags = 0;
    EXPECT_EQ(vornDmaIfFlags(name.c_str(), &flags), 0) << name;
    EXPECT_NE(flags & 1u, 0u) << name;  // up
  }
  unsigned flags = 0x5a5a;
  for (const std::string& bad : {std::string(""), std::string(16, 'b'), kOverlong}) {
    EXPECT_EQ(vornDmaIfFlags(bad.c_str(), &flags), ENODEV) << bad;
    EXPECT_EQ(flags, 0x5a5au);
  }
}

}  // namespace
