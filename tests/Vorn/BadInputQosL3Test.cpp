// Bad input to the QoS, PTP, VXLAN, L3, MLAG and virtual-cable commands:
// vornDmaSetCosToTc, vornDmaSetTcToCos, vornDmaSetDscpToTc,
// vornDmaTcToVpriMapAdd, vornDmaTcToVpriMapDel, vornDmaTcToVpriMapUpdate,
// vornDmaSetPtpDropEventTxPkts, vornDmaVniToVlanIs, vornDmaVtepLearnModeIs,
// vornDmaInternalSysPortIdIs, vornDmaVirtualMacSet, vornDmaIpAddrVirtualSet,
// vornDmaIp6AddrVirtualSet, vornDmaPeerRouterMacSet,
// vornDmaMlagSharedRouterMacIs, vornDmaArpSnoopingVlan, vornDmaPvlanMap,
// vornDmaVlanRoutingStatus, vornDmaVcableSetProto, vornDmaVcableSetMuxid.
// Each row gives the largest value the driver takes, one past it, and the
// widest value; the outcome is the driver's answer returned, or the end of
// the process where a refusal means that the library sent something wrong.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <functional>
#include <string>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;

namespace {

constexpr int kEnds = -1;  // the refusal ends the process through syserr
const std::string kOverlong(300, 'n');

struct Row {
  std::function<unsigned()> call;
  std::string sent;
  int want;  // the code returned, or kEnds
};

class BadInputQosL3 : public testing::Test {
 protected:
  VornTest::ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
  void SetUp() override {
    driver.tcEmulatedIs(true);
    ASSERT_EQ(vornDmaIfadd("et1", 100, 0, Mox::String(), false, false, "02:00:00:00:00:01"), 0);
    driver.clearLog();
  }
  void check(const std::vector<Row>& rows) {
    for (const Row& r : rows) {
      if (r.want == kEnds) {
        EXPECT_EXIT(r.call(), testing::KilledBySignal(SIGABRT),
                    "^" + VornTest::regexQuoted(r.sent) + ": Invalid argument" VORN_ABORT_END);
        continue;
      }
      EXPECT_EQ(r.call(), unsigned(r.want)) << r.sent;
      EXPECT_EQ(driver.commands().back(), r.sent);
    }
  }
};

CATALOGUE_TEST_F(BadInputQosL3, QosMapNumbers, "vornDmaSetCosToTc", "vornDmaSetTcToCos",
                 "vornDmaSetDscpToTc") {
  check({
      {[] { return vornDmaSetCosToTc(7, 7); }, "vprimap 7 7", 0},
      {[] { return vornDmaSetCosToTc(8, 0); }, "vprimap 8 0", kEnds},
      {[] { return vornDmaSetCosToTc(UINT_MAX, 0); }, "vprimap 4294967295 0", kEnds},
      {[] { return vornDmaSetTcToCos(7, 7); }, "tcmap 7 7", 0},
      {[] { return vornDmaSetTcToCos(0, 8); }, "tcmap 0 8", kEnds},
      {[] { return vornDmaSetDscpToTc(63, 7); }, "dscpmap 63 7", 0},
      {[] { return vornDmaSetDscpToTc(64, 0); }, "dscpmap 64 0", kEnds},
  });
}

// The per-netdevice table: entries are not masked, so 8 spills into the
// next class and all-ones entries fill the whole word; the driver refuses
// what is not eight 3-bit fields, and an unknown or cut name.
CATALOGUE_TEST_F(BadInputQosL3, PriorityTableEntriesAndNames, "vornDmaTcToVpriMapAdd",
                 "vornDmaTcToVpriMapDel", "vornDmaTcToVpriMapUpdate") {
  static unsigned sevens[8] = {7, 7, 7, 7, 7, 7, 7, 7}, spill[8] = {8}, ones[8], zeros[8] = {};
  std::fill(std::begin(ones), std::end(ones), UINT_MAX);
  const std::string cutAdd = ("tc_vpri_map_add " + kOverlong).substr(0, kCommandSize - 1);
  const std::string cutDel = ("tc_vpri_map_del " + kOverlong).substr(0, kCommandSize - 1);
  check({
      {[] { return vornDmaTcToVpriMapAdd("et1", sevens); }, "tc_vpri_map_add et1 77777777", 0},
      {[] { return vornDmaTcToVpriMapAdd("et1", spill); }, "tc_vpri_map_add et1 10", 0},
      {[] { return vornDmaTcToVpriMapAdd("et1", ones); }, "tc_vpri_map_add et1 37777777777",
       EINVAL},
      {[] { return vornDmaTcToVpriMapAdd("", zeros); }, "tc_vpri_map_add  0", ENODEV},
      {[] { return vornDmaTcToVpriMapAdd(kOverlong.c_str(), zeros); }, cutAdd, EINVAL},
      {[] { return vornDmaTcToVpriMapDel(""); }, "tc_vpri_map_del ", ENODEV},
      {[] { return vornDmaTcToVpriMapDel(kOverlong.c_str()); }, cutDel, ENODEV},
      {[] { return vornDmaTcToVpriMapUpdate("et1", 7, 7); }, "tc_vpri_map_update et1 7 7", 0},
      {[] { return vornDmaTcToVpriMapUpdate("et1", 8, 0); }, "tc_vpri_map_update et1 8 0", EINVAL},
      {[] { return vornDmaTcToVpriMapUpdate("et1", UINT_MAX, UINT_MAX); },
       "tc_vpri_map_update et1 4294967295 4294967295", EINVAL},
      {[] { return vornDmaTcToVpriMapUpdate("", 0, 0); }, "tc_vpri_map_update  0 0", ENODEV},
  });
}

// The VXLAN setters return nothing: a refusal is only traced.
CATALOGUE_TEST_F(BadInputQosL3, PtpAndVxlanValues, "vornDmaSetPtpDropEventTxPkts",
                 "vornDmaVniToVlanIs", "vornDmaVtepLearnModeIs") {
  EXPECT_EQ(vornDmaSetPtpDropEventTxPkts(true), 0u);
  EXPECT_EQ(vornDmaSetPtpDropEventTxPkts(false), 0u);
  VornTest::TraceCapture trace;
  vornDmaVniToVlanIs(0xFFFFFF, 4095);
  vornDmaVniToVlanIs(0x1000000, 1);
  vornDmaVniToVlanIs(UINT_MAX, UINT_MAX);
  vornDmaVtepLearnModeIs(UINT_MAX);
  EXPECT_THAT(driver.commands(),
              ElementsAre("drop_event_ptp_pkts on", "drop_event_ptp_pkts off",
                          "vnitovlan 16777215 4095", "vnitovlan 16777216 1",
                          "vnitovlan 4294967295 4294967295", "vtep_learn_mode 4294967295"));
  std::vector<std::string> refusals;
  for (const auto& line : trace.lines())
    if (line.level == 0) refusals.push_back(line.text);
  EXPECT_THAT(refusals,
              ElementsAre("vornDmaVniToVlanIs cmd: vnitovlan 16777216 1 error Invalid argument",
                          "vornDmaVniToVlanIs cmd: vnitovlan 4294967295 4294967295 error Invalid "
                          "argument"));
}

CATALOGUE_TEST(BadInputQosL3Pure, InternalSysPortIdOverTheWholeRange,
               "vornDmaInternalSysPortIdIs") {
  const std::pair<unsigned short, unsigned short> rows[] = {
      {0x0000, 0x0000}, {0x3FFF, 0x3FFF}, {0x4000, 0x0000}, {0x4001, 0x0001},
      {0x8000, 0x4000}, {0x8001, 0x4001}, {0xC000, 0x4000}, {0xFFFF, 0x7FFF},
  };
  for (const auto& [in, want] : rows) EXPECT_EQ(vornDmaInternalSysPortIdIs(in), want) << in;
}

CATALOGUE_TEST_F(BadInputQosL3, RouterMacsAtTheirExtremes, "vornDmaVirtualMacSet",
                 "vornDmaPeerRouterMacSet", "vornDmaMlagSharedRouterMacIs") {
  const Wirl::EthAddr zero, ones(0xff, 0xff, 0xff, 0xff, 0xff, 0xff);
  check({
      {[&] { return vornDmaVirtualMacSet(Wirl::EthAddrWithMask(zero, zero)); },
       "virtualmac 00:00:00:00:00:00 00:00:00:00:00:00", 0},
      {[&] { return vornDmaVirtualMacSet(Wirl::EthAddrWithMask(ones, ones)); },
       "virtualmac ff:ff:ff:ff:ff:ff ff:ff:ff:ff:ff:ff", 0},
      {[&] { return vornDmaPeerRouterMacSet(zero); }, "mlagpeermac 00:00:00:00:00:00", 0},
      {[&] { return vornDmaPeerRouterMacSet(ones); }, "mlagpeermac ff:ff:ff:ff:ff:ff", 0},
      {[&] { return vornDmaMlagSharedRouterMacIs(zero); }, "mlag_shared_mac 00:00:00:00:00:00", 0},
      {[&] { return vornDmaMlagSharedRouterMacIs(ones); }, "mlag_shared_mac ff:ff:ff:ff:ff:ff", 0},
  });
}

CATALOGUE_TEST_F(BadInputQosL3, VlanNumbers, "vornDmaIpAddrVirtualSet", "vornDmaIp6AddrVirtualSet",
                 "vornDmaArpSnoopingVlan", "vornDmaPvlanMap", "vornDmaVlanRoutingStatus") {
  check({
      {[] { return vornDmaIpAddrVirtualSet(4095, true); }, "vlanipaddrvirtual 4095 1", 0},
      {[] { return vornDmaIpAddrVirtualSet(4096, true); }, "vlanipaddrvirtual 4096 1", kEnds},
      {[] { return vornDmaIpAddrVirtualSet(UINT_MAX, false); }, "vlanipaddrvirtual 4294967295 0",
       kEnds},
      {[] { return vornDmaIp6AddrVirtualSet(4095, false); }, "vlanip6addrvirtual 4095 0", 0},
      {[] { return vornDmaIp6AddrVirtualSet(4096, true); }, "vlanip6addrvirtual 4096 1", kEnds},
      {[] { return vornDmaArpSnoopingVlan(4095, true); }, "arp_snooping_vlan 4095 1", 0},
      {[] { return vornDmaArpSnoopingVlan(65535, false); }, "arp_snooping_vlan 65535 0", kEnds},
      {[] { return vornDmaPvlanMap(4095, 0); }, "pvlanmap 4095 0", 0},
      {[] { return vornDmaPvlanMap(7, 7); }, "pvlanmap 7 7", kEnds},
      {[] { return vornDmaPvlanMap(65535, 65535); }, "pvlanmap 65535 65535", kEnds},
      {[] { return vornDmaVlanRoutingStatus(4095, 1); }, "vlanroutingstatus 4095 1", 0},
      {[] { return vornDmaVlanRoutingStatus(4095, 2); }, "vlanroutingstatus 4095 2", kEnds},
      {[] { return vornDmaVlanRoutingStatus(65535, 65535); }, "vlanroutingstatus 65535 65535",
       kEnds},
  });
}

// The virtual-cable commands never end the process.
CATALOGUE_TEST_F(BadInputQosL3, VirtualCableValuesAndNames, "vornDmaVcableSetProto",
                 "vornDmaVcableSetMuxid") {
  const std::string cut = ("vcable_muxid " + kOverlong).substr(0, kCommandSize - 1);
  check({
      {[] { return vornDmaVcableSetProto(0); }, "vcable_proto 0", 0},
      {[] { return vornDmaVcableSetProto(0xFFFF); }, "vcable_proto ffff", 0},
      {[] { return vornDmaVcableSetMuxid("et1", 65535); }, "vcable_muxid et1 65535", 0},
      {[] { return vornDmaVcableSetMuxid("", 0); }, "vcable_muxid  0", ENODEV},
      {[] { return vornDmaVcableSetMuxid(kOverlong.c_str(), 1); }, cut, EINVAL},
  });
}

}  // namespace
