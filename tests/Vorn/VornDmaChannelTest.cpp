// The command channel: fab_ioctl, syserr, saimode, the simulation switch and
// the presence probes.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <string>

#include "Kernel/Kernel.h"
#include "Ringlog/MemoryFile.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"
#include "tests/Vorn/HostTestSupport.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using VornTest::noDriverOps;
using VornTest::ScopedEnv;

namespace {

// The answer is the refusal's errno, also left in errno.
CATALOGUE_TEST(CommandChannel, AnswersArePositiveErrnos, "fab_ioctl") {
  Emu::FabricDriver driver;
  driver.pciDevicePresentIs("0000:03:00.0");
  driver.answerNext("mpcmode", EPERM);
  char refused[kCommandSize] = "mpcmode on";
  char present[kCommandSize] = "devpresent 0000:03:00.0";
  char missized[kCommandSize] = "devpresent 0000:03:00.0";
  errno = 0;
  EXPECT_EQ(fab_ioctl(refused, kCommandSize), EPERM);
  EXPECT_EQ(errno, EPERM);
  EXPECT_EQ(fab_ioctl(present, kCommandSize), 0);
  EXPECT_EQ(fab_ioctl(missized, kDevStatsSize), EINVAL);
  EXPECT_EQ(errno, EINVAL);
}

// The statistics poll stays out of the ring; a command's message is cut at
// the buffer.
TEST(CommandChannel, RingTraceSkipsThePollAndCarriesTheWholeText) {
  Emu::FabricDriver driver;
  Ringlog::ScopedMemoryFile ring;
  char poll[kDevStatsSize] = "devstats fap0";
  fab_ioctl(poll, kDevStatsSize);
  const std::string longName(300, 'e');
  vornDmaIfPortUpdate("et7", 12);
  vornDmaIfPortUpdate(longName.c_str(), 12);
  const std::string cut = ("ifportupdate " + longName).substr(0, kCommandSize - 1);
  EXPECT_THAT(
      ring.messages(),
      ElementsAre("vornDmaIfPortUpdate ifname=et7 sys_port=12", "fab_ioctl buf=ifportupdate et7 12",
                  "vornDmaIfPortUpdate ifname=" + longName + " sys_port=12",
                  "fab_ioctl buf=" + cut));
}

TEST(CommandChannelDeathTest, UnopenableDeviceEndsTheProcessThroughSyserr) {
  EXPECT_DEATH(
      {
        static const Kernel::Ops ops = noDriverOps();
        Kernel::opsIs(&ops);
        char buf[kCommandSize] = "mpcmode on";
        fab_ioctl(buf, kCommandSize);
      },
      "^fab_ioctl: open /dev/fabric: No such file or directory" VORN_ABORT_END);
}

// Without a driver, in simulation (even an empty SIMULATION_VMID) only the
// /proc probe answers yes.
TEST(CommandChannel, ProbesAndTheSimulationSwitch) {
  {
    Emu::FabricDriver driver;
    ScopedEnv sim("SIMULATION_VMID", std::nullopt);
    EXPECT_TRUE(vornDmaDevFabricPresent());
    EXPECT_TRUE(vornDmaProcVornDmaPresent());
  }
  static const Kernel::Ops ops = noDriverOps();
  Kernel::ScopedOps scoped(&ops);
  ScopedEnv sim("SIMULATION_VMID", "");
  EXPECT_TRUE(vornDmaProcVornDmaPresent());
  EXPECT_FALSE(vornDmaDevFabricPresent());
}

// In simulation the commands answer success and send nothing; the checks of
// raw transmit, sFlow rates and IRQ handles are skipped too.
TEST(CommandChannel, SimulationTouchesNothing) {
  Emu::FabricDriver driver;
  VornTest::TcCapture tc;
  ScopedEnv sim("SIMULATION_VMID", "");
  EXPECT_TRUE(vornDmaPresent("fap0", Fru::PciHam::pciHamWithoutDevice()));
  bool up = true;
  EXPECT_EQ(vornDmaIsDeviceUp("fap0", &up), 0);
  EXPECT_FALSE(up);
  fabdevstats stats;
  stats.up = 5;
  EXPECT_EQ(vornDmaGetDevStats("fap0", &stats), 0);
  EXPECT_EQ(stats.up, 0u);
  EXPECT_EQ(vornDmaListUpDevices(), "");
  EXPECT_EQ(vornDmaListDeviceParams(), "");
  unsigned flags = 42, map[8] = {};
  EXPECT_EQ(vornDmaIfFlags("et1", &flags), 0);
  EXPECT_EQ(flags, 42u);
  unsigned char frame[200] = {};
  vornDmaTxRaw("fap3", 1, sizeof frame, frame);
  vornDmaSflowSampleRateSet(4, 16, true, fapTypeArad);
  const std::pair<const char*, int> calls[] = {
      {"DeviceUp", vornDmaDeviceUp("fap0")},
      {"MpcMode", vornDmaMpcMode(true)},
      {"Devcleanup", vornDmaDevcleanup("fap0")},
      {"DeviceRename", vornDmaDeviceRename("fap0", nullptr)},
      {"DeviceParam", vornDmaDeviceParam("fap0", fapTypeArad, FapId(0), 0, 0, 0, 0, 0, 0)},
      {"Ifadd", vornDmaIfadd("et1", 5, 0, "", true, true, "02:00:00:00:00:01")},
      {"Ifdel", vornDmaIfdel("et1")},
      {"IfPortUpdate", vornDmaIfPortUpdate("et1", 1)},
      {"SetIntfState", vornDmaSetIntfState("et1", true)},
      {"NativeVlan", vornDmaNativeVlan("et1", true, 1)},
      {"VlanVsiAdd", vornDmaVlanVsiAdd("et1", 1, 2, 0, 3)},
      {"VlanVsiDel", vornDmaVlanVsiDel("et1", 1, 2, 0)},
      {"RoutedPortSet", vornDmaRoutedPortSet("et1", 1)},
      {"RoutedPortEncapVlanMapSet", vornDmaRoutedPortEncapVlanMapSet("et1", 1)},
      {"SetLagMode", vornDmaSetLagMode(1, 0, fapTypeArad)},
      {"LagMemberAdd", vornDmaLagMemberAdd("PortChannel3", "et1", 0)},
      {"LagMemberDel", vornDmaLagMemberDel("PortChannel3", 0)},
      {"LagMemberConfigAdd", vornDmaLagMemberConfigAdd("PortChannel3", "Ethernet1")},
      {"LagMemberConfigDel", vornDmaLagMemberConfigDel("PortChannel3", "Ethernet1")},
      {"LagConfigMapDel", vornDmaLagConfigMapDel("PortChannel3")},
      {"SetCosToTc", static_cast<int>(vornDmaSetCosToTc(1, 99))},
      {"SetTcToCos", static_cast<int>(vornDmaSetTcToCos(99, 1))},
      {"SetDscpToTc", static_cast<int>(vornDmaSetDscpToTc(99, 1))},
      {"TcToVpriMapAdd", static_cast<int>(vornDmaTcToVpriMapAdd("et9", map))},
      {"TcToVpriMapDel", static_cast<int>(vornDmaTcToVpriMapDel("et9"))},
      {"TcToVpriMapUpdate", static_cast<int>(vornDmaTcToVpriMapUpdate("et9", 1, 1))},
      {"SetPtpDropEventTxPkts", static_cast<int>(vornDmaSetPtpDropEventTxPkts(true))},
      {"RxSflowCount", static_cast<int>(vornDmaRxSflowCount())},
      {"RxSflowDropCount", static_cast<int>(vornDmaRxSflowDropCount())},
      {"SetIrqAffinity", vornDmaSetIrqAffinity(nullptr, 256)},
  };
  for (const auto& [name, rc] : calls) EXPECT_EQ(rc, 0) << name;
  vornDmaDisableSflowDrops(fapTypeArad);
  EXPECT_THAT(driver.commands(), testing::IsEmpty());
  EXPECT_THAT(tc.lines(), testing::IsEmpty());
}

// perror's rule for a null text: the error alone.
CATALOGUE_TEST(CommandChannelDeathTest, SyserrOfANullTextPrintsTheErrorAlone, "syserr") {
  EXPECT_EXIT(
      {
        errno = ENODEV;
        syserr(nullptr);
      },
      testing::KilledBySignal(SIGABRT), "^No such device" VORN_ABORT_END);
}

// The command path's own system call leaves errno alone: a refusal that ends
// the process prints the refusal's text, not a stale errno's. "/dev/fabric"
// is the random device, which refuses every request it does not know: EINVAL
// from Linux, ENOSYS under qemu's user-mode emulator (32-bit runs).
TEST(CommandChannelDeathTest, ARefusalOnTheSystemCallPathPrintsItsOwnText) {
  EXPECT_EXIT(
      {
        static Kernel::Ops ops = Kernel::linuxOps();
        ops.open = [](const char*, int flags) { return ::open("/dev/urandom", flags); };
        Kernel::opsIs(&ops);
        errno = 0;
        vornDmaMpcMode(true);
      },
      testing::KilledBySignal(SIGABRT),
      "^mpcmode on: (Invalid argument|Function not implemented)" VORN_ABORT_END);
}

// Exactly "sai" is SAI mode, read once per process: a child per value.
CATALOGUE_TEST(CommandChannelDeathTest, SaiModeIsExactlySaiReadOnce, "saimode") {
  const std::pair<const char*, bool> cases[] = {
      {nullptr, false}, {"sai", true}, {"sa", false}, {"saix", false}, {"SAI", false}};
  for (const auto& [value, want] : cases)
    EXPECT_EXIT(
        {
          if (value)
            ::setenv("KRIX_MODE", value, 1);
          else
            ::unsetenv("KRIX_MODE");
          const bool first = saimode();
          ::setenv("KRIX_MODE", first ? "other" : "sai", 1);
          std::_Exit(first == want && saimode() == want ? 0 : 1);
        },
        testing::ExitedWithCode(0), "")
        << (value ? value : "(unset)");
}

}  // namespace
