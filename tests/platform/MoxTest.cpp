// Framework strings, pointers, ordered maps, trace handles and assertions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <compare>
#include <csignal>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "Mox/Assert.h"
#include "Mox/FlatMap.h"
#include "Mox/Ptr.h"
#include "Mox/String.h"
#include "Mox/Trace.h"
#include "support/AllocationCounter.h"
#include "support/Support.h"

namespace {

TEST(MoxString, SubstrAndPosNeverLeaveTheText) {
  Mox::String s("Port-Channel10");
  EXPECT_EQ(s.substr(12, 100), "10");
  EXPECT_EQ(s.substr(14), "");
  EXPECT_EQ(s.substr(99, 1), "");
  EXPECT_EQ(s.pos('1', 13), -1);
  EXPECT_EQ(Mox::String(nullptr).charPtr()[0], '\0');
}

// Texts on both sides of the 15 characters a string holds in itself.
const std::string kFifteen = "Ethernet1024/15";
const std::string kSixteen = "Ethernet1024/150";

TEST(MoxString, InlineUpToFifteenCharactersSharedFromSixteen) {
  VornTest::AllocationScope scope;
  Mox::String fifteen(kFifteen);
  Mox::String copy = fifteen;
  Mox::String moved = std::move(copy);
  EXPECT_EQ(scope.count(), 0u);
  EXPECT_EQ(fifteen.charPtr()[15], '\0');
  EXPECT_EQ(moved, fifteen);

  Mox::String sixteen(kSixteen);
  Mox::String assigned;
  assigned = sixteen;
  EXPECT_EQ(scope.count(), 1u);
  EXPECT_EQ(assigned.charPtr(), sixteen.charPtr());
  EXPECT_EQ(sixteen.substr(0, 15), fifteen);

  assigned = fifteen;  // shared released, inline again
  Mox::String& alias = assigned;
  assigned = alias;
  assigned = std::move(alias);
  EXPECT_EQ(assigned, fifteen);
  Mox::String a(kSixteen), b(kFifteen);
  std::swap(a, b);
  EXPECT_EQ(a, fifteen);
  EXPECT_EQ(b, sixteen);
  b = std::move(a);  // the shared buffer is released, the inline text moves
  EXPECT_EQ(b, fifteen);
  EXPECT_TRUE(a.empty());  // NOLINT(bugprone-use-after-move)
}

TEST(MoxString, BuiltFromBytesEqualsBuiltFromText) {
  const std::string text = std::string("et1024_15\xff\x80x\0yz", 15);
  for (std::size_t len = 0; len <= Mox::String::kShortMax; ++len) {
    Mox::String::Bytes bytes;
    for (std::size_t i = 0; i < len; ++i) {
      const auto byte = static_cast<std::uint64_t>(static_cast<unsigned char>(text[i]));
      (i < 8 ? bytes.first : bytes.rest) |= byte << (8 * (i % 8));
    }
    bytes.length = len;
    VornTest::AllocationScope scope;
    const Mox::String built(bytes);
    EXPECT_EQ(scope.count(), 0u);
    const Mox::String expected(text.data(), len);
    EXPECT_EQ(built, expected) << len;
    EXPECT_EQ(built <=> expected, std::strong_ordering::equal) << len;
    EXPECT_EQ(built.charPtr()[len], '\0');
  }
}

TEST(MoxString, ComparisonHashAndFormat) {
  EXPECT_LT(Mox::String(kFifteen), Mox::String(kSixteen));
  EXPECT_LT(Mox::String("et1_10"), Mox::String("et1_2"));
  EXPECT_NE(Mox::String("ab"), Mox::String("ab\0", 3));  // an embedded NUL counts
  EXPECT_EQ(std::hash<Mox::String>()(Mox::String(kFifteen)),
            std::hash<std::string_view>()(kFifteen));
  EXPECT_EQ(Mox::format("%s!", std::string(1000, 'x').c_str()).bytes(), 1001u);
}

struct Counted : Mox::PtrInterface {
  explicit Counted(int* alive) : alive(alive) { ++*alive; }
  ~Counted() override { --*alive; }
  int* alive;
};

TEST(MoxPtr, CopiesAcrossThreadsAndTheLastReferenceDeletes) {
  int alive = 0;
  const Mox::String shared(kSixteen + kSixteen);
  {
    Mox::Ptr<Counted> p(new Counted(&alive));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
      threads.emplace_back([p, &shared] {
        for (int i = 0; i < 10000; ++i) {
          Mox::Ptr<Counted const> q = p;
          Mox::String copy = shared;
          Mox::String other(copy);
          copy = other;
        }
      });
    for (auto& t : threads) t.join();
    EXPECT_EQ(p->references(), 1);
    EXPECT_EQ(alive, 1);
  }
  EXPECT_EQ(alive, 0);
  EXPECT_EQ(shared.view(), kSixteen + kSixteen);
}

TEST(MoxTrace, OnlyEnabledLevelsAreFormatted) {
  Mox::TraceHandle& h = Mox::traceHandle("MoxTestHandle");
  VornTest::TraceCapture capture({});
  h.levelIs(3, true);
  MOX_TRACE(h, 3, "a", 1, ' ', true, Mox::String("s"));
  MOX_TRACE(h, 8, "not written");
  h.levelIs(3, false);
  MOX_TRACE(h, 3, "not written either");
  ASSERT_EQ(capture.lines().size(), 1u);
  EXPECT_EQ(capture.lines()[0].text, "a1 1s");
  EXPECT_EQ(capture.lines()[0].handle, "MoxTestHandle");
}

TEST(MoxAssertDeathTest, FailsInEveryBuildTypeInTheCLibraryFormat) {
  EXPECT_DEATH(MOX_ASSERT_TEXT(1 + 1 == 3, "bits", "U8 f(Hardware::Vorn::FapType)"),
               ": U8 f\\(Hardware::Vorn::FapType\\): Assertion `bits' failed.");
  EXPECT_DEATH(MOX_ASSERT_AT(false, "!initialized()", "Vorn/EgressBufferSm.cpp", 62, "void g()"),
               "Vorn/EgressBufferSm.cpp:62: void g\\(\\): Assertion `!initialized\\(\\)' failed.");
  EXPECT_DEATH(
      {
        Mox::failedLine("false", "Incorrect fapName ", Mox::String("Xyz1/0"));
        MOX_ASSERT_TEXT(false, "\"false\" == nullptr", "f");
      },
      "^Failed\\(false\\) Incorrect fapName Xyz1/0\n.*Assertion `\"false\" == nullptr' failed");
}

TEST(MoxFlatMap, KeepsKeyOrderWhateverTheInsertionOrder) {
  Mox::FlatMap<Mox::String, int> map;
  for (int id : {0, 1, 2, 10, 11, 3}) map.insert_or_assign(Mox::format("et1_%d", id), id);
  std::vector<std::string> names;
  for (const auto& [name, id] : map) names.push_back(name.stdString());
  EXPECT_THAT(names, testing::ElementsAre("et1_0", "et1_1", "et1_10", "et1_11", "et1_2", "et1_3"));

  map.insert_or_assign("et1_10", 99);
  map.insert_or_assign("et1_3", 98);
  EXPECT_EQ(map.size(), 6u);
  EXPECT_EQ(map.find("et1_10")->second, 99);
  EXPECT_EQ(map.find("et1_3")->second, 98);
  EXPECT_EQ(map.find("et1_4"), map.end());

  EXPECT_TRUE(map.erase("et1_0"));
  EXPECT_EQ(map.begin()->first, "et1_1");

  map.emplace_back("et9", 9) = 8;
  EXPECT_EQ(std::prev(map.end())->second, 8);
}

TEST(MoxFlatMap, AssignBuildsWhatInsertingOneByOneBuilds) {
  // Sizes on both sides of the positions kept on the stack.
  std::mt19937 rng(7);
  std::vector<std::vector<std::pair<Mox::String, int>>> inputs;
  for (int n : {0, 1, 2, 16, 64, 65, 300}) {
    std::vector<std::pair<Mox::String, int>> ordered, random, stretches;
    for (int i = 0; i < n; ++i) {
      ordered.emplace_back(Mox::format("et1_%03d", i), i);
      random.emplace_back(Mox::format("et1_%d", static_cast<int>(rng() % (n / 2 + 1))), i);
      stretches.emplace_back(Mox::format("et1_%d", i), i);
    }
    inputs.push_back(ordered);
    inputs.emplace_back(ordered.rbegin(), ordered.rend());
    inputs.push_back(random);
    inputs.push_back(stretches);
  }
  inputs.push_back({{"b", 1}, {"b", 2}, {"a", 3}, {"b", 4}, {"a", 5}});
  inputs.push_back({{"a", 1}, {"c", 2}, {"a", 3}, {"b", 4}, {"c", 5}});
  inputs.push_back({{"Ethernet1024/15.4094", 1}, {"a", 2}, {"Ethernet1024/15.4094", 3}});
  for (const auto& input : inputs) {
    Mox::FlatMap<Mox::String, int> expected;
    for (const auto& [key, value] : input) expected.insert_or_assign(key, value);
    auto moved = input;
    Mox::FlatMap<Mox::String, int> built;
    built.insert_or_assign("stale", -1);  // replaced, not kept
    built.assign(moved.begin(), moved.end());
    ASSERT_EQ(built, expected) << input.size() << " entries";
  }
}

}  // namespace
