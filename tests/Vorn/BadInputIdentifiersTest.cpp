// Bad input to the identifier arithmetic. LAG encodings: lagIdToSysAggrPortId,
// sysAggrPortIdToLagId, lagIdBitsForMode, memberIdBitsForMode,
// maxMemberIdsForMode, lagIdMaskForMode, lagDestIdToSysAggrPortId,
// lagToDestination. Cores and TCAMs: systemCoreId,
// fapLocalCoreIdToLocalTcamId, fapLocalTcamIdToSystemTcamId,
// fapLocalCoreIdToSystemTcamId, systemTcamIdToFapId,
// systemTcamIdToLocalCoreId, tcamIdToFapmask. Slots: zeroBasedSlotId,
// firstFapId, firstSystemCoreId. CPU ports: getCpuTmSystemPhyPortId,
// nthCpuTmFapPortId, nthCpuTmSystemPhyPortId. Sub-interfaces: isSubIntf,
// isEthSubIntf, isLagSubIntf, obtainLagSubIntfIdFromMemberSubIntfId,
// obtainMemberSubIntfIdFromLagSubIntfId, isLagMemberPresent.
// An identifier one past its type's null throws the type's range exception;
// "not there" is a value; a caller error ends the process on its assertion.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "HardwareVorn/SystemLimits.h"
#include "Mox/Singleton.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/VornCommonUtils.h"

using namespace Hardware::Vorn;
using VornTest::expectRangeText;
using VornTest::failedAssertion;
using Wirl::IntfId;

