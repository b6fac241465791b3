// Host devices against the emulated driver and its emulated host side, with
// their bad input.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <climits>

#include "Ringlog/MemoryFile.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"
#include "tests/Vorn/HostTestSupport.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::IsEmpty;
using VornTest::ScopedEnv;
using VornTest::TcCapture;
using VornTest::TraceCapture;

namespace {

constexpr const char kMac[] = "02:00:00:aa:bb:cc";
constexpr const char kTcEt1[] = "/sbin/tc qdisc add dev et1 root handle 1: prio";
const std::string kOverlong(300, 'n');  // longer than any command buffer

class HostDevices : public testing::Test {
 protected:
  const Emu::HostNetdev& netdev(const std::string& name) { return driver.host().netdevs.at(name); }
  bool isUp(const std::string& name) { return netdev(name).flags & IFF_UP; }
  int add(const std::string& name, int sysPort = 5, bool hwLag = false) {
    return vornDmaIfadd(name.c_str(), sysPort, 0, "", false, hwLag, kMac);
  }

  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
  TcCapture tc;
};

TEST_F(HostDevices, PlainPortIsAnnouncedAsInternallagAndFinishedOnTheHost) {
  Ringlog::ScopedMemoryFile ring;
  ASSERT_EQ(add("et1"), 0);
  EXPECT_THAT(driver.commands(), ElementsAre("ifadd et1 5 0 internallag"));
  EXPECT_EQ(netdev("et1").mac, Wirl::EthAddr(2, 0, 0, 0xaa, 0xbb, 0xcc));
  EXPECT_EQ(netdev("et1").flags, IFF_UP | IFF_BROADCAST | IFF_MULTICAST);  // up, the rest kept
  EXPECT_THAT(tc.lines(), ElementsAre(kTcEt1));
  EXPECT_THAT(ring.messages(),
              ElementsAre("vornDmaIfadd ifname=et1", "fab_ioctl buf=ifadd et1 5 0 internallag",
                          "vornDmaIfadd: SIOCSIFHWADDR ioctl ifname=et1 macAddr=02:00:00:aa:bb:cc",
                          "vornDmaIfadd: SIOCSIFFLAGS ioctl ifname=et1"));
}

// A hardware LAG goes by its internal system port and an empty keyword;
// control and hardware LAG together are refused before anything is sent.
CATALOGUE_TEST_F(HostDevices, IfaddCommandVariantsAndBounds, "vornDmaIfadd") {
  TraceCapture trace;
  EXPECT_EQ(vornDmaIfadd("cpu0", 7, 1, "eth5", true, false, kMac), 0);
  EXPECT_EQ(vornDmaIfadd("po1", 0x8005, 0, "", false, true, kMac), 0);
  EXPECT_EQ(vornDmaIfadd("po2", 0xC001, 3, "bond2", false, true, kMac), 0);
  EXPECT_EQ(add("et3", INT_MIN), 0);
  EXPECT_THAT(driver.commands(),
              ElementsAre("ifadd cpu0 7 1 eth5 ctrl", "ifadd po1 16389 0 ",
                          "ifadd po2 16385 3 bond2 ", "ifadd et3 -2147483648 0 internallag"));
  EXPECT_EQ(trace.lines()[0].text, "vornDmaIfadd: command ifadd cpu0 7 1 eth5 ctrl");
  for (const std::string& bad : {std::string(), kOverlong}) EXPECT_EQ(add(bad), EINVAL) << bad;
  EXPECT_EQ(driver.commands().back().size(), kCommandSize - 1);
  driver.clearLog();
  EXPECT_EQ(vornDmaIfadd("et1", 5, 0, "", true, true, kMac), EINVAL);
  EXPECT_THAT(driver.commands(), IsEmpty());
  EXPECT_EQ(
      trace.texts().back(),
      "vornDmaIfadd: interface et1 ctrl: 1 hwLag: 1 Error: ctrl/hwLag are mutually exclusive");
}

// A device the driver has already is left alone, untraced.
TEST_F(HostDevices, IfaddRefusals) {
  ASSERT_EQ(add("et1"), 0);
  TraceCapture trace;
  EXPECT_EQ(vornDmaIfadd("et1", 5, 0, "", false, false, "02:11:11:11:11:11"), 0);
  EXPECT_EQ(driver.answers().back(), EEXIST);
  EXPECT_EQ(netdev("et1").mac, Wirl::EthAddr(2, 0, 0, 0xaa, 0xbb, 0xcc));
  EXPECT_EQ(trace.lines().size(), 1u);  // the command only
  driver.answerNext("ifadd", EPERM);
  EXPECT_EQ(add("et2"), EPERM);
  EXPECT_EQ(tc.lines().size(), 1u);
  EXPECT_EQ(trace.lines().back().text,
            "vornDmaIfadd cmd: ifadd et2 5 0 internallag error Operation not permitted");
}

// Setup stops where the MAC address or the flags fail, except that a failed
// up flag goes on to the qdisc (reported under the read request's label).
TEST_F(HostDevices, HostSetupFailures) {
  const struct {
    unsigned long request;
    int error, want;
    std::size_t tcLines;
    const char* trace;
  } cases[] = {
      {SIOCSIFHWADDR, EPERM, EPERM, 0, "setupIntf SIOCSIFHWADDR error Operation not permitted"},
      {SIOCGIFFLAGS, EIO, EIO, 0, "setupIntf SIOCGIFFLAGS error Input/output error"},
      {SIOCSIFFLAGS, EPERM, 0, 1, "setupIntf SIOCGIFFLAGS error Operation not permitted"},
  };
  int port = 1;
  for (const auto& c : cases) {
    TraceCapture trace;
    const std::string name = "et" + std::to_string(port);
    driver.hostRequestFailsNext(c.request, c.error);
    EXPECT_EQ(add(name, port++), c.want) << c.trace;
    EXPECT_FALSE(isUp(name)) << c.trace;
    EXPECT_EQ(tc.lines().size(), c.tcLines) << c.trace;
    EXPECT_EQ(trace.texts().back(), c.trace);
  }
}

TEST_F(HostDevices, TheQdiscResultIsTheAnswerAndOnlyANegativeOneIsTraced) {
  TraceCapture trace;
  tc.resultIs(2);  // tc ran and failed
  EXPECT_EQ(add("et1"), 2);
  EXPECT_EQ(trace.lines().size(), 1u);  // the command only
  tc.resultIs(-1);                      // tc could not be run
  EXPECT_EQ(add("et2", 6), -1);
  EXPECT_EQ(trace.texts().back(),
            "setupIntf Failed to add prio qdisc for et2 error Unknown error -1");
}

// Each group is read at every third character as strtoul reads it; outside
// SAI mode a null MAC leaves the address all zero.
CATALOGUE_TEST_F(HostDevices, MacTextsShortEmptyOrGarbage, "vornDmaIfadd") {
  const struct {
    const char* text;
    Wirl::EthAddr mac;
  } cases[] = {
      {"0A:1b:FF:00:7:1", Wirl::EthAddr(0x0a, 0x1b, 0xff, 0, 7, 0)},  // "1" is at 14, not 15
      {nullptr, Wirl::EthAddr()},
      // A group read past its two digits keeps its low 8 bits.
      {"102:00:00:00:00:03", Wirl::EthAddr(2, 0, 0, 0, 0, 0)},
  };
  int port = 1;
  for (const auto& c : cases) {
    std::string name = "et" + std::to_string(port);
    ASSERT_EQ(vornDmaIfadd(name.c_str(), port++, 0, "", false, false, c.text), 0);
    EXPECT_EQ(netdev(name).mac, c.mac) << (c.text ? c.text : "(null)");
  }
}

CATALOGUE_TEST_F(HostDevices, IfaddNullMacInSaiModeEndsTheProcess, "vornDmaIfadd") {
  EXPECT_DEATH(
      {
        ::setenv("KRIX_MODE", "sai", 1);
        vornDmaIfadd("et1", 100, 0, Mox::String("eth1"), false, false, nullptr);
      },
      VornTest::assertionPattern("int Hardware::Vorn::vornDmaIfadd(const char*, int, int, "
                                 "Mox::String, bool, bool, const char*)",
                                 "macAddr"));
}

// A name past 15 characters is the device its first 15 name; the 16-bit
// flags word is sign-extended; a failed read leaves the flags alone.
CATALOGUE_TEST_F(HostDevices, IfFlagsOfNamesAtTheRequestsEdge, "vornDmaIfFlags") {
  driver.hostNetdevIs("abcdefghijklmno");
  unsigned flags = 77;
  EXPECT_EQ(vornDmaIfFlags("abcdefghijklmnopqrstuvwxyz", &flags), 0);
  EXPECT_EQ(flags, unsigned{IFF_BROADCAST | IFF_MULTICAST});
  ASSERT_EQ(add("et1"), 0);
  driver.host().netdevs.at("et1").flags = 0x8001;
  EXPECT_EQ(vornDmaIfFlags("et1", &flags), 0);
  EXPECT_EQ(flags, 0xFFFF8001u);
  EXPECT_EQ(vornDmaIfFlags("nosuch", &flags), ENODEV);
  EXPECT_EQ(flags, 0xFFFF8001u);
}

// An empty name is sent as it is; a longer one than the buffer is cut.
CATALOGUE_TEST_F(HostDevices, IfdelAndPortUpdate, "vornDmaIfdel", "vornDmaIfPortUpdate") {
  ASSERT_EQ(add("et1"), 0);
  Ringlog::ScopedMemoryFile ring;
  EXPECT_EQ(vornDmaIfPortUpdate("et1", 12), 0);
  EXPECT_EQ(vornDmaIfdel("et1"), 0);
  TraceCapture trace;
  EXPECT_EQ(vornDmaIfdel("et1"), ENODEV);
  EXPECT_EQ(vornDmaIfPortUpdate("et1", 3), ENODEV);
  EXPECT_THAT(trace.texts(), ElementsAre("vornDmaIfdel cmd: ifdel et1 error No such device",
                                         "vornDmaIfPortUpdate cmd: ifportupdate et1 3 error No "
                                         "such device"));
  EXPECT_EQ(ring.messages()[2], "vornDmaIfdel ifname=et1");
  driver.clearLog();
  EXPECT_EQ(vornDmaIfdel(""), ENODEV);
  EXPECT_EQ(vornDmaIfdel(kOverlong.c_str()), ENODEV);
  EXPECT_EQ(vornDmaIfPortUpdate(kOverlong.c_str(), 1), EINVAL);
  vornDmaIfdel("PortChannel5");  // outside SAI mode deleted like any device
  const auto sent = driver.commands();
  ASSERT_EQ(sent.size(), 4u);
  EXPECT_EQ(sent[0], "ifdel ");
  EXPECT_EQ(sent[1].size(), kCommandSize - 1);
  EXPECT_EQ(sent[2].size(), kCommandSize - 1);
  EXPECT_EQ(sent[3], "ifdel PortChannel5");
}

// A sub-interface has no native VLAN; numbers go out at their full width.
CATALOGUE_TEST_F(HostDevices, VlanCommands, "vornDmaNativeVlan", "vornDmaVlanVsiAdd",
                 "vornDmaVlanVsiDel", "vornDmaRoutedPortEncapVlanMapSet") {
  ASSERT_EQ(add("et1"), 0);
  driver.clearLog();
  Ringlog::ScopedMemoryFile ring;
  EXPECT_EQ(vornDmaNativeVlan("et1", true, 100), 0);
  EXPECT_EQ(vornDmaNativeVlan("et1.10", true, 100), 0);
  EXPECT_EQ(vornDmaVlanVsiAdd("et1", 10, 20, 0, 4000), 0);
  EXPECT_EQ(vornDmaVlanVsiDel("et1", 10, 20, 0), 0);
  EXPECT_EQ(vornDmaNativeVlan("et1", false, 0), 0);
  EXPECT_EQ(vornDmaRoutedPortEncapVlanMapSet("et1", 200), 0);
  EXPECT_THAT(driver.commands(),
              ElementsAre("native_vlan et1 1 100", "vlan_vsi_add et1 10 20 0 4000",
                          "vlan_vsi_del et1 10 20 0", "native_vlan et1 0 0",
                          "encapvlan_routedport et1 200"));
  EXPECT_THAT(ring.messages(),
              testing::IsSupersetOf({"vornDmaNativeVlan ifname=et1 vlan 100",
                                     "vornDmaVlanVsiAdd ifname=et1 start_vlanid 10 end_vlanid 20 "
                                     "inner_vlanid 0 vsi 4000",
                                     "vornDmaVlanVsiDel ifname=et1 start_vlanid 10 end_vlanid 20 "
                                     "inner_vlanid 0"}));
  TraceCapture trace;
  EXPECT_EQ(vornDmaVlanVsiAdd("et1", 20, 10, 0, 1), EINVAL);
  EXPECT_EQ(vornDmaNativeVlan("et9", true, 1), ENODEV);
  EXPECT_EQ(vornDmaVlanVsiDel("et9", 1, 2, 0), ENODEV);
  EXPECT_EQ(vornDmaRoutedPortEncapVlanMapSet("et9", 200), ENODEV);
  EXPECT_THAT(
      trace.texts(),
      ElementsAre("vornDmaVlanVsiAdd cmd: vlan_vsi_add et1 20 10 0 1 error Invalid argument",
                  "vornDmaNativeVlan cmd: native_vlan et9 1 1 error No such device",
                  "vornDmaVlanVsiDel cmd: vlan_vsi_del et9 1 2 0 error No such device",
                  "vornDmaRoutedPortEncapVlanMapSet et9 200",
                  "vornDmaRoutedPortEncapVlanMapSet cmd: encapvlan_routedport et9 200 error "
                  "No such device"));
  EXPECT_EQ(vornDmaRoutedPortEncapVlanMapSet("et1", UINT_MAX), EINVAL);  // no such VLAN
  EXPECT_EQ(driver.commands().back(), "encapvlan_routedport et1 4294967295");
}

// A sub-interface's parent is the name cut at its first "." (within the 80
// bytes the name is copied into first); 19 counts as done.
CATALOGUE_TEST_F(HostDevices, RoutedPortUsesTheParentAndToleratesAMissingDevice,
                 "vornDmaRoutedPortSet") {
  ASSERT_EQ(add("et1"), 0);
  driver.clearLog();
  TraceCapture trace;
  Ringlog::ScopedMemoryFile ring;
  EXPECT_EQ(vornDmaRoutedPortSet("et1.10", 1006), 0);
  EXPECT_EQ(vornDmaRoutedPortSet("et7", 1007), 0);
  driver.answerNext("internalvlan", EPERM);
  EXPECT_EQ(vornDmaRoutedPortSet("et1", 1008), EPERM);
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaRoutedPortSet: intfname et1: vlanid 1006 success",
                          "vornDmaRoutedPortSet: intfname et7: vlanid 1007 device not found",
                          "vornDmaRoutedPortSet: intfname et1: vlanid 1008 error:Operation not "
                          "permitted"));
  EXPECT_EQ(trace.lines()[0].level, 8);
  EXPECT_EQ(trace.lines()[1].level, 0);
  EXPECT_EQ(ring.messages()[0], "vornDmaRoutedPortSet ifname=et1.10, vlanid=1006");
  const std::string dotInCopy = std::string(78, 'a') + ".5";
  const std::string dotBeyondCopy = std::string(79, 'a') + ".5";
  EXPECT_EQ(vornDmaRoutedPortSet(dotInCopy.c_str(), 5), 0);
  EXPECT_EQ(vornDmaRoutedPortSet(dotBeyondCopy.c_str(), 5), 0);
  EXPECT_THAT(
      driver.commands(),
      ElementsAre("internalvlan 1006 et1", "internalvlan 1007 et7", "internalvlan 1008 et1",
                  "internalvlan 5 " + std::string(78, 'a'), "internalvlan 5 " + dotBeyondCopy));
}

