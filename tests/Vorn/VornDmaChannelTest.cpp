// The command channel: fab_ioctl, syserr, saimode, the simulation switch and
// the presence probes.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>

#include "Kernel/Kernel.h"
#include "Ringlog/MemoryFile.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::IsEmpty;
using VornTest::ScopedEnv;

namespace {

// A kernel table on which nothing can be opened: no driver is loaded.
Kernel::Ops noDriverOps() {
  Kernel::Ops ops = Kernel::linuxOps();
  ops.open = [](const char*, int) {
    errno = ENOENT;
    return -1;
  };
  return ops;
}

TEST(CommandChannel, ReturnsThePositiveErrnoOfARefusal) {
  Emu::FabricDriver driver;
  char buf[kCommandSize] = "devstate fap9 up";
  EXPECT_EQ(fab_ioctl(buf, kCommandSize), ENODEV);
  driver.answerNext("devstate", EPERM);
  EXPECT_EQ(fab_ioctl(buf, kCommandSize), EPERM);
}

TEST(CommandChannel, RequestNumberIsTheBufferCapacity) {
  Emu::FabricDriver driver;
  driver.pciDevicePresentIs("0000:03:00.0");
  char ok[kCommandSize] = "devpresent 0000:03:00.0";
  EXPECT_EQ(fab_ioctl(ok, kCommandSize), 0);
  // The emulator, like the driver, refuses a command sent with the wrong size.
  char wrong[kDevStatsSize] = "devpresent 0000:03:00.0";
  EXPECT_EQ(fab_ioctl(wrong, kDevStatsSize), EINVAL);
}

TEST(CommandChannel, RingTraceSkipsTheStatisticsPollWherever_devstats_Stands) {
  Emu::FabricDriver driver;
  Ringlog::ScopedMemoryFile ring;
  char a[kDevStatsSize] = "devstats fap0";
  char b[kCommandSize] = "xx devstats fap0";
  char c[kCommandSize] = "devstate fap0 up";
  fab_ioctl(a, kDevStatsSize);
  fab_ioctl(b, kCommandSize);
  fab_ioctl(c, kCommandSize);
  EXPECT_THAT(ring.messages(), ElementsAre("fab_ioctl buf=devstate fap0 up"));
}

// A command function's message carries the text its writer measured: the
// whole command, or as much of it as the buffer held; a name that carries
// the poll's mark keeps the command out like the poll itself.
TEST(CommandChannel, RingTraceOfACommandFunctionCarriesItsWholeText) {
  Emu::FabricDriver driver;
  Ringlog::ScopedMemoryFile ring;
  const std::string longName(300, 'e');
  vornDmaIfPortUpdate("et7", 12);
  vornDmaIfPortUpdate(longName.c_str(), 12);
  vornDmaIfPortUpdate("xdevstats y", 12);
  const std::string cut = ("ifportupdate " + longName).substr(0, kCommandSize - 1);
  EXPECT_THAT(
      ring.messages(),
      ElementsAre("vornDmaIfPortUpdate ifname=et7 sys_port=12", "fab_ioctl buf=ifportupdate et7 12",
                  "vornDmaIfPortUpdate ifname=" + longName + " sys_port=12", "fab_ioctl buf=" + cut,
                  "vornDmaIfPortUpdate ifname=xdevstats y sys_port=12"));
}

TEST(CommandChannel, WithoutDefaultRingFileNothingIsWritten) {
  Emu::FabricDriver driver;
  ASSERT_EQ(Ringlog::defaultFile(), nullptr);
  char c[kCommandSize] = "mpcmode on";
  EXPECT_EQ(fab_ioctl(c, kCommandSize), 0);
}

TEST(CommandChannelDeathTest, UnopenableDeviceEndsTheProcessThroughSyserr) {
  EXPECT_DEATH(
      {
        static const Kernel::Ops ops = noDriverOps();
        Kernel::opsIs(&ops);
        char buf[kCommandSize] = "mpcmode on";
        fab_ioctl(buf, kCommandSize);
      },
      "^fab_ioctl: open /dev/fabric: No such file or directory\n");
}

TEST(CommandChannel, FabricProbeOnlyAnswersFalseWithoutDriver) {
  static const Kernel::Ops ops = noDriverOps();
  Kernel::ScopedOps scoped(&ops);
  ScopedEnv sim("SIMULATION_VMID", std::nullopt);
  EXPECT_FALSE(vornDmaDevFabricPresent());
  EXPECT_FALSE(vornDmaProcVornDmaPresent());
}

TEST(CommandChannel, ProbesSeeTheDriver) {
  Emu::FabricDriver driver;
  ScopedEnv sim("SIMULATION_VMID", std::nullopt);
  EXPECT_TRUE(vornDmaDevFabricPresent());
  EXPECT_TRUE(vornDmaProcVornDmaPresent());
}

TEST(CommandChannel, SimulationCountsEvenWhenEmptyAndTouchesNoDriver) {
  static const Kernel::Ops ops = noDriverOps();
  Kernel::ScopedOps scoped(&ops);
  ScopedEnv sim("SIMULATION_VMID", "");
  EXPECT_TRUE(vornDmaProcVornDmaPresent());
  EXPECT_EQ(vornDmaDeviceUp("fap0"), 0);
  EXPECT_EQ(vornDmaMpcMode(true), 0);
  EXPECT_EQ(vornDmaDevcleanup("fap0"), 0);
  // The fabric probe has no simulation answer: it looks for the device.
  EXPECT_FALSE(vornDmaDevFabricPresent());
}

TEST(CommandChannelDeathTest, SyserrPrintsLikePerrorAndAborts) {
  EXPECT_EXIT(
      {
        errno = EBUSY;
        syserr("devparams");
      },
      testing::KilledBySignal(SIGABRT), "^devparams: Device or resource busy\n");
}

// Linux itself, except that "/dev/fabric" is the random device, which
// refuses every request it does not know with EINVAL: the command path's own
// system call, not the emulator's table. Each case runs in a fresh child, so
// the descriptor is opened there.
Kernel::Ops refusingDeviceOps() {
  Kernel::Ops ops = Kernel::linuxOps();
  ops.open = [](const char* path, int flags) {
    if (std::strcmp(path, "/dev/fabric") == 0) path = "/dev/urandom";
    return Kernel::linuxOps().open(path, flags);
  };
  return ops;
}

// The error number the random device answers a command with: EINVAL from
// Linux; ENOSYS where 32-bit programs run under qemu's user-mode emulator,
// which answers requests it does not know without asking the kernel.
int randomDeviceRefusal() {
  const int fd = ::open("/dev/urandom", O_RDWR);
  char buf[kCommandSize] = "devstate fap0 up";
  const int rc = ::ioctl(fd, kCommandSize, buf) == -1 ? errno : 0;
  ::close(fd);
  return rc;
}

TEST(CommandChannelDeathTest, RefusalsOnTheSystemCallPathKeepTheirErrorText) {
  static const Kernel::Ops ops = refusingDeviceOps();
  const int refused = randomDeviceRefusal();
  ASSERT_NE(refused, 0);
  const std::string text = std::strerror(refused);
  EXPECT_EXIT(
      {
        Kernel::opsIs(&ops);
        char buf[kCommandSize] = "devstate fap0 up";
        errno = 0;
        const int rc = fab_ioctl(buf, kCommandSize);
        std::_Exit(rc == refused && errno == refused ? 0 : 1);  // errno as after ioctl
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        Kernel::opsIs(&ops);
        errno = 0;
        vornDmaMpcMode(true);
      },
      testing::KilledBySignal(SIGABRT), "^mpcmode on: " + text + "\n");
  EXPECT_EXIT(
      {
        Kernel::opsIs(&ops);
        errno = 0;
        vornDmaDeviceParam("fap0", FapType(0), FapId(0), 1, 2, 3, 4, 5, 6);
      },
      testing::KilledBySignal(SIGABRT), "^devparams: " + text + "\n");
  EXPECT_EXIT(
      {
        Kernel::opsIs(&ops);
        errno = 0;
        vornDmaSetCosToTc(1, 2);
      },
      testing::KilledBySignal(SIGABRT), ": " + text + VORN_ABORT_END);
}

// saimode() is computed once per process; each case runs in a fresh child.
void expectSaiMode(const char* value, bool expected) {
  EXPECT_EXIT(
      {
        if (value)
          ::setenv("KRIX_MODE", value, 1);
        else
          ::unsetenv("KRIX_MODE");
        bool first = saimode();
        // Later changes of the environment are not seen.
        ::setenv("KRIX_MODE", first ? "other" : "sai", 1);
        std::_Exit(first == expected && saimode() == expected ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST(CommandChannelDeathTest, SaiModeIsExactlySaiReadOnce) {
  expectSaiMode(nullptr, false);
  expectSaiMode("sai", true);
  expectSaiMode("sai ", false);
  expectSaiMode("SAI", false);
  expectSaiMode("saix", false);
  expectSaiMode("", false);
}

}  // namespace
