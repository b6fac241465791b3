// L3, MLAG and virtual-cable commands against the emulated driver.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <functional>

#include "Ringlog/MemoryFile.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"
#include "tests/Vorn/HostTestSupport.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::KilledBySignal;
using VornTest::ScopedEnv;
using VornTest::TcCapture;
using VornTest::TraceCapture;

namespace {

const Wirl::EthAddr kRouterMac(0x02, 0x1c, 0x73, 0x00, 0x00, 0x99);
const Wirl::EthAddr kMask(0xff, 0xff, 0xff, 0xff, 0xff, 0x00);

struct Case {
  const char* keyword;
  const char* fn;
  std::function<unsigned()> call;
  const char* sent;
  bool invalidEndsProcess;
};

const std::vector<Case>& cases() {
  static const std::vector<Case> all = {
      {"virtualmac", "vornDmaVirtualMacSet",
       [] { return vornDmaVirtualMacSet(Wirl::EthAddrWithMask(kRouterMac, kMask)); },
       "virtualmac 02:1c:73:00:00:99 ff:ff:ff:ff:ff:00", true},
      {"vlanipaddrvirtual", "vornDmaIpAddrVirtualSet",
       [] { return vornDmaIpAddrVirtualSet(10, true); }, "vlanipaddrvirtual 10 1", true},
      {"vlanip6addrvirtual", "vornDmaIp6AddrVirtualSet",
       [] { return vornDmaIp6AddrVirtualSet(11, false); }, "vlanip6addrvirtual 11 0", true},
      {"mlagpeermac", "vornDmaPeerRouterMacSet", [] { return vornDmaPeerRouterMacSet(kRouterMac); },
       "mlagpeermac 02:1c:73:00:00:99", true},
      {"mlag_shared_mac", "vornDmaMlagSharedRouterMacIs",
       [] { return vornDmaMlagSharedRouterMacIs(kRouterMac); }, "mlag_shared_mac 02:1c:73:00:00:99",
       true},
      {"arp_snooping_vlan", "vornDmaArpSnoopingVlan",
       [] { return vornDmaArpSnoopingVlan(4094, true); }, "arp_snooping_vlan 4094 1", true},
      {"pvlanmap", "vornDmaPvlanMap", [] { return vornDmaPvlanMap(100, 101); }, "pvlanmap 100 101",
       true},
      {"vlanroutingstatus", "vornDmaVlanRoutingStatus",
       [] { return vornDmaVlanRoutingStatus(20, 1); }, "vlanroutingstatus 20 1", true},
      {"vcable_proto", "vornDmaVcableSetProto", [] { return vornDmaVcableSetProto(0x88b5); },
       "vcable_proto 88b5", false},
      {"vcable_muxid", "vornDmaVcableSetMuxid", [] { return vornDmaVcableSetMuxid("et1", 65535); },
       "vcable_muxid et1 65535", false},
  };
  return all;
}

#define L3_COMMANDS                                                                        \
  "vornDmaVirtualMacSet", "vornDmaIpAddrVirtualSet", "vornDmaIp6AddrVirtualSet",           \
      "vornDmaPeerRouterMacSet", "vornDmaMlagSharedRouterMacIs", "vornDmaArpSnoopingVlan", \
      "vornDmaPvlanMap", "vornDmaVlanRoutingStatus", "vornDmaVcableSetProto",              \
      "vornDmaVcableSetMuxid"

class L3 : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(vornDmaIfadd("et1", 5, 0, "", false, false, "02:00:00:00:00:01"), 0);
    driver.clearLog();
  }
  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
  TcCapture tc;
};

// Each command after its entry message (a ring message or a trace line); in
// simulation nothing is sent.
CATALOGUE_TEST_F(L3, EachCommandIsSentAfterItsEntryMessage, L3_COMMANDS) {
  {
    ScopedEnv on("SIMULATION_VMID", "1");
    for (const Case& c : cases()) EXPECT_EQ(c.call(), 0u) << c.keyword;
    EXPECT_THAT(driver.commands(), IsEmpty());
  }
  Ringlog::ScopedMemoryFile ring;
  TraceCapture trace;
  for (const Case& c : cases()) EXPECT_EQ(c.call(), 0u) << c.keyword;
  std::vector<std::string> sent, ringEntries;
  for (const Case& c : cases()) sent.push_back(c.sent);
  EXPECT_EQ(driver.commands(), sent);
  for (const std::string& m : ring.messages())
    if (m.rfind("fab_ioctl", 0) != 0) ringEntries.push_back(m);
  EXPECT_THAT(ringEntries, ElementsAre("vornDmaVirtualMacSet 021c.7300.0099 mask= ffff.ffff.ff00",
                                       "vornDmaIpAddrVirtualSet vlanId: 10 enable: 1",
                                       "vornDmaIp6AddrVirtualSet vlanId: 11 enable: 0",
                                       "vornDmaPeerRouterMacSet 021c.7300.0099",
                                       "vornDmaMlagSharedRouterMacSet 021c.7300.0099",
                                       "vornDmaVcableSetProto proto=34997",
                                       "vornDmaVcableSetMuxid ifname=et1 muxid=65535"));
  EXPECT_THAT(trace.texts(), ElementsAre("vornDmaArpSnoopingVlan vlanId=4094 on=1",
                                         "vornDmaPvlanMapPrimary vlanId=100 Secondary VlanId=101",
                                         "vornDmaVlanRoutingStatusvlanId=20 enabled=1"));
}

// Refusals are traced and returned, but an invalid argument ends the
// process (except for the virtual cable).
CATALOGUE_TEST_F(L3, RefusalsAreTracedAndInvalidArgumentEndsTheProcess, L3_COMMANDS) {
  for (const Case& c : cases()) {
    TraceCapture trace;
    driver.answerNext(c.keyword, ENODEV);
    EXPECT_EQ(c.call(), unsigned{ENODEV}) << c.keyword;
    const char* label = std::string_view(c.keyword) == "vlanroutingstatus" ? " error= " : " error ";
    EXPECT_EQ(trace.lines().back().text,
              std::string(c.fn) + " cmd: " + c.sent + label + "No such device");
    EXPECT_EQ(trace.lines().back().level, 0);
    if (c.invalidEndsProcess) {
      EXPECT_EXIT(
          {
            driver.answerNext(c.keyword, EINVAL);
            c.call();
          },
          KilledBySignal(SIGABRT), std::string("^") + c.sent + ": Invalid argument" VORN_ABORT_END)
          << c.keyword;
    } else {
      driver.answerNext(c.keyword, EINVAL);
      EXPECT_EQ(c.call(), unsigned{EINVAL}) << c.keyword;
    }
  }
}

}  // namespace