namespace {

constexpr const char kLagRange[] = "LagId::value < LagId::min or > LagId::null not allowed";
constexpr const char kFapRange[] = "FapId::value < FapId::min or > FapId::null not allowed";
constexpr const char kCoreRange[] =
    "SystemCoreId::value < SystemCoreId::min or > SystemCoreId::null not allowed";
constexpr const char kTcamRange[] =
    "SystemTcamId::value < SystemTcamId::min or > SystemTcamId::null not allowed";
constexpr const char kLocalCoreRange[] =
    "LocalCoreId::value < LocalCoreId::min or > LocalCoreId::null not allowed";

constexpr FapType kFamilies[] = {fapTypePetra, fapTypeArad, fapTypeJericho};

CATALOGUE_TEST(BadInputLagIds, AggregatePortIdsAtTheirEdges, "lagIdToSysAggrPortId",
               "sysAggrPortIdToLagId") {
  for (FapType t : kFamilies) {
    EXPECT_EQ(lagIdToSysAggrPortId(t, LagId(0)), 0x8000u);
    EXPECT_EQ(lagIdToSysAggrPortId(t, LagId()), 0x8400u);
    // Without the marker: not an aggregate, whatever the rest.
    for (U32 notAggregate : {0u, 0x7FFFu, 0x10000u})
      EXPECT_EQ(sysAggrPortIdToLagId(t, notAggregate), LagId()) << notAggregate;
    EXPECT_EQ(sysAggrPortIdToLagId(t, 0x8000), LagId(0));
    EXPECT_EQ(sysAggrPortIdToLagId(t, 0x8400), LagId());
    for (U32 tooBig : {0x8401u, 0xFFFFu, 0x18000u, UINT_MAX})
      expectRangeText([&] { sysAggrPortIdToLagId(t, tooBig); }, kLagRange);
  }
}

TEST(BadInputLagIdsDeathTest, FamiliesOutsideOneToThree) {
  const std::string mask = failedAssertion("false");
  for (FapType t : {fapTypeUnknown_, static_cast<FapType>(4), static_cast<FapType>(UINT_MAX)}) {
    EXPECT_DEATH(lagIdToSysAggrPortId(t, LagId(1)), mask);
    EXPECT_DEATH(sysAggrPortIdToLagId(t, 5), mask);  // before the marker test
  }
}
CATALOGUE_ENTRY_(BadInputLagIdsDeathTest, FamiliesOutsideOneToThree, "lagIdToSysAggrPortId",
                 "sysAggrPortIdToLagId");

// Mode 5 is the last row; mode 6, family 0 and family 4 are caller errors.
CATALOGUE_TEST(BadInputLagIdsDeathTest, ModeTablesAtTheirEdges, "lagIdBitsForMode",
               "memberIdBitsForMode", "maxMemberIdsForMode", "lagIdMaskForMode",
               "lagDestIdToSysAggrPortId") {
  EXPECT_EQ(lagIdBitsForMode(fapTypeJericho, lagMode5), 6);
  EXPECT_EQ(memberIdBitsForMode(fapTypeJericho, lagMode5), 8);
  EXPECT_EQ(maxMemberIdsForMode(fapTypeJericho, lagMode5), 256u);
  EXPECT_EQ(lagIdMaskForMode(fapTypeJericho, lagMode5), 63u);
  const std::string bits = failedAssertion("bits");
  const std::string known = failedAssertion("fapType != fapTypeUnknown_");
  const DestinationId dest;
  for (LagMode mode : {static_cast<LagMode>(6), static_cast<LagMode>(UINT_MAX)}) {
    EXPECT_DEATH(lagIdBitsForMode(fapTypeArad, mode), bits);
    EXPECT_DEATH(memberIdBitsForMode(fapTypeArad, mode), bits);
    EXPECT_DEATH(maxMemberIdsForMode(fapTypeArad, mode), bits);
    EXPECT_DEATH(lagIdMaskForMode(fapTypeArad, mode), bits);
    EXPECT_DEATH(lagDestIdToSysAggrPortId(fapTypeArad, mode, dest), bits);
  }
  EXPECT_DEATH(lagIdBitsForMode(fapTypeUnknown_, lagMode0), bits);
  EXPECT_DEATH(lagIdBitsForMode(static_cast<FapType>(4), lagMode0), bits);
  EXPECT_DEATH(memberIdBitsForMode(fapTypeUnknown_, lagMode0), known);
  EXPECT_DEATH(maxMemberIdsForMode(fapTypeUnknown_, lagMode0), known);
  EXPECT_DEATH(lagIdMaskForMode(fapTypeUnknown_, lagMode0), bits);
}

// The destination's member bits are dropped, whatever they hold: the
// largest destination, and the unset one, still give a LAG of the mode.
CATALOGUE_TEST(BadInputLagIds, DestinationsAtTheirEdges, "lagDestIdToSysAggrPortId",
               "lagToDestination") {
  DestinationId dest;  // unset: 0xFFFF
  EXPECT_EQ(lagDestIdToSysAggrPortId(fapTypePetra, lagMode0, dest), 0x83FFu);
  dest.destinationIs(DestinationId::destDrop);
  EXPECT_EQ(lagDestIdToSysAggrPortId(fapTypePetra, lagMode0, dest), 0x8000u);
  dest.destination = UINT_MAX;  // as a caller's record may hold it
  EXPECT_EQ(lagDestIdToSysAggrPortId(fapTypePetra, lagMode5, dest), 0x803Fu);

  LagDestinationId plain;
  plain.isDestination = true;
  for (U32 v : {0u, 0xFFFFu, 0x200000u}) {
    plain.destination = v;
    const DestinationId d = lagToDestination(plain);
    EXPECT_EQ(d.destination, v);
    EXPECT_EQ(d.type, destinationTypeDirect);
  }
  for (U32 v : {0x200001u, UINT_MAX}) {
    plain.destination = v;
    expectRangeText([&] { lagToDestination(plain); }, DestinationId::kRangeText);
  }
  LagDestinationId lag;
  for (U16 v : {U16{0}, U16{0xFFFE}, U16{0xFFFF}}) {
    lag.lagId = v;
    const DestinationId d = lagToDestination(lag);
    EXPECT_EQ(d.destination, v);  // no range check on the LAG side
    EXPECT_EQ(d.type, destinationTypeLag);
  }
}

CATALOGUE_TEST(BadInputCores, SystemCoresAndLocalTcamsAtTheirNulls, "systemCoreId",
               "fapLocalCoreIdToLocalTcamId") {
  Status::Ptr status(new Status());
  status->fapIdToBaseSystemCoreId().is(FapId(1), SystemCoreId(2044));
  status->fapRevision().is(FapId(1), {fapRevMajor6, 0});
  EXPECT_EQ(systemCoreId(status, FapId(1), LocalCoreId()), SystemCoreId(2048));  // 2044 + 4
  EXPECT_EQ(systemCoreId(status, FapId(), LocalCoreId(0)), SystemCoreId());      // unknown FAP
  expectRangeText([&] { systemCoreId(status, FapId(), LocalCoreId(1)); }, kCoreRange);
  status->fapIdToBaseSystemCoreId().is(FapId(2), SystemCoreId(2045));
  expectRangeText([&] { systemCoreId(status, FapId(2), LocalCoreId()); }, kCoreRange);
  // A TCAM per core: the null core is the null TCAM; an unknown FAP has one.
  EXPECT_EQ(fapLocalCoreIdToLocalTcamId(status, FapId(1), LocalCoreId()), LocalTcamId());
  EXPECT_EQ(fapLocalCoreIdToLocalTcamId(status, FapId(), LocalCoreId()), LocalTcamId(0));
  status->fapRevision().is(FapId(3), {static_cast<FapRevMajor>(UINT_MAX), 0});
  EXPECT_DEATH(fapLocalCoreIdToLocalTcamId(status, FapId(3), LocalCoreId(0)),
               "^Failed\\(0\\) Unhandled fapMajor 4294967295 ,fapId 3 ,fapType 0\n.*" +
                   failedAssertion("\"0\" == nullptr"));
}

// Four FAPs of revision 6 (a TCAM per core), eight TCAMs.
Status::Ptr tcamSystem(U32 faps = 4, U32 tcams = 8) {
  Status::Ptr status(new Status());
  status->maxFapsInSystemIs(faps);
  status->maxTcamsInSystemIs(tcams);
  for (U16 fap = 0; fap < 4; ++fap) status->fapRevision().is(FapId(fap), {fapRevMajor6, 0});
  return status;
}

CATALOGUE_TEST(BadInputTcams, SystemTcamIdsAtTheirEdges, "fapLocalTcamIdToSystemTcamId",
               "fapLocalCoreIdToSystemTcamId", "systemTcamIdToFapId", "systemTcamIdToLocalCoreId",
               "tcamIdToFapmask") {
  Status::PtrConst s = tcamSystem();
  EXPECT_EQ(fapLocalTcamIdToSystemTcamId(s, FapId(), LocalTcamId(0)), SystemTcamId());
  EXPECT_EQ(fapLocalTcamIdToSystemTcamId(s, FapId(2044), LocalTcamId(1)), SystemTcamId());
  expectRangeText([&] { fapLocalTcamIdToSystemTcamId(s, FapId(2045), LocalTcamId(1)); },
                  kTcamRange);
  Status::Ptr perCore = tcamSystem();
  perCore->fapRevision().is(FapId(2045), {fapRevMajor8, 0});  // a TCAM per core
  expectRangeText([&] { fapLocalCoreIdToSystemTcamId(perCore, FapId(2045), LocalCoreId(1)); },
                  kTcamRange);
  // The sum is taken in 16 bits: 4 x 16384 wraps to 0.
  EXPECT_EQ(fapLocalTcamIdToSystemTcamId(tcamSystem(16384), FapId(1), LocalTcamId(4)),
            SystemTcamId(1));
  // The all-TCAMs id, the last id, and one past the system's count.
  EXPECT_EQ(systemTcamIdToFapId(s, SystemTcamId(2046)), FapId(2046));
  EXPECT_EQ(systemTcamIdToLocalCoreId(s, SystemTcamId(2046)), LocalCoreId(3));
  EXPECT_EQ(systemTcamIdToFapId(s, SystemTcamId(7)), FapId(3));
  EXPECT_EQ(systemTcamIdToLocalCoreId(s, SystemTcamId(7)), LocalCoreId(1));
  const std::string past =
      "^Failed\\(tcamId\\.value\\(\\) < vornStatus->maxTcamsInSystem\\(\\)\\) "
      "Invalid value 8\n";
  EXPECT_DEATH(systemTcamIdToFapId(s, SystemTcamId(8)), past);
  EXPECT_DEATH(systemTcamIdToLocalCoreId(s, SystemTcamId(8)), past);
  EXPECT_DEATH(tcamIdToFapmask(s, SystemTcamId(8)), past);
  // A core above the null: one FAP, twenty TCAMs.
  Status::PtrConst oneFap = tcamSystem(1, 20);
  EXPECT_EQ(systemTcamIdToLocalCoreId(oneFap, SystemTcamId(4)), LocalCoreId());
  expectRangeText([&] { systemTcamIdToLocalCoreId(oneFap, SystemTcamId(5)); }, kLocalCoreRange);
  // The mask holds FAP ids up to 127; 128 is its null id, which has no bit.
  Status::PtrConst wide = tcamSystem(200, 400);
  EXPECT_TRUE(tcamIdToFapmask(wide, SystemTcamId(127)).fapId(Regpath::FapId(127)));
  EXPECT_EQ(tcamIdToFapmask(wide, SystemTcamId(128)), Regpath::Fapmask());
  expectRangeText([&] { tcamIdToFapmask(wide, SystemTcamId(129)); }, kFapRange);
  EXPECT_DEATH(tcamIdToFapmask(s, SystemTcamId()),
               failedAssertion("tcamId != Hardware::Vorn::SystemTcamId::null()"));
}

class BadInputSlots : public testing::Test {
 protected:
  void SetUp() override { Mox::singletonDel<SystemLimits>(); }
  void TearDown() override { Mox::singletonDel<SystemLimits>(); }
  void slotsAre(U32 min, U32 max) {
    Mox::singletonIs<SystemLimits>()->sysFruConfigIs(Fru::SlotId(min), Fru::SlotId(max));
  }
  Status::Ptr status{new Status()};
};

CATALOGUE_TEST_F(BadInputSlots, SlotsOutsideTheRangeAndOversizedBlocks, "zeroBasedSlotId",
                 "firstFapId", "firstSystemCoreId") {
  slotsAre(3, 10);
  status->maxFapsPerSlotIs(300);
  status->maxCoresPerSlotIs(2048);
  Status::PtrConst s = status;
  const std::pair<U32, int> rows[] = {{0, -1}, {2, -1}, {3, 0}, {10, 7}, {11, -1}, {UINT_MAX, -1}};
  for (const auto& [slot, want] : rows) {
    EXPECT_EQ(zeroBasedSlotId(s, Fru::SlotId(slot)), want) << slot;
    if (want < 0) {
      EXPECT_EQ(firstFapId(s, Fru::SlotId(slot)), FapId()) << slot;
      EXPECT_EQ(firstSystemCoreId(s, Fru::SlotId(slot)), SystemCoreId()) << slot;
    }
  }
  EXPECT_EQ(firstFapId(s, Fru::SlotId(9)), FapId(1800));
  expectRangeText([&] { firstFapId(s, Fru::SlotId(10)); }, kFapRange);  // 7 x 300
  EXPECT_EQ(firstSystemCoreId(s, Fru::SlotId(4)), SystemCoreId(2048));
  expectRangeText([&] { firstSystemCoreId(s, Fru::SlotId(5)); }, kCoreRange);
}

TEST_F(BadInputSlots, EmptyBlocksAndMissingLimitsEndTheProcess) {
  slotsAre(3, 10);
  Status::PtrConst s = status;  // no FAPs or cores per slot
  EXPECT_DEATH(firstFapId(s, Fru::SlotId(3)), failedAssertion("maxFapsPerSlot > 0"));
  EXPECT_DEATH(firstSystemCoreId(s, Fru::SlotId(3)), failedAssertion("maxCoresPerSlot > 0"));
  Mox::singletonIs<SystemLimits>()->sysFruConfigDel();
  EXPECT_DEATH(zeroBasedSlotId(s, Fru::SlotId(3)), failedAssertion("sysLimits->sysFruConfig()"));
}
CATALOGUE_ENTRY_(BadInputSlots, EmptyBlocksAndMissingLimitsEndTheProcess, "zeroBasedSlotId",
                 "firstFapId", "firstSystemCoreId");

// Port 0 and 133 to 137 are the CPU TM ports; n runs from 0 to 5.
CATALOGUE_TEST(BadInputCpuPorts, CpuTmPortsAtTheirEdges, "getCpuTmSystemPhyPortId",
               "nthCpuTmFapPortId", "nthCpuTmSystemPhyPortId") {
  EXPECT_EQ(getCpuTmSystemPhyPortId(FapPortId(0)), SystemPhyPortId(2));
  EXPECT_EQ(getCpuTmSystemPhyPortId(FapPortId(137)), SystemPhyPortId(7));
  EXPECT_EQ(nthCpuTmFapPortId(5), FapPortId(137));
  EXPECT_EQ(nthCpuTmSystemPhyPortId(5), SystemPhyPortId(7));
  for (U32 port : {1u, 132u, 138u, 256u})
    EXPECT_DEATH(getCpuTmSystemPhyPortId(FapPortId(port)), failedAssertion("fpid.isCpuTmPort()"))
        << port;
  for (U16 n : {U16{6}, U16{0xFFFF}}) {
    EXPECT_DEATH(nthCpuTmFapPortId(n), failedAssertion("nthCpuTm < Constants::numCpuTms()")) << n;
    EXPECT_DEATH(nthCpuTmSystemPhyPortId(n), failedAssertion("nthCpuTm < Constants::numCpuTms()"))
        << n;
  }
}

CATALOGUE_TEST(BadInputSubIntfs, PortRangeAtItsEdges, "isSubIntf") {
  Status::Ptr status(new Status());
  status->subIntfSysPortMinIs(1000);
  status->numSubIntfSysPortsIs(0);  // an empty range: nothing is a sub-interface
  Status::PtrConst s = status;
  EXPECT_FALSE(isSubIntf(s, SystemPhyPortId(1000)));
  EXPECT_FALSE(isSubIntf(s, SystemPhyPortId(999)));
  status->subIntfSysPortMinIs(2);
  status->numSubIntfSysPortsIs(UINT_MAX - 1);  // up to the last U32
  EXPECT_TRUE(isSubIntf(s, SystemPhyPortId(2)));
  EXPECT_TRUE(isSubIntf(s, SystemPhyPortId()));
  status->subIntfSysPortMinIs(0);
  EXPECT_DEATH(isSubIntf(s, SystemPhyPortId(2)), failedAssertion("minSppid > 0"));
}

// Ids that are not sub-interfaces, or not of a port-channel: false or the
// empty id where the function tests, the end of the process where it needs.
CATALOGUE_TEST(BadInputSubIntfs, IdsOfTheWrongKind, "isEthSubIntf", "isLagSubIntf",
               "obtainLagSubIntfIdFromMemberSubIntfId", "obtainMemberSubIntfIdFromLagSubIntfId",
               "isLagMemberPresent") {
  Lag::Input::Config::Ptr config(new Lag::Input::Config());
  Interface::SubIntfStatusDir::Ptr subIntfs(new Interface::SubIntfStatusDir());
  SubIntfPortStatusDir::Ptr ports(new SubIntfPortStatusDir());
  for (const char* name : {"", "Ethernet3", "Port-Channel5", "Port-Channel5.10", "Vlan10"})
    EXPECT_FALSE(isEthSubIntf(IntfId(name))) << name;
  for (bool useConfig : {false, true}) {
    for (bool mustExist : {false, true}) {
      EXPECT_EQ(obtainLagSubIntfIdFromMemberSubIntfId(config, subIntfs, ports, IntfId(), mustExist,
                                                      useConfig),
                IntfId());
      EXPECT_EQ(obtainLagSubIntfIdFromMemberSubIntfId(config, subIntfs, ports,
                                                      IntfId("Ethernet3.10"), mustExist, useConfig),
                IntfId());
    }
    EXPECT_EQ(
        obtainMemberSubIntfIdFromLagSubIntfId(config, ports, IntfId("Port-Channel5.10"), useConfig),
        IntfId());
  }
  EXPECT_FALSE(isLagMemberPresent(config, IntfId("Port-Channel5.10"), IntfId()));
  EXPECT_DEATH(isLagSubIntf(IntfId()),
               failedAssertion("Wirl::SubIntfId::isSubIntfId( subIntfId )"));
  EXPECT_DEATH(obtainMemberSubIntfIdFromLagSubIntfId(config, ports, IntfId("Ethernet3.10"), true),
               failedAssertion("Wirl::PortChannelIntfId::isPortChannelIntfId( intfId )"));
  EXPECT_DEATH(isLagMemberPresent(config, IntfId(), IntfId("Ethernet3")),
               failedAssertion("Wirl::PortChannelIntfId::isPortChannelIntfId( lagSubIntfId )"));
}

}  // namespace
