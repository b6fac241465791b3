// Chip variants and types, cores, linecard names, the system FAP mask and
// threshold units.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/VornCommonUtils.h"

using namespace Hardware::Vorn;
using VornTest::assertionPattern;
using VornTest::failedThenAssertion;

namespace {

Status::Ptr statusWithFap(FapId fap, std::optional<FapType> type, std::optional<U32> rev) {
  Status::Ptr status(new Status());
  if (type) status->fapType().is(fap, *type);
  if (rev) status->fapRevision().is(fap, {static_cast<FapRevMajor>(*rev), 0});
  return status;
}

TEST(FapMaskType, FollowsFamilyAndRevision) {
  struct Row {
    std::optional<FapType> type;
    std::optional<U32> rev;
    FapMaskType expected;
  };
  const Row rows[] = {
      {std::nullopt, 3, fapMaskTypeNone_},
      {fapTypeUnknown_, 3, fapMaskTypeNone_},
      {fapTypePetra, 1, fapMaskType1},
      {fapTypePetra, 2, fapMaskType2},
      {fapTypePetra, std::nullopt, fapMaskType2},
      {fapTypeArad, 5, fapMaskType5},
      {fapTypeArad, 4, fapMaskType4},
      {fapTypeArad, 3, fapMaskType3},
      {fapTypeArad, std::nullopt, fapMaskType3},  // no revision entry
      {fapTypeJericho, 6, fapMaskType6},
      {fapTypeJericho, 9, fapMaskType6},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(getFapMaskType(statusWithFap(FapId(7), row.type, row.rev), FapId(7)), row.expected)
        << "type " << (row.type ? static_cast<int>(*row.type) : -1) << " rev "
        << (row.rev ? static_cast<int>(*row.rev) : -1);
  }
  // Another FAP's entries do not count.
  EXPECT_EQ(getFapMaskType(statusWithFap(FapId(7), fapTypeArad, 4), FapId(8)), fapMaskTypeNone_);
}

TEST(FapMaskTypeDeath, UnknownFamily) {
  EXPECT_DEATH(getFapMaskType(statusWithFap(FapId(1), static_cast<FapType>(4), 1), FapId(1)),
               assertionPattern("Hardware::Vorn::FapMaskType Hardware::Vorn::getFapMaskType("
                                "Hardware::Vorn::Status::PtrConst, Hardware::Vorn::FapId)",
                                "0 && \"Invalid fapId\""));
}

TEST(ChipType, OfEachFapMaskType) {
  const std::pair<U32, U32> rows[] = {{1, 2}, {2, 3}, {3, 5}, {4, 8},
                                      {5, 6}, {6, 10}, {7, 13}, {10, 2}};
  for (auto [mask, chip] : rows)
    EXPECT_EQ(getChipTypeFromFapMaskType(static_cast<FapMaskType>(mask)), chip) << mask;
  EXPECT_EQ(getChipTypeFromFapMaskType(fapMaskType10), getChipTypeFromFapMaskType(fapMaskType1));
}

TEST(ChipTypeDeath, VariantsThatDoNotExist) {
  const std::string pattern = assertionPattern(
      "Hardware::ChipType Hardware::Vorn::getChipTypeFromFapMaskType(Hardware::Vorn::FapMaskType)",
      "0 && \"Invalid FapMaskType\"");
  for (U32 mask : {0u, 8u, 9u, 11u, 0xFFFFFFFFu})
    EXPECT_DEATH(getChipTypeFromFapMaskType(static_cast<FapMaskType>(mask)), pattern) << mask;
}

TEST(ChipType, CoresOfEachType) {
  for (U32 one : {1, 2, 3, 6, 7, 13})
    EXPECT_EQ(chipTypeToNumCores(static_cast<Hardware::ChipType>(one)), 1) << one;
  for (U32 two : {4, 5, 8, 9, 10, 11, 12})
    EXPECT_EQ(chipTypeToNumCores(static_cast<Hardware::ChipType>(two)), 2) << two;
  const std::string pattern = assertionPattern(
      "U8 Hardware::Vorn::chipTypeToNumCores(Hardware::ChipType)", "0 && \"Invalid ChipType\"");
  EXPECT_DEATH(chipTypeToNumCores(Hardware::chipTypeUnknown_), pattern);
  EXPECT_DEATH(chipTypeToNumCores(static_cast<Hardware::ChipType>(14)), pattern);
}

TEST(LinecardName, OfInterfacesAndSlots) {
  EXPECT_EQ(intfIdToLinecardName(Wirl::IntfId("Ethernet3/1/2")), "Linecard3");
  EXPECT_EQ(intfIdToLinecardName(Wirl::IntfId("Ethernet12/4/1.100")), "Linecard12");
  EXPECT_EQ(intfIdToLinecardName(Wirl::IntfId("Ethernet3/1")), "FixedSystem");
  EXPECT_EQ(intfIdToLinecardName(Wirl::IntfId("Ethernet3")), "FixedSystem");
  EXPECT_EQ(slotIdToLinecardName(Fru::SlotId(1)), "FixedSystem");
  EXPECT_EQ(slotIdToLinecardName(Fru::SlotId(3)), "Linecard3");
  EXPECT_EQ(slotIdToLinecardName(Fru::SlotId(0)), "Linecard0");
  EXPECT_EQ(slotIdToLinecardName(Fru::SlotId(4000000000u)), "Linecard4000000000");
}

TEST(LinecardName, OfFapNames) {
  EXPECT_EQ(fapNameToLinecardName("Fap12/0"), "Linecard12");
  EXPECT_EQ(fapNameToLinecardName("Jericho3/1"), "Linecard3");
  EXPECT_EQ(fapNameToLinecardName("Jericho2"), "FixedSystem");
  EXPECT_EQ(fapNameToLinecardName("Arad0"), "FixedSystem");
  EXPECT_EQ(fapNameToLinecardName("Arad7/1"), "Linecard7");
  // The word may stand anywhere, but its length is dropped from the start.
  EXPECT_EQ(fapNameToLinecardName("xyFap5/1"), "Linecard0");  // "ap5" does not convert
  EXPECT_EQ(fapNameToLinecardName("12Arad/0"), "Linecard0");  // "ad" before the slash
  EXPECT_EQ(fapNameToLinecardName("9/Fap"), "FixedSystem");   // nothing left after 3 characters
}

TEST(LinecardNameDeath, UnknownFapName) {
  const char* fn = "Mox::String Hardware::Vorn::fapNameToLinecardName(Mox::String)";
  EXPECT_DEATH(fapNameToLinecardName("Xyz1/0"),
               failedThenAssertion("Failed(false) Incorrect fapName Xyz1/0", fn,
                                   "\"false\" == nullptr"));
  // Case matters.
  EXPECT_DEATH(fapNameToLinecardName("fap1/0"),
               failedThenAssertion("Failed(false) Incorrect fapName fap1/0", fn,
                                   "\"false\" == nullptr"));
}

TEST(SystemFapMask, HoldsEveryFapBelowTheCount) {
  Status::Ptr status(new Status());
  EXPECT_EQ(maxFapsInSystemMask(status), Regpath::Fapmask());
  status->maxFapsInSystemIs(1);
  EXPECT_EQ(maxFapsInSystemMask(status), Regpath::Fapmask(1, 0, 0, 0));
  status->maxFapsInSystemIs(33);
  EXPECT_EQ(maxFapsInSystemMask(status), Regpath::Fapmask(0xFFFFFFFF, 1, 0, 0));
  status->maxFapsInSystemIs(128);
  EXPECT_EQ(maxFapsInSystemMask(status),
            Regpath::Fapmask(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF));
  // Id 128 is the null id and has no bit; 129 is out of range.
  status->maxFapsInSystemIs(129);
  EXPECT_EQ(maxFapsInSystemMask(status),
            Regpath::Fapmask(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF));
  status->maxFapsInSystemIs(130);
  EXPECT_THROW(
      {
        try {
          maxFapsInSystemMask(status);
        } catch (const Mox::RangeException& e) {
          EXPECT_STREQ(e.what(), "FapId::value < FapId::min or > FapId::null not allowed");
          throw;
        }
      },
      Mox::RangeException);
}

TEST(ThresholdsInBytes, AreCrosswiseAndScaledByUnit) {
  struct Row {
    Qos::QueueThresholdUnit unit;
    U32 scale;
  };
  for (Row row : {Row{Qos::queueThresholdUnitBytes, 1}, Row{Qos::queueThresholdUnitKbytes, 1000},
                  Row{Qos::queueThresholdUnitMbytes, 1000000},
                  Row{Qos::queueThresholdUnitPackets, 1}}) {
    U32 a = 0, b = 0;
    getThresholdsInBytes(10, 20, a, b, row.unit);
    EXPECT_EQ(a, 20 * row.scale) << row.unit;
    EXPECT_EQ(b, 10 * row.scale) << row.unit;
  }
  U32 a = 0, b = 0;
  getThresholdsInBytes(1, 5000, a, b, Qos::queueThresholdUnitMbytes);  // wraps silently
  EXPECT_EQ(a, static_cast<U32>(5000ull * 1000000ull));
  EXPECT_EQ(b, 1000000u);
}

TEST(ThresholdsInBytesDeath, UnknownUnit) {
  U32 a = 0, b = 0;
  EXPECT_DEATH(getThresholdsInBytes(1, 2, a, b, static_cast<Qos::QueueThresholdUnit>(4)),
               assertionPattern("void Hardware::Vorn::getThresholdsInBytes(U32, U32, U32&, U32&, "
                                "Qos::QueueThresholdUnit)",
                                "false"));
}

}  // namespace
