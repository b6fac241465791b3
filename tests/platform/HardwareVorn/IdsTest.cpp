// Identifier types of the chip type library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HardwareVorn/Destination.h"
#include "HardwareVorn/FapRevMajorList.h"
#include "HardwareVorn/Ids.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::Pair;

namespace {

TEST(Ids, NullIsTheLargestValueAndMinTheSmallest) {
  EXPECT_TRUE(FapPortId(256).isNull());
  EXPECT_EQ(FapPortId(), FapPortId(256));
  EXPECT_THROW(FapPortId(257), Mox::RangeException);
  EXPECT_THROW(SystemPhyPortId(1), Mox::RangeException);  // system ports start at 2
  EXPECT_EQ(SystemPhyPortId(2).value(), 2);
}

TEST(Destinations, ARefusedValueLeavesTheDestinationAlone) {
  DestinationId d;
  d.destinationIs(DestinationId::destDrop);
  EXPECT_EQ(d.destination, 2097152u);
  EXPECT_THROW(d.destinationIs(DestinationId::destDrop + 1), Mox::RangeException);
  EXPECT_EQ(d.destination, 2097152u);
}

TEST(RevisionList, AscendingWithAVersionThatMovesOnEveryChange) {
  FapRevMajorList::Ptr list = fapRevMajorListFactory();
  const U32 v0 = list->version();
  list->fapRevMajorIs(fapRevMajor7, fapTypeJericho);
  list->fapRevMajorIs(fapRevMajor2, fapTypePetra);
  list->fapRevMajorIs(fapRevMajor4, fapTypeArad);
  EXPECT_EQ(list->version(), v0 + 3);
  EXPECT_THAT(std::vector(list->begin(), list->end()),
              ElementsAre(Pair(fapRevMajor2, fapTypePetra), Pair(fapRevMajor4, fapTypeArad),
                          Pair(fapRevMajor7, fapTypeJericho)));
  EXPECT_EQ(list->after(fapRevMajor3)->first, fapRevMajor4);
  EXPECT_EQ(list->after(fapRevMajor7), list->end());
  list->fapRevMajorDel(fapRevMajor4);
  EXPECT_EQ(list->version(), v0 + 4);
  EXPECT_EQ(list->fapRevMajor(fapRevMajor4), nullptr);
}

}  // namespace
