// QoS maps, traffic-class tables, PTP and VXLAN commands against the
// emulated driver.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

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

TEST_F(Qos, MapsAreSentAndKept) {
  EXPECT_EQ(vornDmaSetCosToTc(5, 2), 0u);
  EXPECT_EQ(vornDmaSetTcToCos(2, 5), 0u);
  EXPECT_EQ(vornDmaSetDscpToTc(46, 7), 0u);
  EXPECT_THAT(driver.commands(), ElementsAre("vprimap 5 2", "tcmap 2 5", "dscpmap 46 7"));
  EXPECT_EQ(driver.host().cosToTc.at(5), 2u);
  EXPECT_EQ(driver.host().tcToCos.at(2), 5u);
  EXPECT_EQ(driver.host().dscpToTc.at(46), 7u);
}

TEST_F(Qos, RefusedMapsEndTheProcessWithTheCommand) {
  // The traced one shows its error trace first; the others go straight to
  // syserr.
  Mox::traceHandle("VornDma").levelIs(0, true);
  EXPECT_EXIT(vornDmaSetCosToTc(1, 9), KilledBySignal(SIGABRT),
              "^vprimap 1 9: Invalid argument" VORN_ABORT_END);
  EXPECT_EXIT(vornDmaSetTcToCos(8, 1), KilledBySignal(SIGABRT),
              "^tcmap 8 1: Invalid argument" VORN_ABORT_END);
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

TEST_F(Qos, LargeEntriesSpillIntoTheNextClass) {
  unsigned eight[8] = {8, 0, 0, 0, 0, 0, 0, 0};
  unsigned one[8] = {0, 1, 0, 0, 0, 0, 0, 0};
  vornDmaTcToVpriMapAdd("et1", eight);
  vornDmaTcToVpriMapAdd("et1", one);
  EXPECT_THAT(driver.commands(), ElementsAre("tc_vpri_map_add et1 10", "tc_vpri_map_add et1 10"));
  // 9 is octal 11: its upper digit is ORed into class 1 (2), giving 31.
  unsigned overlapping[8] = {9, 2, 0, 0, 0, 0, 0, 0};
  vornDmaTcToVpriMapAdd("et1", overlapping);
  EXPECT_EQ(driver.commands().back(), "tc_vpri_map_add et1 31");
  // Class 7 spills past the eight digits the driver takes: it refuses, and
  // the refusal is returned.
  unsigned top[8] = {0, 0, 0, 0, 0, 0, 0, 8};
  EXPECT_EQ(vornDmaTcToVpriMapAdd("et1", top), unsigned{EINVAL});
  EXPECT_EQ(driver.commands().back(), "tc_vpri_map_add et1 100000000");
}

TEST_F(Qos, TableCommandsReturnMissingDeviceAndInvalidArgument) {
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
}

TEST_F(Qos, OtherTableRefusalsEndTheProcess) {
  unsigned map[8] = {};
  EXPECT_EXIT(
      {
        driver.answerNext("tc_vpri_map_add", EIO);
        vornDmaTcToVpriMapAdd("et1", map);
      },
      KilledBySignal(SIGABRT), "^tc_vpri_map_add et1 0: Input/output error" VORN_ABORT_END);
  // Unlike add and update, delete does not tolerate an invalid argument.
  EXPECT_EXIT(
      {
        driver.answerNext("tc_vpri_map_del", EINVAL);
        vornDmaTcToVpriMapDel("et1");
      },
      KilledBySignal(SIGABRT), "^tc_vpri_map_del et1: Invalid argument" VORN_ABORT_END);
  EXPECT_EXIT(
      {
        driver.answerNext("tc_vpri_map_update", EPERM);
        vornDmaTcToVpriMapUpdate("et1", 1, 2);
      },
      KilledBySignal(SIGABRT),
      "^tc_vpri_map_update et1 1 2: Operation not permitted" VORN_ABORT_END);
}

TEST_F(Qos, PtpDropSwitchReturnsRefusals) {
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

TEST_F(Qos, VxlanSettersAlwaysSendAndOnlyTrace) {
  ScopedEnv on("SIMULATION_VMID", "1");
  TraceCapture trace;
  vornDmaVniToVlanIs(10010, 10);
  vornDmaVtepLearnModeIs(2);
  EXPECT_EQ(driver.host().vniToVlan.at(10010), 10u);
  EXPECT_EQ(driver.host().vtepLearnMode, 2u);
  vornDmaVniToVlanIs(1u << 24, 10);  // no such VNI: refused, traced, nothing else
  EXPECT_THAT(driver.commands(),
              ElementsAre("vnitovlan 10010 10", "vtep_learn_mode 2", "vnitovlan 16777216 10"));
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaVniToVlanIs: vni: 10010 vlanId 10",
                          "vornDmaVtepLearnModeIs: VxlanVtepLearnMode: 2",
                          "vornDmaVniToVlanIs: vni: 16777216 vlanId 10",
                          "vornDmaVniToVlanIs cmd: vnitovlan 16777216 10 error Invalid argument"));
}

TEST_F(Qos, SimulationSendsNothingElse) {
  ScopedEnv on("SIMULATION_VMID", "");
  unsigned map[8] = {};
  EXPECT_EQ(vornDmaSetCosToTc(1, 99), 0u);
  EXPECT_EQ(vornDmaSetTcToCos(99, 1), 0u);
  EXPECT_EQ(vornDmaSetDscpToTc(99, 1), 0u);
  EXPECT_EQ(vornDmaTcToVpriMapAdd("et9", map), 0u);
  EXPECT_EQ(vornDmaTcToVpriMapDel("et9"), 0u);
  EXPECT_EQ(vornDmaTcToVpriMapUpdate("et9", 1, 1), 0u);
  EXPECT_EQ(vornDmaSetPtpDropEventTxPkts(true), 0u);
  EXPECT_THAT(driver.commands(), IsEmpty());
}

TEST(InternalSysPortId, MovesBit15ToBit14AndDropsBit14) {
  EXPECT_EQ(vornDmaInternalSysPortIdIs(0x8001), 0x4001);
  EXPECT_EQ(vornDmaInternalSysPortIdIs(0x4001), 0x0001);
  EXPECT_EQ(vornDmaInternalSysPortIdIs(0xC000), 0x4000);
  EXPECT_EQ(vornDmaInternalSysPortIdIs(0x3FFF), 0x3FFF);
  EXPECT_EQ(vornDmaInternalSysPortIdIs(0xFFFF), 0x7FFF);
  EXPECT_EQ(vornDmaInternalSysPortIdIs(0), 0);
}

}  // namespace
