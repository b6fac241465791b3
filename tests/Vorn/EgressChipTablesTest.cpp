// The chip tables that the platform ships against what the threshold
// generator needs of them: every revision and every pair of revisions gives
// thresholds without a failed check.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Vorn/EgressTestSupport.h"

using namespace Hardware::Vorn;
using VornTest::EgressSystem;

namespace {

constexpr FapRevMajor kRevisions[] = {fapRevMajor1, fapRevMajor2, fapRevMajor3,
                                      fapRevMajor4, fapRevMajor5, fapRevMajor6,
                                      fapRevMajor7, fapRevMajor8, fapRevMajor9};

TEST(EgressChipTables, PerRevisionFiguresFitTheSplit) {
  const EgressChipTables& t = defaultEgressChipTables();
  for (FapRevMajor rev : kRevisions) {
    SCOPED_TRACE(rev);
    // Unicast's half fits a 16-bit buffer count; descriptors cover it.
    EXPECT_LE(t.totalBuffers[rev] / 2, 0xFFFFu);
    EXPECT_LE(t.totalBuffers[rev] - t.totalBuffers[rev] / 2, 0xFFFFu);
    EXPECT_GT(t.totalDescriptors[rev], t.totalBuffers[rev] / 2);
    EXPECT_GT(t.maxDescriptorsPerQueue[rev], 0u);
  }
}

TEST(EgressChipTables, MappedSpeedsHaveAProfileInRangeAPortCountAndAReserve) {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  auto sm = sys.build();
  for (auto p : {egressBufThresholdsProfile0, egressBufThresholdsProfile1}) {
    SCOPED_TRACE(p);
    EXPECT_GE(EgqProfile::frontPanelMin(p).value(), EgqProfile::kFirst);
    EXPECT_LE(EgqProfile::frontPanelMax(p).value(), EgqProfile::kLast);
    for (U32 s = 0; s < Interface::ethSpeedOrdinals; ++s) {
      const auto speed = static_cast<Interface::EthSpeed>(s);
      const EgqProfile prof = EgqProfile::egqProfileForSpeed(p, speed);
      if (prof == EgqProfile::none()) continue;
      SCOPED_TRACE(s);
      EXPECT_GE(prof, EgqProfile::frontPanelMin(p));
      EXPECT_LE(prof, EgqProfile::frontPanelMax(p));
      EXPECT_GT(EgressBufferConstants::maxPortsWithoutUcHolb(speed, p), 0);
      EXPECT_GT(EgressBufferParameters::maxPortsWithoutMcHolb(speed, p), 0);
      EXPECT_GT(sm->reservedMcPdFromSpeed(speed), 0u);
    }
    // The fixed speeds of the special profiles have ports too.
    for (auto speed : {Interface::speed10Gbps, Interface::speed40Gbps}) {
      EXPECT_GT(EgressBufferConstants::maxPortsWithoutUcHolb(speed, p), 0);
      EXPECT_GT(EgressBufferParameters::maxPortsWithoutMcHolb(speed, p), 0);
    }
  }
}

// Each system generates both profiles completely, once.
void expectGenerated(std::initializer_list<FapRevMajor> revs) {
  EgressSystem sys(revs);
  auto sm = sys.build();
  EXPECT_TRUE(sm->initialized());
  EXPECT_EQ(sys.status->version(), 1u);
  for (auto p : {egressBufThresholdsProfile0, egressBufThresholdsProfile1}) {
    ASSERT_TRUE(sys.thresholds(p));
    EXPECT_EQ(sys.thresholds(p)->egressProfiles().size(), 11u);
  }
}

TEST(EgressChipTables, EveryRevisionAloneGenerates) {
  for (FapRevMajor rev : kRevisions) {
    SCOPED_TRACE(rev);
    expectGenerated({rev});
  }
}

TEST(EgressChipTables, EveryPairOfRevisionsGenerates) {
  for (FapRevMajor a : kRevisions) {
    for (FapRevMajor b : kRevisions) {
      if (b <= a) continue;
      SCOPED_TRACE(testing::Message() << a << " and " << b);
      expectGenerated({a, b});
    }
  }
}

TEST(EgressChipTables, AReplacedTableIsInForceForItsScopeOnly) {
  const U32 shipped = EgressBufferConstantsByFapRev::totalBuffersByFapRevMajor(fapRevMajor3);
  {
    EgressChipTables t = defaultEgressChipTables();
    t.totalBuffers[fapRevMajor3] = 2001;
    VornTest::ScopedEgressChipTables scoped(t);
    EXPECT_EQ(EgressBufferConstantsByFapRev::totalBuffersByFapRevMajor(fapRevMajor3), 2001u);
  }
  EXPECT_EQ(EgressBufferConstantsByFapRev::totalBuffersByFapRevMajor(fapRevMajor3), shipped);
  EXPECT_EQ(EgressBufferConstantsByFapRev::totalBuffersByFapRevMajor(static_cast<FapRevMajor>(10)),
            0u);
  EXPECT_EQ(EgqProfile::egqProfileForSpeed(egressBufThresholdsProfile1,
                                           static_cast<Interface::EthSpeed>(13)),
            EgqProfile::none());
}

}  // namespace
