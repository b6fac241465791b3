// Device commands against the emulated driver, with their bad input.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <string>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::IsEmpty;
using VornTest::ScopedEnv;
using VornTest::TraceCapture;

namespace {

constexpr const char kPci[] = "0000:03:00.0";

Mox::Ptr<Fru::PciHam const> ham() {
  return Fru::PciHam::pciHamIs({0, 3, 0, 0});
}

class Devices : public testing::Test {
 protected:
  void SetUp() override { driver.pciDevicePresentIs(kPci); }
  void bringUp() {
    ASSERT_EQ(vornDmaDeviceRename("fap0", ham()), 0);
    ASSERT_EQ(vornDmaDeviceParam("fap0", fapTypeArad, FapId(1), 1, 2, 3, 4, 5, 6), 0);
    ASSERT_EQ(vornDmaDeviceUp("fap0"), 0);
  }
  // Up, without a PCI function.
  void upDeviceIs(const std::string& name) {
    ASSERT_EQ(vornDmaDeviceRename(Mox::String(name.c_str()), nullptr), 0) << name;
    ASSERT_EQ(vornDmaDeviceUp(Mox::String(name.c_str())), 0) << name;
  }
  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
};

// No PCI device behind the handle sends nothing.
CATALOGUE_TEST_F(Devices, PresentSendsThePciAddress, "vornDmaPresent") {
  EXPECT_TRUE(vornDmaPresent("fap0", ham()));
  EXPECT_FALSE(vornDmaPresent("fap0", Fru::PciHam::pciHamIs({0, 4, 0, 0})));
  EXPECT_FALSE(vornDmaPresent("fap0", Fru::PciHam::pciHamWithoutDevice()));
  EXPECT_FALSE(vornDmaPresent("fap0", nullptr));
  driver.pciDevicePresentIs("ffff:ff:1f.7");
  EXPECT_TRUE(vornDmaPresent("", Fru::PciHam::pciHamIs({0xFFFF, 0xFF, 0x1F, 7})));
  EXPECT_THAT(driver.commands(), ElementsAre("devpresent 0000:03:00.0", "devpresent 0000:04:00.0",
                                             "devpresent ffff:ff:1f.7"));
}

CATALOGUE_TEST_F(Devices, RenameAnswers, "vornDmaDeviceRename") {
  EXPECT_EQ(vornDmaDeviceRename("fap0", ham()), 0);
  TraceCapture trace;
  EXPECT_EQ(vornDmaDeviceRename("fap0", ham()), EEXIST);  // already named: returned, untraced
  EXPECT_THAT(trace.lines(), IsEmpty());
  EXPECT_EQ(vornDmaDeviceRename("fap1", nullptr), 0);
  EXPECT_EQ(driver.commands().back(), "devname fap1 nopcidev");
  // A vanished device raises SIGBUS; 19 is then returned and traced.
  struct sigaction ignore = {}, old = {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGBUS, &ignore, &old);
  driver.answerNext("devname", ENODEV);
  EXPECT_EQ(vornDmaDeviceRename("fap2", ham()), ENODEV);
  sigaction(SIGBUS, &old, nullptr);
  EXPECT_THAT(
      trace.texts(),
      ElementsAre("vornDmaDeviceRename cmd: devname fap2 0000:03:00.0 error No such device"));
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
      testing::KilledBySignal(SIGABRT), "^devname: Operation not permitted" VORN_ABORT_END);
}

CATALOGUE_TEST_F(Devices, ParamsAtFullWidthBusyReturnedOthersEnd, "vornDmaDeviceParam") {
  ASSERT_EQ(vornDmaDeviceRename("fap0", ham()), 0);
  EXPECT_EQ(vornDmaDeviceParam("fap0", fapTypeJericho, FapId(7), 1, 2, 3, 4, 5, 4000000000u), 0);
  EXPECT_EQ(driver.commands().back(), "devparams fap0 3 7 1 2 3 4 5 4000000000");
  TraceCapture trace;
  EXPECT_EQ(vornDmaDeviceParam("fap0", static_cast<FapType>(UINT_MAX), FapId(FapId::null()),
                               UINT_MAX, 0, UINT_MAX, 0, UINT_MAX, 0),
            EBUSY);
  EXPECT_EQ(driver.commands().back(),
            "devparams fap0 4294967295 2048 4294967295 0 4294967295 0 4294967295 0");
  EXPECT_THAT(trace.lines(), IsEmpty());
  EXPECT_EXIT(
      {
        driver.answerNext("devparams", EINVAL);
        vornDmaDeviceParam("fap0", fapTypeJericho, FapId(7), 1, 2, 3, 4, 5, 6);
      },
      testing::KilledBySignal(SIGABRT), "^devparams: Invalid argument" VORN_ABORT_END);
}

