// CoPP defaults: the static class of CPU system ports, the supported class
// types, and the policy rate conversions.
#include <gtest/gtest.h>

#include <climits>
#include <optional>
#include <string>
#include <vector>

#include "Mox/Trace.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornCommonCoppUtils.h"

using namespace Hardware::Vorn;
using VornTest::failedAssertion;

namespace {

constexpr long kBlank = -1;  // the class does not write this member

struct ExpectedClass {
  std::vector<U16> ports;
  const char* name;
  long bandwidth, shape, hwClassIndex, classType, spIndex, spBandwidth, spShape;
};

// The edges and the odd ones of the platform's table.
const ExpectedClass kExpected[] = {
    {{24}, "copp-system-igmp", 250, 2500, 17, 10, kBlank, kBlank, kBlank},
    {{26}, "copp-system-lacp", 1250, 2500, 24, 2, kBlank, kBlank, kBlank},
    {{48}, "copp-system-sflow", 250, 1000000, 5, 26, 0, 1000000, 1000},
    {{64}, "copp-system-drop", 0, 80, kBlank, 18, kBlank, kBlank, kBlank},
    {{2, 7}, "copp-system-default", 250, 2500, 1, 19, kBlank, kBlank, kBlank},
};

// Every member recognisable, so that members a class does not write show.
const CoppStaticConfig kCaller = {"caller", 9001, 9002, 9003, Qos::ClassMapCpStaticType(9004),
                                  9005,     9006, 9007, 9008};

U32 expectedMember(long expected, U32 callers) {
  return expected == kBlank ? callers : static_cast<U32>(expected);
}

class CoppDeathTest : public testing::Test {
 protected:
  void TearDown() override { SystemPhyPortId::specialCpuPortsIs(saved_); }
  const U64 saved_ = SystemPhyPortId::specialCpuPorts();
};

void expectClass(const ExpectedClass& e, const CoppStaticConfig& c, bool special) {
  EXPECT_EQ(c.className, e.name);
  EXPECT_EQ(c.bandwidth, e.bandwidth);
  EXPECT_EQ(c.shape, e.shape);
  EXPECT_EQ(c.hwClassIndex, expectedMember(e.hwClassIndex, kCaller.hwClassIndex));
  EXPECT_EQ(static_cast<U32>(c.classType), e.classType);
  const U32 index = expectedMember(e.spIndex, kCaller.specialPortIndex);
  EXPECT_EQ(c.specialPortIndex, index);
  EXPECT_EQ(c.specialPortBandwidth, expectedMember(e.spBandwidth, kCaller.specialPortBandwidth));
  EXPECT_EQ(c.specialPortShape, expectedMember(e.spShape, kCaller.specialPortShape));
  EXPECT_EQ(c.specialPortSlot, special ? index + 1 : kCaller.specialPortSlot);
}

void expectPort(const ExpectedClass& e, U16 port, bool special) {
  SCOPED_TRACE(testing::Message() << "port " << port << (special ? " special" : ""));
  CoppStaticConfig c = kCaller;
  ASSERT_TRUE(doGetAradCoppClassParameters(SystemPhyPortId(port), c));
  expectClass(e, c, special);
}

// A special trap port gets the slot after its index (the caller's where the
// class has none); the CPU TM ports never step.
CATALOGUE_TEST_F(CoppDeathTest, EveryPortGetsItsClassFieldByField, "doGetAradCoppClassParameters") {
  for (U64 special : {U64{0}, ~U64{0}}) {
    SystemPhyPortId::specialCpuPortsIs(special);
    for (const ExpectedClass& e : kExpected)
      for (U16 port : e.ports) expectPort(e, port, special && port > 7 && port < 64);
  }
  EXPECT_DEATH(
      {
        Mox::traceHandle("VornCommonCoppUtils").levelIs(0, true);
        CoppStaticConfig c;
        doGetAradCoppClassParameters(SystemPhyPortId(65), c);
      },
      "VornCommonCoppUtils\\[0\\] [^\n]* port is 65\n(.*\n)?.*"
      "Vorn/VornCommonCoppUtils.cpp:365: .*" +
          failedAssertion("false"));
}

// The Petra entry points take any port and number and write nothing.
CATALOGUE_TEST(Copp, PetraEntryPointsSupplyNothing, "doGetPetraGenericClassParameters",
               "doGetPetraSpecialSysPortParameters") {
  CoppStaticConfig c = kCaller;
  EXPECT_FALSE(doGetPetraGenericClassParameters(SystemPhyPortId(12), UINT_MAX, c));
  EXPECT_FALSE(doGetPetraSpecialSysPortParameters(SystemPhyPortId(12), c));
  expectClass({{}, "caller", 9001, 9002, kBlank, 9004, kBlank, kBlank, kBlank}, c, false);
}

CATALOGUE_TEST(CoppClassTypesDeathTest, SupportedTypesAndTheUnknown, "isClassSupported") {
  for (U32 t : {1u, 3u, 7u, 46u, 64u})
    EXPECT_TRUE(isClassSupported(Qos::ClassMapCpStaticType(t))) << t;
  EXPECT_DEATH(
      isClassSupported(Qos::ClassMapCpStaticType(4)),
      "^Failed\\(false\\) Unhandled class map type 4\n.*Vorn/VornCommonCoppUtils.cpp:502: .*" +
          failedAssertion("false"));
}

Qos::ClassAction::Ptr actionWith(std::optional<U32> shape, std::optional<U32> bandwidth) {
  Qos::ClassAction::Ptr a(new Qos::ClassAction());
  if (shape) a->policyActionIs(Qos::actionSetShape, *shape);
  if (bandwidth) a->policyActionIs(Qos::actionSetBandwidth, *bandwidth);
  return a;
}

// An action without its rate object is a broken model and ends the process.
CATALOGUE_TEST(CoppRatesDeathTest, ClassActionRateReadsOnlyThePresentActions,
               "doGetClassActionRate") {
  using Rates = std::pair<U32, U32>;  // bandwidth, shape
  U32 b = 1, s = 2;
  doGetClassActionRate(nullptr, b, s);
  doGetClassActionRate(actionWith({}, {}), b, s);
  EXPECT_EQ(Rates(b, s), Rates(1, 2));
  doGetClassActionRate(actionWith(500, {}), b, s);
  EXPECT_EQ(Rates(b, s), Rates(1, 500));
  doGetClassActionRate(actionWith({}, 300), b, s);
  EXPECT_EQ(Rates(b, s), Rates(300, 500));
  doGetClassActionRate(actionWith(UINT_MAX, 0), b, s);
  EXPECT_EQ(Rates(b, s), Rates(0, UINT_MAX));
  const std::string noRate = ": .*" + failedAssertion("pAction->rate()");
  Qos::ClassAction::Ptr noShape(new Qos::ClassAction());
  noShape->policyActionWithoutRateIs(Qos::actionSetShape);
  Qos::ClassAction::Ptr noBandwidth = actionWith(5, {});
  noBandwidth->policyActionWithoutRateIs(Qos::actionSetBandwidth);
  EXPECT_DEATH(doGetClassActionRate(noShape, b, s), "Vorn/VornCommonCoppUtils.cpp:387" + noRate);
  EXPECT_DEATH(doGetClassActionRate(noBandwidth, b, s),
               "Vorn/VornCommonCoppUtils.cpp:393" + noRate);
}

CATALOGUE_TEST(CoppRates, BandwidthAndShapeFallBackToTheClassAndMapSentinels,
               "doGetBandwidthAndShapeRate") {
  struct Case {
    const char* what;
    std::optional<U32> shapeAction, bandwidthAction;
    U32 staticBandwidth, staticShape;
    U32 bandwidth, shape;
  } cases[] = {
      {"no action", {}, {}, 250, 2500, 250, 2500},
      {"policy rates", 700, 70, 250, 2500, 70, 700},
      {"shape unlimited", kRateUnlimited, {}, 250, 2500, 250, kHwNoShaping},
      {"bandwidth unlimited", {}, kRateUnlimited, 250, 2500, 0, 2500},
      {"static shape unlimited", {}, {}, 250, kRateUnlimited, 250, kHwNoShaping},
      {"policy shape over static unlimited", 900, {}, 250, kRateUnlimited, 250, 900},
      {"static bandwidth unlimited stays", {}, {}, kRateUnlimited, 80, kRateUnlimited, 80},
  };
  for (const Case& c : cases) {
    CoppStaticConfig config{"", c.staticBandwidth, c.staticShape};
    U32 bandwidth = 1, shape = 2;
    doGetBandwidthAndShapeRate(actionWith(c.shapeAction, c.bandwidthAction), bandwidth, shape,
                               config);
    EXPECT_EQ(bandwidth, c.bandwidth) << c.what;
    EXPECT_EQ(shape, c.shape) << c.what;
  }
}

CATALOGUE_TEST(CoppRates, HardwareRatesFollowTheCrossedSentinels,
               "doGetHardwareBandwidthAndShapeRate") {
  constexpr U32 kU = kRateUnlimited;
  struct Case {
    const char* what;
    std::optional<U32> shapeAction, bandwidthAction;
    U32 hwRate, hwLimit, bandwidthIn, shapeIn;
    U32 bandwidth, shape;
  } cases[] = {
      {"rate at limit", {}, {}, 200, 200, 5, 40, 40, 40},
      {"no limit, zero rate", {}, {}, 0, 0, 5, UINT_MAX, UINT_MAX, kU},
      {"rate over limit adds, wrapping", {}, {}, 300, 200, 0xFFFFFFF0, 0x20, 0x10, 0x20},
      {"zero limit: none", {}, {}, 1, 0, 5, 6, 6, 6},
      {"hardware does not shape", {}, {}, UINT_MAX, 200, 5, 40, kU, 40},
      {"no rate, no shaping", {}, {}, UINT_MAX, UINT_MAX, 5, 6, kU, kU},
      {"policy shape unlimited", kU, {}, 100, 200, 5, 40, kU, kU},
      {"policy bandwidth unlimited", {}, kU, 100, 200, 5, 40, 40, kU},
      {"plain policy rates are not read", 700, 70, 100, 200, 5, 40, 40, 40},
  };
  for (const Case& c : cases) {
    U32 bandwidth = c.bandwidthIn, shape = c.shapeIn;
    doGetHardwareBandwidthAndShapeRate(actionWith(c.shapeAction, c.bandwidthAction), c.hwRate,
                                       c.hwLimit, bandwidth, shape);
    EXPECT_EQ(bandwidth, c.bandwidth) << c.what;
    EXPECT_EQ(shape, c.shape) << c.what;
  }
}

}  // namespace
