// The congestion manager's thresholds: the split of the buffers and
// descriptors between unicast and multicast, the SP0 limits, the per-class
// multicast shares, and the reserved multicast descriptors per speed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Vorn/EgressTestSupport.h"

using namespace Hardware::Vorn;
using VornTest::EgressSystem;
using VornTest::kP0;
using VornTest::kP1;
using VornTest::ScopedEgressChipTables;
using VornTest::smAssertion;
using VornTest::uniformTables;

namespace {

TEST(CgmThresholds, AnOddBufferTotalGivesMulticastTheOddBuffer) {
  ScopedEgressChipTables tables(uniformTables(2001, 5000, 20000, 4096, 4, 2));
  EgressSystem sys({fapRevMajor3, fapRevMajor8});
  sys.build();
  for (auto p : {kP0, kP1}) {
    EgressBufThresholds::Ptr thr = sys.thresholds(p);
    EXPECT_EQ(thr->globalUcThresholds(), (EgressResource{1000, 1000}));
    // Multicast keeps every descriptor that unicast did not take.
    EXPECT_EQ(thr->globalMcThresholds(), (EgressResource{1001, 4000}));
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
}

TEST(CgmThresholds, FewerDescriptorsThanHalfTheBuffersWrap) {
  ScopedEgressChipTables tables(uniformTables(2000, 900, 20000, 4096, 4, 2));
  EgressSystem sys({fapRevMajor3});
  auto sm = sys.build();
  EXPECT_EQ(sys.thresholds(kP0)->globalMcThresholds().pd, 900u - 1000u);
}

TEST(CgmThresholds, AProfileWithoutRevisionsTakesTheLoopsStartValue) {
  // Profile 1 has no revision here: its totals are 0xFFFFFFFF, used as they
  // are, and 16-bit buffer counts keep their low bits.
  EgressSystem sys({fapRevMajor3});
  sys.build();
  EgressBufThresholds::Ptr thr = sys.thresholds(kP1);
  EXPECT_EQ(thr->globalUcThresholds(), (EgressResource{0xFFFF, 0x7FFFFFFF}));
  EXPECT_EQ(thr->globalMcThresholds(), (EgressResource{0, 0x80000000}));
  EXPECT_EQ(thr->sp0MaxReservedThresholds().pd, 12288u);
}

TEST(CgmThresholds, Sp0ReservedDescriptorsAreCappedPerProfile) {
  struct Case {
    U32 maxReserved;
    U32 profile0;
    U32 profile1;
  };
  for (const Case& c : {Case{20000, 6144, 12288}, Case{5000, 5000, 5000}, Case{6144, 6144, 6144},
                        Case{12288, 6144, 12288}}) {
    SCOPED_TRACE(c.maxReserved);
    ScopedEgressChipTables tables(uniformTables(4000, 8000, c.maxReserved, 4096, 4, 2));
    EgressSystem sys({fapRevMajor4, fapRevMajor7});
    sys.build();
    EXPECT_EQ(sys.thresholds(kP0)->sp0MaxReservedThresholds(), (EgressResource{1200, c.profile0}));
    EXPECT_EQ(sys.thresholds(kP1)->sp0MaxReservedThresholds(), (EgressResource{1200, c.profile1}));
  }
}

TEST(CgmThresholds, EachTrafficClassGetsItsShareOfTheMulticastLimits) {
  // Multicast gets 1001 buffers and 4000 descriptors.
  ScopedEgressChipTables tables(uniformTables(2001, 5000, 20000, 4096, 4, 2));
  EgressSystem sys({fapRevMajor3});
  sys.build();
  EgressBufThresholds::Ptr thr = sys.thresholds(kP0);
  const auto& perTc = thr->sp0McPerTcThresholds();
  ASSERT_EQ(perTc.size(), 8u);
  // Class 7 gets all of it; class 0 76 %, truncated: 760.76 buffers. In single
  // precision 0.76f x 4000 rounds to exactly 3040 (in double it would be
  // 3039.99996 and truncate to 3039).
  EXPECT_EQ(*perTc.find(TrafficClassId(7)), thr->globalMcThresholds());
  EXPECT_EQ(*perTc.find(TrafficClassId(0)), (EgressResource{760, 3040}));
  EXPECT_EQ(*perTc.find(TrafficClassId(6)), (EgressResource{950, 3800}));
  for (U8 tc = 0; tc < 8; ++tc) {
    SCOPED_TRACE(int{tc});
    EXPECT_EQ(perTc.find(TrafficClassId(tc))->db, VornTest::singleScaled(1001, tcMaxRatioSp[tc]));
    EXPECT_EQ(perTc.find(TrafficClassId(tc))->pd, VornTest::singleScaled(4000, tcMaxRatioSp[tc]));
  }
  EXPECT_THAT(tcMaxRatioSp,
              testing::ElementsAre(0.76f, 0.79f, 0.82f, 0.85f, 0.88f, 0.91f, 0.95f, 1.0f));
}

TEST(CgmThresholds, TheExportedRatioTableIsRead) {
  ScopedEgressChipTables tables(uniformTables(2001, 5000, 20000, 4096, 4, 2));
  const float saved = tcMaxRatioSp[3];
  tcMaxRatioSp[3] = 0.5f;
  EgressSystem sys({fapRevMajor3});
  sys.build();
  tcMaxRatioSp[3] = saved;
  EXPECT_EQ(*sys.thresholds(kP0)->sp0McPerTcThresholds().find(TrafficClassId(3)),
            (EgressResource{500, 2000}));
}

TEST(ReservedMcPdFromSpeed, FactorPerSpeedTimesTheUnit) {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  auto sm = sys.build();
  const std::pair<Interface::EthSpeed, U32> expected[] = {
      {Interface::speed100Mbps, 160},  {Interface::speed10Gbps, 160},
      {Interface::speed25Gbps, 320},   {Interface::speed40Gbps, 640},
      {Interface::speed50Gbps, 800},   {Interface::speed100Gbps, 1600},
      {Interface::speed200Gbps, 3200}, {Interface::speed400Gbps, 3200}};
  for (const auto& [speed, pd] : expected) EXPECT_EQ(sm->reservedMcPdFromSpeed(speed), pd) << speed;

  EgressBufferParameters params;
  params.reservedMcPdPerSpeedUnit = 255;
  sys.config = CliConfig::Ptr(new CliConfig());
  sys.config->egressBufferParametersIs(params);
  EXPECT_EQ(sys.build()->reservedMcPdFromSpeed(Interface::speed400Gbps), 20u * 255u);
}

TEST(ReservedMcPdFromSpeedDeath, SpeedsWithoutAFactorAbort) {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  auto sm = sys.build();
  for (U32 ordinal : {0u, 1u, 3u, 4u, 5u, 13u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(ordinal);
    EXPECT_DEATH(sm->reservedMcPdFromSpeed(static_cast<Interface::EthSpeed>(ordinal)),
                 smAssertion(189, "false && \"Invalid Speed\""));
  }
}

}  // namespace