// A name longer than the buffer is cut there, and "up" or "down" is lost.
CATALOGUE_TEST_F(Devices, StateAndCleanupCommands, "vornDmaDevcleanup", "vornDmaDeviceUp",
                 "vornDmaDeviceDown") {
  bringUp();
  EXPECT_TRUE(driver.devices().devices.at("fap0").up);
  EXPECT_EQ(vornDmaDeviceDown("fap0"), 0);
  EXPECT_FALSE(driver.devices().devices.at("fap0").up);
  EXPECT_EQ(vornDmaDevcleanup("fap0"), 0);
  EXPECT_FALSE(driver.devices().devices.at("fap0").paramsSet);
  TraceCapture trace;
  EXPECT_EQ(vornDmaDeviceUp("gone"), ENODEV);  // not traced: already gone
  EXPECT_THAT(trace.lines(), IsEmpty());
  driver.answerNext("devstate", EIO);
  EXPECT_EQ(vornDmaDeviceDown("fap0"), EIO);
  EXPECT_EQ(vornDmaDevcleanup("nosuch"), ENODEV);
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaSetDeviceState cmd: devstate fap0 down error Input/output error",
                          "vornDmaDevcleanup cmd: devcleanup nosuch error No such device"));
  EXPECT_EQ(trace.lines()[0].level, 0);

  const std::string longest(300, 'n');
  driver.clearLog();
  EXPECT_EQ(vornDmaDevcleanup(""), ENODEV);
  EXPECT_EQ(vornDmaDevcleanup(Mox::String(longest.c_str())), ENODEV);
  EXPECT_EQ(vornDmaDeviceUp(Mox::String(longest.c_str())), EINVAL);
  EXPECT_THAT(driver.commands(),
              ElementsAre("devcleanup ", "devcleanup " + longest.substr(0, kCommandSize - 12),
                          "devstate " + longest.substr(0, kCommandSize - 10)));
}

// "devstats " and 86 characters fill the 96-byte record; a failed read
// leaves `up` alone.
CATALOGUE_TEST_F(Devices, StatisticsAndUpState, "vornDmaGetDevStats", "vornDmaIsDeviceUp") {
  bringUp();
  fabdevstats stats;
  EXPECT_EQ(vornDmaGetDevStats("fap0", &stats), 0);
  EXPECT_EQ(driver.commands().back(), "devstats fap0");
  bool up = true;
  vornDmaDeviceDown("fap0");
  EXPECT_EQ(vornDmaIsDeviceUp("fap0", &up), 0);
  EXPECT_FALSE(up);

  const std::string fits(kDevStatsSize - 1 - 9, 'f'), onePast(kDevStatsSize - 9, 'f');
  upDeviceIs(fits);
  EXPECT_EQ(vornDmaIsDeviceUp(Mox::String(fits.c_str()), &up), 0);
  EXPECT_TRUE(up);
  EXPECT_EQ(vornDmaGetDevStats(Mox::String(onePast.c_str()), &stats), 0);
  EXPECT_EQ(driver.commands().back(), "devstats " + fits);

  TraceCapture trace;
  EXPECT_EQ(vornDmaIsDeviceUp("nosuch", &up), ENODEV);
  EXPECT_TRUE(up);
  EXPECT_EQ(trace.texts().back(), "vornDmaGetDevStats nosuch error No such device");
}

// A listing of 6239 characters fills the 6240-byte answer and is read whole.
CATALOGUE_TEST_F(Devices, ListingsUpToTheBuffersEdge, "vornDmaListUpDevices",
                 "vornDmaListDeviceParams") {
  EXPECT_EQ(vornDmaListUpDevices(), "");
  EXPECT_EQ(vornDmaListDeviceParams(), "");
  bringUp();
  EXPECT_EQ(vornDmaListUpDevices(), "fap0 0000:03:00.0\n");
  EXPECT_EQ(vornDmaListDeviceParams(), "fap0 type 2 fap 1 params 1 2 3 4 5 6\n");
  std::string expected = "fap0 0000:03:00.0\n";
  for (int i = 0; i < 27; ++i) {
    std::string name = "g" + std::to_string(100 + i) + std::string(216, 'x');
    upDeviceIs(name);
    expected += name + " nopcidev\n";
  }
  const std::string last(6239 - expected.size() - 10, 'y');
  upDeviceIs(last);
  EXPECT_EQ(std::string(vornDmaListUpDevices().charPtr()), expected + last + " nopcidev\n");
  EXPECT_DEATH(
      {
        driver.answerNext("devlist", EIO);
        vornDmaListUpDevices();
      },
      "vornDmaListUpDevices\\(\\): Assertion `false' failed");
}

CATALOGUE_TEST_F(Devices, MpcModeCommands, "vornDmaMpcMode") {
  EXPECT_EQ(vornDmaMpcMode(true), 0);
  EXPECT_EQ(vornDmaMpcMode(false), 0);
  EXPECT_THAT(driver.commands(), ElementsAre("mpcmode on", "mpcmode off"));
}

}  // namespace
