// The egress queuing thresholds: port and queue budgets, flow-control
// shares, multicast shares per drop precedence, the special profiles 5, 8
// and 9, and the checks that stop a queue from reaching its port's
// flow-control threshold.
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

// 3000 unicast buffers and descriptors, 12 ports of every speed without HOLB.
EgressChipTables twelvePorts() {
  return uniformTables(6000, 12000, 20000, 4096, 12, 2);
}

TEST(EgqThresholds, UnicastBudgetOfTwelvePorts) {
  ScopedEgressChipTables tables(twelvePorts());
  EgressSystem sys({fapRevMajor3, fapRevMajor8});
  sys.build();
  struct Case {
    EgressBufThresholdsProfile p;
    U32 prof;
    U32 queueFlowControl;
  };
  // 0.55 on the 100G, 200G and 400G profiles, 0.34 elsewhere.
  for (const Case& c : {Case{kP0, 6, 28}, Case{kP0, 13, 45}, Case{kP1, 7, 28}, Case{kP1, 13, 45},
                        Case{kP1, 14, 45}, Case{kP1, 15, 45}}) {
    SCOPED_TRACE(testing::Message() << "p " << c.p << " prof " << c.prof);
    const EgqThresholds t = sys.egq(c.p, c.prof);
    EXPECT_EQ(t.portUnicastBuffer(), 250u);
    EXPECT_EQ(t.portUnicastBufferFlowControl(), 125u);
    EXPECT_EQ(t.queueUnicastBuffer(), 83u);
    EXPECT_EQ(t.queueUnicastBufferFlowControl(), c.queueFlowControl);
    EXPECT_EQ(t.portUnicastDescriptor(), 250u);
    EXPECT_EQ(t.portUnicastDescriptorFlowControl(), 125u);
    EXPECT_EQ(t.queueUnicastDescriptor(), 83u);
    EXPECT_EQ(t.queueUnicastDescriptorFlowControl(), c.queueFlowControl);
  }
}

TEST(EgqThresholds, FlowControlRatios) {
  for (U32 prof = 5; prof <= 15; ++prof) {
    SCOPED_TRACE(prof);
    EXPECT_EQ(getPortFlowControlToDiscardRatio(EgqProfile(prof)), 0.5f);
    EXPECT_EQ(getQueueFlowControlToDiscardRatio(EgqProfile(prof), kP0), prof == 13 ? 0.55f : 0.34f);
    EXPECT_EQ(getQueueFlowControlToDiscardRatio(EgqProfile(prof), kP1),
              prof >= 13 && prof <= 15 ? 0.55f : 0.34f);
  }
}

// A machine that runs generateEgqConfigurations on chosen global limits.
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

TEST(EgqThresholds, MulticastSharesPerDropPrecedence) {
  // One port without HOLB: a port gets (3200 - 150) = 3050, a queue's share
  // (3050 - 50) / 3 = 1000.
  ScopedEgressChipTables tables(uniformTables(6000, 12000, 20000, 4096, 12, 1));
  GlobalsSystem sys;
  sys.generateFrom({3000, 3000}, {3200, 3200});
  const EgqThresholds t = sys.egq(kP0, 10);
  EXPECT_EQ(t.portMulticastBuffer(), 3050u);
  EXPECT_EQ(t.portMulticastDescriptor(), 3050u);
  const U32 expected[] = {700, 950, 600, 200};
  for (U8 dp = 0; dp < 4; ++dp) {
    SCOPED_TRACE(int{dp});
    EXPECT_EQ(t.queueMulticastDpSharedDescriptor(DropPrecedence(dp)), expected[dp]);
    EXPECT_EQ(t.queueMulticastDpBuffer(DropPrecedence(dp)), expected[dp]);
  }
  EXPECT_THAT(lowerDpMultiple, testing::ElementsAre(0.70f, 0.95f, 0.60f, 0.20f));
}

