// QoS maps, traffic-class tables, PTP and VXLAN commands against the
// emulated driver.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <csignal>

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

class Qos : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(vornDmaIfadd("et1", 5, 0, "", false, false, "02:00:00:00:00:01"), 0);
    driver.clearLog();
  }
  std::array<unsigned, 8> table() { return *driver.host().interfaces.at("et1").tcToVpri; }

  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
  TcCapture tc;
};

// The largest values the driver takes are sent and kept; a refusal means
// the library sent something wrong and ends the process (the traced one
// shows its error trace first).
CATALOGUE_TEST_F(Qos, MapsAreSentAndRefusalsEndTheProcess, "vornDmaSetCosToTc", "vornDmaSetTcToCos",
                 "vornDmaSetDscpToTc") {
  EXPECT_EQ(vornDmaSetCosToTc(5, 2), 0u);
  EXPECT_EQ(vornDmaSetTcToCos(2, 5), 0u);
  EXPECT_EQ(vornDmaSetDscpToTc(46, 7), 0u);
  EXPECT_EQ(vornDmaSetCosToTc(7, 7), 0u);
  EXPECT_EQ(vornDmaSetDscpToTc(63, 7), 0u);
  EXPECT_THAT(driver.commands(), ElementsAre("vprimap 5 2", "tcmap 2 5", "dscpmap 46 7",
                                             "vprimap 7 7", "dscpmap 63 7"));
  Mox::traceHandle("VornDma").levelIs(0, true);
  EXPECT_EXIT(vornDmaSetCosToTc(UINT_MAX, 0), KilledBySignal(SIGABRT),
              "^vprimap 4294967295 0: Invalid argument" VORN_ABORT_END);
  EXPECT_EXIT(vornDmaSetTcToCos(0, 8), KilledBySignal(SIGABRT),
              "^tcmap 0 8: Invalid argument" VORN_ABORT_END);
  EXPECT_EXIT(vornDmaSetDscpToTc(64, 1), KilledBySignal(SIGABRT),
              "^VornDma\\[0\\] /src/Vorn/VornDma:[0-9]+ vornDmaSetDscpToTc cmd: dscpmap 64 1 error "
              "Invalid argument\ndscpmap 64 1: Invalid argument" VORN_ABORT_END);
  Mox::traceHandle("VornDma").levelIs(0, false);
}

TEST_F(Qos, TrafficClassTableIsOneOctalWordClassZeroLast) {
  TraceCapture trace;
  unsigned ascending[8] = {0, 1, 2, 3, 4, 5, 6, 7};
  EXPECT_EQ(vornDmaTcToVpriMapAdd("et1", ascending), 0u);
  EXPECT_EQ(table(), (std::array<unsigned, 8>{0, 1, 2, 3, 4, 5, 6, 7}));
  unsigned sevens[8] = {7, 7, 7, 7, 7, 7, 7, 7};
  vornDmaTcToVpriMapAdd("et1", sevens);
  unsigned zeros[8] = {};
  vornDmaTcToVpriMapAdd("et1", zeros);
  EXPECT_THAT(driver.commands(),
              ElementsAre("tc_vpri_map_add et1 76543210", "tc_vpri_map_add et1 77777777",
                          "tc_vpri_map_add et1 0"));
  EXPECT_EQ(trace.lines()[0].text, "vornDmaTcToVpriMapAdd: applying mapping 76543210 on et1");
  EXPECT_EQ(trace.lines()[0].level, 2);
}

// Entries are not masked: 8 spills into the next class, past the eight
// digits the driver takes for class 7, which it refuses as a cut name.
CATALOGUE_TEST_F(Qos, LargeEntriesSpillIntoTheNextClass, "vornDmaTcToVpriMapAdd",
                 "vornDmaTcToVpriMapUpdate") {
  unsigned eight[8] = {8, 0, 0, 0, 0, 0, 0, 0};
  unsigned one[8] = {0, 1, 0, 0, 0, 0, 0, 0};
  vornDmaTcToVpriMapAdd("et1", eight);
  vornDmaTcToVpriMapAdd("et1", one);
  EXPECT_THAT(driver.commands(), ElementsAre("tc_vpri_map_add et1 10", "tc_vpri_map_add et1 10"));
  // Class 7 spills past the eight digits the driver takes: it refuses, and
  // the refusal is returned.
  unsigned top[8] = {0, 0, 0, 0, 0, 0, 0, 8};
  EXPECT_EQ(vornDmaTcToVpriMapAdd("et1", top), unsigned{EINVAL});
  EXPECT_EQ(driver.commands().back(), "tc_vpri_map_add et1 100000000");
  const std::string overlong(300, 'n');
  EXPECT_EQ(vornDmaTcToVpriMapAdd(overlong.c_str(), top), unsigned{EINVAL});
  EXPECT_EQ(driver.commands().back(), ("tc_vpri_map_add " + overlong).substr(0, kCommandSize - 1));
  EXPECT_EQ(vornDmaTcToVpriMapUpdate("et1", UINT_MAX, UINT_MAX), unsigned{EINVAL});
  EXPECT_EQ(driver.commands().back(), "tc_vpri_map_update et1 4294967295 4294967295");
}

