// QoS maps, traffic-class tables, PTP and VXLAN commands.
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

// A refusal means the library sent something wrong and ends the process.
CATALOGUE_TEST_F(Qos, MapsAreSentAndRefusalsEndTheProcess, "vornDmaSetCosToTc", "vornDmaSetTcToCos",
                 "vornDmaSetDscpToTc") {
  EXPECT_EQ(vornDmaSetCosToTc(7, 7), 0u);
  EXPECT_EQ(vornDmaSetTcToCos(2, 5), 0u);
  EXPECT_EQ(vornDmaSetDscpToTc(63, 7), 0u);
  EXPECT_THAT(driver.commands(), ElementsAre("vprimap 7 7", "tcmap 2 5", "dscpmap 63 7"));
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

// One octal digit per class, class 0 last, unmasked: 8 spills into the next
// class, or past the eight digits the driver takes.
CATALOGUE_TEST_F(Qos, TrafficClassTableIsOneOctalWordClassZeroLast, "vornDmaTcToVpriMapAdd") {
  TraceCapture trace;
  unsigned ascending[8] = {0, 1, 2, 3, 4, 5, 6, 7};
  unsigned eight[8] = {8, 0, 0, 0, 0, 0, 0, 0};
  unsigned top[8] = {0, 0, 0, 0, 0, 0, 0, 8};
  EXPECT_EQ(vornDmaTcToVpriMapAdd("et1", ascending), 0u);
  EXPECT_EQ(vornDmaTcToVpriMapAdd("et1", eight), 0u);
  EXPECT_EQ(vornDmaTcToVpriMapAdd("et1", top), unsigned{EINVAL});
  EXPECT_THAT(driver.commands(),
              ElementsAre("tc_vpri_map_add et1 76543210", "tc_vpri_map_add et1 10",
                          "tc_vpri_map_add et1 100000000"));
  EXPECT_EQ(trace.lines()[0].text, "vornDmaTcToVpriMapAdd: applying mapping 76543210 on et1");
  EXPECT_EQ(trace.lines()[0].level, 2);
}

CATALOGUE_TEST_F(Qos, TableCommandsReturnMissingDeviceAndInvalidArgument, "vornDmaTcToVpriMapDel",
                 "vornDmaTcToVpriMapUpdate") {
  TraceCapture trace;
  EXPECT_EQ(vornDmaTcToVpriMapUpdate("et1", 3, 5), 0u);
  EXPECT_EQ(table()[3], 5u);
  EXPECT_EQ(vornDmaTcToVpriMapUpdate("et1", 8, 5), unsigned{EINVAL});
  EXPECT_EQ(vornDmaTcToVpriMapDel("et1"), 0u);
  EXPECT_FALSE(driver.host().interfaces.at("et1").tcToVpri);
  EXPECT_EQ(vornDmaTcToVpriMapDel("et9"), unsigned{ENODEV});
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaTcToVpriMapUpdate: updating mapping tc 3 to cos 5",
                          "vornDmaTcToVpriMapUpdate: updating mapping tc 8 to cos 5",
                          "vornDmaTcToVpriMapUpdate cmd: tc_vpri_map_update et1 8 5 error Invalid "
                          "argument",
                          "vornDmaTcToVpriMapDel cmd: tc_vpri_map_del et9 error No such device"));
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
  EXPECT_EQ(vornDmaSetPtpDropEventTxPkts(false), 0u);
  TraceCapture trace;
  driver.answerNext("drop_event_ptp_pkts", EINVAL);
  EXPECT_EQ(vornDmaSetPtpDropEventTxPkts(true), unsigned{EINVAL});
  EXPECT_THAT(driver.commands(), ElementsAre("drop_event_ptp_pkts on", "drop_event_ptp_pkts off",
                                             "drop_event_ptp_pkts on"));
  EXPECT_THAT(trace.texts(), ElementsAre("vornDmaSetPtpDropEventTxPkts cmd: drop_event_ptp_pkts on "
                                         "error Invalid argument"));
}

CATALOGUE_TEST_F(Qos, VxlanSettersAlwaysSendAndOnlyTrace, "vornDmaVniToVlanIs",
                 "vornDmaVtepLearnModeIs") {
  ScopedEnv on("SIMULATION_VMID", "1");
  TraceCapture trace;
  vornDmaVniToVlanIs(10010, 10);
  vornDmaVtepLearnModeIs(2);
  vornDmaVniToVlanIs(1u << 24, 10);  // no such VNI
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
      {0x3FFF, 0x3FFF},
      {0x4001, 0x0001},
      {0x8001, 0x4001},
      {0xFFFF, 0x7FFF},
  };
  for (const auto& [in, want] : rows) EXPECT_EQ(vornDmaInternalSysPortIdIs(in), want) << in;
}

}  // namespace
