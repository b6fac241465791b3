// The post-mortem ring trace: records, wrap-around, argument types, and a
// file that survives the process that aborted while writing it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>

#include "Kernel/Kernel.h"
#include "Ringlog/RingFile.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::string tempPath(const char* name) {
  return testing::TempDir() + name + std::to_string(::getpid()) + ".rlog";
}

std::vector<std::string> texts(const std::string& path) {
  std::vector<Ringlog::DecodedRecord> records;
  std::string error;
  EXPECT_TRUE(Ringlog::readRingFile(path, records, error)) << error;
  std::vector<std::string> out;
  for (const auto& r : records) out.push_back(r.text);
  return out;
}

TEST(RingFile, EveryArgumentTypeRendersBack) {
  std::string path = tempPath("args");
  {
    Ringlog::RingFile file(path, 0);
    ASSERT_TRUE(file.ok());
    static const Ringlog::MsgId id =
        Ringlog::registerMessage("s=%s i=%d u=%u big=%llu x=%x neg=%lld m=%s d=%g");
    Ringlog::write(&file, id, "text", -5, 7u, 18446744073709551615ull, 255u, -9223372036854775807ll,
                   Mox::String("mox"), 2.5);
  }
  EXPECT_THAT(texts(path),
              ElementsAre("s=text i=-5 u=7 big=18446744073709551615 x=ff "
                          "neg=-9223372036854775807 m=mox d=2.5"));
  ::unlink(path.c_str());
}

TEST(RingFile, WrapsAroundKeepingTheNewestRecordsInOrder) {
  std::string path = tempPath("wrap");
  unsigned slots;
  {
    Ringlog::RingFile file(path, 0);  // the smallest file
    slots = file.slotCount();
    static const Ringlog::MsgId id = Ringlog::registerMessage("n=%u");
    for (unsigned n = 0; n < slots * 2 + 3; ++n) Ringlog::write(&file, id, n);
  }
  std::vector<std::string> got = texts(path);
  ASSERT_EQ(got.size(), slots);
  EXPECT_EQ(got.front(), "n=" + std::to_string(slots + 3));
  EXPECT_EQ(got.back(), "n=" + std::to_string(slots * 2 + 2));
  ::unlink(path.c_str());
}

TEST(RingFile, LongStringsAreCutToTheSlot) {
  std::string path = tempPath("long");
  {
    Ringlog::RingFile file(path, 0);
    static const Ringlog::MsgId id = Ringlog::registerMessage("%s");
    Ringlog::write(&file, id, std::string(1000, 'a').c_str());
  }
  std::vector<std::string> got = texts(path);
  ASSERT_EQ(got.size(), 1u);
  EXPECT_GT(got[0].size(), 200u);
  EXPECT_LT(got[0].size(), 256u);
  ::unlink(path.c_str());
}

TEST(RingFile, BlockTimersRecordTheirEnd) {
  std::string path = tempPath("block");
  {
    Ringlog::RingFile file(path, 0);
    Ringlog::defaultFileIs(&file);
    {
      RINGLOG_BLOCK("vornDmaIfdel ifname=%s", "et1");
    }
    Ringlog::defaultFileIs(nullptr);
  }
  std::vector<std::string> got = texts(path);
  ASSERT_EQ(got.size(), 2u);
  EXPECT_EQ(got[0], "vornDmaIfdel ifname=et1");
  EXPECT_THAT(got[1], testing::StartsWith("end vornDmaIfdel after "));
  ::unlink(path.c_str());
}

TEST(RingFile, RejectsWhatIsNotARingFile) {
  std::vector<Ringlog::DecodedRecord> records;
  std::string error;
  EXPECT_FALSE(Ringlog::readRingFile("/proc/self/status", records, error));
  EXPECT_THAT(error, HasSubstr("not a ring trace file"));
  EXPECT_FALSE(Ringlog::readRingFile("/nonexistent/file", records, error));
}

TEST(RingFile, AbortedProcessLeavesTheCommandThatEndedItAsNewestRecord) {
  // The child re-runs this test from the start, so the name cannot depend on the pid.
  std::string path = testing::TempDir() + "vorn-ring-death.rlog";
  EXPECT_EXIT(
      {
        static Ringlog::RingFile file(path, 0);
        Ringlog::defaultFileIs(&file);
        Emu::FabricDriver driver;
        char ok[Hardware::Vorn::kCommandSize] = "mpcmode off";
        Hardware::Vorn::fab_ioctl(ok, Hardware::Vorn::kCommandSize);
        driver.answerNext("mpcmode", EINVAL);
        Hardware::Vorn::vornDmaMpcMode(true);
      },
      testing::KilledBySignal(SIGABRT), "mpcmode on: Invalid argument");
  std::vector<std::string> got = texts(path);
  ASSERT_GE(got.size(), 2u);
  EXPECT_EQ(got[got.size() - 2], "fab_ioctl buf=mpcmode off");
  EXPECT_EQ(got.back(), "fab_ioctl buf=mpcmode on");
  ::unlink(path.c_str());
}

}  // namespace
