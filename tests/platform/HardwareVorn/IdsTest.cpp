// Identifier types of the chip type library: nulls, range texts, CPU TM ports.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "HardwareVorn/Destination.h"
#include "HardwareVorn/FapRevMajorList.h"
#include "HardwareVorn/Ids.h"
#include "Regpath/Fapmask.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::Pair;

namespace {

// T accepts null() and throws its text one above.
template <typename T>
void expectBound(unsigned long long null, const char* text) {
  EXPECT_EQ(static_cast<unsigned long long>(T().value()), null) << text;
  EXPECT_EQ(static_cast<unsigned long long>(T(static_cast<typename T::ValueType>(null)).value()),
            null);
  try {
    T(static_cast<typename T::ValueType>(null + 1));
    ADD_FAILURE() << "no exception for " << text;
  } catch (const Mox::RangeException& e) {
    EXPECT_STREQ(e.what(), text);
  }
}

// The ids the library range-checks its inputs with: null is the largest
// value accepted, one more throws with the type's text (the library's tests
// check those of the chip-wide FAP id and the LAG id).
TEST(Ids, NullsAndRangeTexts) {
  expectBound<Regpath::FapId>(128, "FapId::value < FapId::min or > FapId::null not allowed");
  expectBound<LocalCoreId>(
      4, "LocalCoreId::value < LocalCoreId::min or > LocalCoreId::null not allowed");
  expectBound<FapPortId>(256, "FapPortId::value < FapPortId::min or > FapPortId::null not allowed");
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
  EXPECT_EQ(list->size(), 0u);
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
  ASSERT_NE(list->fapRevMajor(fapRevMajor2), nullptr);
  EXPECT_EQ(*list->fapRevMajor(fapRevMajor2), fapTypePetra);
}

}  // namespace
