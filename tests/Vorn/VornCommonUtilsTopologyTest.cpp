// Cores, TCAMs, linecard slots, slices and CPU TM ports.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "HardwareVorn/SystemLimits.h"
#include "Mox/Singleton.h"
#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/VornCommonUtils.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using VornTest::assertionPattern;
using VornTest::failedThenAssertion;

namespace {

template <typename F>
void expectRangeText(F&& f, const char* text) {
  try {
    f();
    ADD_FAILURE() << "no range exception, expected " << text;
  } catch (const Mox::RangeException& e) {
    EXPECT_STREQ(e.what(), text);
  }
}

constexpr const char kSystemCoreRange[] =
    "SystemCoreId::value < SystemCoreId::min or > SystemCoreId::null not allowed";
constexpr const char kFapRange[] = "FapId::value < FapId::min or > FapId::null not allowed";

TEST(Cores, SystemCoreFromTheFapsBase) {
  Status::Ptr status(new Status());
  status->fapIdToBaseSystemCoreId().is(FapId(2), SystemCoreId(4));
  status->fapIdToBaseSystemCoreId().is(FapId(3), SystemCoreId(2047));
  EXPECT_EQ(systemCoreId(status, FapId(2), LocalCoreId(0)), SystemCoreId(4));
  EXPECT_EQ(systemCoreId(status, FapId(2), LocalCoreId(1)), SystemCoreId(5));
  EXPECT_EQ(systemCoreId(status, FapId(3), LocalCoreId(1)), SystemCoreId(2048));
  expectRangeText([&] { systemCoreId(status, FapId(3), LocalCoreId(2)); }, kSystemCoreRange);
  // An unknown FAP counts from the null id.
  EXPECT_EQ(systemCoreId(status, FapId(9), LocalCoreId(0)), SystemCoreId());
  expectRangeText([&] { systemCoreId(status, FapId(9), LocalCoreId(1)); }, kSystemCoreRange);
}

TEST(Tcams, LocalTcamOfACoreByRevision) {
  Status::Ptr status(new Status());
  for (U32 rev = 0; rev <= 9; ++rev) {
    status->fapRevision().is(FapId(1), {static_cast<FapRevMajor>(rev), 0});
    const bool perCore = rev == 6 || rev == 8;
    for (U16 core = 0; core <= 3; ++core) {
      EXPECT_EQ(fapLocalCoreIdToLocalTcamId(status, FapId(1), LocalCoreId(core)),
                LocalTcamId(perCore ? core : 0))
          << "rev " << rev << " core " << core;
    }
  }
  // A FAP without a revision has one TCAM.
  EXPECT_EQ(fapLocalCoreIdToLocalTcamId(status, FapId(2), LocalCoreId(3)), LocalTcamId(0));
}

TEST(TcamsDeath, UnhandledRevision) {
  Status::Ptr status(new Status());
  status->fapRevision().is(FapId(3), {static_cast<FapRevMajor>(10), 0});
  status->fapType().is(FapId(3), fapTypeArad);
  EXPECT_DEATH(fapLocalCoreIdToLocalTcamId(status, FapId(3), LocalCoreId(0)),
               failedThenAssertion("Failed(0) Unhandled fapMajor 10 ,fapId 3 ,fapType 2",
                                   "Hardware::Vorn::LocalTcamId "
                                   "Hardware::Vorn::fapLocalCoreIdToLocalTcamId("
                                   "Hardware::Vorn::Status::PtrConst, Hardware::Vorn::FapId, "
                                   "Hardware::Vorn::LocalCoreId)",
                                   "\"0\" == nullptr"));
}

// Four FAPs: 0 and 1 of revision 6 (a TCAM per core, two cores), 2 and 3 of
// revision 3 (one TCAM).
Status::Ptr fourFaps() {
  Status::Ptr status(new Status());
  status->maxFapsInSystemIs(4);
  status->maxTcamsInSystemIs(8);
  for (U16 fap = 0; fap < 4; ++fap)
    status->fapRevision().is(FapId(fap), {fap < 2 ? fapRevMajor6 : fapRevMajor3, 0});
  return status;
}

TEST(Tcams, SystemTcamIdsAreTcamMajor) {
  Status::PtrConst status = fourFaps();
  EXPECT_EQ(fapLocalTcamIdToSystemTcamId(status, FapId(1), LocalTcamId(1)), SystemTcamId(5));
  EXPECT_EQ(systemTcamIdToFapId(status, SystemTcamId(5)), FapId(1));
  EXPECT_EQ(systemTcamIdToLocalCoreId(status, SystemTcamId(5)), LocalCoreId(1));
  EXPECT_EQ(fapLocalTcamIdToSystemTcamId(status, FapId(3), LocalTcamId(0)), SystemTcamId(3));
  EXPECT_EQ(fapLocalCoreIdToSystemTcamId(status, FapId(3), LocalCoreId(1)), SystemTcamId(3));
  EXPECT_EQ(fapLocalCoreIdToSystemTcamId(status, FapId(0), LocalCoreId(1)), SystemTcamId(4));
  // The all-TCAMs id.
  EXPECT_EQ(systemTcamIdToFapId(status, SystemTcamId(2046)), FapId(2046));
  EXPECT_EQ(systemTcamIdToLocalCoreId(status, SystemTcamId(2046)), LocalCoreId(3));
}

TEST(Tcams, RoundTripOverTheWholeSystem) {
  Status::PtrConst status = fourFaps();
  std::set<U16> seen;
  for (U16 fap = 0; fap < 4; ++fap) {
    for (U16 core = 0; core < 2; ++core) {
      const SystemTcamId tcam = fapLocalCoreIdToSystemTcamId(status, FapId(fap), LocalCoreId(core));
      EXPECT_LT(tcam.value(), status->maxTcamsInSystem());
      EXPECT_EQ(systemTcamIdToFapId(status, tcam), FapId(fap));
      const LocalTcamId local = fapLocalCoreIdToLocalTcamId(status, FapId(fap), LocalCoreId(core));
      EXPECT_EQ(systemTcamIdToLocalCoreId(status, tcam).value(), local.value());
      Regpath::Fapmask one;
      one.fapIdIs(Regpath::FapId(fap), true);
      EXPECT_EQ(tcamIdToFapmask(status, tcam), one);
      seen.insert(tcam.value());
    }
  }
  // Six TCAMs: two per revision-6 FAP, one per revision-3 FAP.
  EXPECT_THAT(seen, ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST(Tcams, RangeOfTheLayout) {
  Status::Ptr status(new Status());
  status->maxFapsInSystemIs(1000);
  status->maxTcamsInSystemIs(2048);
  EXPECT_EQ(fapLocalTcamIdToSystemTcamId(status, FapId(48), LocalTcamId(2)), SystemTcamId(2048));
  expectRangeText([&] { fapLocalTcamIdToSystemTcamId(status, FapId(49), LocalTcamId(2)); },
                  "SystemTcamId::value < SystemTcamId::min or > SystemTcamId::null not allowed");
  status->maxFapsInSystemIs(1);
  status->maxTcamsInSystemIs(2000);
  expectRangeText([&] { systemTcamIdToLocalCoreId(status, SystemTcamId(5)); },
                  "LocalCoreId::value < LocalCoreId::min or > LocalCoreId::null not allowed");
  // A FAP above 128 has no bit in a register-path mask.
  status->maxFapsInSystemIs(200);
  EXPECT_EQ(tcamIdToFapmask(status, SystemTcamId(128)), Regpath::Fapmask());
  expectRangeText([&] { tcamIdToFapmask(status, SystemTcamId(129)); }, kFapRange);
}

TEST(Tcams, MaskOfAllTcamsIsEveryFap) {
  Status::PtrConst status = fourFaps();
  EXPECT_EQ(tcamIdToFapmask(status, SystemTcamId(2046)), Regpath::Fapmask(0xF, 0, 0, 0));
}

TEST(TcamsDeath, IdsOutsideTheSystem) {
  Status::PtrConst status = fourFaps();
  const std::string bound = "\"tcamId.value() < vornStatus->maxTcamsInSystem()\" == nullptr";
  EXPECT_DEATH(systemTcamIdToFapId(status, SystemTcamId(8)),
               failedThenAssertion("Failed(tcamId.value() < vornStatus->maxTcamsInSystem()) "
                                   "Invalid value 8",
                                   "Hardware::Vorn::FapId Hardware::Vorn::systemTcamIdToFapId("
                                   "const Hardware::Vorn::Status::PtrConst&, "
                                   "Hardware::Vorn::SystemTcamId)",
                                   bound));
  EXPECT_DEATH(systemTcamIdToLocalCoreId(status, SystemTcamId(2047)),
               failedThenAssertion("Failed(tcamId.value() < vornStatus->maxTcamsInSystem()) "
                                   "Invalid value 2047",
                                   "Hardware::Vorn::LocalCoreId "
                                   "Hardware::Vorn::systemTcamIdToLocalCoreId("
                                   "const Hardware::Vorn::Status::PtrConst&, "
                                   "Hardware::Vorn::SystemTcamId)",
                                   bound));
  EXPECT_DEATH(tcamIdToFapmask(status, SystemTcamId()),
               assertionPattern("Regpath::Fapmask Hardware::Vorn::tcamIdToFapmask("
                                "const Hardware::Vorn::Status::PtrConst&, "
                                "Hardware::Vorn::SystemTcamId)",
                                "tcamId != Hardware::Vorn::SystemTcamId::null()"));
  EXPECT_DEATH(tcamIdToFapmask(status, SystemTcamId(9)), "Invalid value 9\n");
}

// Linecard slots 3 to 10, two FAPs and four cores per slot.
class Slots : public testing::Test {
 protected:
  Slots() {
    Mox::singletonIs<SystemLimits>()->sysFruConfigIs(Fru::SlotId(3), Fru::SlotId(10));
    status->maxFapsPerSlotIs(2);
    status->maxCoresPerSlotIs(4);
  }
  ~Slots() override { Mox::singletonDel<SystemLimits>(); }
  Status::Ptr status{new Status()};
};

TEST_F(Slots, ZeroBasedWithinTheLinecardSlots) {
  EXPECT_EQ(zeroBasedSlotId(status, Fru::SlotId(3)), 0);
  EXPECT_EQ(zeroBasedSlotId(status, Fru::SlotId(10)), 7);
  EXPECT_EQ(zeroBasedSlotId(status, Fru::SlotId(2)), -1);
  EXPECT_EQ(zeroBasedSlotId(status, Fru::SlotId(11)), -1);
  VornTest::TraceCapture trace({"VornCommonUtils"});
  zeroBasedSlotId(status, Fru::SlotId(4));
  EXPECT_THAT(trace.texts(), ElementsAre("zeroBasedSlotId minLinecardSlot:3 maxLinecardSlot:10 "
                                         "slotId:4 zeroBasedSlot:1"));
}

TEST_F(Slots, FirstFapAndCoreOfASlot) {
  EXPECT_EQ(firstFapId(status, Fru::SlotId(3)), FapId(0));
  EXPECT_EQ(firstFapId(status, Fru::SlotId(5)), FapId(4));
  EXPECT_EQ(firstFapId(status, Fru::SlotId(2)), FapId());
  EXPECT_EQ(firstSystemCoreId(status, Fru::SlotId(5)), SystemCoreId(8));
  EXPECT_EQ(firstSystemCoreId(status, Fru::SlotId(11)), SystemCoreId());
  VornTest::TraceCapture trace({"VornCommonUtils"});
  firstFapId(status, Fru::SlotId(10));
  firstSystemCoreId(status, Fru::SlotId(10));
  EXPECT_THAT(trace.texts(), testing::Contains("firstFapId zeroBasedSlot: 7 fapId: 14"));
  EXPECT_THAT(trace.texts(), testing::Contains("firstSystemCoreId zeroBasedSlot: 7 systemCoreId: 28"));
  status->maxFapsPerSlotIs(300);
  expectRangeText([&] { firstFapId(status, Fru::SlotId(10)); }, kFapRange);
  status->maxCoresPerSlotIs(300);
  expectRangeText([&] { firstSystemCoreId(status, Fru::SlotId(10)); }, kSystemCoreRange);
}

TEST_F(Slots, PerSlotCountsMustBePositive) {
  status->maxFapsPerSlotIs(0);
  status->maxCoresPerSlotIs(0);
  EXPECT_EQ(firstFapId(status, Fru::SlotId(2)), FapId());  // outside: not asked
  EXPECT_DEATH(firstFapId(status, Fru::SlotId(3)),
               assertionPattern("Hardware::Vorn::FapId Hardware::Vorn::firstFapId("
                                "const Hardware::Vorn::Status::PtrConst&, Fru::SlotId)",
                                "maxFapsPerSlot > 0"));
  EXPECT_DEATH(firstSystemCoreId(status, Fru::SlotId(3)),
               assertionPattern("Hardware::Vorn::SystemCoreId Hardware::Vorn::firstSystemCoreId("
                                "const Hardware::Vorn::Status::PtrConst&, Fru::SlotId)",
                                "maxCoresPerSlot > 0"));
}

TEST_F(Slots, NeedTheFruConfiguration) {
  const std::string pattern =
      assertionPattern("int Hardware::Vorn::zeroBasedSlotId("
                       "const Hardware::Vorn::Status::PtrConst&, Fru::SlotId)",
                       "sysLimits->sysFruConfig()");
  Mox::singletonIs<SystemLimits>()->sysFruConfigDel();
  EXPECT_DEATH(zeroBasedSlotId(status, Fru::SlotId(3)), pattern);
  // Without the singleton it is created, and still has no configuration.
  Mox::singletonDel<SystemLimits>();
  EXPECT_DEATH(
      {
        if (Mox::singletonExists<SystemLimits>()) std::abort();
        zeroBasedSlotId(status, Fru::SlotId(3));
      },
      pattern);
}

TEST(Slices, NameOfAFapsSlice) {
  Status::Ptr status(new Status());
  status->fapName().is(FapId(1), "Jericho3/1");
  status->fapName().is(FapId(2), "Arad0");
  EXPECT_EQ(fapIdToSliceName(status, FapId(1)), "Linecard3");
  EXPECT_EQ(fapIdToSliceName(status, FapId(2)), "FixedSystem");
  EXPECT_DEATH(fapIdToSliceName(status, FapId(3)), "^Failed\\(false\\) Incorrect fapName \n");
}

TEST(Slices, RevisionOfTheFirstFap) {
  Status::Ptr status(new Status());
  Regpath::Fapmask mask;
  mask.fapIdIs(Regpath::FapId(9), true);
  mask.fapIdIs(Regpath::FapId(5), true);
  status->fapmaskForSlice().is("Linecard3", mask);
  status->fapRevision().is(FapId(5), {fapRevMajor6, 2});
  status->fapRevision().is(FapId(9), {fapRevMajor8, 1});
  EXPECT_EQ(sliceFapRev(status, "Linecard3"), (FapRevision{fapRevMajor6, 2}));
  EXPECT_EQ(sliceFapRev(status, "Linecard4"), FapRevision());  // no such slice
  status->fapRevision().del(FapId(5));
  EXPECT_EQ(sliceFapRev(status, "Linecard3"), FapRevision());  // first FAP without one
  status->fapmaskForSlice().is("Linecard5", Regpath::Fapmask());
  EXPECT_EQ(sliceFapRev(status, "Linecard5"), FapRevision());
}

TEST(CpuTmPorts, PairUp) {
  for (U16 n = 0; n < Constants::numCpuTms(); ++n) {
    EXPECT_EQ(getCpuTmSystemPhyPortId(nthCpuTmFapPortId(n)), nthCpuTmSystemPhyPortId(n)) << n;
    EXPECT_EQ(nthCpuTmSystemPhyPortId(n), SystemPhyPortId(static_cast<U16>(n + 2))) << n;
  }
  EXPECT_EQ(nthCpuTmFapPortId(0), FapPortId(0));
  EXPECT_EQ(nthCpuTmFapPortId(1), FapPortId(133));
  EXPECT_EQ(nthCpuTmFapPortId(5), FapPortId(137));
  EXPECT_EQ(getCpuTmSystemPhyPortId(FapPortId(0)), SystemPhyPortId(2));
  EXPECT_EQ(getCpuTmSystemPhyPortId(FapPortId(137)), SystemPhyPortId(7));
}

TEST(CpuTmPortsDeath, OutsideTheSix) {
  const std::string count = "nthCpuTm < Constants::numCpuTms()";
  EXPECT_DEATH(nthCpuTmSystemPhyPortId(6),
               assertionPattern("Hardware::Vorn::SystemPhyPortId "
                                "Hardware::Vorn::nthCpuTmSystemPhyPortId(U16)",
                                count));
  EXPECT_DEATH(nthCpuTmFapPortId(6),
               assertionPattern("Hardware::Vorn::FapPortId Hardware::Vorn::nthCpuTmFapPortId(U16)",
                                count));
  const std::string notCpu = assertionPattern(
      "Hardware::Vorn::SystemPhyPortId Hardware::Vorn::getCpuTmSystemPhyPortId("
      "Hardware::Vorn::FapPortId)",
      "fpid.isCpuTmPort()");
  for (U32 port : {1u, 132u, 138u, 256u})
    EXPECT_DEATH(getCpuTmSystemPhyPortId(FapPortId(port)), notCpu) << port;
}

}  // namespace
