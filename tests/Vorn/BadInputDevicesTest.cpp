// Bad input to the command channel and the device commands: fab_ioctl,
// syserr, saimode, vornDmaPresent, vornDmaDeviceRename, vornDmaDeviceParam,
// vornDmaDevcleanup, vornDmaDeviceUp, vornDmaDeviceDown, vornDmaGetDevStats,
// vornDmaIsDeviceUp, vornDmaMpcMode, vornDmaListUpDevices,
// vornDmaListDeviceParams. Names are cut at their command buffer, never read
// or written past it; numbers go out at their full width; a null handle
// means "no PCI device".
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/HostTestSupport.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;

namespace {

class BadInputDevices : public testing::Test {
 protected:
  VornTest::ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
  // A device the driver knows by `name`, without a PCI function.
  void deviceIs(const std::string& name, bool up = false) {
    ASSERT_EQ(vornDmaDeviceRename(Mox::String(name.c_str()), nullptr), 0) << name;
    if (up) {
      ASSERT_EQ(vornDmaDeviceUp(Mox::String(name.c_str())), 0) << name;
    }
  }
};

CATALOGUE_TEST_F(BadInputDevices, ChannelTextsTheDriverCannotParse, "fab_ioctl") {
  const struct {
    const char* text;
    unsigned size;
    int want;
  } cases[] = {
      {"", kCommandSize, EINVAL},                  // empty command
      {"nosuchkeyword 1", kCommandSize, EINVAL},   // unknown keyword
      {"devstate", kCommandSize, EINVAL},          // keyword without its arguments
      {"mpcmode on", kDevStatsSize, EINVAL},       // size that is not the command's
      {"mpcmode on", 0, EINVAL},                   // no size at all
      {"devstate fap9 up", kCommandSize, ENODEV},  // well formed, unknown device
  };
  for (const auto& c : cases) {
    char buf[kListingSize] = {};
    std::snprintf(buf, sizeof buf, "%s", c.text);
    EXPECT_EQ(fab_ioctl(buf, c.size), c.want) << "'" << c.text << "' " << c.size;
  }
}

TEST(BadInputChannelDeathTest, SyserrWithEmptyLongAndNullTexts) {
  EXPECT_EXIT(
      {
        errno = EIO;
        syserr("");
      },
      testing::KilledBySignal(SIGABRT), "^Input/output error" VORN_ABORT_END);
  EXPECT_EXIT(
      {
        errno = ENODEV;
        syserr(nullptr);  // perror's rule: only the error text
      },
      testing::KilledBySignal(SIGABRT), "^No such device" VORN_ABORT_END);
  const std::string longest(4000, 'w');
  EXPECT_EXIT(
      {
        errno = EINVAL;
        syserr(longest.c_str());
      },
      testing::KilledBySignal(SIGABRT), "^" + longest + ": Invalid argument" VORN_ABORT_END);
}
CATALOGUE_ENTRY_(BadInputChannelDeathTest, SyserrWithEmptyLongAndNullTexts, "syserr");

// The value must be exactly "sai": empty, a prefix, a longer text and other
// cases are all "not SAI mode". Each answer is fixed per process, so each
// value is tried in a child of its own.
CATALOGUE_TEST(BadInputChannelDeathTest, SaiModeValuesOtherThanExactlySai, "saimode") {
  const std::pair<const char*, bool> cases[] = {
      {"sai", true},  {"", false},     {"sa", false},   {"sai ", false},
      {"SAI", false}, {"saix", false}, {" sai", false}, {"sai\n", false},
  };
  for (const auto& [value, want] : cases)
    EXPECT_EXIT(
        {
          ::setenv("KRIX_MODE", value, 1);
          std::_Exit(saimode() == want ? 0 : 1);
        },
        testing::ExitedWithCode(0), "")
        << "'" << value << "'";
}

CATALOGUE_TEST_F(BadInputDevices, NullOrDevicelessHandles, "vornDmaPresent",
                 "vornDmaDeviceRename") {
  // No PCI device behind the handle: not present, and nothing is sent.
  EXPECT_FALSE(vornDmaPresent("fap0", nullptr));
  EXPECT_FALSE(vornDmaPresent("fap0", Fru::PciHam::pciHamWithoutDevice()));
  EXPECT_TRUE(driver.commands().empty());
  // The widest PCI address prints whole; the name is not sent.
  driver.pciDevicePresentIs("ffff:ff:1f.7");
  EXPECT_TRUE(vornDmaPresent("", Fru::PciHam::pciHamIs({0xFFFF, 0xFF, 0x1F, 7})));
  // A null handle renames a device that has no PCI function.
  EXPECT_EQ(vornDmaDeviceRename("fap0", nullptr), 0);
  EXPECT_THAT(driver.commands(), ElementsAre("devpresent ffff:ff:1f.7", "devname fap0 nopcidev"));
}

// A handle without a device, or an empty name the driver refuses, ends a
// rename: the driver and the library disagree.
CATALOGUE_TEST_F(BadInputDevices, DevicelessHandleOrEmptyNameEndsARename, "vornDmaDeviceRename") {
  EXPECT_EXIT(vornDmaDeviceRename("fap0", Fru::PciHam::pciHamWithoutDevice()),
              testing::KilledBySignal(SIGABRT), "^devname: ");
  EXPECT_EXIT(vornDmaDeviceRename("", nullptr), testing::KilledBySignal(SIGABRT),
              "^devname: Invalid argument" VORN_ABORT_END);
}

// Every name command formats into 256 bytes: a name of 300 characters is cut
// to fill the buffer exactly, and what follows it ("up", "down") is lost, so
// the driver cannot parse the state commands.
CATALOGUE_TEST_F(BadInputDevices, NamesEmptyAndBeyondTheBuffer, "vornDmaDevcleanup",
                 "vornDmaDeviceUp", "vornDmaDeviceDown") {
  const std::string longest(300, 'n');
  using Fn = int (*)(Mox::String);
  const struct {
    Fn fn;
    const char* prefix;
    int overlong;
  } functions[] = {
      {vornDmaDevcleanup, "devcleanup ", ENODEV},
      {vornDmaDeviceUp, "devstate ", EINVAL},
      {vornDmaDeviceDown, "devstate ", EINVAL},
  };
  for (const auto& f : functions) {
    driver.clearLog();
    EXPECT_EQ(f.fn(""), ENODEV) << f.prefix;
    EXPECT_EQ(f.fn(Mox::String(longest.c_str())), f.overlong) << f.prefix;
    ASSERT_EQ(driver.commands().size(), 2u);
    EXPECT_EQ(driver.commands()[1],
              f.prefix + longest.substr(0, kCommandSize - 1 - std::strlen(f.prefix)));
  }
}

CATALOGUE_TEST_F(BadInputDevices, ParametersAtTheirFullWidth, "vornDmaDeviceParam") {
  deviceIs("fap0");
  EXPECT_EQ(vornDmaDeviceParam("fap0", static_cast<FapType>(UINT_MAX), FapId(FapId::null()),
                               UINT_MAX, 0, UINT_MAX, 0, UINT_MAX, 0),
            0);
  EXPECT_EQ(driver.commands().back(),
            "devparams fap0 4294967295 2048 4294967295 0 4294967295 0 4294967295 0");
  EXPECT_EQ(vornDmaDeviceParam("fap0", fapTypeUnknown_, FapId(0), 0, 0, 0, 0, 0, 0), EBUSY);
}

// The statistics record is 96 bytes: "devstats " and a name of 86 characters
// fill it; one character more is cut and names no device, and then `up` is
// left as it was.
CATALOGUE_TEST_F(BadInputDevices, StatisticsNamesAtTheRecordsEdge, "vornDmaGetDevStats",
                 "vornDmaIsDeviceUp") {
  const std::string fits(kDevStatsSize - 1 - 9, 'f'), onePast(kDevStatsSize - 9, 'f');
  deviceIs(fits, true);
  deviceIs(onePast, true);
  bool up = false;
  EXPECT_EQ(vornDmaIsDeviceUp(Mox::String(fits.c_str()), &up), 0);
  EXPECT_TRUE(up);
  fabdevstats stats{};
  EXPECT_EQ(vornDmaGetDevStats(Mox::String(fits.c_str()), &stats), 0);
  EXPECT_EQ(stats.up, 1u);
  // One past: the cut name is the 86-character one's... which is up: the cut
  // keeps within the record, it does not pick another name.
  driver.clearLog();
  EXPECT_EQ(vornDmaGetDevStats(Mox::String(onePast.c_str()), &stats), 0);
  EXPECT_EQ(driver.commands().back(), "devstats " + fits);
  // An empty or unknown name: the error, and `up` untouched.
  up = true;
  EXPECT_EQ(vornDmaIsDeviceUp("", &up), ENODEV);
  EXPECT_EQ(vornDmaIsDeviceUp("fap9", &up), ENODEV);
  EXPECT_TRUE(up);
}

CATALOGUE_TEST_F(BadInputDevices, MpcModeHasOnlyTwoTexts, "vornDmaMpcMode") {
  EXPECT_EQ(vornDmaMpcMode(true), 0);
  EXPECT_EQ(vornDmaMpcMode(false), 0);
  EXPECT_THAT(driver.commands(), ElementsAre("mpcmode on", "mpcmode off"));
}

// The listings come back in 6240 bytes: a listing of 6239 characters is read
// whole; one of 6240 does not fit, the driver refuses it and the process
// ends on the refused listing.
CATALOGUE_TEST_F(BadInputDevices, ListingsAtTheBuffersEdge, "vornDmaListUpDevices",
                 "vornDmaListDeviceParams") {
  EXPECT_EQ(vornDmaListUpDevices(), "");
  EXPECT_EQ(vornDmaListDeviceParams(), "");
  // Lines "NAME nopcidev\n" of 230 characters, then one to make 6239.
  std::string expected;
  for (int i = 0; i < 27; ++i) {
    std::string name = std::to_string(100 + i) + std::string(217, 'x');
    deviceIs(name, true);
    expected += name + " nopcidev\n";
  }
  const std::string last(6239 - expected.size() - 10, 'y');
  deviceIs(last, true);
  const std::string listing = vornDmaListUpDevices().charPtr();
  EXPECT_EQ(listing.size(), kListingSize - 1);
  EXPECT_EQ(listing, expected + last + " nopcidev\n");
  EXPECT_DEATH(
      {
        deviceIs("z", true);
        vornDmaListUpDevices();
      },
      "vornDmaListUpDevices\\(\\): Assertion `false' failed");
}

}  // namespace