CATALOGUE_TEST_F(Qos, TableCommandsReturnMissingDeviceAndInvalidArgument, "vornDmaTcToVpriMapAdd",
                 "vornDmaTcToVpriMapDel", "vornDmaTcToVpriMapUpdate") {
  TraceCapture trace;
  unsigned map[8] = {1, 1, 1, 1, 1, 1, 1, 1};
  EXPECT_EQ(vornDmaTcToVpriMapAdd("et9", map), unsigned{ENODEV});
  EXPECT_EQ(vornDmaTcToVpriMapUpdate("et1", 3, 5), 0u);
  EXPECT_EQ(table()[3], 5u);
  EXPECT_EQ(vornDmaTcToVpriMapUpdate("et1", 8, 5), unsigned{EINVAL});
  EXPECT_EQ(vornDmaTcToVpriMapUpdate("et9", 1, 1), unsigned{ENODEV});
  EXPECT_EQ(vornDmaTcToVpriMapDel("et1"), 0u);
  EXPECT_FALSE(driver.host().interfaces.at("et1").tcToVpri);
  EXPECT_EQ(vornDmaTcToVpriMapDel("et9"), unsigned{ENODEV});
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaTcToVpriMapAdd: applying mapping 11111111 on et9",
                          "vornDmaTcToVpriMapAdd cmd: tc_vpri_map_add et9 11111111 error No such "
                          "device",
                          "vornDmaTcToVpriMapUpdate: updating mapping tc 3 to cos 5",
                          "vornDmaTcToVpriMapUpdate: updating mapping tc 8 to cos 5",
                          "vornDmaTcToVpriMapUpdate cmd: tc_vpri_map_update et1 8 5 error Invalid "
                          "argument",
                          "vornDmaTcToVpriMapUpdate: updating mapping tc 1 to cos 1",
                          "vornDmaTcToVpriMapUpdate cmd: tc_vpri_map_update et9 1 1 error No such "
                          "device",
                          "vornDmaTcToVpriMapDel cmd: tc_vpri_map_del et9 error No such device"));
  // Other refusals end the process.
  EXPECT_EXIT(
      {
        driver.answerNext("tc_vpri_map_add", EIO);
        vornDmaTcToVpriMapAdd("et1", map);
      },
      KilledBySignal(SIGABRT), "^tc_vpri_map_add et1 11111111: Input/output error" VORN_ABORT_END);
  // Unlike add and update, delete does not tolerate an invalid argument.
  EXPECT_EXIT(
      {
        driver.answerNext("tc_vpri_map_del", EINVAL);
        vornDmaTcToVpriMapDel("et1");
      },
      KilledBySignal(SIGABRT), "^tc_vpri_map_del et1: Invalid argument" VORN_ABORT_END);
}

CATALOGUE_TEST_F(Qos, PtpDropSwitchReturnsRefusals, "vornDmaSetPtpDropEventTxPkts") {
  EXPECT_EQ(vornDmaSetPtpDropEventTxPkts(true), 0u);
  EXPECT_TRUE(driver.host().dropPtpEventTx);
  EXPECT_EQ(vornDmaSetPtpDropEventTxPkts(false), 0u);
  EXPECT_FALSE(driver.host().dropPtpEventTx);
  TraceCapture trace;
  driver.answerNext("drop_event_ptp_pkts", EINVAL);
  EXPECT_EQ(vornDmaSetPtpDropEventTxPkts(true), unsigned{EINVAL});
  EXPECT_THAT(driver.commands(), ElementsAre("drop_event_ptp_pkts on", "drop_event_ptp_pkts off",
                                             "drop_event_ptp_pkts on"));
  EXPECT_THAT(trace.texts(), ElementsAre("vornDmaSetPtpDropEventTxPkts cmd: drop_event_ptp_pkts on "
                                         "error Invalid argument"));
}

// They return nothing: a refusal is only traced.
CATALOGUE_TEST_F(Qos, VxlanSettersAlwaysSendAndOnlyTrace, "vornDmaVniToVlanIs",
                 "vornDmaVtepLearnModeIs") {
  ScopedEnv on("SIMULATION_VMID", "1");
  TraceCapture trace;
  vornDmaVniToVlanIs(10010, 10);
  vornDmaVtepLearnModeIs(2);
  EXPECT_EQ(driver.host().vniToVlan.at(10010), 10u);
  EXPECT_EQ(driver.host().vtepLearnMode, 2u);
  vornDmaVniToVlanIs(1u << 24, 10);  // no such VNI: refused, traced, nothing else
  vornDmaVtepLearnModeIs(UINT_MAX);
  EXPECT_THAT(driver.commands(),
              ElementsAre("vnitovlan 10010 10", "vtep_learn_mode 2", "vnitovlan 16777216 10",
                          "vtep_learn_mode 4294967295"));
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaVniToVlanIs: vni: 10010 vlanId 10",
                          "vornDmaVtepLearnModeIs: VxlanVtepLearnMode: 2",
                          "vornDmaVniToVlanIs: vni: 16777216 vlanId 10",
                          "vornDmaVniToVlanIs cmd: vnitovlan 16777216 10 error Invalid argument",
                          "vornDmaVtepLearnModeIs: VxlanVtepLearnMode: 4294967295"));
}

// Bit 15 moves to bit 14; bit 14 is dropped.
CATALOGUE_TEST(InternalSysPortId, OverTheWholeRange, "vornDmaInternalSysPortIdIs") {
  const std::pair<unsigned short, unsigned short> rows[] = {
      {0x0000, 0x0000}, {0x3FFF, 0x3FFF}, {0x4001, 0x0001},
      {0x8001, 0x4001}, {0xC000, 0x4000}, {0xFFFF, 0x7FFF},
  };
  for (const auto& [in, want] : rows) EXPECT_EQ(vornDmaInternalSysPortIdIs(in), want) << in;
}

}  // namespace
