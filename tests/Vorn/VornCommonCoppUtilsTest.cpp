// CoPP defaults: the static class of every CPU system port, the supported
// class types, and the policy rate conversions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Mox/Trace.h"
#include "Vorn/VornCommonCoppUtils.h"

using namespace Hardware::Vorn;

namespace {

constexpr long kBlank = -1;  // the class does not write this member

struct ExpectedClass {
  std::vector<U16> ports;
  const char* name;
  long bandwidth, shape, hwClassIndex, classType, spIndex, spBandwidth, spShape;
};

// The classes as the platform documents them.
const ExpectedClass kExpected[] = {
    {{12}, "copp-system-vxlan-vtep-learn", 250, 2500, 28, 39, 1, 195, 200},
    {{13}, "copp-system-ipmcmiss", 250, 2500, 13, 8, 3, 195, 200},
    {{14}, "copp-system-ipmc", 250, 2500, 11, 22, 3, 195, 200},
    {{15}, "copp-system-l2broadcast", 250, 2500, 8, 27, 4, 195, 200},
    {{16}, "copp-system-linklocal", 250, 100000, 4, 33, 5, 195, 400},
    {{17}, "copp-system-multicastsnoop", 250, 2500, 3, 34, 6, 195, 2500},
    {{18, 41}, "copp-system-l3ttl1", 250, 2500, 19, 15, 9, 195, 200},
    {{19, 42}, "copp-system-OspfIsis", 250, 2500, 2, 31, 10, 195, 800},
    {{20}, "copp-system-vxlan-encapsulation", 250, 200000, 29, 38, 2, 400, 200},
    {{21}, "copp-system-ptp-snoop", 250, 2500, 39, 52, 11, 195, 20},
    {{22}, "copp-system-cfm-snoop", 250, 2500, 41, 56, 12, 195, 20},
    {{24}, "copp-system-igmp", 250, 2500, 17, 10, kBlank, kBlank, kBlank},
    {{25}, "copp-system-lldp", 250, 2500, 21, 3, kBlank, kBlank, kBlank},
    {{26}, "copp-system-lacp", 1250, 2500, 24, 2, kBlank, kBlank, kBlank},
    {{27}, "copp-system-bpdu", 1250, 2500, 25, 1, kBlank, kBlank, kBlank},
    {{28}, "copp-system-acllog", 250, 2500, 27, 20, kBlank, kBlank, kBlank},
    {{29}, "copp-system-kfr", 1250, 40000, 36, 49, kBlank, kBlank, kBlank},
    {{30}, "copp-system-kfr-heartbeat", 250, 2500, 37, 50, kBlank, kBlank, kBlank},
    {{31}, "copp-system-mvrp", 250, 2500, 31, 42, kBlank, kBlank, kBlank},
    {{32}, "copp-system-ptp", 250, 2500, 30, 40, kBlank, kBlank, kBlank},
    {{33}, "copp-system-bfd", 250, 2500, 22, 37, kBlank, kBlank, kBlank},
    {{34}, "copp-system-bgp", 250, 2500, 23, 35, kBlank, kBlank, kBlank},
    {{35}, "copp-system-mlag", 1000, 10000, 26, 36, kBlank, kBlank, kBlank},
    {{36}, "copp-system-l3destmiss", 250, 2500, 14, 9, kBlank, kBlank, kBlank},
    {{37}, "copp-system-ipunicast", 250, 250000, 12, 21, kBlank, kBlank, kBlank},
    {{38}, "copp-system-ipbroadcast", 200, 2000, 10, 23, kBlank, kBlank, kBlank},
    {{39}, "copp-system-l2ucast", 250, 250000, 7, 28, kBlank, kBlank, kBlank},
    {{40}, "copp-system-l3lpmoverflow", 200, 1000, 6, 32, kBlank, kBlank, kBlank},
    {{43}, "copp-system-mpls-ttl01", 250, 2500, 34, 46, kBlank, kBlank, kBlank},
    {{44}, "copp-system-mpls-label-miss", 250, 2500, 35, 47, kBlank, kBlank, kBlank},
    {{45}, "copp-system-mtu", 250, 2500, 32, 44, kBlank, kBlank, kBlank},
    {{46}, "copp-system-cfm", 98, 1367, 40, 55, kBlank, kBlank, kBlank},
    {{47}, "copp-system-dot1x-mba", 250, 2500, 42, 54, kBlank, kBlank, kBlank},
    {{48}, "copp-system-sflow", 250, 1000000, 5, 26, 0, 1000000, 1000},
    {{49}, "copp-system-mirroring", 250, 1000000, 38, 51, 0, 1000000, 1000},
    {{50}, "copp-system-arp-inspect", 250, 2500, 43, 57, kBlank, kBlank, kBlank},
    {{51}, "copp-system-mpls-arp-suppress", 250, 2500, 44, 58, kBlank, kBlank, kBlank},
    {{52}, "copp-system-ldp", 250, 250000, 45, 63, kBlank, kBlank, kBlank},
    {{53}, "copp-system-rsvp", 250, 250000, 46, 64, kBlank, kBlank, kBlank},
    {{64}, "copp-system-drop", 0, 80, kBlank, 18, kBlank, kBlank, kBlank},
};

// A record whose every member is recognisable, so that members a class does
// not write show.
CoppStaticConfig callersRecord() {
  CoppStaticConfig c;
  c.className = "caller";
  c.bandwidth = 9001;
  c.shape = 9002;
  c.hwClassIndex = 9003;
  c.classType = Qos::ClassMapCpStaticType(9004);
  c.specialPortIndex = 9005;
  c.specialPortSlot = 9006;
  c.specialPortBandwidth = 9007;
  c.specialPortShape = 9008;
  return c;
}

U32 expectedMember(long expected, U32 callers) {
  return expected == kBlank ? callers : static_cast<U32>(expected);
}

// Chooses the special CPU ports for a test and restores the platform's.
class Copp : public testing::Test {
 protected:
  void TearDown() override { SystemPhyPortId::specialCpuPortsIs(saved_); }
  const U64 saved_ = SystemPhyPortId::specialCpuPorts();
};

void expectClass(const ExpectedClass& e, U16 port, bool special) {
  SCOPED_TRACE(testing::Message() << "port " << port << (special ? " special" : ""));
  const CoppStaticConfig before = callersRecord();
  CoppStaticConfig c = before;
  ASSERT_TRUE(doGetAradCoppClassParameters(SystemPhyPortId(port), c));
  EXPECT_EQ(c.className, e.name);
  EXPECT_EQ(c.bandwidth, e.bandwidth);
  EXPECT_EQ(c.shape, e.shape);
  EXPECT_EQ(c.hwClassIndex, expectedMember(e.hwClassIndex, before.hwClassIndex));
  EXPECT_EQ(static_cast<U32>(c.classType), e.classType);
  const U32 index = expectedMember(e.spIndex, before.specialPortIndex);
  EXPECT_EQ(c.specialPortIndex, index);
  EXPECT_EQ(c.specialPortBandwidth, expectedMember(e.spBandwidth, before.specialPortBandwidth));
  EXPECT_EQ(c.specialPortShape, expectedMember(e.spShape, before.specialPortShape));
  EXPECT_EQ(c.specialPortSlot, special ? index + 1 : before.specialPortSlot);
}

TEST_F(Copp, EveryPortGetsItsClassFieldByField) {
  SystemPhyPortId::specialCpuPortsIs(0);
  for (const ExpectedClass& e : kExpected)
    for (U16 port : e.ports) expectClass(e, port, false);
}

TEST_F(Copp, SpecialPortsGetTheSlotAfterTheIndexTheRecordHolds) {
  // Every trap port special: a class without a special-port index takes the
  // caller's index (9005) for the slot, as igmp does.
  SystemPhyPortId::specialCpuPortsIs(~U64{0});
  for (const ExpectedClass& e : kExpected)
    for (U16 port : e.ports) expectClass(e, port, port < 64);
  CoppStaticConfig igmp = callersRecord();
  doGetAradCoppClassParameters(SystemPhyPortId(24), igmp);
  EXPECT_EQ(igmp.specialPortSlot, 9006u);
}

TEST_F(Copp, PlatformSpecialPortsAreTheClassesWithASpecialPortConfiguration) {
  for (U16 port = 12; port < 64; ++port) {
    auto e = std::find_if(std::begin(kExpected), std::end(kExpected), [&](const ExpectedClass& x) {
      return std::count(x.ports.begin(), x.ports.end(), port);
    });
    if (e != std::end(kExpected)) expectClass(*e, port, e->spIndex != kBlank);
  }
  CoppStaticConfig sflow;
  doGetAradCoppClassParameters(SystemPhyPortId(48), sflow);
  EXPECT_EQ(sflow.specialPortSlot, 1u);
  CoppStaticConfig cfmSnoop;
  doGetAradCoppClassParameters(SystemPhyPortId(22), cfmSnoop);
  EXPECT_EQ(cfmSnoop.specialPortSlot, 13u);
}

TEST_F(Copp, CpuTmPortsAreTheDefaultClassWithoutSpecialPortStep) {
  SystemPhyPortId::specialCpuPortsIs(~U64{0});
  for (U16 port = 2; port <= SystemPhyPortId::cpuTmMax(); ++port) {
    const ExpectedClass def = {{port}, "copp-system-default", 250, 2500, 1, 19, kBlank, kBlank,
                               kBlank};
    expectClass(def, port, false);
  }
}

TEST_F(Copp, PetraEntryPointsSupplyNothing) {
  CoppStaticConfig c = callersRecord();
  EXPECT_FALSE(doGetPetraGenericClassParameters(SystemPhyPortId(12), 3, c));
  EXPECT_FALSE(doGetPetraSpecialSysPortParameters(SystemPhyPortId(2), c));
  const CoppStaticConfig untouched = callersRecord();
  EXPECT_EQ(c.className, untouched.className);
  EXPECT_EQ(c.bandwidth, untouched.bandwidth);
  EXPECT_EQ(c.shape, untouched.shape);
  EXPECT_EQ(c.hwClassIndex, untouched.hwClassIndex);
  EXPECT_EQ(c.classType, untouched.classType);
  EXPECT_EQ(c.specialPortIndex, untouched.specialPortIndex);
  EXPECT_EQ(c.specialPortSlot, untouched.specialPortSlot);
  EXPECT_EQ(c.specialPortBandwidth, untouched.specialPortBandwidth);
  EXPECT_EQ(c.specialPortShape, untouched.specialPortShape);
}

TEST_F(Copp, PortsWithoutAClassAbortWithTheirNumber) {
  std::vector<U16> ports = {8, 9, 10, 11, 23, 65, 100, 4096, 16383, 16384};
  for (U16 p = 54; p <= 63; ++p) ports.push_back(p);
  for (U16 port : ports) {
    SCOPED_TRACE(port);
    EXPECT_DEATH(
        {
          Mox::traceHandle("VornCommonCoppUtils").levelIs(0, true);
          CoppStaticConfig c;
          doGetAradCoppClassParameters(SystemPhyPortId(port), c);
        },
        "VornCommonCoppUtils\\[0\\] [^\n]* port is " + std::to_string(port) +
            "\n(.*\n)?.*Vorn/VornCommonCoppUtils.cpp:365: bool "
            "Hardware::Vorn::doGetAradCoppClassParameters\\(Hardware::Vorn::SystemPhyPortId, "
            "Hardware::Vorn::CoppStaticConfig&\\): Assertion `false' failed");
  }
}

// The supported class types, as the platform documents them.
const U32 kSupported[] = {1,  2,  3,  7,  8,  9,  10, 14, 15, 18, 19, 20, 21, 22, 23,
                          26, 27, 28, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 42, 44,
                          45, 46, 47, 49, 50, 51, 52, 54, 55, 56, 57, 58, 63, 64};

TEST(CoppClassTypes, SupportedTypesIncludeEveryClassOfATrapPort) {
  for (U32 t : kSupported) EXPECT_TRUE(isClassSupported(Qos::ClassMapCpStaticType(t))) << t;
  for (const ExpectedClass& e : kExpected)
    EXPECT_TRUE(std::count(std::begin(kSupported), std::end(kSupported), e.classType)) << e.name;
}

TEST(CoppClassTypes, UnknownTypesAbortAfterTheFailedLine) {
  std::vector<U32> unknown = {65, 66, 1000, 0xFFFFFFFF};
  for (U32 t = 0; t <= 64; ++t)
    if (!std::count(std::begin(kSupported), std::end(kSupported), t)) unknown.push_back(t);
  ASSERT_EQ(unknown.size(), 4u + 21u);
  for (U32 t : unknown) {
    SCOPED_TRACE(t);
    EXPECT_DEATH(isClassSupported(Qos::ClassMapCpStaticType(t)),
                 "^Failed\\(false\\) Unhandled class map type " + std::to_string(t) +
                     "\n.*Vorn/VornCommonCoppUtils.cpp:502: bool "
                     "Hardware::Vorn::isClassSupported\\(Qos::ClassMapCpStaticType\\): "
                     "Assertion `false' failed");
  }
}

// ---------------------------------------------------------------------------
// Rates

Qos::ClassAction::Ptr actionWith(std::optional<U32> shape, std::optional<U32> bandwidth) {
  Qos::ClassAction::Ptr a(new Qos::ClassAction());
  if (shape) a->policyActionIs(Qos::actionSetShape, *shape);
  if (bandwidth) a->policyActionIs(Qos::actionSetBandwidth, *bandwidth);
  return a;
}

TEST(CoppRates, ClassActionRateReadsOnlyThePresentActions) {
  U32 b = 1, s = 2;
  doGetClassActionRate(nullptr, b, s);
  EXPECT_EQ(b, 1u);
  EXPECT_EQ(s, 2u);
  doGetClassActionRate(actionWith(500, std::nullopt), b, s);
  EXPECT_EQ(b, 1u);
  EXPECT_EQ(s, 500u);
  doGetClassActionRate(actionWith(std::nullopt, 300), b, s);
  EXPECT_EQ(b, 300u);
  EXPECT_EQ(s, 500u);
  doGetClassActionRate(actionWith(7, 8), b, s);
  EXPECT_EQ(b, 8u);
  EXPECT_EQ(s, 7u);
}

TEST(CoppRates, ActionWithoutARateAborts) {
  const char* fn =
      "void Hardware::Vorn::doGetClassActionRate\\(Qos::ClassAction::PtrConst, "
      "Qos::ActionRateType&, Qos::ActionRateType&\\): Assertion `pAction->rate\\(\\)' failed";
  Qos::ClassAction::Ptr noShape(new Qos::ClassAction());
  noShape->policyActionWithoutRateIs(Qos::actionSetShape);
  Qos::ClassAction::Ptr noBandwidth = actionWith(5, std::nullopt);
  noBandwidth->policyActionWithoutRateIs(Qos::actionSetBandwidth);
  U32 b = 0, s = 0;
  EXPECT_DEATH(doGetClassActionRate(noShape, b, s),
               std::string("Vorn/VornCommonCoppUtils.cpp:387: ") + fn);
  EXPECT_DEATH(doGetClassActionRate(noBandwidth, b, s),
               std::string("Vorn/VornCommonCoppUtils.cpp:393: ") + fn);
}

CoppStaticConfig staticRates(U32 bandwidth, U32 shape) {
  CoppStaticConfig c;
  c.bandwidth = bandwidth;
  c.shape = shape;
  return c;
}

TEST(CoppRates, BandwidthAndShapeFallBackToTheClassAndMapSentinels) {
  struct Case {
    const char* what;
    std::optional<U32> shapeAction, bandwidthAction;
    U32 staticBandwidth, staticShape;
    U32 bandwidth, shape;
  } cases[] = {
      {"no action", std::nullopt, std::nullopt, 250, 2500, 250, 2500},
      {"policy rates", 700, 70, 250, 2500, 70, 700},
      {"explicit not-set", 10000001, 10000001, 250, 2500, 250, 2500},
      {"shape unlimited", 10000002, std::nullopt, 250, 2500, 250, 0xFFFFFFFF},
      {"bandwidth unlimited", std::nullopt, 10000002, 250, 2500, 0, 2500},
      {"static shape unlimited", std::nullopt, std::nullopt, 250, 10000002, 250, 0xFFFFFFFF},
      {"policy shape over static unlimited", 900, std::nullopt, 250, 10000002, 250, 900},
      {"static bandwidth unlimited stays", std::nullopt, std::nullopt, 10000002, 80, 10000002, 80},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    U32 bandwidth = 1, shape = 2;
    doGetBandwidthAndShapeRate(actionWith(c.shapeAction, c.bandwidthAction), bandwidth, shape,
                               staticRates(c.staticBandwidth, c.staticShape));
    EXPECT_EQ(bandwidth, c.bandwidth);
    EXPECT_EQ(shape, c.shape);
  }
  U32 bandwidth = 1, shape = 2;
  doGetBandwidthAndShapeRate(nullptr, bandwidth, shape, staticRates(98, 1367));
  EXPECT_EQ(bandwidth, 98u);
  EXPECT_EQ(shape, 1367u);
}

TEST(CoppRates, HardwareRatesFollowTheCrossedSentinels) {
  struct Case {
    const char* what;
    std::optional<U32> shapeAction, bandwidthAction;
    U32 hwRate, hwLimit, bandwidthIn, shapeIn;
    U32 bandwidth, shape;
  } cases[] = {
      {"rate within limit", std::nullopt, std::nullopt, 100, 200, 5, 40, 40, 40},
      {"rate at limit", std::nullopt, std::nullopt, 200, 200, 5, 40, 40, 40},
      {"no limit", std::nullopt, std::nullopt, 300, 0, 5, 40, 40, 40},
      {"no limit, zero rate", std::nullopt, std::nullopt, 0, 0, 5, 40, 40, 40},
      {"rate over limit adds", std::nullopt, std::nullopt, 300, 200, 5, 40, 45, 40},
      {"sum wraps", std::nullopt, std::nullopt, 300, 200, 0xFFFFFFF0, 0x20, 0x10, 0x20},
      {"hardware does not shape", std::nullopt, std::nullopt, 0xFFFFFFFF, 200, 5, 40, 10000002, 40},
      {"hardware does not shape, no limit", std::nullopt, std::nullopt, 0xFFFFFFFF, 0, 5, 40,
       10000002, 40},
      {"policy shape unlimited", 10000002, std::nullopt, 100, 200, 5, 40, 10000002, 10000002},
      {"policy shape unlimited over limit", 10000002, std::nullopt, 300, 200, 5, 40, 10000002, 40},
      {"policy bandwidth unlimited", std::nullopt, 10000002, 100, 200, 5, 40, 40, 10000002},
      {"input shape no shaping", std::nullopt, std::nullopt, 100, 200, 5, 0xFFFFFFFF, 0xFFFFFFFF,
       10000002},
      {"plain policy rates are not read", 700, 70, 100, 200, 5, 40, 40, 40},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    U32 bandwidth = c.bandwidthIn, shape = c.shapeIn;
    doGetHardwareBandwidthAndShapeRate(actionWith(c.shapeAction, c.bandwidthAction), c.hwRate,
                                       c.hwLimit, bandwidth, shape);
    EXPECT_EQ(bandwidth, c.bandwidth);
    EXPECT_EQ(shape, c.shape);
  }
}

}  // namespace
