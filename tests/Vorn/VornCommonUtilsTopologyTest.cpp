// Cores, TCAMs, linecard slots, slices and CPU TM ports.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "HardwareVorn/SystemLimits.h"
#include "Mox/Singleton.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornCommonUtils.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using VornTest::expectRangeText;
using VornTest::failedAssertion;

namespace {

constexpr const char kCoreRange[] =
    "SystemCoreId::value < SystemCoreId::min or > SystemCoreId::null not allowed";
constexpr const char kFapRange[] = "FapId::value < FapId::min or > FapId::null not allowed";

CATALOGUE_TEST(Cores, SystemCoreFromTheFapsBase, "systemCoreId") {
  Status::Ptr status(new Status());
  status->fapIdToBaseSystemCoreId().is(FapId(2), SystemCoreId(4));
  status->fapIdToBaseSystemCoreId().is(FapId(3), SystemCoreId(2047));
  EXPECT_EQ(systemCoreId(status, FapId(2), LocalCoreId(1)), SystemCoreId(5));
  EXPECT_EQ(systemCoreId(status, FapId(3), LocalCoreId(1)), SystemCoreId(2048));
  expectRangeText([&] { systemCoreId(status, FapId(3), LocalCoreId(2)); }, kCoreRange);
  EXPECT_EQ(systemCoreId(status, FapId(9), LocalCoreId(0)), SystemCoreId());
  expectRangeText([&] { systemCoreId(status, FapId(9), LocalCoreId(1)); }, kCoreRange);
  status->fapIdToBaseSystemCoreId().is(FapId(1), SystemCoreId(2044));
  EXPECT_EQ(systemCoreId(status, FapId(1), LocalCoreId()), SystemCoreId(2048));
}

CATALOGUE_TEST(TcamsDeathTest, LocalTcamOfACoreByRevision, "fapLocalCoreIdToLocalTcamId") {
  Status::Ptr status(new Status());
  for (U32 rev = 0; rev <= 9; ++rev) {
    status->fapRevision().is(FapId(1), {static_cast<FapRevMajor>(rev), 0});
    const bool perCore = rev == 6 || rev == 8;
    for (U16 core = 0; core <= 3; ++core)
      EXPECT_EQ(fapLocalCoreIdToLocalTcamId(status, FapId(1), LocalCoreId(core)),
                LocalTcamId(perCore ? core : 0))
          << "rev " << rev << " core " << core;
    if (perCore) {  // the null core is the null TCAM
      EXPECT_EQ(fapLocalCoreIdToLocalTcamId(status, FapId(1), LocalCoreId()), LocalTcamId());
    }
  }
  EXPECT_EQ(fapLocalCoreIdToLocalTcamId(status, FapId(2), LocalCoreId(3)), LocalTcamId(0));
  status->fapRevision().is(FapId(3), {static_cast<FapRevMajor>(10), 0});
  status->fapType().is(FapId(3), fapTypeArad);
  EXPECT_DEATH(fapLocalCoreIdToLocalTcamId(status, FapId(3), LocalCoreId(0)),
               "^Failed\\(0\\) Unhandled fapMajor 10 ,fapId 3 ,fapType 2\n.*" +
                   failedAssertion("\"0\" == nullptr"));
}

// System TCAM ids are TCAM-major: local TCAM x FAPs + FAP.
CATALOGUE_TEST(TcamsDeathTest, SystemTcamIds, "fapLocalTcamIdToSystemTcamId",
               "fapLocalCoreIdToSystemTcamId", "systemTcamIdToFapId", "systemTcamIdToLocalCoreId",
               "tcamIdToFapmask") {
  Status::Ptr status(new Status());
  status->maxFapsInSystemIs(4);
  status->maxTcamsInSystemIs(8);
  for (U16 fap = 0; fap < 4; ++fap)
    status->fapRevision().is(FapId(fap), {fap < 2 ? fapRevMajor6 : fapRevMajor3, 0});
  std::set<U16> seen;
  for (U16 fap = 0; fap < 4; ++fap) {
    for (U16 core = 0; core < 2; ++core) {
      const SystemTcamId tcam = fapLocalCoreIdToSystemTcamId(status, FapId(fap), LocalCoreId(core));
      EXPECT_EQ(systemTcamIdToFapId(status, tcam), FapId(fap));
      const LocalTcamId local = fapLocalCoreIdToLocalTcamId(status, FapId(fap), LocalCoreId(core));
      EXPECT_EQ(systemTcamIdToLocalCoreId(status, tcam).value(), local.value());
      Regpath::Fapmask one;
      one.fapIdIs(Regpath::FapId(fap), true);
      EXPECT_EQ(tcamIdToFapmask(status, tcam), one);
      seen.insert(tcam.value());
    }
  }
  EXPECT_THAT(seen, ElementsAre(0, 1, 2, 3, 4, 5));
  EXPECT_EQ(fapLocalCoreIdToSystemTcamId(status, FapId(0), LocalCoreId(1)), SystemTcamId(4));
  EXPECT_EQ(fapLocalTcamIdToSystemTcamId(status, FapId(), LocalTcamId(0)), SystemTcamId());
  EXPECT_EQ(systemTcamIdToFapId(status, SystemTcamId(2046)), FapId(2046));
  EXPECT_EQ(systemTcamIdToLocalCoreId(status, SystemTcamId(2046)), LocalCoreId(3));
  EXPECT_EQ(tcamIdToFapmask(status, SystemTcamId(2046)), Regpath::Fapmask(0xF, 0, 0, 0));
  const std::string past =
      "^Failed\\(tcamId\\.value\\(\\) < vornStatus->maxTcamsInSystem\\(\\)\\) Invalid value 8\n.*" +
      failedAssertion("\"tcamId.value() < vornStatus->maxTcamsInSystem()\" == nullptr");
  EXPECT_DEATH(systemTcamIdToFapId(status, SystemTcamId(8)), past);
  EXPECT_DEATH(systemTcamIdToLocalCoreId(status, SystemTcamId(8)), past);
  EXPECT_DEATH(tcamIdToFapmask(status, SystemTcamId()),
               failedAssertion("tcamId != Hardware::Vorn::SystemTcamId::null()"));
}

// Linecard slots 3 to 10, two FAPs and four cores per slot.
class SlotsDeathTest : public testing::Test {
 protected:
  SlotsDeathTest() {
    Mox::singletonIs<SystemLimits>()->sysFruConfigIs(Fru::SlotId(3), Fru::SlotId(10));
    status->maxFapsPerSlotIs(2);
    status->maxCoresPerSlotIs(4);
  }
  ~SlotsDeathTest() override { Mox::singletonDel<SystemLimits>(); }
  Status::Ptr status{new Status()};
};

CATALOGUE_TEST_F(SlotsDeathTest, ZeroBasedFirstFapAndFirstCore, "zeroBasedSlotId", "firstFapId",
                 "firstSystemCoreId") {
  const std::pair<U32, int> rows[] = {{2, -1}, {3, 0}, {5, 2}, {10, 7}, {11, -1}};
  for (const auto& [slot, want] : rows) {
    EXPECT_EQ(zeroBasedSlotId(status, Fru::SlotId(slot)), want) << slot;
    EXPECT_EQ(firstFapId(status, Fru::SlotId(slot)), want < 0 ? FapId() : FapId(2 * want)) << slot;
    EXPECT_EQ(firstSystemCoreId(status, Fru::SlotId(slot)),
              want < 0 ? SystemCoreId() : SystemCoreId(4 * want))
        << slot;
  }
  VornTest::TraceCapture trace({"VornCommonUtils"});
  firstFapId(status, Fru::SlotId(10));
  firstSystemCoreId(status, Fru::SlotId(4));
  EXPECT_THAT(trace.texts(),
              ElementsAre("zeroBasedSlotId minLinecardSlot:3 maxLinecardSlot:10 slotId:10 "
                          "zeroBasedSlot:7",
                          "firstFapId zeroBasedSlot: 7 fapId: 14",
                          "zeroBasedSlotId minLinecardSlot:3 maxLinecardSlot:10 slotId:4 "
                          "zeroBasedSlot:1",
                          "firstSystemCoreId zeroBasedSlot: 1 systemCoreId: 4"));
  status->maxFapsPerSlotIs(300);
  EXPECT_EQ(firstFapId(status, Fru::SlotId(9)), FapId(1800));
  expectRangeText([&] { firstFapId(status, Fru::SlotId(10)); }, kFapRange);  // 7 x 300
  status->maxFapsPerSlotIs(0);
  status->maxCoresPerSlotIs(0);
  EXPECT_EQ(firstFapId(status, Fru::SlotId(2)), FapId());  // outside: not asked
  EXPECT_DEATH(firstFapId(status, Fru::SlotId(3)), failedAssertion("maxFapsPerSlot > 0"));
  EXPECT_DEATH(firstSystemCoreId(status, Fru::SlotId(3)), failedAssertion("maxCoresPerSlot > 0"));
  Mox::singletonIs<SystemLimits>()->sysFruConfigDel();
  EXPECT_DEATH(zeroBasedSlotId(status, Fru::SlotId(3)),
               failedAssertion("sysLimits->sysFruConfig()"));
}

CATALOGUE_TEST(Slices, NameAndRevisionOfASlice, "fapIdToSliceName", "sliceFapRev") {
  Status::Ptr status(new Status());
  status->fapName().is(FapId(1), "Jericho3/1");
  status->fapName().is(FapId(2), "Arad0");
  EXPECT_EQ(fapIdToSliceName(status, FapId(1)), "Linecard3");
  EXPECT_EQ(fapIdToSliceName(status, FapId(2)), "FixedSystem");
  Regpath::Fapmask mask;
  mask.fapIdIs(Regpath::FapId(9), true);
  mask.fapIdIs(Regpath::FapId(5), true);
  status->fapmaskForSlice().is("Linecard3", mask);
  status->fapRevision().is(FapId(5), {fapRevMajor6, 2});
  status->fapRevision().is(FapId(9), {fapRevMajor8, 1});
  EXPECT_EQ(sliceFapRev(status, "Linecard3"), (FapRevision{fapRevMajor6, 2}));
  status->fapmaskForSlice().is("Linecard5", Regpath::Fapmask());  // a slice without FAPs
  for (const char* slice : {"Linecard4", "Linecard5"})
    EXPECT_EQ(sliceFapRev(status, slice), FapRevision()) << slice;
  status->fapRevision().del(FapId(5));
  EXPECT_EQ(sliceFapRev(status, "Linecard3"), FapRevision());  // first FAP without one
}

CATALOGUE_TEST(CpuTmPortsDeathTest, PairUp, "getCpuTmSystemPhyPortId", "nthCpuTmFapPortId",
               "nthCpuTmSystemPhyPortId") {
  for (U16 n = 0; n < Constants::numCpuTms(); ++n)
    EXPECT_EQ(getCpuTmSystemPhyPortId(nthCpuTmFapPortId(n)), nthCpuTmSystemPhyPortId(n)) << n;
  const std::string count = failedAssertion("nthCpuTm < Constants::numCpuTms()");
  EXPECT_DEATH(nthCpuTmSystemPhyPortId(6), count);
  EXPECT_DEATH(nthCpuTmFapPortId(6), count);
  for (U32 port : {1u, 138u})
    EXPECT_DEATH(getCpuTmSystemPhyPortId(FapPortId(port)), failedAssertion("fpid.isCpuTmPort()"))
        << port;
}

}  // namespace
