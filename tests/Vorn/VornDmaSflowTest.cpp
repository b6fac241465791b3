// sFlow counters and drop threshold against the emulated driver, and the
// listing dump.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <string>

#include "Kernel/Kernel.h"
#include "Ringlog/MemoryFile.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
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

// The replies are read as strtoull reads them in base 10, and never past the
// 128 bytes they came in.
CATALOGUE_TEST_F(Sflow, CountersAreTheDriversDecimalReplies, "vornDmaRxSflowCount",
                 "vornDmaRxSflowDropCount") {
  const std::pair<std::string, U64> rows[] = {
      {"12345", 12345},
      {"busy", 0},
      {"77 samples", 77},
      {"0x10", 0},
      {"-1", ULLONG_MAX},                    // strtoull negates
      {"18446744073709551616", ULLONG_MAX},  // saturates
      {std::string(200, '9'), ULLONG_MAX},   // cut at the buffer
  };
  for (const auto& [reply, want] : rows) {
    driver.sflow().samplesReply = reply;
    driver.sflow().dropsReply = reply;
    EXPECT_EQ(vornDmaRxSflowCount(), want) << reply;
    EXPECT_EQ(vornDmaRxSflowDropCount(), want) << reply;
  }
  EXPECT_EQ(driver.commands()[0], "rxsflow");
  EXPECT_EQ(driver.commands()[1], "rxsflow_drop");
  // A refused read ends the process.
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

// The share of samples to drop over 2^32-1, computed in 64 bits: the largest
// rates neither overflow nor divide by zero.
CATALOGUE_TEST_F(Sflow, DropThresholdIsTheShareToDropOver32Bits, "vornDmaSflowSampleRateSet") {
  const struct {
    U32 rate, hw;
    bool drop;
    U32 threshold;
  } rows[] = {
      {16, 4, true, 3221225471u},
      {16, 4, false, 0},
      {3, 1, true, 2863311530u},
      {0, 0, true, 0},
      {1, 0, true, UINT_MAX},
      {UINT_MAX, 1, true, UINT_MAX - 1},
      {UINT_MAX, UINT_MAX - 1, true, 1},
      {UINT_MAX, UINT_MAX, true, 0},
  };
  for (const auto& r : rows)
    EXPECT_EQ(thresholdFor(r.rate, r.hw, r.drop), r.threshold) << r.rate << "/" << r.hw;
  EXPECT_EQ(driver.sflow().fapType, 2u);
  EXPECT_EQ(driver.commands().front(), "sflow_drop_threshold 3221225471 2");
  vornDmaSflowSampleRateSet(UINT_MAX, 1, true, fapTypeJericho);
  EXPECT_EQ(driver.commands().back(), "sflow_drop_threshold 4294967294 3");
  // A software rate below the hardware's ends the process.
  EXPECT_DEATH(vornDmaSflowSampleRateSet(4, 16, true, fapTypeArad),
               "vornDmaSflowSampleRateSet\\(U32, U32, bool, Hardware::Vorn::FapType\\): "
               "Assertion `sampleRate >= HwSampleRate' failed");
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

CATALOGUE_TEST_F(Sflow, DisablingDropsSendsThresholdZero, "vornDmaDisableSflowDrops") {
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
  vornDmaDisableSflowDrops(static_cast<FapType>(UINT_MAX));
  EXPECT_EQ(driver.commands().back(), "sflow_drop_threshold 0 4294967295");
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
