// Chip variants and types, cores, linecard names, the system FAP mask and
// threshold units.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornCommonUtils.h"

using namespace Hardware::Vorn;
using VornTest::failedAssertion;

namespace {

// FAP 7 of family `type` and major revision `rev` (none where negative).
Status::Ptr fap7(int type, int rev) {
  Status::Ptr status(new Status());
  if (type >= 0) status->fapType().is(FapId(7), static_cast<FapType>(type));
  if (rev >= 0) status->fapRevision().is(FapId(7), {static_cast<FapRevMajor>(rev), 0});
  return status;
}

CATALOGUE_TEST(FapMaskTypeDeathTest, FollowsFamilyAndRevision, "getFapMaskType") {
  // Family 1 Petra, 2 Arad, 3 Jericho; without a revision the family's first.
  const int rows[][3] = {{-1, 3, 0}, {0, 3, 0}, {1, 1, 1},  {1, 2, 2}, {1, -1, 2}, {2, 5, 5},
                         {2, 4, 4},  {2, 3, 3}, {2, -1, 3}, {3, 6, 6}, {3, 9, 6}};
  for (const auto& [type, rev, mask] : rows)
    EXPECT_EQ(getFapMaskType(fap7(type, rev), FapId(7)), static_cast<FapMaskType>(mask))
        << "type " << type << " rev " << rev;
  EXPECT_EQ(getFapMaskType(fap7(2, 4), FapId(8)), fapMaskTypeNone_);
  EXPECT_EQ(getFapMaskType(fap7(2, 4), FapId()), fapMaskTypeNone_);
  EXPECT_DEATH(getFapMaskType(fap7(4, 1), FapId(7)), failedAssertion("0 && \"Invalid fapId\""));
}

CATALOGUE_TEST(ChipTypeDeathTest, OfEachFapMaskTypeAndItsCores, "getChipTypeFromFapMaskType",
               "chipTypeToNumCores") {
  EXPECT_EQ(getChipTypeFromFapMaskType(static_cast<FapMaskType>(1)), 2u);
  EXPECT_EQ(getChipTypeFromFapMaskType(static_cast<FapMaskType>(10)), 2u);
  for (U32 mask : {8u, 11u})  // a gap in the table, and past its end
    EXPECT_DEATH(getChipTypeFromFapMaskType(static_cast<FapMaskType>(mask)),
                 failedAssertion("0 && \"Invalid FapMaskType\""))
        << mask;
  EXPECT_EQ(chipTypeToNumCores(static_cast<Hardware::ChipType>(12)), 2u);
  EXPECT_EQ(chipTypeToNumCores(static_cast<Hardware::ChipType>(13)), 1u);
  EXPECT_DEATH(chipTypeToNumCores(static_cast<Hardware::ChipType>(14)),
               failedAssertion("0 && \"Invalid ChipType\""));
}

CATALOGUE_TEST(LinecardName, OfInterfacesAndSlots, "intfIdToLinecardName", "slotIdToLinecardName") {
  const std::pair<const char*, const char*> intfs[] = {
      {"Ethernet12/4/1.100", "Linecard12"}, {"Ethernet3/1", "FixedSystem"}, {"", "FixedSystem"}};
  for (const auto& [intf, want] : intfs)
    EXPECT_EQ(intfIdToLinecardName(Wirl::IntfId(intf)), want) << intf;
  const std::pair<U32, const char*> slots[] = {
      {0, "Linecard0"}, {1, "FixedSystem"}, {3, "Linecard3"}, {UINT_MAX, "Linecard4294967295"}};
  for (const auto& [slot, want] : slots) EXPECT_EQ(slotIdToLinecardName(slot), want) << slot;
}

// The word's length is dropped from the start wherever it stands.
CATALOGUE_TEST(LinecardNameDeathTest, OfFapNames, "fapNameToLinecardName") {
  const std::pair<const char*, const char*> rows[] = {
      {"Fap12/0", "Linecard12"},     {"Jericho2", "FixedSystem"}, {"Fap/", "Linecard0"},
      {"Jericho-7/1", "Linecard-7"}, {"xyFap5/1", "Linecard0"},   {"9/Fap", "FixedSystem"}};
  for (const auto& [name, want] : rows) EXPECT_EQ(fapNameToLinecardName(name), want) << name;
  EXPECT_DEATH(fapNameToLinecardName("fap1/0"), "^Failed\\(false\\) Incorrect fapName fap1/0\n.*" +
                                                    failedAssertion("\"false\" == nullptr"));
}

CATALOGUE_TEST(SystemFapMask, HoldsEveryFapBelowTheCount, "maxFapsInSystemMask") {
  Status::Ptr status(new Status());
  const Regpath::Fapmask full(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF);
  const std::pair<U32, Regpath::Fapmask> rows[] = {{0, Regpath::Fapmask()},
                                                   {33, Regpath::Fapmask(0xFFFFFFFF, 1, 0, 0)},
                                                   {128, full},
                                                   {129, full}};
  for (const auto& [count, want] : rows) {
    status->maxFapsInSystemIs(count);
    EXPECT_EQ(maxFapsInSystemMask(status), want) << count;
  }
  status->maxFapsInSystemIs(130);
  VornTest::expectRangeText([&] { maxFapsInSystemMask(status); },
                            "FapId::value < FapId::min or > FapId::null not allowed");
}

CATALOGUE_TEST(ThresholdsInBytesDeathTest, AreCrosswiseAndScaledByUnit, "getThresholdsInBytes") {
  U32 a = 0, b = 0;
  const U32 scales[] = {1, 1000, 1000000, 1};  // bytes, kB, MB, packets
  for (U32 unit = 0; unit < 4; ++unit) {
    getThresholdsInBytes(10, 20, a, b, static_cast<Qos::QueueThresholdUnit>(unit));
    EXPECT_TRUE(a == 20 * scales[unit] && b == 10 * scales[unit]) << unit;
  }
  getThresholdsInBytes(UINT_MAX, 5000, a, b, Qos::queueThresholdUnitMbytes);
  EXPECT_EQ(a, U32(5000ull * 1000000ull));
  EXPECT_EQ(b, U32(UINT_MAX * 1000000ull));
  EXPECT_DEATH(getThresholdsInBytes(1, 2, a, b, static_cast<Qos::QueueThresholdUnit>(4)),
               failedAssertion("false"));
}

}  // namespace
