// Bad input to the two entities and the small helpers. Egress buffering:
// egressBufferingSmFactory, EgressBufferingSm::EgressBufferingSm,
// handleInitialized, fillFrontPanelPortThresholds, reservedMcPdFromSpeed,
// attrGet, attrSet, attrCall, moxNewFromArgs, getPortFlowControlToDiscardRatio,
// getQueueFlowControlToDiscardRatio. Shape-rate state: shapeRateSmStateFactory,
// ShapeRateSmState::ShapeRateSmState, attrGet, attrSet, attrCall,
// moxNewFromArgs. Helpers: routerMacMsbsAreEqual, maskAwayAradLsbOfMac,
// Vorn::setupPeloL3MiscRltrace.
// Attribute ids outside a type's table are "not an attribute"; wrong value
// types are "not allowed"; wrong constructor arguments throw; a null
// configuration means the defaults.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "Pelo/L3Rlog.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/EgressTestSupport.h"
#include "Vorn/FhrpAradCompatibilityUtils.h"
#include "Vorn/SubIntfShapeRateType.h"
#include "Vorn/VornPeloL3RltraceHelper.h"

using namespace Hardware::Vorn;
using VornTest::EgressSystem;
using VornTest::failedAssertion;
using VornTest::kP0;
using VornTest::kP1;

