// The post-mortem ring trace.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <string>

#include "Kernel/Kernel.h"
#include "Ringlog/RingFile.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

// In the run's scratch directory, which main() removes with what is in it.
std::string tempPath(const char* name) {
  return testing::TempDir() + name + ".rlog";
}

std::vector<Ringlog::DecodedRecord> records(const std::string& path) {
  std::vector<Ringlog::DecodedRecord> out;
  std::string error;
  EXPECT_TRUE(Ringlog::readRingFile(path, out, error)) << error;
  return out;
}

std::vector<std::string> texts(const std::string& path) {
  std::vector<std::string> out;
  for (const auto& r : records(path)) out.push_back(r.text);
  return out;
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
}

// Records written in place and from an argument array agree, also where the
// slot cuts a string or drops arguments.
TEST(RingFile, InPlaceAndArgumentArrayRecordsAgree) {
  std::string path = tempPath("agree");
  const std::string longText(300, 'z');
  const char* const none = nullptr;
  {
    Ringlog::RingFile file(path, 0);
    Ringlog::TraceFile& asFile = file;
    auto both = [&](Ringlog::MsgId id, const auto&... a) {
      Ringlog::write(&file, id, a...);
      const Ringlog::Arg args[] = {Ringlog::arg(a)...};
      asFile.write(id, args, sizeof...(a));
    };
    static const Ringlog::MsgId mixed = Ringlog::registerMessage("%s %d %u %g %s %s %llu %x %lld");
    both(mixed, "et1", -3, 4u, 0.5, Mox::String("a longer mox string"), none,
         18446744073709551615ull, 255u, -9223372036854775807ll);
    static const Ringlog::MsgId cut = Ringlog::registerMessage("%s|%s|%u");
    both(cut, longText.c_str(), "tail", 9u);  // the string fills the slot; the rest is dropped
    static const Ringlog::MsgId many = Ringlog::registerMessage(
        "%u %u %u %u %u %u %u %u %u %u %u %u %u %u %u %u %u %u %u %u "
        "%u %u %u %u %u %u %u %u %u %u");
    both(many, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 13u, 14u, 15u, 16u, 17u, 18u, 19u,
         20u, 21u, 22u, 23u, 24u, 25u, 26u, 27u, 28u, 29u, 30u);
  }
  std::vector<std::string> got = texts(path);
  ASSERT_EQ(got.size(), 6u);
  for (std::size_t i = 0; i < got.size(); i += 2) EXPECT_EQ(got[i], got[i + 1]) << i;
  EXPECT_EQ(got[0],
            "et1 -3 4 0.5 a longer mox string (null) 18446744073709551615 ff -9223372036854775807");
  EXPECT_THAT(got[2], testing::StartsWith("zzz"));
  EXPECT_LT(got[2].size(), 256u);
  EXPECT_THAT(got[2], testing::Not(HasSubstr("tail")));
  EXPECT_THAT(got[4], testing::StartsWith("1 2 3 "));
  EXPECT_THAT(got[4], testing::Not(HasSubstr(" 30")));
}