// The setup socket is cached per process, so its failure is tried in a child.
TEST_F(HostDevices, SocketFailureIsReturnedAndRetriedNextTime) {
  EXPECT_EXIT(
      {
        bool ok = true;
        TraceCapture trace;
        driver.socketFailsNext(EMFILE);
        CHILD_CHECK(ok, add("et1") == EMFILE);
        CHILD_CHECK(ok, trace.texts().back() == "setupIntf socket error Too many open files");
        CHILD_CHECK(ok, tc.lines().empty());
        CHILD_CHECK(ok, add("et2", 6) == 0);
        CHILD_CHECK(ok, isUp("et2"));
        std::_Exit(ok ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

// In SAI mode a hardware LAG is set up on the host only, port-channels are
// not deleted, and the interface state is sent (outside it, not). The child
// comes first: saimode() is fixed at its first call.
CATALOGUE_TEST_F(HostDevices, SaiModeCommands, "vornDmaSetIntfState") {
  EXPECT_IN_SAI_MODE([&] {
    bool ok = true;
    CHILD_CHECK(ok, vornDmaIfadd("et1", 5, 0, "eth1", false, false, kMac) == 0);
    CHILD_CHECK(ok, add("et2", 6) == 0);
    driver.hostNetdevIs("PortChannel1");
    CHILD_CHECK(ok, add("PortChannel1", 0x8001, true) == 0);
    CHILD_CHECK(ok, driver.commands() == std::vector<std::string>(
                                             {"ifadd et1 5 0 eth1 02:00:00:aa:bb:cc internallag",
                                              "ifadd et2 6 0 internallag"}));
    CHILD_CHECK(ok, isUp("PortChannel1"));
    driver.clearLog();
    TraceCapture trace;
    CHILD_CHECK(ok, vornDmaIfdel("PortChannel5") == 0);
    CHILD_CHECK(ok, vornDmaSetIntfState("et1", true) == 0);
    CHILD_CHECK(ok, vornDmaSetIntfState("et1", false) == 0);
    CHILD_CHECK(ok, vornDmaSetIntfState("et9", true) == ENODEV);
    CHILD_CHECK(ok, trace.texts() == std::vector<std::string>(
                                         {"vornDmaIfdel(): Not deleting port-channel PortChannel5 "
                                          "in host namespace"}));
    CHILD_CHECK(ok, vornDmaIfdel("PortChanne") == ENODEV);  // only the full word counts
    CHILD_CHECK(ok, vornDmaSetIntfState(Mox::String(kOverlong.c_str()), true) == EINVAL);
    const std::vector<std::string> sent = driver.commands();
    CHILD_CHECK(ok, sent.size() == 5 && sent[0] == "ifstate et1 up" &&
                        sent[1] == "ifstate et1 down" && sent[3] == "ifdel PortChanne");
    CHILD_CHECK(ok, sent.back().size() == kCommandSize - 1);
    driver.answerNext("ifstate", EIO);
    CHILD_CHECK(ok, vornDmaSetIntfState("et1", true) == EIO);
    CHILD_CHECK(ok, trace.texts().back() ==
                        "vornDmaSetIntfState cmd: ifstate et1 up error Input/output error");
    return ok;
  });
  EXPECT_EQ(vornDmaSetIntfState("et1", true), 0);
  EXPECT_THAT(driver.commands(), IsEmpty());
}

}  // namespace
