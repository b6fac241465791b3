// sFlow counters and drop threshold, and the listing dump.
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
using VornTest::ScopedEnv;
using VornTest::TraceCapture;

namespace {

class Sflow : public testing::Test {
 protected:
  U32 thresholdFor(U32 sampleRate, U32 hwSampleRate, bool dropEnabled = true) {
    driver.sflow().dropThreshold = 12345;
    vornDmaSflowSampleRateSet(sampleRate, hwSampleRate, dropEnabled, fapTypeArad);
    EXPECT_TRUE(driver.sflow().thresholdSet);
    return driver.sflow().dropThreshold;
  }
  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
};

// The replies are read as strtoull reads them, never past their 128 bytes.
CATALOGUE_TEST_F(Sflow, CountersAreTheDriversDecimalReplies, "vornDmaRxSflowCount",
                 "vornDmaRxSflowDropCount") {
  const std::pair<std::string, U64> rows[] = {
      {"77 samples", 77}, {"0x10", 0}, {std::string(200, '9'), ULLONG_MAX},  // cut at the buffer
  };
  for (const auto& [reply, want] : rows) {
    driver.sflow().samplesReply = reply;
    driver.sflow().dropsReply = reply;
    EXPECT_EQ(vornDmaRxSflowCount(), want) << reply;
    EXPECT_EQ(vornDmaRxSflowDropCount(), want) << reply;
  }
  EXPECT_EQ(driver.commands()[0], "rxsflow");
  EXPECT_EQ(driver.commands()[1], "rxsflow_drop");
  EXPECT_EXIT(
      {
        Mox::traceHandle("VornDma").levelIs(0, true);
        driver.answerNext("rxsflow_drop", ENODEV);
        vornDmaRxSflowDropCount();
      },
      testing::KilledBySignal(SIGABRT), "vornDmaRxSflowDropCount read returned No such device");
}

// The share of samples to drop over 2^32-1, computed in 64 bits.
CATALOGUE_TEST_F(Sflow, DropThresholdIsTheShareToDropOver32Bits, "vornDmaSflowSampleRateSet") {
  const struct {
    U32 rate, hw;
    bool drop;
    U32 threshold;
  } rows[] = {
      {16, 4, true, 3221225471u}, {16, 4, false, 0},
      {3, 1, true, 2863311530u},  {0, 0, true, 0},
      {1, 0, true, UINT_MAX},     {UINT_MAX, 1, true, UINT_MAX - 1},
  };
  for (const auto& r : rows)
    EXPECT_EQ(thresholdFor(r.rate, r.hw, r.drop), r.threshold) << r.rate << "/" << r.hw;
  EXPECT_EQ(driver.commands().front(), "sflow_drop_threshold 3221225471 2");
  EXPECT_DEATH(vornDmaSflowSampleRateSet(4, 16, true, fapTypeArad),
               "vornDmaSflowSampleRateSet\\(U32, U32, bool, Hardware::Vorn::FapType\\): "
               "Assertion `sampleRate >= HwSampleRate' failed");
}

// Both commands trace what they send; a refusal is only traced.
CATALOGUE_TEST_F(Sflow, SendsAreTracedAndRefusalsOnlyTraced, "vornDmaDisableSflowDrops") {
  Ringlog::ScopedMemoryFile ring;
  TraceCapture trace;
  vornDmaSflowSampleRateSet(16, 4, true, fapTypeJericho);
  driver.answerNext("sflow_drop_threshold", EINVAL);
  vornDmaSflowSampleRateSet(8, 8, true, fapTypePetra);
  vornDmaDisableSflowDrops(fapTypeJericho);
  driver.answerNext("sflow_drop_threshold", EINVAL);
  vornDmaDisableSflowDrops(static_cast<FapType>(UINT_MAX));
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaSflowSampleRateSet: sampleRate 16 HwSampleRate 4 "
                          "sflow_drop_threshold 3221225471 3",
                          "vornDmaSflowSampleRateSet: sampleRate 8 HwSampleRate 8 "
                          "sflow_drop_threshold 0 1",
                          "vornDmaSflowSampleRateSet cmd: sflow_drop_threshold 0 1 returned "
                          "Invalid argument",
                          "vornDmaDisableSflowDrops: sflow_drop_threshold 0 3",
                          "vornDmaDisableSflowDrops: sflow_drop_threshold 0 4294967295",
                          "vornDmaDisableSflowDrops cmd: sflow_drop_threshold 0 4294967295 error "
                          "Invalid argument"));
  EXPECT_THAT(ring.messages(), Contains("vornDmaSflowSampleRateSet sampleRate=16, HwSampleRate 4"));
}

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

TEST(Dump, FailuresAreReportedWithThePath) {
  static bool opens = false;
  static int reads = 0;
  Kernel::Ops ops = Kernel::linuxOps();
  ops.open = [](const char*, int) {
    errno = ENOENT;
    return opens ? 99 : -1;
  };
  ops.read = [](int, void* buf, std::size_t) -> ssize_t {
    errno = EIO;
    if (reads++ > 0) return -1;
    std::memcpy(buf, "head\n", 5);
    return 5;
  };
  ops.close = [](int) { return 0; };
  Kernel::ScopedOps scoped(&ops);
  testing::internal::CaptureStderr();
  vornDmaDump();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "/proc/vorn-dma: No such file or directory\n");
  opens = true;
  testing::internal::CaptureStderr();
  vornDmaDump();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "head\n/proc/vorn-dma: Input/output error\n");
}

}  // namespace
