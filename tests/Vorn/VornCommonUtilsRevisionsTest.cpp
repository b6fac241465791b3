// The FAP revisions present and the bounds of per-revision quantities.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "HardwareVorn/EgqProfile.h"
#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/VornCommonUtils.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::Pair;
using VornTest::assertionPattern;
using VornTest::failedThenAssertion;

namespace {

constexpr U32 kNone = 0xFFFFFFFF;

// Petra 1 and 2, Arad 3, Jericho 6 and 8.
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

std::vector<std::pair<FapRevMajor, FapType>> entries(const FapRevMajorList::PtrConst& list) {
  return {list->begin(), list->end()};
}

U32 tenTimes(FapRevMajor rev) { return 10 * rev; }

TEST(SupportedRevisions, FilteredByFamilyInAscendingOrder) {
  VornTest::TraceCapture trace({"VornCommonUtils"});
  Status::PtrConst status = mixedSystem();
  EXPECT_THAT(entries(supportedFapRevMajors(status, fapTypeJericho)),
              ElementsAre(Pair(fapRevMajor6, fapTypeJericho), Pair(fapRevMajor8, fapTypeJericho)));
  EXPECT_THAT(entries(supportedFapRevMajors(status, fapTypeUnknown_)),
              ElementsAre(Pair(fapRevMajor1, fapTypePetra), Pair(fapRevMajor2, fapTypePetra),
                          Pair(fapRevMajor3, fapTypeArad), Pair(fapRevMajor6, fapTypeJericho),
                          Pair(fapRevMajor8, fapTypeJericho)));
  EXPECT_EQ(supportedFapRevMajors(Status::PtrConst(new Status()), fapTypeArad)->size(), 0u);
  EXPECT_THAT(trace.texts(), ElementsAre("Returning FapRevMajorList of type3",
                                         "Returning FapRevMajorList of type0",
                                         "Returning FapRevMajorList of type2"));
  // Each call makes a list of its own.
  EXPECT_NE(supportedFapRevMajors(status, fapTypeArad), supportedFapRevMajors(status, fapTypeArad));
}

TEST(SupportedRevisions, TheOneRevisionOfAFamily) {
  Status::PtrConst status = mixedSystem();
  EXPECT_EQ(maybeGetFapRevMajorFromFapType(status, fapTypeArad), fapRevMajor3);
  EXPECT_EQ(maybeGetFapRevMajorFromFapType(status, fapTypePetra), fapRevMajorUnknown_);  // two
  EXPECT_EQ(maybeGetFapRevMajorFromFapType(status, static_cast<FapType>(9)),
            fapRevMajorUnknown_);  // none
}

TEST(SupportedRevisionsDeath, EmptyRevisionMap) {
  Status::PtrConst empty(new Status());
  const char* cond = "vornStatus->supportedFapRevMajors() > 0";
  EXPECT_DEATH(maybeGetFapRevMajorFromFapType(empty, fapTypeArad),
               assertionPattern("Hardware::Vorn::FapRevMajor "
                                "Hardware::Vorn::maybeGetFapRevMajorFromFapType("
                                "Hardware::Vorn::Status::PtrConst, Hardware::Vorn::FapType)",
                                cond));
  EXPECT_DEATH(maxForFapRevMajors(empty, fapTypeUnknown_, tenTimes),
               assertionPattern("U32 Hardware::Vorn::maxForFapRevMajors("
                                "Hardware::Vorn::Status::PtrConst, Hardware::Vorn::FapType, "
                                "Hardware::Vorn::FapRevMajorFn)",
                                cond));
  EXPECT_DEATH(minForFapRevMajors(empty, fapTypeUnknown_, tenTimes), "Assertion `vornStatus->");
  EXPECT_DEATH(
      minForFapRevMajorsPerEgrThreshProf(egressBufThresholdsProfile0, empty, fapTypeUnknown_,
                                         tenTimes),
      assertionPattern("U32 Hardware::Vorn::minForFapRevMajorsPerEgrThreshProf("
                       "Hardware::Vorn::EgressBufThresholdsProfile, "
                       "Hardware::Vorn::Status::PtrConst, Hardware::Vorn::FapType, "
                       "Hardware::Vorn::FapRevMajorFn)",
                       cond));
}

TEST(RevisionLoops, MaxAndMinOverTheList) {
  FapRevMajorList::Ptr list = fapRevMajorListFactory();
  EXPECT_EQ(fapRevMajorLoopMax(list, tenTimes), 0u);
  EXPECT_EQ(fapRevMajorLoopMin(list, tenTimes), kNone);
  EXPECT_EQ(fapRevMajorLoopMax(nullptr, tenTimes), 0u);
  EXPECT_EQ(fapRevMajorLoopMin(nullptr, tenTimes), kNone);
  list->fapRevMajorIs(fapRevMajor5, fapTypeArad);
  list->fapRevMajorIs(fapRevMajor3, fapTypeArad);
  list->fapRevMajorIs(fapRevMajor4, fapTypeArad);
  std::vector<FapRevMajor> seen;
  auto record = [&](FapRevMajor rev) {
    seen.push_back(rev);
    return U32(100) - rev;
  };
  EXPECT_EQ(fapRevMajorLoopMax(list, record), 97u);
  EXPECT_EQ(fapRevMajorLoopMin(list, record), 95u);
  EXPECT_THAT(seen, ElementsAre(fapRevMajor3, fapRevMajor4, fapRevMajor5, fapRevMajor3,
                                fapRevMajor4, fapRevMajor5));
  EXPECT_THROW(fapRevMajorLoopMax(list, FapRevMajorFn()), std::bad_function_call);
}

TEST(RevisionLoops, PerThresholdProfile) {
  FapRevMajorList::Ptr list = fapRevMajorListFactory();
  for (FapRevMajor rev : {fapRevMajor3, fapRevMajor6, fapRevMajor7, fapRevMajor9})
    list->fapRevMajorIs(rev, fapTypeJericho);
  auto expectedMin = [&](EgressBufThresholdsProfile profile) {
    U32 min = kNone;
    for (const auto& entry : *list)
      if (EgqProfile::egrBufThresholdProfileForFapRevMajor(entry.first) == profile)
        min = std::min(min, tenTimes(entry.first));
    return min;
  };
  for (auto profile : {egressBufThresholdsProfile0, egressBufThresholdsProfile1}) {
    std::vector<FapRevMajor> seen;
    U32 got = fapRevMajorLoopMinPerEgrThreshProf(profile, list, [&](FapRevMajor rev) {
      seen.push_back(rev);
      return tenTimes(rev);
    });
    EXPECT_EQ(got, expectedMin(profile));
    for (FapRevMajor rev : seen)
      EXPECT_EQ(EgqProfile::egrBufThresholdProfileForFapRevMajor(rev), profile) << rev;
  }
  // Revisions none of which uses the profile leave the start value.
  FapRevMajorList::Ptr old = fapRevMajorListFactory();
  old->fapRevMajorIs(fapRevMajor1, fapTypePetra);
  EXPECT_EQ(fapRevMajorLoopMinPerEgrThreshProf(egressBufThresholdsProfile1, old, tenTimes), kNone);
}

TEST(RevisionLoops, ToleratesACallableThatChangesTheList) {
  FapRevMajorList::Ptr list = fapRevMajorListFactory();
  list->fapRevMajorIs(fapRevMajor2, fapTypePetra);
  list->fapRevMajorIs(fapRevMajor4, fapTypeArad);
  list->fapRevMajorIs(fapRevMajor6, fapTypeJericho);
  std::vector<FapRevMajor> seen;
  // At 2: drop 2 itself and 4, add 3 and 9. The walk goes on after 2: 3, 6, 9.
  U32 max = fapRevMajorLoopMax(list, [&](FapRevMajor rev) {
    seen.push_back(rev);
    if (rev == fapRevMajor2) {
      list->fapRevMajorDel(fapRevMajor2);
      list->fapRevMajorDel(fapRevMajor4);
      list->fapRevMajorIs(fapRevMajor3, fapTypeArad);
      list->fapRevMajorIs(fapRevMajor9, fapTypeJericho);
    }
    return tenTimes(rev);
  });
  EXPECT_THAT(seen, ElementsAre(fapRevMajor2, fapRevMajor3, fapRevMajor6, fapRevMajor9));
  EXPECT_EQ(max, 90u);
  // A callable that empties the list ends the walk.
  seen.clear();
  U32 min = fapRevMajorLoopMin(list, [&](FapRevMajor rev) {
    seen.push_back(rev);
    for (FapRevMajor r : {fapRevMajor3, fapRevMajor6, fapRevMajor9}) list->fapRevMajorDel(r);
    return tenTimes(rev);
  });
  EXPECT_THAT(seen, ElementsAre(fapRevMajor3));
  EXPECT_EQ(min, 30u);
}

TEST(RevisionBounds, OverTheStatusRevisionsOfAFamily) {
  Status::PtrConst status = mixedSystem();
  EXPECT_EQ(maxForFapRevMajors(status, fapTypeUnknown_, tenTimes), 80u);
  EXPECT_EQ(minForFapRevMajors(status, fapTypeUnknown_, tenTimes), 10u);
  EXPECT_EQ(maxForFapRevMajors(status, fapTypePetra, tenTimes), 20u);
  EXPECT_EQ(minForFapRevMajors(status, fapTypeJericho, tenTimes), 60u);
  EXPECT_EQ(maxForFapRevMajors(status, static_cast<FapType>(7), tenTimes), 0u);
  EXPECT_EQ(minForFapRevMajors(status, static_cast<FapType>(7), tenTimes), kNone);
  // Revision 8 uses profile 1, the others profile 0.
  EXPECT_EQ(minForFapRevMajorsPerEgrThreshProf(egressBufThresholdsProfile1, status,
                                               fapTypeUnknown_, tenTimes),
            80u);
  EXPECT_EQ(minForFapRevMajorsPerEgrThreshProf(egressBufThresholdsProfile0, status,
                                               fapTypeJericho, tenTimes),
            60u);
  EXPECT_EQ(minForFapRevMajorsPerEgrThreshProf(egressBufThresholdsProfile1, status, fapTypeArad,
                                               tenTimes),
            kNone);
}

TEST(PortMaxima, OfEachRevision) {
  const U32 fapPorts[] = {0, 64, 64, 64, 64, 64, 64, 128, 128, 128};
  const U32 nifPorts[] = {0, 32, 32, 36, 36, 54, 48, 128, 128, 128};
  for (U32 rev = 1; rev <= 9; ++rev) {
    EXPECT_EQ(maxFapPortIdsByFapRevMajor(static_cast<FapRevMajor>(rev)), fapPorts[rev]) << rev;
    EXPECT_EQ(maxNifPortsByFapRevMajor(static_cast<FapRevMajor>(rev)), nifPorts[rev]) << rev;
  }
}

TEST(PortMaximaDeath, UnknownRevision) {
  EXPECT_DEATH(
      maxFapPortIdsByFapRevMajor(fapRevMajorUnknown_),
      failedThenAssertion("Failed(false) Incorrect fapRevMajor 0",
                          "U32 Hardware::Vorn::maxFapPortIdsByFapRevMajor("
                          "Hardware::Vorn::FapRevMajor)",
                          "\"false\" == nullptr"));
  EXPECT_DEATH(
      maxNifPortsByFapRevMajor(fapRevMajorUnknown_),
      failedThenAssertion("Failed(false) Incorrect fapRevMajor 0",
                          "U32 Hardware::Vorn::maxNifPortsByFapRevMajor("
                          "Hardware::Vorn::FapRevMajor)",
                          "\"false\" == nullptr"));
  EXPECT_DEATH(maxNifPortsByFapRevMajor(static_cast<FapRevMajor>(10)),
               "Incorrect fapRevMajor 10\n");
}

}  // namespace
