// The thresholds the egress buffering machine generates, in the cases the
// shipped chip tables do not reach, and the shipped tables themselves.
#include <gtest/gtest.h>

#include <climits>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/EgressTestSupport.h"

using namespace Hardware::Vorn;
using VornTest::EgressSystem;
using VornTest::kP0;
using VornTest::kP1;
using VornTest::ScopedEgressChipTables;
using VornTest::smAssertion;
using VornTest::uniformTables;

namespace {

// Multicast gets the odd buffer and every descriptor unicast did not take;
// each class a share of it in single precision: 0.76f x 4000 rounds to
// exactly 3040 (in double it would truncate to 3039).
TEST(CgmThresholds, AnOddBufferTotalAndTheClassShares) {
  ScopedEgressChipTables tables(uniformTables(2001, 5000, 20000, 4096, 4, 2));
  EgressSystem sys({fapRevMajor3, fapRevMajor8});
  sys.build();
  for (auto p : {kP0, kP1}) {
    EgressBufThresholds::Ptr thr = sys.thresholds(p);
    EXPECT_EQ(thr->globalUcThresholds(), (EgressResource{1000, 1000}));
    EXPECT_EQ(thr->globalMcThresholds(), (EgressResource{1001, 4000}));
    const auto& perTc = thr->sp0McPerTcThresholds();
    EXPECT_EQ(*perTc.find(TrafficClassId(0)), (EgressResource{760, 3040}));
    EXPECT_EQ(*perTc.find(TrafficClassId(7)), thr->globalMcThresholds());
  }
}

TEST(CgmThresholds, TheTotalsAreTheSmallestOfTheProfilesRevisions) {
  EgressChipTables t = uniformTables(0, 0, 20000, 4096, 4, 2);
  t.totalBuffers[fapRevMajor3] = 3000;
  t.totalBuffers[fapRevMajor5] = 2000;  // profile 0's smallest
  t.totalBuffers[fapRevMajor7] = 1000;  // profile 1's: not profile 0's
  t.totalBuffers[fapRevMajor9] = 4000;
  t.totalDescriptors[fapRevMajor3] = 9000;
  t.totalDescriptors[fapRevMajor5] = 7000;
  t.totalDescriptors[fapRevMajor7] = 8000;
  t.totalDescriptors[fapRevMajor9] = 6000;
  ScopedEgressChipTables tables(t);
  EgressSystem sys({fapRevMajor3, fapRevMajor5, fapRevMajor7, fapRevMajor9});
  sys.build();
  EXPECT_EQ(sys.thresholds(kP0)->globalMcThresholds(), (EgressResource{1000, 7000 - 1000}));
  EXPECT_EQ(sys.thresholds(kP1)->globalMcThresholds(), (EgressResource{500, 6000 - 500}));
  // A profile without revisions takes the loop's start value, 0xFFFFFFFF, as
  // it is; 16-bit buffer counts keep their low bits.
  EgressSystem one({fapRevMajor3});
  one.build();
  EgressBufThresholds::Ptr thr = one.thresholds(kP1);
  EXPECT_EQ(thr->globalUcThresholds(), (EgressResource{0xFFFF, 0x7FFFFFFF}));
  EXPECT_EQ(thr->globalMcThresholds(), (EgressResource{0, 0x80000000}));
}

// Every revision, alone or with another, generates both profiles.
TEST(EgressChipTables, EveryRevisionAndPairGenerates) {
  for (U32 a = 1; a <= 9; ++a) {
    for (U32 b = a; b <= 9; ++b) {
      EgressSystem sys({static_cast<FapRevMajor>(a), static_cast<FapRevMajor>(b)});
      sys.build();
      for (auto p : {kP0, kP1})
        EXPECT_EQ(sys.thresholds(p)->egressProfiles().size(), 11u) << a << " and " << b;
    }
  }
}

// Configured parameters replace the defaults wherever they count; the queues
// that may fill divide in full and are published as their low byte.
TEST(CgmThresholds, ConfiguredParametersReplaceTheDefaults) {
  ScopedEgressChipTables tables(uniformTables(6000, 12000, 20000, 4096, 12, 2));
  EgressSystem sys({fapRevMajor3, fapRevMajor8});
  EgressBufferParameters params;
  params.reservedMcBuffersPerTc = 120;
  params.reservedMcPdPerSpeedUnit = 100;
  params.reservedMcPerPort = 100;
  params.maxQueuesFullPerPortMc = 0x102;
  params.reservedMcPerQueue = 40;
  sys.config = CliConfig::Ptr(new CliConfig());
  sys.config->egressBufferParametersIs(params);
  sys.build();
  EgressBufThresholds::Ptr thr = sys.thresholds(kP0);
  EXPECT_EQ(thr->sp0MaxReservedThresholds(), (EgressResource{960, 6144}));
  EXPECT_EQ(*thr->sp0McReservedBuffersPerTc().find(TrafficClassId(7)), 120u);
  EXPECT_EQ(thr->maxQueuesFullPerPortMcApplied(), 2);
  // Profile 12 is 50G's, five units; a port has (3000 - 100) / 2 multicast
  // buffers and (9000 - 100) / 2 descriptors, a queue that less 40 over 258.
  const EgqThresholds t = sys.egq(kP0, 12);
  EXPECT_EQ(t.queueMulticastReservedDescriptor(), 500u);
  EXPECT_EQ(t.portMulticastBuffer(), 1450u);
  EXPECT_EQ(t.portMulticastDescriptor(), 4450u);
  EXPECT_EQ(t.queueMulticastDpBuffer(DropPrecedence(0)), 3u);             // 0.70 x 5
  EXPECT_EQ(t.queueMulticastDpSharedDescriptor(DropPrecedence(1)), 16u);  // 0.95 x 17
}

// Outside profiles 5 to 15 ports start flow control at half their discard
// threshold and queues at 34 %.
CATALOGUE_TEST(EgqThresholds, FlowControlRatiosOutsideTheFrontPanel,
               "getPortFlowControlToDiscardRatio", "getQueueFlowControlToDiscardRatio") {
  for (U32 prof : {4u, 17u, UINT_MAX}) {
    EXPECT_EQ(getPortFlowControlToDiscardRatio(EgqProfile(prof)), 0.5f) << prof;
    for (auto p : {kP0, kP1})
      EXPECT_EQ(getQueueFlowControlToDiscardRatio(EgqProfile(prof), p), 0.34f) << prof;
  }
}

struct GlobalsSystem : EgressSystem {
  GlobalsSystem() : EgressSystem({fapRevMajor3, fapRevMajor8}, Redundancy::redundancyModeStandby) {
    sm = build();
    sm->generateCgmConfigurations();
  }
  void generateFrom(EgressResource uc, EgressResource mc) {
    for (auto p : {kP0, kP1}) {
      thresholds(p)->globalUcThresholdsIs(uc);
      thresholds(p)->globalMcThresholdsIs(mc);
    }
    sm->generateEgqConfigurations();
  }
  EgressBufferingSm::Ptr sm;
};

// A port share at the queue reserve shares nothing; below it the difference
// wraps.
TEST(EgqThresholds, APortShareAtTheQueueReserveSharesNothing) {
  ScopedEgressChipTables tables(uniformTables(6000, 12000, 20000, 4096, 12, 1));
  GlobalsSystem sys;
  for (U32 mc : {200u, 150u, 100u}) {  // port share 50, 0, and wrapped below 0
    sys.generateFrom({3000, 3000}, {static_cast<U16>(mc), mc});
    const EgqThresholds t = sys.egq(kP0, 7);
    EXPECT_EQ(t.portMulticastDescriptor(), mc - 150u) << mc;
    EXPECT_EQ(t.queueMulticastDpBuffer(DropPrecedence(1)),
              mc == 100 ? 1360072832u : 0u)  // 0.95f x ((0 - 100) / 3), in single precision
        << mc;
    EXPECT_EQ(t.queueMulticastDpSharedDescriptor(DropPrecedence(1)), mc == 100 ? 3891u : 0u) << mc;
  }
}

// The last speed mapped to a profile decides its ports and reserve; 6 and 9
// count 10G and 40G ports but keep their speed's reserve; 5 reserves nothing
// and 8 nothing but its speed's reserve.
TEST(EgqThresholds, SpeedsOfTheSpecialProfiles) {
  EgressChipTables t = uniformTables(6000, 12000, 20000, 4096, 12, 2);
  t.egqProfileForSpeed[kP0][Interface::speed25Gbps] = 10;
  t.egqProfileForSpeed[kP0][Interface::speed40Gbps] = 10;
  t.maxPortsWithoutUcHolb[kP0][Interface::speed40Gbps] = 6;
  t.frontPanelMin[kP0] = 5;
  t.egqProfileForSpeed[kP0][Interface::speed50Gbps] = 5;
  t.egqProfileForSpeed[kP0][Interface::speed100Gbps] = 8;
  t.egqProfileForSpeed[kP1][Interface::speed50Gbps] = 9;
  t.egqProfileForSpeed[kP1][Interface::speed25Gbps] = 6;
  t.maxPortsWithoutUcHolb[kP1][Interface::speed40Gbps] = 6;
  t.maxPortsWithoutUcHolb[kP1][Interface::speed10Gbps] = 10;
  ScopedEgressChipTables tables(t);
  EgressSystem sys({fapRevMajor3, fapRevMajor8});
  sys.build();
  EXPECT_EQ(sys.egq(kP0, 10).portUnicastBuffer(), 500u);
  EXPECT_EQ(sys.egq(kP0, 10).queueMulticastReservedDescriptor(), 640u);  // 40G: 4 x 160
  EXPECT_EQ(sys.egq(kP0, 5).queueMulticastReservedDescriptor(), 0u);
  EgqThresholds eight;
  eight.queueMulticastReservedDescriptorIs(1600);
  EXPECT_TRUE(sys.egq(kP0, 8) == eight);
  EXPECT_EQ(sys.egq(kP1, 9).portUnicastBuffer(), 3000u / 6);
  EXPECT_EQ(sys.egq(kP1, 9).queueMulticastReservedDescriptor(), 800u);  // 50G: 5 x 160
  EXPECT_EQ(sys.egq(kP1, 6).portUnicastBuffer(), 3000u / 10);
  EXPECT_EQ(sys.egq(kP1, 6).queueMulticastReservedDescriptor(), 320u);  // 25G came last
}

// 48 unicast buffers (or descriptors) over 16 ports: 1 per queue, flow
// control 1.
TEST(EgqThresholdsDeath, AQueueAtItsPortsFlowControlAborts) {
  {
    ScopedEgressChipTables tables(uniformTables(96, 1000, 20000, 4096, 16, 2));
    EXPECT_DEATH(
        EgressSystem({fapRevMajor3}).build(),
        smAssertion(365, "egqTh.queueUnicastBuffer() < egqTh.portUnicastBufferFlowControl()"));
  }
  ScopedEgressChipTables tables(uniformTables(6000, 12000, 20000, 4096, 16, 2));
  GlobalsSystem sys;
  EXPECT_DEATH(sys.generateFrom({3000, 48}, {3000, 3000}),
               smAssertion(367,
                           "egqTh.queueUnicastDescriptor() < "
                           "egqTh.portUnicastDescriptorFlowControl()"));
}

TEST(EgqThresholdsDeath, ASpeedMappedOutsideTheFrontPanelAborts) {
  const char* cond =
      "prof >= EgqProfile::frontPanelMin( egrBufThreshProf ) && "
      "prof <= EgqProfile::frontPanelMax( egrBufThreshProf )";
  for (U8 prof : {5, 14}) {  // one below and one above profile 0's front panel
    EgressChipTables t = defaultEgressChipTables();
    t.egqProfileForSpeed[kP0][Interface::speed25Gbps] = prof;
    ScopedEgressChipTables tables(t);
    EgressSystem sys({fapRevMajor3});
    EXPECT_DEATH(sys.build(), smAssertion(210, cond)) << int{prof};
  }
}

}  // namespace
