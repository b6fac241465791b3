// sFlow counters and drop threshold against the emulated driver, and the
// listing dump.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>

#include "Kernel/Kernel.h"
#include "Ringlog/MemoryFile.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/AllocationCounter.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using VornTest::ScopedEnv;
using VornTest::TraceCapture;

namespace {

class Sflow : public testing::Test {
 protected:
  // The threshold the driver holds after a rate change.
  U32 thresholdFor(U32 sampleRate, U32 hwSampleRate, bool dropEnabled = true) {
    driver.sflow().dropThreshold = 12345;
    vornDmaSflowSampleRateSet(sampleRate, hwSampleRate, dropEnabled, fapTypeArad);
    EXPECT_TRUE(driver.sflow().thresholdSet);
    return driver.sflow().dropThreshold;
  }
  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
};

TEST_F(Sflow, CountersAreTheDriversDecimalReplies) {
  driver.sflow().samples = 12345;
  driver.sflow().drops = 18446744073709551615ull;
  EXPECT_EQ(vornDmaRxSflowCount(), 12345u);
  EXPECT_EQ(vornDmaRxSflowDropCount(), 18446744073709551615ull);
  EXPECT_THAT(driver.commands(), ElementsAre("rxsflow", "rxsflow_drop"));
}

TEST_F(Sflow, CounterRepliesThatAreNotNumbers) {
  driver.sflow().samplesReply = "busy";
  EXPECT_EQ(vornDmaRxSflowCount(), 0u);
  driver.sflow().samplesReply = "";
  EXPECT_EQ(vornDmaRxSflowCount(), 0u);
  driver.sflow().samplesReply = "77 samples";
  EXPECT_EQ(vornDmaRxSflowCount(), 77u);
  // A reply filling the whole buffer: parsing stops at its end.
  driver.sflow().dropsReply = std::string(200, '9');
  EXPECT_EQ(vornDmaRxSflowDropCount(), 18446744073709551615ull);
}

TEST_F(Sflow, RefusedCounterReadEndsTheProcess) {
  EXPECT_EXIT(
      {
        Mox::traceHandle("VornDma").levelIs(0, true);
        driver.answerNext("rxsflow", EIO);
        vornDmaRxSflowCount();
      },
      testing::KilledBySignal(SIGABRT), "vornDmaRxSflowCount read returned Input/output error");
  EXPECT_EXIT(
      {
        Mox::traceHandle("VornDma").levelIs(0, true);
        driver.answerNext("rxsflow_drop", ENODEV);
        vornDmaRxSflowDropCount();
      },
      testing::KilledBySignal(SIGABRT), "vornDmaRxSflowDropCount read returned No such device");
}

TEST_F(Sflow, DropThresholdIsTheShareToDropOver32Bits) {
  EXPECT_EQ(thresholdFor(16, 4), 3221225471u);
  EXPECT_EQ(thresholdFor(16, 16), 0u);
  EXPECT_EQ(thresholdFor(16, 4, false), 0u);
  EXPECT_EQ(thresholdFor(3, 1), 2863311530u);
  EXPECT_EQ(thresholdFor(4294967295u, 0), 4294967295u);
  EXPECT_EQ(thresholdFor(4294967295u, 1), 4294967294u);
  EXPECT_EQ(thresholdFor(4294967295u, 4294967294u), 1u);
  EXPECT_EQ(thresholdFor(4294967295u, 4294967295u), 0u);
  EXPECT_EQ(driver.sflow().fapType, 2u);
  EXPECT_EQ(driver.commands().front(), "sflow_drop_threshold 3221225471 2");
}

TEST_F(Sflow, RateChangeIsTracedAndRefusalsOnlyTraced) {
  Ringlog::ScopedMemoryFile ring;
  TraceCapture trace;
  vornDmaSflowSampleRateSet(16, 4, true, fapTypeJericho);
  driver.answerNext("sflow_drop_threshold", EINVAL);
  vornDmaSflowSampleRateSet(8, 8, true, fapTypePetra);
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaSflowSampleRateSet: sampleRate 16 HwSampleRate 4 "
                          "sflow_drop_threshold 3221225471 3",
                          "vornDmaSflowSampleRateSet: sampleRate 8 HwSampleRate 8 "
                          "sflow_drop_threshold 0 1",
                          "vornDmaSflowSampleRateSet cmd: sflow_drop_threshold 0 1 returned "
                          "Invalid argument"));
  EXPECT_THAT(ring.messages(), Contains("vornDmaSflowSampleRateSet sampleRate=16, HwSampleRate 4"));
}

