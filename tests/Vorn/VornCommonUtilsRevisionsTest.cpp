// The FAP revisions present and the bounds of per-revision quantities; a
// filter that matches nothing gives the loop's start value.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornCommonUtils.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::Pair;
using VornTest::failedAssertion;

namespace {

constexpr U32 kNone = 0xFFFFFFFF;
constexpr auto kNoFamily = static_cast<FapType>(7);
constexpr auto kP0 = egressBufThresholdsProfile0;
constexpr auto kP1 = egressBufThresholdsProfile1;

// Petra 1 and 2, Arad 3, Jericho 6 and 8; 8 alone uses threshold profile 1.
Status::Ptr mixedSystem() {
  Status::Ptr status(new Status());
  auto& revs = status->supportedFapRevMajors();
  revs.is(fapRevMajor8, fapTypeJericho);
  revs.is(fapRevMajor1, fapTypePetra);
  revs.is(fapRevMajor3, fapTypeArad);
  revs.is(fapRevMajor6, fapTypeJericho);
  revs.is(fapRevMajor2, fapTypePetra);
  return status;
}

U32 tenTimes(FapRevMajor rev) {
  return 10 * rev;
}

CATALOGUE_TEST(SupportedRevisions, FilteredByFamilyInAscendingOrder, "supportedFapRevMajors") {
  VornTest::TraceCapture trace({"VornCommonUtils"});
  Status::PtrConst status = mixedSystem();
  const FapRevMajorList::PtrConst jericho = supportedFapRevMajors(status, fapTypeJericho);
  EXPECT_THAT(std::vector(jericho->begin(), jericho->end()),
              ElementsAre(Pair(fapRevMajor6, fapTypeJericho), Pair(fapRevMajor8, fapTypeJericho)));
  EXPECT_EQ(supportedFapRevMajors(status, fapTypeUnknown_)->size(), 5u);
  EXPECT_EQ(supportedFapRevMajors(status, kNoFamily)->size(), 0u);
  EXPECT_EQ(trace.texts().front(), "Returning FapRevMajorList of type3");
}

CATALOGUE_TEST(SupportedRevisionsDeathTest, TheOneRevisionAndTheBoundsOfAFamily,
               "maybeGetFapRevMajorFromFapType", "maxForFapRevMajors", "minForFapRevMajors",
               "minForFapRevMajorsPerEgrThreshProf") {
  Status::PtrConst status = mixedSystem();
  EXPECT_EQ(maybeGetFapRevMajorFromFapType(status, fapTypeArad), fapRevMajor3);
  EXPECT_EQ(maybeGetFapRevMajorFromFapType(status, fapTypePetra), fapRevMajorUnknown_);
  EXPECT_EQ(maybeGetFapRevMajorFromFapType(status, kNoFamily), fapRevMajorUnknown_);
  EXPECT_EQ(maxForFapRevMajors(status, fapTypePetra, tenTimes), 20u);
  EXPECT_EQ(minForFapRevMajors(status, fapTypeJericho, tenTimes), 60u);
  EXPECT_EQ(minForFapRevMajorsPerEgrThreshProf(kP1, status, fapTypeUnknown_, tenTimes), 80u);
  EXPECT_DEATH(maybeGetFapRevMajorFromFapType(Status::PtrConst(new Status()), fapTypeArad),
               failedAssertion("vornStatus->supportedFapRevMajors() > 0"));
}

CATALOGUE_TEST(RevisionLoops, MaxAndMinOverTheList, "fapRevMajorLoopMax", "fapRevMajorLoopMin",
               "fapRevMajorLoopMinPerEgrThreshProf") {
  FapRevMajorList::Ptr list = fapRevMajorListFactory();
  EXPECT_EQ(fapRevMajorLoopMax(list, tenTimes), 0u);
  EXPECT_EQ(fapRevMajorLoopMin(list, tenTimes), kNone);
  EXPECT_EQ(fapRevMajorLoopMinPerEgrThreshProf(kP0, nullptr, tenTimes), kNone);
  EXPECT_EQ(fapRevMajorLoopMax(nullptr, FapRevMajorFn()), 0u);  // never called over nothing
  for (FapRevMajor rev : {fapRevMajor5, fapRevMajor3, fapRevMajor9, fapRevMajor7})
    list->fapRevMajorIs(rev, rev < fapRevMajor6 ? fapTypeArad : fapTypeJericho);
  std::vector<FapRevMajor> seen;
  auto record = [&](FapRevMajor rev) {
    seen.push_back(rev);
    return U32(100) - rev;
  };
  EXPECT_EQ(fapRevMajorLoopMax(list, record), 97u);
  EXPECT_EQ(fapRevMajorLoopMin(list, record), 91u);
  seen.clear();
  EXPECT_EQ(fapRevMajorLoopMinPerEgrThreshProf(kP0, list, record), 95u);
  EXPECT_EQ(fapRevMajorLoopMinPerEgrThreshProf(kP1, list, record), 91u);
  EXPECT_THAT(seen, ElementsAre(fapRevMajor3, fapRevMajor5, fapRevMajor7, fapRevMajor9));
  const auto noProfile = static_cast<EgressBufThresholdsProfile>(kNone);
  EXPECT_EQ(fapRevMajorLoopMinPerEgrThreshProf(noProfile, list, tenTimes), kNone);
  EXPECT_THROW(fapRevMajorLoopMin(list, FapRevMajorFn()), std::bad_function_call);
}

CATALOGUE_TEST(PortMaximaDeathTest, OfEachRevision, "maxFapPortIdsByFapRevMajor",
               "maxNifPortsByFapRevMajor") {
  const U32 fapPorts[] = {0, 64, 64, 64, 64, 64, 64, 128, 128, 128};
  const U32 nifPorts[] = {0, 32, 32, 36, 36, 54, 48, 128, 128, 128};
  for (U32 rev = 1; rev <= 9; ++rev) {
    EXPECT_EQ(maxFapPortIdsByFapRevMajor(static_cast<FapRevMajor>(rev)), fapPorts[rev]) << rev;
    EXPECT_EQ(maxNifPortsByFapRevMajor(static_cast<FapRevMajor>(rev)), nifPorts[rev]) << rev;
  }
  const std::string unknown = "\n.*" + failedAssertion("\"false\" == nullptr");
  EXPECT_DEATH(maxFapPortIdsByFapRevMajor(fapRevMajorUnknown_),
               "^Failed\\(false\\) Incorrect fapRevMajor 0" + unknown);
  EXPECT_DEATH(maxNifPortsByFapRevMajor(static_cast<FapRevMajor>(10)),
               "^Failed\\(false\\) Incorrect fapRevMajor 10" + unknown);
}

}  // namespace
