// The congestion manager's thresholds: the split of the buffers and
// descriptors between unicast and multicast, the SP0 limits and the
// per-class multicast shares; and the shipped chip tables against what the
// generator needs of them.
#include <gtest/gtest.h>

#include "Vorn/EgressTestSupport.h"

using namespace Hardware::Vorn;
using VornTest::EgressSystem;
using VornTest::kP0;
using VornTest::kP1;
using VornTest::ScopedEgressChipTables;
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
  // Fewer descriptors than unicast's half wrap.
  ScopedEgressChipTables few(uniformTables(2000, 900, 20000, 4096, 4, 2));
  EgressSystem wrapped({fapRevMajor3});
  wrapped.build();
  EXPECT_EQ(wrapped.thresholds(kP0)->globalMcThresholds().pd, 900u - 1000u);
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
  EXPECT_EQ(thr->sp0MaxReservedThresholds().pd, 12288u);
}

TEST(CgmThresholds, Sp0ReservedDescriptorsAreCappedPerProfile) {
  struct Case {
    U32 maxReserved, profile0, profile1;
  };
  for (const Case& c : {Case{20000, 6144, 12288}, Case{5000, 5000, 5000}, Case{6144, 6144, 6144},
                        Case{12288, 6144, 12288}}) {
    ScopedEgressChipTables tables(uniformTables(4000, 8000, c.maxReserved, 4096, 4, 2));
    EgressSystem sys({fapRevMajor4, fapRevMajor7});
    sys.build();
    EXPECT_EQ(sys.thresholds(kP0)->sp0MaxReservedThresholds(), (EgressResource{1200, c.profile0}))
        << c.maxReserved;
    EXPECT_EQ(sys.thresholds(kP1)->sp0MaxReservedThresholds(), (EgressResource{1200, c.profile1}))
        << c.maxReserved;
  }
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

constexpr FapRevMajor kRevisions[] = {fapRevMajor1, fapRevMajor2, fapRevMajor3,
                                      fapRevMajor4, fapRevMajor5, fapRevMajor6,
                                      fapRevMajor7, fapRevMajor8, fapRevMajor9};

// Unicast's half of every revision's buffers fits a 16-bit count and its
// descriptors cover it; every revision, alone or with another, generates
// both profiles completely without a failed check.
TEST(EgressChipTables, EveryRevisionAndPairGenerates) {
  const EgressChipTables& t = defaultEgressChipTables();
  for (FapRevMajor a : kRevisions) {
    EXPECT_LE(t.totalBuffers[a] - t.totalBuffers[a] / 2, 0xFFFFu) << a;
    EXPECT_GT(t.totalDescriptors[a], t.totalBuffers[a] / 2) << a;
    EXPECT_GT(t.maxDescriptorsPerQueue[a], 0u) << a;
    for (FapRevMajor b : kRevisions) {
      if (b < a) continue;
      EgressSystem sys({a, b});
      EXPECT_TRUE(sys.build()->initialized());
      EXPECT_EQ(sys.status->version(), 1u);
      for (auto p : {kP0, kP1}) {
        ASSERT_TRUE(sys.thresholds(p));
        EXPECT_EQ(sys.thresholds(p)->egressProfiles().size(), 11u) << a << " and " << b;
      }
    }
  }
}

}  // namespace
