// FAP masks of register paths.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "Regpath/Fapmask.h"

using Regpath::FapId;
using Regpath::Fapmask;

namespace {

std::vector<U16> members(const Fapmask& mask) {
  std::vector<U16> out;
  for (FapId id = mask.nextFapId(); !id.isNull(); id = mask.nextFapId(id)) out.push_back(id.value());
  return out;
}

TEST(Fapmask, SetsBitsInFourWords) {
  Fapmask mask;
  EXPECT_TRUE(mask.empty());
  EXPECT_TRUE(mask.nextFapId().isNull());
  for (U16 id : {0, 31, 32, 65, 127}) mask.fapIdIs(FapId(id), true);
  EXPECT_EQ(mask, Fapmask(0x80000001, 0x1, 0x2, 0x80000000));
  EXPECT_THAT(members(mask), testing::ElementsAre(0, 31, 32, 65, 127));
  EXPECT_TRUE(mask.fapId(FapId(65)));
  EXPECT_FALSE(mask.fapId(FapId(64)));
  mask.fapIdIs(FapId(31), false);
  EXPECT_EQ(mask.word(0), 0x1u);
  // The null id has no bit.
  mask.fapIdIs(FapId(), true);
  EXPECT_FALSE(mask.fapId(FapId()));
  EXPECT_TRUE(mask.nextFapId(FapId()).isNull());
  EXPECT_TRUE(mask.nextFapId(FapId(127)).isNull());
  std::ostringstream os;
  os << mask;
  EXPECT_EQ(os.str(), "0x80000000:00000002:00000001:00000001");
}

}  // namespace