TEST(EgqThresholds, OnlyDescriptorSharesAreClampedToOneQueue) {
  ScopedEgressChipTables tables(uniformTables(6000, 12000, 20000, 400, 12, 1));
  GlobalsSystem sys;
  sys.generateFrom({3000, 3000}, {3200, 3200});
  const EgqThresholds t = sys.egq(kP1, 11);
  EXPECT_EQ(t.queueMulticastDpSharedDescriptor(DropPrecedence(0)), 280u);  // 400 x 0.7
  EXPECT_EQ(t.queueMulticastDpBuffer(DropPrecedence(0)), 700u);            // 1000 x 0.7
}

TEST(EgqThresholds, APortShareAtTheQueueReserveSharesNothing) {
  ScopedEgressChipTables tables(uniformTables(6000, 12000, 20000, 4096, 12, 1));
  GlobalsSystem sys;
  for (U32 mc : {200u, 150u, 100u}) {  // port share 50, 0, and wrapped below 0
    SCOPED_TRACE(mc);
    sys.generateFrom({3000, 3000}, {static_cast<U16>(mc), mc});
    const EgqThresholds t = sys.egq(kP0, 7);
    EXPECT_EQ(t.portMulticastDescriptor(), mc - 150u);
    for (U8 dp = 0; dp < 4; ++dp) {
      const U32 expected =
          mc == 100 ? VornTest::singleScaled((0u - 50u - 50u) / 3u, lowerDpMultiple[dp]) : 0u;
      EXPECT_EQ(t.queueMulticastDpBuffer(DropPrecedence(dp)), expected);
      // The descriptor side is clamped to 4096 per queue.
      EXPECT_EQ(t.queueMulticastDpSharedDescriptor(DropPrecedence(dp)),
                mc == 100 ? VornTest::singleScaled(4096, lowerDpMultiple[dp]) : 0u);
    }
  }
}

TEST(EgqThresholds, ALaterSpeedOfTheSameProfileWinsAndUnmappedProfilesKeepSixteenPorts) {
  EgressChipTables t = twelvePorts();
  t.egqProfileForSpeed[kP0][Interface::speed100Mbps] = EgqProfile::kNone;  // profile 7 unused
  t.egqProfileForSpeed[kP0][Interface::speed25Gbps] = 10;
  t.egqProfileForSpeed[kP0][Interface::speed40Gbps] = 10;
  t.maxPortsWithoutUcHolb[kP0][Interface::speed40Gbps] = 6;
  ScopedEgressChipTables tables(t);
  EgressSystem sys({fapRevMajor3});
  sys.build();
  EXPECT_EQ(sys.egq(kP0, 7).portUnicastBuffer(), 3000u / 16);
  EXPECT_EQ(sys.egq(kP0, 7).queueMulticastReservedDescriptor(), 0u);
  EXPECT_EQ(sys.egq(kP0, 10).portUnicastBuffer(), 500u);
  EXPECT_EQ(sys.egq(kP0, 10).queueMulticastReservedDescriptor(), 640u);  // 40G: 4 x 160
}

TEST(EgqThresholds, ProfileEightHasNoThresholdsButItsReservedDescriptors) {
  EgressChipTables t = twelvePorts();
  t.egqProfileForSpeed[kP0][Interface::speed100Gbps] = 8;
  ScopedEgressChipTables tables(t);
  EgressSystem sys({fapRevMajor3});
  sys.build();
  EgqThresholds expected;
  expected.queueMulticastReservedDescriptorIs(1600);
  EXPECT_TRUE(sys.egq(kP0, 8) == expected);
  // With no speed of its own it has nothing at all.
  EXPECT_TRUE(sys.egq(kP1, 8) == EgqThresholds());
}

