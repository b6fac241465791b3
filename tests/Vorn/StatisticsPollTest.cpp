#include "Vorn/StatisticsPoll.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace Hardware::Vorn::dma {
namespace {

// Every placement of the mark, a cut mark and near misses, over fillers, in
// texts of every length past three blocks.
TEST(StatisticsPoll, AgreesWithASubstringSearchEverywhere) {
  const std::string pieces[] = {"devstats ", "devstats", "devstatsx", "ddevstats ", "xevstats "};
  const std::string fillers[] = {"x", "d", "\xe4", "de"};
  int found = 0;
  for (const std::string& filler : fillers) {
    for (std::size_t length = 0; length <= 30; ++length) {
      for (const std::string& piece : pieces) {
        for (std::size_t at = 0; at <= length; ++at) {
          std::string text;
          while (text.size() < at) text += filler;
          text.resize(at);
          text += piece;
          while (text.size() < length + piece.size()) text += filler;
          const bool expected = text.find("devstats ") != std::string::npos;
          found += expected;
          ASSERT_EQ(isStatisticsPoll(text.data(), text.size()), expected)
              << "text \"" << text << "\"";
        }
      }
    }
  }
  EXPECT_GT(found, 0);
}

TEST(StatisticsPoll, SearchesOnlyTheGivenLength) {
  const char text[] = "0123456devstats fap0";
  EXPECT_TRUE(isStatisticsPoll(text, 16));
  EXPECT_FALSE(isStatisticsPoll(text, 15));
  EXPECT_FALSE(isStatisticsPoll(text, 0));
}

}  // namespace
}  // namespace Hardware::Vorn::dma