namespace {

constexpr Mox::AttrId kForeignIds[] = {0u, 1u, 257u, 268u, 0xFFFFu, 0xFFFFFFFFu};

// A null configuration is the defaults; a mode other than 5 generates
// nothing; a system without revisions cannot be bounded.
CATALOGUE_TEST(BadInputEgressDeathTest, ConstructorInputs, "egressBufferingSmFactory",
               "EgressBufferingSm::EgressBufferingSm", "EgressBufferingSm::handleInitialized") {
  EgressSystem defaults({fapRevMajor3});
  ASSERT_FALSE(defaults.config);
  EXPECT_TRUE(defaults.build()->initialized());
  EXPECT_EQ(defaults.status->version(), 1u);
  EXPECT_EQ(defaults.thresholds(kP0)->sp0MaxReservedThresholds().db, 1200);

  EgressSystem idle({fapRevMajor3}, static_cast<Redundancy::RedundancyMode>(UINT_MAX));
  EXPECT_TRUE(idle.build()->initialized());
  EXPECT_EQ(idle.status->version(), 0u);

  EgressSystem none{std::initializer_list<FapRevMajor>{}};
  EXPECT_DEATH(none.build(), failedAssertion("vornStatus->supportedFapRevMajors() > 0"));
  auto sm = defaults.build();
  EXPECT_DEATH(sm->handleInitialized(), failedAssertion("!initialized()"));
}

// Every speed ordinal and a far one: the table's rows, or the assertion.
CATALOGUE_TEST(BadInputEgressDeathTest, SpeedsOutsideTheTable,
               "EgressBufferingSm::reservedMcPdFromSpeed") {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  auto sm = sys.build();
  EXPECT_EQ(sm->reservedMcPdFromSpeed(Interface::speed100Mbps), 160u);
  EXPECT_EQ(sm->reservedMcPdFromSpeed(Interface::speed400Gbps), 3200u);
  for (U32 ordinal : {0u, 1u, 3u, 4u, 5u, 13u, UINT_MAX})
    EXPECT_DEATH(sm->reservedMcPdFromSpeed(static_cast<Interface::EthSpeed>(ordinal)),
                 VornTest::smAssertion(189, "false && \"Invalid Speed\""))
        << ordinal;
}

// The three arrays hold 11 entries, one per profile 5 to 15: nothing is
// written before or after them.
CATALOGUE_TEST(BadInputEgress, FrontPanelArraysAreWrittenWithinTheirEleven,
               "EgressBufferingSm::fillFrontPanelPortThresholds") {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  auto sm = sys.build();
  constexpr U32 kCanary = 0xDEADBEEF;
  for (EgressBufThresholdsProfile p : {kP0, kP1}) {
    U32 mc[13], uc[13], pd[13];
    for (U32* a : {mc, uc, pd}) std::fill(a, a + 13, kCanary);
    sm->fillFrontPanelPortThresholds(p, mc + 1, uc + 1, pd + 1);
    for (U32* a : {mc, uc, pd}) {
      EXPECT_EQ(a[0], kCanary);
      EXPECT_EQ(a[12], kCanary);
    }
  }
}

CATALOGUE_TEST(BadInputEgress, ForeignAttributesAndWrongValues, "EgressBufferingSm::attrGet",
               "EgressBufferingSm::attrSet", "EgressBufferingSm::attrCall",
               "EgressBufferingSm::moxNewFromArgs") {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  auto sm = sys.build();
  Mox::Value out;
  for (Mox::AttrId id : kForeignIds) {
    EXPECT_EQ(sm->attrGet(id, out), Mox::AttrResult::notAnAttribute) << id;
    EXPECT_EQ(sm->attrSet(id, true), Mox::AttrResult::notAnAttribute) << id;
    EXPECT_EQ(sm->attrCall(id, {}, out), Mox::AttrResult::notAnAttribute) << id;
  }
  EXPECT_EQ(sm->attrSet(EgressBufferingSm::initializedAttrId, U32(1)), Mox::AttrResult::notAllowed);
  EXPECT_EQ(sm->attrSet(EgressBufferingSm::sysStatusAttrId, true), Mox::AttrResult::notAllowed);
  const Mox::Value text[] = {Mox::String("40G")};
  EXPECT_EQ(sm->attrCall(EgressBufferingSm::reservedMcPdFromSpeedAttrId, text, out),
            Mox::AttrResult::notAllowed);
  const Mox::TypeRecord* type = Mox::typeLookup("Hardware::Vorn::EgressBufferingSm");
  ASSERT_NE(type, nullptr);
  const Mox::Value three[] = {sys.config, sys.status, sys.redundancy};
  const Mox::Value swapped[] = {sys.config, sys.redundancy, sys.status, sys.chips};
  EXPECT_THROW(EgressBufferingSm::moxNewFromArgs(*type, {}), Mox::NewEntityArgumentsException);
  EXPECT_THROW(EgressBufferingSm::moxNewFromArgs(*type, three), Mox::NewEntityArgumentsException);
  EXPECT_THROW(EgressBufferingSm::moxNewFromArgs(*type, swapped), Mox::NewEntityArgumentsException);
}

// Profiles outside the range 5 to 16 take the plain ratios. (16, "no
// profile", is left out of the queue ratio: it is what the type library
// answers for a large front-panel speed a threshold profile does not have,
// and then it takes that speed's ratio.)
CATALOGUE_TEST(BadInputEgress, RatiosOfProfilesOutsideTheRange, "getPortFlowControlToDiscardRatio",
               "getQueueFlowControlToDiscardRatio") {
  for (U32 prof : {0u, 4u, 16u, 17u, UINT_MAX})
    EXPECT_EQ(getPortFlowControlToDiscardRatio(EgqProfile(prof)), 0.5f) << prof;
  for (U32 prof : {0u, 4u, 17u, UINT_MAX})
    for (EgressBufThresholdsProfile p : {kP0, kP1})
      EXPECT_EQ(getQueueFlowControlToDiscardRatio(EgqProfile(prof), p), 0.34f) << prof;
}

CATALOGUE_TEST(BadInputShapeRate, NamesAttributesAndArguments, "shapeRateSmStateFactory",
               "ShapeRateSmState::ShapeRateSmState", "ShapeRateSmState::attrGet",
               "ShapeRateSmState::attrSet", "ShapeRateSmState::attrCall",
               "ShapeRateSmState::moxNewFromArgs") {
  const std::string longName(4000, 's');
  for (const std::string& name : {std::string(), longName}) {
    Mox::Ptr<ShapeRateSmState> state = shapeRateSmStateFactory(Mox::Name(name.c_str()));
    ASSERT_TRUE(state);
    EXPECT_EQ(state->name(), Mox::Name(name.c_str()));
    ShapeRateSmState direct{Mox::Name(name.c_str())};
    EXPECT_FALSE(direct.isShapeRateSmReady());
  }
  Mox::Ptr<ShapeRateSmState> state = shapeRateSmStateFactory(Mox::Name("s"));
  Mox::Value out;
  for (Mox::AttrId id : kForeignIds) {
    EXPECT_EQ(state->attrGet(id, out), Mox::AttrResult::notAnAttribute) << id;
    EXPECT_EQ(state->attrSet(id, true), Mox::AttrResult::notAnAttribute) << id;
    EXPECT_EQ(state->attrCall(id, {}, out), Mox::AttrResult::notAnAttribute) << id;
  }
  // Flags take a bool only.
  for (const Mox::Value& wrong : {Mox::Value(1), Mox::Value(Mox::String("true")), Mox::Value()})
    EXPECT_EQ(state->attrSet(ShapeRateSmState::isAnchorIntfSmReadyAttrId, wrong),
              Mox::AttrResult::notAllowed);
  EXPECT_FALSE(state->isAnchorIntfSmReady());
  const Mox::TypeRecord* type = Mox::typeLookup("Hardware::Vorn::ShapeRateSmState");
  ASSERT_NE(type, nullptr);
  const Mox::Value text[] = {Mox::String("generic")};
  const Mox::Value two[] = {Mox::Name("a"), Mox::Name("b")};
  EXPECT_THROW(ShapeRateSmState::moxNewFromArgs(*type, {}), Mox::NewEntityArgumentsException);
  EXPECT_THROW(ShapeRateSmState::moxNewFromArgs(*type, text), Mox::NewEntityArgumentsException);
  EXPECT_THROW(type->newObject(two), Mox::NewEntityArgumentsException);
}

CATALOGUE_TEST(BadInputHelpers, MacsAtTheirExtremes, "routerMacMsbsAreEqual",
               "maskAwayAradLsbOfMac") {
  using Wirl::EthAddr;
  const EthAddr zero, ones(0xff, 0xff, 0xff, 0xff, 0xff, 0xff);
  const struct {
    EthAddr a, b;
    bool equal;
  } rows[] = {
      {zero, zero, true},
      {zero, EthAddr(0, 0, 0, 0, 0, 7), true},
      {zero, EthAddr(0, 0, 0, 0, 0, 8), false},
      {ones, EthAddr(0xff, 0xff, 0xff, 0xff, 0xff, 0xf8), true},
      {ones, EthAddr(0x7f, 0xff, 0xff, 0xff, 0xff, 0xff), false},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(routerMacMsbsAreEqual(r.a, r.b), r.equal) << r.a.stringValue() << r.b.stringValue();
    EXPECT_EQ(routerMacMsbsAreEqual(r.b, r.a), r.equal);
  }
  EXPECT_EQ(maskAwayAradLsbOfMac(ones), EthAddr(0xff, 0xff, 0xff, 0xff, 0xff, 0xf8));
  EXPECT_EQ(maskAwayAradLsbOfMac(zero), zero);
}

// The name is text: empty, with format characters, long.
CATALOGUE_TEST(BadInputHelpers, TraceFileNames, "Vorn::setupPeloL3MiscRltrace") {
  const std::string longName(5000, 'x');
  for (const std::string& name : {std::string(), std::string("%s%n"), longName}) {
    Vorn::setupPeloL3MiscRltrace(Mox::String(name.c_str()));
    EXPECT_EQ(Pelo::peloL3MiscRlogHandle.fileName.stdString(), "PeloL3Misc-" + name + ".rlog");
  }
  Pelo::peloL3MiscRlogHandle = Pelo::RlogHandle();
}

}  // namespace