TEST(EgqThresholds, ProfileFiveSharesAndReservesNoMulticast) {
  EgressChipTables t = twelvePorts();
  t.frontPanelMin[kP0] = 5;
  t.egqProfileForSpeed[kP0][Interface::speed50Gbps] = 5;
  t.maxPortsWithoutUcHolb[kP0][Interface::speed50Gbps] = 3;
  t.maxPortsWithoutUcHolb[kP0][Interface::speed10Gbps] = 4;
  ScopedEgressChipTables tables(t);
  EgressSystem sys({fapRevMajor3});
  sys.build();
  const EgqThresholds five = sys.egq(kP0, 5);
  EXPECT_EQ(five.portUnicastBuffer(), 750u);  // the 10G count, not the 50G one
  EXPECT_EQ(five.portMulticastBuffer(), 0u);
  EXPECT_EQ(five.portMulticastDescriptor(), 0u);
  EXPECT_EQ(five.queueMulticastReservedDescriptor(), 0u);
  for (U8 dp = 0; dp < 4; ++dp) {
    EXPECT_EQ(five.queueMulticastDpBuffer(DropPrecedence(dp)), 0u);
    EXPECT_EQ(five.queueMulticastDpSharedDescriptor(DropPrecedence(dp)), 0u);
  }
}

TEST(EgqThresholds, ProfilesSixAndNineTakeTheirPortCountsFromFixedSpeeds) {
  EgressChipTables t = twelvePorts();
  t.egqProfileForSpeed[kP1][Interface::speed50Gbps] = 9;
  t.egqProfileForSpeed[kP1][Interface::speed25Gbps] = 6;
  t.maxPortsWithoutUcHolb[kP1][Interface::speed40Gbps] = 6;
  t.maxPortsWithoutMcHolb[kP1][Interface::speed40Gbps] = 5;
  t.maxPortsWithoutUcHolb[kP1][Interface::speed10Gbps] = 10;
  t.maxPortsWithoutMcHolb[kP1][Interface::speed10Gbps] = 7;
  ScopedEgressChipTables tables(t);
  EgressSystem sys({fapRevMajor8});
  sys.build();
  const U32 ucDb = 3000;  // half of the 6000 buffers each
  const U32 mcDb = 3000;
  EXPECT_EQ(sys.egq(kP1, 9).portUnicastBuffer(), ucDb / 6);
  EXPECT_EQ(sys.egq(kP1, 9).portMulticastBuffer(), (mcDb - 150) / 5);
  EXPECT_EQ(sys.egq(kP1, 9).queueMulticastReservedDescriptor(), 800u);  // 50G keeps its reserve
  EXPECT_EQ(sys.egq(kP1, 6).portUnicastBuffer(), ucDb / 10);
  EXPECT_EQ(sys.egq(kP1, 6).portMulticastBuffer(), (mcDb - 150) / 7);
  EXPECT_EQ(sys.egq(kP1, 6).queueMulticastReservedDescriptor(), 320u);  // 25G came last
}

TEST(EgqThresholdsDeath, AQueueAtItsPortsFlowControlAborts) {
  // 48 unicast buffers over 16 ports: 3 per port, 1 per queue, flow control 1.
  ScopedEgressChipTables tables(uniformTables(96, 1000, 20000, 4096, 16, 2));
  EgressSystem sys({fapRevMajor3});
  EXPECT_DEATH(
      sys.build(),
      smAssertion(365, "egqTh.queueUnicastBuffer() < egqTh.portUnicastBufferFlowControl()"));
}

TEST(EgqThresholdsDeath, AQueueAtItsPortsDescriptorFlowControlAborts) {
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
  for (U8 prof : {5, 14}) {
    EgressChipTables t = defaultEgressChipTables();
    t.egqProfileForSpeed[kP0][Interface::speed25Gbps] = prof;
    ScopedEgressChipTables tables(t);
    EgressSystem sys({fapRevMajor3});
    EXPECT_DEATH(sys.build(), smAssertion(210, cond)) << int{prof};
  }
}

}  // namespace
