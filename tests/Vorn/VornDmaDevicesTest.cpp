// Device commands against the emulated driver.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using VornTest::ScopedEnv;
using VornTest::TraceCapture;

namespace {

constexpr const char kPci[] = "0000:03:00.0";

Mox::Ptr<Fru::PciHam const> ham() { return Fru::PciHam::pciHamIs({0, 3, 0, 0}); }

class Devices : public testing::Test {
 protected:
  void SetUp() override { driver.pciDevicePresentIs(kPci); }
  // Announces, names and parameterises fap0.
  void bringUp() {
    ASSERT_EQ(vornDmaDeviceRename("fap0", ham()), 0);
    ASSERT_EQ(vornDmaDeviceParam("fap0", fapTypeArad, FapId(1), 1, 2, 3, 4, 5, 6), 0);
    ASSERT_EQ(vornDmaDeviceUp("fap0"), 0);
  }
  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
};

TEST_F(Devices, PresentSendsThePciAddressNotTheName) {
  EXPECT_TRUE(vornDmaPresent("fap0", ham()));
  EXPECT_FALSE(vornDmaPresent("fap0", Fru::PciHam::pciHamIs({0, 4, 0, 0})));
  EXPECT_THAT(driver.commands(),
              ElementsAre("devpresent 0000:03:00.0", "devpresent 0000:04:00.0"));
}

TEST_F(Devices, PresentWithoutPciDeviceSendsNothing) {
  EXPECT_FALSE(vornDmaPresent("fap0", Fru::PciHam::pciHamWithoutDevice()));
  EXPECT_FALSE(vornDmaPresent("fap0", nullptr));
  EXPECT_THAT(driver.commands(), IsEmpty());
}

TEST_F(Devices, PciAddressIsPrintedInLowerCaseWithItsWidths) {
  driver.pciDevicePresentIs("00ab:0c:1f.7");
  EXPECT_TRUE(vornDmaPresent("x", Fru::PciHam::pciHamIs({0xab, 0x0c, 0x1f, 7})));
}

TEST_F(Devices, RenameAnswers) {
  EXPECT_EQ(vornDmaDeviceRename("fap0", ham()), 0);
  TraceCapture trace;
  // Already named: returned as it is, no trace.
  EXPECT_EQ(vornDmaDeviceRename("fap0", ham()), EEXIST);
  EXPECT_THAT(trace.lines(), IsEmpty());
  EXPECT_EQ(vornDmaDeviceRename("fap1", nullptr), 0);
  EXPECT_THAT(driver.commands(), Contains("devname fap1 nopcidev"));
}

TEST_F(Devices, RenameOfAVanishedDeviceRaisesSigbusThenAnswers19) {
  struct sigaction ignore = {}, old = {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGBUS, &ignore, &old);
  TraceCapture trace;
  driver.answerNext("devname", ENODEV);
  EXPECT_EQ(vornDmaDeviceRename("fap0", ham()), ENODEV);
  sigaction(SIGBUS, &old, nullptr);
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaDeviceRename cmd: devname fap0 0000:03:00.0 error No such device"));
}

TEST_F(Devices, RenameDeathPaths) {
  EXPECT_EXIT(
      {
        driver.answerNext("devname", ENODEV);
        vornDmaDeviceRename("fap0", ham());
      },
      testing::KilledBySignal(SIGBUS), "");
  EXPECT_EXIT(
      {
        driver.answerNext("devname", EPERM);
        errno = 0;
        vornDmaDeviceRename("fap0", ham());
      },
      testing::KilledBySignal(SIGABRT), "^devname: ");
  // A handle whose PCI device is gone cannot be named.
  EXPECT_EXIT(vornDmaDeviceRename("fap0", Fru::PciHam::pciHamWithoutDevice()),
              testing::KilledBySignal(SIGABRT), "^devname: ");
}

TEST_F(Devices, ParamsAlreadySetIsReturnedOthersEndTheProcess) {
  ASSERT_EQ(vornDmaDeviceRename("fap0", ham()), 0);
  EXPECT_EQ(vornDmaDeviceParam("fap0", fapTypeJericho, FapId(7), 1, 2, 3, 4, 5, 4000000000u), 0);
  EXPECT_THAT(driver.commands().back(), "devparams fap0 3 7 1 2 3 4 5 4000000000");
  TraceCapture trace;
  EXPECT_EQ(vornDmaDeviceParam("fap0", fapTypeJericho, FapId(7), 1, 2, 3, 4, 5, 6), EBUSY);
  EXPECT_THAT(trace.lines(), IsEmpty());
  EXPECT_EXIT(
      {
        driver.answerNext("devparams", EINVAL);
        vornDmaDeviceParam("fap0", fapTypeJericho, FapId(7), 1, 2, 3, 4, 5, 6);
      },
      testing::KilledBySignal(SIGABRT), "^devparams: Invalid argument\n");
}

TEST_F(Devices, StateCommandsAndGoneDevice) {
  bringUp();
  EXPECT_TRUE(driver.devices().devices.at("fap0").up);
  EXPECT_EQ(vornDmaDeviceDown("fap0"), 0);
  EXPECT_FALSE(driver.devices().devices.at("fap0").up);
  TraceCapture trace;
  EXPECT_EQ(vornDmaDeviceUp("gone"), ENODEV);  // not traced: already gone
  EXPECT_THAT(trace.lines(), IsEmpty());
  driver.answerNext("devstate", EIO);
  EXPECT_EQ(vornDmaDeviceDown("fap0"), EIO);
  ASSERT_EQ(trace.lines().size(), 1u);
  EXPECT_EQ(trace.lines()[0].text,
            "vornDmaSetDeviceState cmd: devstate fap0 down error Input/output error");
  EXPECT_EQ(trace.lines()[0].file, "/src/Vorn/VornDma");
  EXPECT_EQ(trace.lines()[0].level, 0);
}

TEST_F(Devices, StatisticsAndUpState) {
  bringUp();
  fabdevstats stats;
  std::memset(&stats, 0xAB, sizeof stats);
  EXPECT_EQ(vornDmaGetDevStats("fap0", &stats), 0);
  EXPECT_NE(stats.up, 0u);
  EXPECT_EQ(driver.commands().back(), "devstats fap0");
  bool up = false;
  EXPECT_EQ(vornDmaIsDeviceUp("fap0", &up), 0);
  EXPECT_TRUE(up);
  vornDmaDeviceDown("fap0");
  EXPECT_EQ(vornDmaIsDeviceUp("fap0", &up), 0);
  EXPECT_FALSE(up);
}

TEST_F(Devices, FailedStatisticsLeaveUpAloneAndTraceTheName) {
  TraceCapture trace;
  bool up = true;
  EXPECT_EQ(vornDmaIsDeviceUp("nosuch", &up), ENODEV);
  EXPECT_TRUE(up);
  EXPECT_THAT(trace.texts(), ElementsAre("vornDmaGetDevStats nosuch error No such device"));
}

TEST_F(Devices, CleanupReturnsAndTracesRefusals) {
  bringUp();
  EXPECT_EQ(vornDmaDevcleanup("fap0"), 0);
  EXPECT_FALSE(driver.devices().devices.at("fap0").paramsSet);
  TraceCapture trace;
  EXPECT_EQ(vornDmaDevcleanup("nosuch"), ENODEV);
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaDevcleanup cmd: devcleanup nosuch error No such device"));
}

TEST_F(Devices, ListingsReturnTheDriversText) {
  bringUp();
  EXPECT_EQ(vornDmaListUpDevices(), "fap0 0000:03:00.0\n");
  EXPECT_EQ(vornDmaListDeviceParams(), "fap0 type 2 fap 1 params 1 2 3 4 5 6\n");
}

TEST_F(Devices, RefusedListingIsAnAssertion) {
  EXPECT_DEATH(
      {
        driver.answerNext("devlist", EIO);
        vornDmaListUpDevices();
      },
      "Assertion `false' failed");
  EXPECT_DEATH(
      {
        driver.answerNext("devparamslist", EIO);
        vornDmaListDeviceParams();
      },
      "vornDmaListDeviceParams\\(\\): Assertion `false' failed");
}

TEST_F(Devices, MpcModeRefusalEndsTheProcessWithTheCommand) {
  EXPECT_EQ(vornDmaMpcMode(true), 0);
  EXPECT_TRUE(driver.devices().mpcMode);
  EXPECT_EQ(vornDmaMpcMode(false), 0);
  EXPECT_THAT(driver.commands(), ElementsAre("mpcmode on", "mpcmode off"));
  EXPECT_EXIT(
      {
        driver.answerNext("mpcmode", EINVAL);
        vornDmaMpcMode(true);
      },
      testing::KilledBySignal(SIGABRT), "^mpcmode on: Invalid argument\n");
}

TEST_F(Devices, SimulationAnswers) {
  ScopedEnv on("SIMULATION_VMID", "1");
  EXPECT_TRUE(vornDmaPresent("fap0", Fru::PciHam::pciHamWithoutDevice()));
  bool up = true;
  EXPECT_EQ(vornDmaIsDeviceUp("fap0", &up), 0);
  EXPECT_FALSE(up);
  fabdevstats stats;
  stats.up = 5;
  stats.header = 77;
  EXPECT_EQ(vornDmaGetDevStats("fap0", &stats), 0);
  EXPECT_EQ(stats.up, 0u);
  EXPECT_EQ(stats.header, 77u);
  EXPECT_EQ(vornDmaListUpDevices(), "");
  EXPECT_EQ(vornDmaListDeviceParams(), "");
  EXPECT_EQ(vornDmaDeviceRename("fap0", nullptr), 0);
  EXPECT_EQ(vornDmaDeviceParam("fap0", fapTypeArad, FapId(0), 0, 0, 0, 0, 0, 0), 0);
  EXPECT_THAT(driver.commands(), IsEmpty());
}

}  // namespace
