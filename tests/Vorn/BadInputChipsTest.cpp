// Bad input to the chip-type, linecard-name and FAP-revision functions:
// intfIdToLinecardName, slotIdToLinecardName, fapNameToLinecardName,
// fapIdToSliceName, sliceFapRev, maxFapsInSystemMask, getFapMaskType,
// getChipTypeFromFapMaskType, chipTypeToNumCores, getThresholdsInBytes,
// supportedFapRevMajors, maybeGetFapRevMajorFromFapType, fapRevMajorLoopMax,
// fapRevMajorLoopMin, fapRevMajorLoopMinPerEgrThreshProf,
// maxForFapRevMajors, minForFapRevMajors, minForFapRevMajorsPerEgrThreshProf,
// maxFapPortIdsByFapRevMajor, maxNifPortsByFapRevMajor.
// Values outside an enumeration's table end the process on their assertion;
// "not found" is the function's start value or 0; null lists are empty.
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/VornCommonUtils.h"

using namespace Hardware::Vorn;
using VornTest::failedAssertion;

namespace {

CATALOGUE_TEST(BadInputChips, LinecardNamesOfOddIdsAndSlots, "intfIdToLinecardName",
               "slotIdToLinecardName") {
  EXPECT_EQ(intfIdToLinecardName(Wirl::IntfId()), "FixedSystem");
  EXPECT_EQ(intfIdToLinecardName(Wirl::IntfId("Ethernet65535/1/1")), "Linecard65535");
  const std::pair<U32, const char*> slots[] = {
      {0, "Linecard0"}, {1, "FixedSystem"}, {2, "Linecard2"}, {UINT_MAX, "Linecard4294967295"}};
  for (const auto& [slot, want] : slots) EXPECT_EQ(slotIdToLinecardName(slot), want) << slot;
}

// The prefix word is found anywhere but its length is dropped from the
// start; the number before "/" is read as strtol reads it.
CATALOGUE_TEST(BadInputChips, FapNamesWithTheWordButLittleElse, "fapNameToLinecardName") {
  const std::pair<const char*, const char*> rows[] = {
      {"Fap", "FixedSystem"},     {"Fap/", "Linecard0"},    {"Jericho-7/1", "Linecard-7"},
      {"xxFap9/1", "Linecard0"},  {"Arad/x", "Linecard0"},  {"Fapx3/0", "Linecard0"},
      {"Fap 12/0", "Linecard12"}, {"Fap12//", "Linecard12"}};
  for (const auto& [name, want] : rows) EXPECT_EQ(fapNameToLinecardName(name), want) << name;
  const std::string digits = "Fap" + std::string(997, '1');  // no "/": a fixed system
  EXPECT_EQ(fapNameToLinecardName(Mox::String(digits.c_str())), "FixedSystem");
}

TEST(BadInputChipsDeathTest, FapNamesWithoutAKnownWord) {
  for (const char* name : {"", "Fa", "fap1/0", "JERICHO1/0", "Ara"})
    EXPECT_DEATH(fapNameToLinecardName(name), "^Failed\\(false\\) Incorrect fapName " +
                                                  VornTest::regexQuoted(name) + "\n.*" +
                                                  failedAssertion("\"false\" == nullptr"))
        << name;
}
CATALOGUE_ENTRY_(BadInputChipsDeathTest, FapNamesWithoutAKnownWord, "fapNameToLinecardName");

CATALOGUE_TEST(BadInputChips, SlicesThatAreNotThere, "fapIdToSliceName", "sliceFapRev") {
  Status::Ptr status(new Status());
  status->fapName().is(FapId(1), "Jericho3/1");
  status->fapmaskForSlice().is("Linecard5", Regpath::Fapmask());  // a slice without FAPs
  EXPECT_EQ(fapIdToSliceName(status, FapId(1)), "Linecard3");
  for (const char* slice : {"", "Linecard5", "Linecard3"})
    EXPECT_EQ(sliceFapRev(status, slice), FapRevision()) << slice;
  // A FAP without a name has the empty name, which names no linecard.
  EXPECT_DEATH(fapIdToSliceName(status, FapId()), "^Failed\\(false\\) Incorrect fapName \n");
}

CATALOGUE_TEST(BadInputChips, FapCountsAtTheMasksEdge, "maxFapsInSystemMask") {
  Status::Ptr status(new Status());
  const Regpath::Fapmask full(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF);
  const std::pair<U32, Regpath::Fapmask> rows[] = {
      {0, Regpath::Fapmask()}, {1, Regpath::Fapmask(1, 0, 0, 0)}, {128, full}, {129, full}};
  for (const auto& [count, want] : rows) {
    status->maxFapsInSystemIs(count);
    EXPECT_EQ(maxFapsInSystemMask(status), want) << count;
  }
  // Beyond 129 the walk stops at the first id the mask cannot hold.
  for (U32 count : {130u, UINT_MAX}) {
    status->maxFapsInSystemIs(count);
    VornTest::expectRangeText([&] { maxFapsInSystemMask(status); },
                              "FapId::value < FapId::min or > FapId::null not allowed");
  }
}

CATALOGUE_TEST(BadInputChipsDeathTest, EnumerationsOutsideTheirTables, "getFapMaskType",
               "getChipTypeFromFapMaskType", "chipTypeToNumCores") {
  Status::Ptr status(new Status());
  EXPECT_EQ(getFapMaskType(status, FapId()), FapMaskType(0));  // an unknown FAP
  status->fapType().is(FapId(2), fapTypeUnknown_);
  EXPECT_EQ(getFapMaskType(status, FapId(2)), FapMaskType(0));
  status->fapType().is(FapId(3), static_cast<FapType>(UINT_MAX));
  EXPECT_DEATH(getFapMaskType(status, FapId(3)), failedAssertion("0 && \"Invalid fapId\""));

  EXPECT_EQ(getChipTypeFromFapMaskType(static_cast<FapMaskType>(10)),
            getChipTypeFromFapMaskType(static_cast<FapMaskType>(1)));
  for (U32 mask : {0u, 8u, 9u, 11u, UINT_MAX})
    EXPECT_DEATH(getChipTypeFromFapMaskType(static_cast<FapMaskType>(mask)),
                 failedAssertion("0 && \"Invalid FapMaskType\""))
        << mask;
  EXPECT_EQ(chipTypeToNumCores(static_cast<Hardware::ChipType>(13)), 1);
  EXPECT_EQ(chipTypeToNumCores(static_cast<Hardware::ChipType>(12)), 2);
  for (U32 chip : {0u, 14u, UINT_MAX})
    EXPECT_DEATH(chipTypeToNumCores(static_cast<Hardware::ChipType>(chip)),
                 failedAssertion("0 && \"Invalid ChipType\""))
        << chip;
}

// Scaling wraps in 32 bits; a unit outside 0 to 3 is a caller error.
CATALOGUE_TEST(BadInputChipsDeathTest, ThresholdUnits, "getThresholdsInBytes") {
  U32 a = 0, b = 0;
  getThresholdsInBytes(UINT_MAX, 5000000, a, b, static_cast<Qos::QueueThresholdUnit>(2));
  EXPECT_EQ(a, U32(5000000ull * 1000000ull));
  EXPECT_EQ(b, U32(UINT_MAX * 1000000ull));
  getThresholdsInBytes(UINT_MAX, 0, a, b, static_cast<Qos::QueueThresholdUnit>(3));
  EXPECT_EQ(a, 0u);
  EXPECT_EQ(b, UINT_MAX);
  for (U32 unit : {4u, UINT_MAX})
    EXPECT_DEATH(getThresholdsInBytes(1, 2, a, b, static_cast<Qos::QueueThresholdUnit>(unit)),
                 failedAssertion("false"))
        << unit;
}

U32 tenTimes(FapRevMajor rev) {
  return 10 * rev;
}

// Filters no revision matches, null and empty lists, profiles that no
// revision uses and empty functions.
CATALOGUE_TEST(BadInputRevisions, FiltersListsAndFunctionsThatMatchNothing, "supportedFapRevMajors",
               "maybeGetFapRevMajorFromFapType", "fapRevMajorLoopMax", "fapRevMajorLoopMin",
               "fapRevMajorLoopMinPerEgrThreshProf", "maxForFapRevMajors", "minForFapRevMajors",
               "minForFapRevMajorsPerEgrThreshProf") {
  Status::Ptr status(new Status());
  status->supportedFapRevMajors().is(fapRevMajor3, fapTypeArad);
  status->supportedFapRevMajors().is(fapRevMajor4, fapTypeArad);
  const auto noFamily = static_cast<FapType>(UINT_MAX);
  const auto noProfile = static_cast<EgressBufThresholdsProfile>(UINT_MAX);
  const FapRevMajorList::PtrConst matched = supportedFapRevMajors(status, noFamily);
  EXPECT_TRUE(matched->begin() == matched->end());
  EXPECT_EQ(maybeGetFapRevMajorFromFapType(status, noFamily), fapRevMajorUnknown_);
  EXPECT_EQ(maybeGetFapRevMajorFromFapType(status, fapTypeArad), fapRevMajorUnknown_);  // two
  EXPECT_EQ(maxForFapRevMajors(status, noFamily, tenTimes), 0u);
  EXPECT_EQ(minForFapRevMajors(status, noFamily, tenTimes), UINT_MAX);
  EXPECT_EQ(minForFapRevMajorsPerEgrThreshProf(noProfile, status, fapTypeArad, tenTimes), UINT_MAX);
  EXPECT_EQ(fapRevMajorLoopMax(nullptr, tenTimes), 0u);
  EXPECT_EQ(fapRevMajorLoopMin(nullptr, tenTimes), UINT_MAX);
  EXPECT_EQ(fapRevMajorLoopMinPerEgrThreshProf(egressBufThresholdsProfile0, nullptr, tenTimes),
            UINT_MAX);
  EXPECT_EQ(fapRevMajorLoopMinPerEgrThreshProf(
                noProfile, supportedFapRevMajors(status, fapTypeArad), tenTimes),
            UINT_MAX);
  const FapRevMajorFn none;
  FapRevMajorList::PtrConst list = supportedFapRevMajors(status, fapTypeUnknown_);
  EXPECT_THROW(fapRevMajorLoopMax(list, none), std::bad_function_call);
  EXPECT_THROW(fapRevMajorLoopMin(list, none), std::bad_function_call);
  EXPECT_THROW(maxForFapRevMajors(status, fapTypeArad, none), std::bad_function_call);
  EXPECT_THROW(minForFapRevMajors(status, fapTypeArad, none), std::bad_function_call);
  // Over nothing an empty function is never called.
  EXPECT_EQ(fapRevMajorLoopMax(nullptr, none), 0u);
}

TEST(BadInputRevisionsDeathTest, EmptyRevisionMap) {
  Status::PtrConst empty(new Status());
  const std::string pattern = failedAssertion("vornStatus->supportedFapRevMajors() > 0");
  EXPECT_DEATH(maybeGetFapRevMajorFromFapType(empty, fapTypeArad), pattern);
  EXPECT_DEATH(maxForFapRevMajors(empty, fapTypeUnknown_, tenTimes), pattern);
  EXPECT_DEATH(minForFapRevMajors(empty, fapTypeUnknown_, tenTimes), pattern);
  EXPECT_DEATH(minForFapRevMajorsPerEgrThreshProf(egressBufThresholdsProfile1, empty,
                                                  fapTypeUnknown_, tenTimes),
               pattern);
}
CATALOGUE_ENTRY_(BadInputRevisionsDeathTest, EmptyRevisionMap, "maybeGetFapRevMajorFromFapType",
                 "maxForFapRevMajors", "minForFapRevMajors", "minForFapRevMajorsPerEgrThreshProf");

CATALOGUE_TEST(BadInputRevisionsDeathTest, PortMaximaOutsideOneToNine, "maxFapPortIdsByFapRevMajor",
               "maxNifPortsByFapRevMajor") {
  EXPECT_EQ(maxFapPortIdsByFapRevMajor(fapRevMajor1), 64u);
  EXPECT_EQ(maxFapPortIdsByFapRevMajor(fapRevMajor9), 128u);
  EXPECT_EQ(maxNifPortsByFapRevMajor(fapRevMajor1), 32u);
  EXPECT_EQ(maxNifPortsByFapRevMajor(fapRevMajor9), 128u);
  const std::string unknown =
      "^Failed\\(false\\) Incorrect fapRevMajor 0\n.*" + failedAssertion("\"false\" == nullptr");
  EXPECT_DEATH(maxFapPortIdsByFapRevMajor(fapRevMajorUnknown_), unknown);
  EXPECT_DEATH(maxNifPortsByFapRevMajor(fapRevMajorUnknown_), unknown);
}

}  // namespace