std::int64_t wallNow() {
  timespec ts;
  clock_gettime(CLOCK_REALTIME, &ts);
  return static_cast<std::int64_t>(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

// A block's end writes the elapsed time into its record; a message shares
// its block's opening time only while nothing else was written since.
TEST(RingFile, BlockTimesAndTheMessagesThatShareThem) {
  std::string path = tempPath("block");
  const std::int64_t before = wallNow();
  {
    Ringlog::RingFile file(path, 0);
    Ringlog::defaultFileIs(&file);
    {
      RINGLOG_BLOCK("vornDmaIfdel ifname=%s", "et1");
      ::usleep(20000);
      RINGLOG("inside");
      ::usleep(2000);
      RINGLOG_AT_BLOCK_START("after plain %d", 1);
    }
    {
      RINGLOG_BLOCK("block");
      ::usleep(2000);
      RINGLOG_AT_BLOCK_START("first %d", 2);
      ::usleep(2000);
      RINGLOG_AT_BLOCK_START("second %d", 3);  // a retry, later
    }
    ::usleep(2000);
    RINGLOG_AT_BLOCK_START("outside %d", 4);  // the block has closed
    Ringlog::defaultFileIs(nullptr);
  }
  const std::int64_t after = wallNow();
  std::vector<Ringlog::DecodedRecord> got = records(path);
  ASSERT_EQ(got.size(), 7u);
  EXPECT_EQ(got[0].text, "vornDmaIfdel ifname=et1");
  EXPECT_EQ(got[0].block, Ringlog::DecodedRecord::Block::kClosed);
  EXPECT_GE(got[0].elapsedNs, 22000000u);
  EXPECT_LT(got[0].elapsedNs, static_cast<std::uint64_t>(after - before));
  EXPECT_EQ(got[1].text, "inside");
  EXPECT_EQ(got[1].block, Ringlog::DecodedRecord::Block::kNone);
  EXPECT_GE(got[1].wallNs - got[0].wallNs, 19000000);
  EXPECT_GE(got[2].wallNs - got[1].wallNs, 1500000);
  EXPECT_EQ(got[4].text, "first 2");
  EXPECT_EQ(got[4].wallNs, got[3].wallNs);
  EXPECT_GE(got[5].wallNs - got[4].wallNs, 3000000);  // both sleeps
  EXPECT_EQ(got[6].text, "outside 4");
  EXPECT_GE(got[6].wallNs - got[5].wallNs, 1500000);
  EXPECT_THAT(
      Ringlog::formatRecord(got[0]),
      testing::MatchesRegex("[0-9-]+ [0-9:.]+ vornDmaIfdel ifname=et1 \\[took [0-9]+ ns\\]"));
}

// The message written right after a block opens is kept in the block's own
// slot, in place or from an argument array, when it fits there whole; one
// that does not fit gets a slot of its own, still at the block's time.
TEST(RingFile, TheMessageThatOpensABlockSharesItsSlot) {
  std::string path = tempPath("shared-slot");
  const std::string longText(230, 'c');
  unsigned slots;
  {
    Ringlog::RingFile file(path, 0);
    Ringlog::defaultFileIs(&file);
    slots = file.slotCount();
    for (unsigned n = 0; n < slots; ++n) {
      RINGLOG_BLOCK("block %u", n);
      if (n % 2) {
        RINGLOG_AT_BLOCK_START("fab_ioctl buf=%s", "devstate fap0 up");
      } else {
        static const Ringlog::MsgId id = Ringlog::registerMessage("array %u");
        const Ringlog::Arg arg = Ringlog::arg(n);
        static_cast<Ringlog::TraceFile&>(file).writeAtBlockStart(id, &arg, 1);
      }
    }
    {
      RINGLOG_BLOCK("block %s", "long");
      RINGLOG_AT_BLOCK_START("fab_ioctl buf=%s", longText.c_str());
    }
    Ringlog::defaultFileIs(nullptr);
  }
  std::vector<Ringlog::DecodedRecord> got = records(path);
  // The long pair's two slots took those of the two oldest pairs.
  ASSERT_EQ(got.size(), 2 * slots - 2);
  for (std::size_t i = 0; i + 2 < got.size(); i += 2) {
    const unsigned n = static_cast<unsigned>(i / 2 + 2);
    EXPECT_EQ(got[i].text, "block " + std::to_string(n));
    EXPECT_EQ(got[i + 1].text,
              n % 2 ? "fab_ioctl buf=devstate fap0 up" : "array " + std::to_string(n));
    EXPECT_EQ(got[i + 1].wallNs, got[i].wallNs);
  }
  EXPECT_EQ(got[got.size() - 2].text, "block long");
  // Its own slot holds 221 of its characters, more than the block's had room for.
  EXPECT_EQ(got.back().text, "fab_ioctl buf=" + longText.substr(0, 221));
  EXPECT_EQ(got.back().wallNs, got[got.size() - 2].wallNs);
}

// A block never closed reads as still open; one outlived by the ring ends in
// a record of its own.
TEST(RingFile, BlocksNeverClosedOrOutlivedByTheRing) {
  std::string path = tempPath("open");
  {
    Ringlog::RingFile file(path, 0);
    static const Ringlog::MsgId id = Ringlog::registerMessage("vornDmaIfadd ifname=%s");
    const Ringlog::Arg name = Ringlog::arg("et2");
    file.openBlock(id, &name, 1);
  }
  std::vector<Ringlog::DecodedRecord> got = records(path);
  ASSERT_EQ(got.size(), 1u);
  EXPECT_EQ(got[0].block, Ringlog::DecodedRecord::Block::kOpen);
  EXPECT_THAT(Ringlog::formatRecord(got[0]),
              testing::EndsWith("vornDmaIfadd ifname=et2 [still open]"));
  {
    Ringlog::RingFile file(path, 0);
    static const Ringlog::MsgId block = Ringlog::registerMessage("vornDmaIfdel ifname=%s");
    static const Ringlog::MsgId n = Ringlog::registerMessage("n=%u");
    const Ringlog::Arg name = Ringlog::arg("et3");
    Ringlog::BlockMark mark = file.openBlock(block, &name, 1);
    for (unsigned i = 0; i < file.slotCount(); ++i) Ringlog::write(&file, n, i);
    file.closeBlock(mark);
  }
  got = records(path);
  ASSERT_FALSE(got.empty());
  EXPECT_THAT(got.back().text, testing::MatchesRegex("end vornDmaIfdel after [0-9]+ ns"));
  for (const auto& r : got) EXPECT_NE(r.text, "vornDmaIfdel ifname=et3");
  // A block's first message written to another file stays in that file.
  const std::string otherPath = tempPath("other");
  {
    Ringlog::RingFile file(path, 0), other(otherPath, 0);
    static const Ringlog::MsgId block = Ringlog::registerMessage("vornDmaIfdel ifname=%s");
    const Ringlog::Arg name = Ringlog::arg("et4");
    Ringlog::BlockMark mark = file.openBlock(block, &name, 1);
    static_cast<Ringlog::TraceFile&>(other).writeAtBlockStart(block, &name, 1);
    file.closeBlock(mark);
  }
  EXPECT_THAT(texts(otherPath), ElementsAre("vornDmaIfdel ifname=et4"));
}

TEST(RingFile, LongLivedFilesKeepTheirWallTimes) {
  std::string path = tempPath("long-lived");
  std::int64_t first, last;
  {
    Ringlog::RingFile file(path, 0);
    static const Ringlog::MsgId id = Ringlog::registerMessage("tick %u");
    first = wallNow();
    Ringlog::write(&file, id, 1u);
    ::usleep(1100000);
    Ringlog::write(&file, id, 2u);  // due for a refresh: a second has passed
    Ringlog::write(&file, id, 3u);
    last = wallNow();
  }
  std::vector<Ringlog::DecodedRecord> got = records(path);
  ASSERT_EQ(got.size(), 3u);
  EXPECT_NEAR(static_cast<double>(got[0].wallNs), static_cast<double>(first), 2e6);
  EXPECT_NEAR(static_cast<double>(got[2].wallNs), static_cast<double>(last), 2e6);
  EXPECT_NEAR(static_cast<double>(got[1].wallNs - got[0].wallNs), 1.1e9, 5e7);
}

TEST(RingFile, RejectsWhatIsNotARingFile) {
  std::vector<Ringlog::DecodedRecord> records;
  std::string error;
  EXPECT_FALSE(Ringlog::readRingFile("/proc/self/status", records, error));
  EXPECT_THAT(error, HasSubstr("not a ring trace file"));
  EXPECT_FALSE(Ringlog::readRingFile("/nonexistent/file", records, error));
}

TEST(RingFile, AbortedProcessLeavesTheCommandThatEndedItAsNewestRecord) {
  std::string path = tempPath("death");
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
}

}  // namespace
