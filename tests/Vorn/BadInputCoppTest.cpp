// Bad input to the CoPP defaults: doGetAradCoppClassParameters,
// doGetPetraGenericClassParameters, doGetPetraSpecialSysPortParameters,
// isClassSupported, doGetClassActionRate, doGetBandwidthAndShapeRate,
// doGetHardwareBandwidthAndShapeRate. A port or class type without a row
// ends the process after its diagnostic; a null class action is no failure;
// rates at their sentinels and at the ends of U32 follow the arithmetic.
#include <gtest/gtest.h>

#include <climits>
#include <optional>
#include <string>

#include "Mox/Trace.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornCommonCoppUtils.h"

using namespace Hardware::Vorn;

namespace {

// Ports at the edges of the table: the first and last rows, the gaps, the
// CPU TM ports (whose own numbers would match nothing), the largest id.
CATALOGUE_TEST(BadInputCoppDeathTest, PortsAtTheTablesEdges, "doGetAradCoppClassParameters") {
  const std::pair<U32, const char*> rows[] = {
      {2, "copp-system-default"}, {7, "copp-system-default"}, {12, "copp-system-vxlan-vtep-learn"},
      {53, "copp-system-rsvp"},   {64, "copp-system-drop"},
  };
  for (const auto& [port, name] : rows) {
    CoppStaticConfig c;
    EXPECT_TRUE(doGetAradCoppClassParameters(SystemPhyPortId(port), c));
    EXPECT_EQ(c.className, name) << port;
  }
  for (U32 port : {8u, 11u, 23u, 54u, 63u, 65u, 16384u}) {
    EXPECT_DEATH(
        {
          Mox::traceHandle("VornCommonCoppUtils").levelIs(0, true);
          CoppStaticConfig c;
          doGetAradCoppClassParameters(SystemPhyPortId(port), c);
        },
        "port is " + std::to_string(port) + "\n(.*\n)?.*Vorn/VornCommonCoppUtils.cpp:365: .*" +
            VornTest::failedAssertion("false"))
        << port;
  }
}

// The Petra entry points take any port and number and write nothing.
CATALOGUE_TEST(BadInputCopp, PetraEntryPointsIgnoreTheirInput, "doGetPetraGenericClassParameters",
               "doGetPetraSpecialSysPortParameters") {
  for (U32 port : {2u, 12u, 23u, 16384u}) {
    CoppStaticConfig c;
    c.bandwidth = 7;
    EXPECT_FALSE(doGetPetraGenericClassParameters(SystemPhyPortId(port), UINT_MAX, c));
    EXPECT_FALSE(doGetPetraSpecialSysPortParameters(SystemPhyPortId(port), c));
    EXPECT_EQ(c.bandwidth, 7u);
    EXPECT_EQ(c.className, "");
  }
}

CATALOGUE_TEST(BadInputCoppDeathTest, ClassTypesAtTheirEdges, "isClassSupported") {
  for (U32 t : {1u, 45u, 64u}) EXPECT_TRUE(isClassSupported(Qos::ClassMapCpStaticType(t))) << t;
  for (U32 t : {0u, 4u, 65u, UINT_MAX})
    EXPECT_DEATH(isClassSupported(Qos::ClassMapCpStaticType(t)),
                 "^Failed\\(false\\) Unhandled class map type " + std::to_string(t) +
                     "\n.*Vorn/VornCommonCoppUtils.cpp:502: .*" +
                     VornTest::failedAssertion("false"))
        << t;
}

Qos::ClassAction::Ptr actionWith(std::optional<U32> shape, std::optional<U32> bandwidth) {
  Qos::ClassAction::Ptr a(new Qos::ClassAction());
  if (shape) a->policyActionIs(Qos::actionSetShape, *shape);
  if (bandwidth) a->policyActionIs(Qos::actionSetBandwidth, *bandwidth);
  return a;
}

// A null action and an empty one read nothing; an action without its rate
// object is a broken model and ends the process.
CATALOGUE_TEST(BadInputCoppDeathTest, ClassActionsNullEmptyOrWithoutRate, "doGetClassActionRate") {
  for (const Qos::ClassAction::PtrConst& action :
       {Qos::ClassAction::PtrConst(), Qos::ClassAction::PtrConst(actionWith({}, {}))}) {
    Qos::ActionRateType b = 11, s = 12;
    doGetClassActionRate(action, b, s);
    EXPECT_EQ(b, 11u);
    EXPECT_EQ(s, 12u);
  }
  Qos::ActionRateType b = 0, s = 0;
  doGetClassActionRate(actionWith(UINT_MAX, 0), b, s);
  EXPECT_EQ(s, UINT_MAX);
  EXPECT_EQ(b, 0u);
  Qos::ClassAction::Ptr noRate(new Qos::ClassAction());
  noRate->policyActionWithoutRateIs(Qos::actionSetBandwidth);
  EXPECT_DEATH(
      doGetClassActionRate(noRate, b, s),
      "Vorn/VornCommonCoppUtils.cpp:393: .*" + VornTest::failedAssertion("pAction->rate()"));
}

// Rows of {action shape, action bandwidth, static shape, static bandwidth}
// and the outputs: the sentinels map to the hardware's values, everything
// else passes through, U32's ends included.
CATALOGUE_TEST(BadInputCopp, RatesAtTheirSentinelsAndEnds, "doGetBandwidthAndShapeRate") {
  const struct {
    std::optional<U32> shape, bandwidth;
    U32 staticShape, staticBandwidth;
    U32 wantBandwidth, wantShape;
  } rows[] = {
      {{}, {}, 2500, 250, 250, 2500},
      {{}, {}, kRateUnlimited, UINT_MAX, UINT_MAX, kHwNoShaping},
      {{}, {}, kRateNotSet, kRateNotSet, kRateNotSet, kRateNotSet},
      {kRateUnlimited, kRateUnlimited, 1, 1, 0, kHwNoShaping},
      {UINT_MAX, 0, 1, 1, 0, UINT_MAX},
      {kRateNotSet, kRateNotSet, 9, 8, 8, 9},  // the action says "not set"
  };
  for (const auto& r : rows) {
    CoppStaticConfig config;
    config.shape = r.staticShape;
    config.bandwidth = r.staticBandwidth;
    U32 b = 0, s = 0;
    doGetBandwidthAndShapeRate(actionWith(r.shape, r.bandwidth), b, s, config);
    EXPECT_EQ(b, r.wantBandwidth) << r.staticBandwidth;
    EXPECT_EQ(s, r.wantShape) << r.staticShape;
  }
  CoppStaticConfig config;
  config.shape = 3;
  config.bandwidth = 4;
  U32 b = 0, s = 0;
  doGetBandwidthAndShapeRate(nullptr, b, s, config);
  EXPECT_EQ(b, 4u);
  EXPECT_EQ(s, 3u);
}

CATALOGUE_TEST(BadInputCopp, HardwareRatesAtTheirEnds, "doGetHardwareBandwidthAndShapeRate") {
  const struct {
    U32 hwRate, hwLimit, bandwidth, shape;
    U32 wantBandwidth, wantShape;
  } rows[] = {
      {UINT_MAX, 0, 5, 6, kRateUnlimited, 6},  // no rate at all: shape kept
      {UINT_MAX, UINT_MAX, 5, 6, kRateUnlimited, kRateUnlimited},
      {0, 0, 5, UINT_MAX, UINT_MAX, kRateUnlimited},  // no shaping in
      {2, 1, UINT_MAX, 2, 1, 2},                      // the sum wraps
      {1, 0, 5, 6, 6, 6},                             // a zero limit: no limit
  };
  for (const auto& r : rows) {
    U32 b = r.bandwidth, s = r.shape;
    doGetHardwareBandwidthAndShapeRate(nullptr, r.hwRate, r.hwLimit, b, s);
    EXPECT_EQ(b, r.wantBandwidth) << r.hwRate << "/" << r.hwLimit;
    EXPECT_EQ(s, r.wantShape) << r.hwRate << "/" << r.hwLimit;
  }
  U32 b = 5, s = 6;
  doGetHardwareBandwidthAndShapeRate(actionWith(kRateUnlimited, kRateUnlimited), 1, 2, b, s);
  EXPECT_EQ(b, kRateUnlimited);
  EXPECT_EQ(s, kRateUnlimited);
}

}  // namespace