TEST_F(Sflow, SampleRateBelowTheHardwaresEndsTheProcess) {
  EXPECT_DEATH(vornDmaSflowSampleRateSet(4, 16, true, fapTypeArad),
               "vornDmaSflowSampleRateSet\\(U32, U32, bool, Hardware::Vorn::FapType\\): "
               "Assertion `sampleRate >= HwSampleRate' failed");
}

TEST_F(Sflow, DisablingDropsSendsThresholdZero) {
  vornDmaSflowSampleRateSet(16, 4, true, fapTypeJericho);
  TraceCapture trace;
  vornDmaDisableSflowDrops(fapTypeJericho);
  EXPECT_EQ(driver.sflow().dropThreshold, 0u);
  driver.answerNext("sflow_drop_threshold", EINVAL);
  vornDmaDisableSflowDrops(fapTypeArad);
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaDisableSflowDrops: sflow_drop_threshold 0 3",
                          "vornDmaDisableSflowDrops: sflow_drop_threshold 0 2",
                          "vornDmaDisableSflowDrops cmd: sflow_drop_threshold 0 2 error "
                          "Invalid argument"));
}

TEST_F(Sflow, SimulationSendsNothing) {
  ScopedEnv on("SIMULATION_VMID", "");
  driver.sflow().samples = 5;
  EXPECT_EQ(vornDmaRxSflowCount(), 0u);
  EXPECT_EQ(vornDmaRxSflowDropCount(), 0u);
  vornDmaSflowSampleRateSet(4, 16, true, fapTypeArad);  // not even checked
  vornDmaDisableSflowDrops(fapTypeArad);
  EXPECT_THAT(driver.commands(), IsEmpty());
}

// The threshold commands are formatted on the stack and sent with one ioctl.
TEST(SflowAllocation, ThresholdCommandsAllocateNothingWithTracingOff) {
  static int ioctls = 0;
  static const Kernel::Ops refusing = [] {
    Kernel::Ops ops = Kernel::linuxOps();
    ops.open = [](const char*, int) { return Emu::FabricDriver::kFabricFd; };
    ops.ioctl = [](int, unsigned long, void*) {
      ++ioctls;
      errno = EINVAL;
      return -1;
    };
    return ops;
  }();
  Kernel::ScopedOps scoped(&refusing);
  ScopedEnv sim("SIMULATION_VMID", std::nullopt);
  Mox::traceHandle("VornDma").allLevelsIs(false);
  vornDmaDisableSflowDrops(fapTypeArad);  // first use: opens the device
  ioctls = 0;
  VornTest::AllocationScope scope;
  vornDmaSflowSampleRateSet(16, 4, true, fapTypeArad);
  vornDmaDisableSflowDrops(fapTypeArad);
  EXPECT_EQ(scope.count(), 0u);
  EXPECT_EQ(ioctls, 2);
}

// The dump copies the listing to standard error, whatever its length.
TEST(Dump, CopiesTheListingToStandardError) {
  Emu::FabricDriver driver;
  for (int i = 0; i < 200; ++i)
    driver.devices().devices["fap" + std::to_string(i)].pci = "nopcidev";
  const std::string listing = driver.procListing();
  ASSERT_GT(listing.size(), 2048u);
  testing::internal::CaptureStderr();
  vornDmaDump();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), listing);
}

// A listing that cannot be opened, or breaks off, is reported with perror.
struct FailingProc {
  static int open(const char*, int) {
    if (!opens) {
      errno = ENOENT;
      return -1;
    }
    return 99;
  }
  static ssize_t read(int, void* buf, std::size_t) {
    if (reads++ > 0) {
      errno = EIO;
      return -1;
    }
    std::memcpy(buf, "head\n", 5);
    return 5;
  }
  static int close(int) { return 0; }
  static inline bool opens = false;
  static inline int reads = 0;
};

TEST(Dump, FailuresAreReportedWithThePath) {
  Kernel::Ops ops = Kernel::linuxOps();
  ops.open = FailingProc::open;
  ops.read = FailingProc::read;
  ops.close = FailingProc::close;
  Kernel::ScopedOps scoped(&ops);
  testing::internal::CaptureStderr();
  vornDmaDump();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "/proc/vorn-dma: No such file or directory\n");
  FailingProc::opens = true;
  testing::internal::CaptureStderr();
  vornDmaDump();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "head\n/proc/vorn-dma: Input/output error\n");
}

}  // namespace
