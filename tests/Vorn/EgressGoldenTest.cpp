// The complete published thresholds of a two-revision system, against a
// calculation of their own: the chip tables are read directly, the rules
// written out step by step, and every field of both profiles compared.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

#include "Vorn/EgressTestSupport.h"

using namespace Hardware::Vorn;
using VornTest::EgressSystem;
using VornTest::singleScaled;

namespace {

// Reserved multicast descriptor units of a port, by speed ordinal.
const std::map<U32, U32> kSpeedUnits = {{2, 1}, {6, 1},   {7, 2},   {8, 4},
                                        {9, 5}, {10, 10}, {11, 20}, {12, 20}};

struct Expected {
  EgressResource uc, mc, sp0Max;
  EgressResource perTc[8];
  U32 reservedPerTc;
  EgqThresholds egq[11];  // profiles 5 to 15
  U8 maxQueuesFullApplied;
};

Expected calculate(const std::vector<FapRevMajor>& revs, EgressBufThresholdsProfile p,
                   const EgressBufferParameters& params) {
  const EgressChipTables& t = defaultEgressChipTables();
  std::vector<FapRevMajor> mine;
  for (FapRevMajor r : revs)
    if (EgqProfile::egrBufThresholdProfileForFapRevMajor(r) == p) mine.push_back(r);
  const auto least = [&](const EgressChipTables::PerRevision<U32>& table) {
    U32 m = 0xFFFFFFFF;
    for (FapRevMajor r : mine) m = std::min(m, table[r]);
    return m;
  };

  Expected e{};
  const U32 buffers = least(t.totalBuffers);
  const U32 ucShare = buffers / 2;
  e.uc = {static_cast<U16>(ucShare), ucShare};
  e.mc = {static_cast<U16>(buffers - ucShare), least(t.totalDescriptors) - ucShare};
  const U32 cap = p == egressBufThresholdsProfile1 ? 12288 : 6144;
  e.sp0Max = {static_cast<U16>(params.reservedMcBuffersPerTc * 8),
              std::min(cap, least(t.maxReservedDescriptors))};
  const float tcShare[8] = {0.76f, 0.79f, 0.82f, 0.85f, 0.88f, 0.91f, 0.95f, 1.0f};
  for (int tc = 0; tc < 8; ++tc)
    e.perTc[tc] = {static_cast<U16>(singleScaled(e.mc.db, tcShare[tc])),
                   singleScaled(e.mc.pd, tcShare[tc])};
  e.reservedPerTc = params.reservedMcBuffersPerTc;
  e.maxQueuesFullApplied = static_cast<U8>(params.maxQueuesFullPerPortMc);

  const U32 perQueueMax = least(t.maxDescriptorsPerQueue);
  const float dpShare[4] = {0.70f, 0.95f, 0.60f, 0.20f};
  for (U32 prof = 5; prof <= 15; ++prof) {
    // The fastest front-panel speed of the profile decides; 5 and 6 count
    // 10G ports and 9 counts 40G ports whatever maps to them.
    std::optional<U32> speed;
    for (U32 s = 2; s <= 12; ++s)
      if (s != 3 && t.egqProfileForSpeed[p][s] == prof) speed = s;
    std::optional<U32> countSpeed = speed;
    if (prof == 5 || prof == 6) countSpeed = 6;
    if (prof == 9) countSpeed = 8;
    const U32 ucPorts = countSpeed ? t.maxPortsWithoutUcHolb[p][*countSpeed] : 16;
    const U32 mcPorts = countSpeed ? t.maxPortsWithoutMcHolb[p][*countSpeed] : 16;
    const U32 reserved =
        speed && prof != 5 ? kSpeedUnits.at(*speed) * params.reservedMcPdPerSpeedUnit : 0;

    const bool fast =
        prof == t.frontPanel100g[p] || prof == t.frontPanel200g[p] || prof == t.frontPanel400g[p];
    const float queueShare = fast ? 0.55f : 0.34f;
    EgqThresholds& q = e.egq[prof - 5];
    const U32 portUcBuf = prof == 8 ? 0 : e.uc.db / ucPorts;
    const U32 portUcDesc = prof == 8 ? 0 : e.uc.pd / ucPorts;
    const bool mcShared = prof != 8 && prof != 5;
    const U32 portMcBuf = mcShared ? (e.mc.db - U32{params.reservedMcPerPort}) / mcPorts : 0;
    const U32 portMcDesc = mcShared ? (e.mc.pd - U32{params.reservedMcPerPort}) / mcPorts : 0;
    q.portUnicastBufferIs(portUcBuf);
    q.portUnicastBufferFlowControlIs(singleScaled(portUcBuf, 0.5f));
    q.portMulticastBufferIs(portMcBuf);
    q.portUnicastDescriptorIs(portUcDesc);
    q.portUnicastDescriptorFlowControlIs(singleScaled(portUcDesc, 0.5f));
    q.portMulticastDescriptorIs(portMcDesc);
    q.queueUnicastBufferIs(portUcBuf / 3);
    q.queueUnicastBufferFlowControlIs(singleScaled(portUcBuf / 3, queueShare));
    q.queueUnicastDescriptorIs(portUcDesc / 3);
    q.queueUnicastDescriptorFlowControlIs(singleScaled(portUcDesc / 3, queueShare));
    q.queueMulticastReservedDescriptorIs(reserved);

    const U32 perQueue = params.reservedMcPerQueue;
    U32 sharedDesc = 0;
    U32 sharedBuf = 0;
    if (prof != 5 && portMcDesc > perQueue)
      sharedDesc = std::min((portMcDesc - perQueue) / params.maxQueuesFullPerPortMc, perQueueMax);
    if (prof != 5 && portMcBuf > perQueue)
      sharedBuf = (portMcBuf - perQueue) / params.maxQueuesFullPerPortMc;
    for (U8 dp = 0; dp < 4; ++dp) {
      q.queueMulticastDpSharedDescriptorIs(DropPrecedence(dp),
                                           singleScaled(sharedDesc, dpShare[dp]));
      q.queueMulticastDpBufferIs(DropPrecedence(dp), singleScaled(sharedBuf, dpShare[dp]));
    }
  }
  return e;
}

void compare(const EgressSystem& sys, const std::vector<FapRevMajor>& revs,
             const EgressBufferParameters& params) {
  for (auto p : {egressBufThresholdsProfile0, egressBufThresholdsProfile1}) {
    SCOPED_TRACE(testing::Message() << "threshold profile " << p);
    const Expected e = calculate(revs, p, params);
    EgressBufThresholds::Ptr thr = sys.thresholds(p);
    ASSERT_TRUE(thr);
    EXPECT_EQ(thr->globalUcThresholds(), e.uc);
    EXPECT_EQ(thr->globalMcThresholds(), e.mc);
    EXPECT_EQ(thr->sp0MaxReservedThresholds(), e.sp0Max);
    ASSERT_EQ(thr->sp0McPerTcThresholds().size(), 8u);
    ASSERT_EQ(thr->sp0McReservedBuffersPerTc().size(), 8u);
    for (U8 tc = 0; tc < 8; ++tc) {
      EXPECT_EQ(*thr->sp0McPerTcThresholds().find(TrafficClassId(tc)), e.perTc[tc]) << int{tc};
      EXPECT_EQ(*thr->sp0McReservedBuffersPerTc().find(TrafficClassId(tc)), e.reservedPerTc);
    }
    EXPECT_EQ(thr->maxQueuesFullPerPortMcApplied(), e.maxQueuesFullApplied);
    ASSERT_EQ(thr->egressProfiles().size(), 11u);
    for (U32 prof = 5; prof <= 15; ++prof) {
      const EgqThresholds* actual = thr->egressProfiles().find(EgqProfile(prof));
      ASSERT_NE(actual, nullptr) << prof;
      EXPECT_TRUE(*actual == e.egq[prof - 5]) << "EGQ profile " << prof;
    }
  }
}

TEST(EgressGolden, TwoRevisionsWithTheDefaults) {
  EgressSystem sys({fapRevMajor3, fapRevMajor8});
  sys.build();
  EgressBufferParameters defaults;  // written out: a changed default shows
  defaults.reservedMcBuffersPerTc = 150;
  defaults.reservedMcPdPerSpeedUnit = 160;
  defaults.reservedMcPerPort = 150;
  defaults.maxQueuesFullPerPortMc = 3;
  defaults.reservedMcPerQueue = 50;
  compare(sys, {fapRevMajor3, fapRevMajor8}, defaults);
}

TEST(EgressGolden, TwoRevisionsWithAConfiguration) {
  EgressSystem sys({fapRevMajor5, fapRevMajor7});
  EgressBufferParameters params;
  params.reservedMcBuffersPerTc = 120;
  params.reservedMcPdPerSpeedUnit = 100;
  params.reservedMcPerPort = 100;
  params.maxQueuesFullPerPortMc = 0x102;  // published as its low byte, divides in full
  params.reservedMcPerQueue = 40;
  sys.config = CliConfig::Ptr(new CliConfig());
  sys.config->egressBufferParametersIs(params);
  EXPECT_EQ(sys.build()->ebParams(), params);
  compare(sys, {fapRevMajor5, fapRevMajor7}, params);
}

}  // namespace
