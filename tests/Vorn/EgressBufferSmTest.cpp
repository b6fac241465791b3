// The egress buffering state machine as an entity.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>
#include <vector>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/EgressTestSupport.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using VornTest::EgressSystem;
using VornTest::failedAssertion;
using VornTest::kP0;
using VornTest::kP1;
using VornTest::smAssertion;

namespace {

// Only in mode 5 (active) is anything published, with one version step.
CATALOGUE_TEST(EgressBufferingSmDeathTest, PublishesOnceUnderTheRedundancyGate,
               "egressBufferingSmFactory", "EgressBufferingSm::EgressBufferingSm",
               "EgressBufferingSm::handleInitialized") {
  for (U32 mode : {4u, 6u}) {
    EgressSystem sys({fapRevMajor3, fapRevMajor8}, static_cast<Redundancy::RedundancyMode>(mode));
    EXPECT_TRUE(sys.build()->initialized()) << mode;
    EXPECT_TRUE(sys.status->version() == 0 && sys.status->records().empty()) << mode;
  }
  EgressSystem sys({fapRevMajor3, fapRevMajor8});
  sys.status->versionInc(41);
  auto sm = sys.build();
  EXPECT_TRUE(sm->initialized());
  EXPECT_EQ(sys.status->version(), 42u);
  EXPECT_DEATH(sm->handleInitialized(), smAssertion(62, "!initialized()"));
  EgressSystem none{std::initializer_list<FapRevMajor>{}};
  EXPECT_DEATH(none.build(), failedAssertion("vornStatus->supportedFapRevMajors() > 0"));
}

// The front-panel arrays hold 11 entries, one per profile 5 to 15.
CATALOGUE_TEST(EgressBufferingSmDeathTest, ReservedMcPdAndFrontPanelArrays,
               "EgressBufferingSm::reservedMcPdFromSpeed",
               "EgressBufferingSm::fillFrontPanelPortThresholds") {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  auto sm = sys.build();
  EXPECT_DEATH(sm->reservedMcPdFromSpeed(static_cast<Interface::EthSpeed>(13)),
               smAssertion(189, "false && \"Invalid Speed\""));
  constexpr U32 kCanary = 0xDEADBEEF;
  for (EgressBufThresholdsProfile p : {kP0, kP1}) {
    U32 mc[13], uc[13], pd[13];
    for (U32* a : {mc, uc, pd}) std::fill(a, a + 13, kCanary);
    sm->fillFrontPanelPortThresholds(p, mc + 1, uc + 1, pd + 1);
    for (U32* a : {mc, uc, pd}) EXPECT_TRUE(a[0] == kCanary && a[12] == kCanary) << p;
  }
}

// 258 to 262 are read-only, 263 (initialized) a bool, 264 to 267 operations.
CATALOGUE_TEST(EgressBufferingSm, GenericAccessAnswersPerOperation, "EgressBufferingSm::attrGet",
               "EgressBufferingSm::attrSet", "EgressBufferingSm::attrCall") {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  auto sm = sys.build();
  Mox::Value out;
  for (Mox::AttrId id = 258; id <= 267; ++id) {
    using enum Mox::AttrResult;
    EXPECT_EQ(sm->attrGet(id, out), id <= 263 ? done : notAllowed) << id;
    EXPECT_EQ(sm->attrSet(id, true), id == 263 ? done : notAllowed) << id;
    if (id < 264) {  // the operations are called below
      EXPECT_EQ(sm->attrCall(id, {}, out), notAllowed) << id;
    }
  }
  for (Mox::AttrId other : {257u, 268u}) {
    EXPECT_EQ(sm->attrGet(other, out), Mox::AttrResult::notAnAttribute) << other;
    EXPECT_EQ(sm->attrSet(other, true), Mox::AttrResult::notAnAttribute) << other;
    EXPECT_EQ(sm->attrCall(other, {}, out), Mox::AttrResult::notAnAttribute) << other;
  }
  EXPECT_EQ(sm->attrSet(263, U32(1)), Mox::AttrResult::notAllowed);  // only a bool

  const Mox::Value speed[] = {Interface::speed40Gbps};
  EXPECT_EQ(sm->attrCall(267, speed, out), Mox::AttrResult::done);
  EXPECT_EQ(out.as<U32>(), 640u);
  const Mox::Value text[] = {Mox::String("40G")};
  EXPECT_EQ(sm->attrCall(267, text, out), Mox::AttrResult::notAllowed);
  EXPECT_EQ(sm->attrCall(267, {}, out), Mox::AttrResult::notAllowed);
  // The generators run on request, whatever the mode, and leave the version.
  EXPECT_EQ(sm->attrCall(265, {}, out), Mox::AttrResult::done);
  EXPECT_EQ(sys.thresholds(kP1)->egressProfiles().size(), 0u);
  EXPECT_EQ(sm->attrCall(266, speed, out), Mox::AttrResult::notAllowed);
  EXPECT_EQ(sm->attrCall(266, {}, out), Mox::AttrResult::done);
  EXPECT_EQ(sys.thresholds(kP1)->egressProfiles().size(), 11u);
  EXPECT_EQ(sys.status->version(), 0u);
  // handleInitialized runs again once initialized is cleared.
  sys.redundancy->modeIs(Redundancy::redundancyModeActive);
  EXPECT_EQ(sm->attrSet(263, false), Mox::AttrResult::done);
  EXPECT_EQ(sm->attrCall(264, {}, out), Mox::AttrResult::done);
  EXPECT_TRUE(sys.status->version() == 1 && sm->initialized());
}

CATALOGUE_TEST(EgressBufferingSm, BuiltFromGenericArguments, "EgressBufferingSm::moxNewFromArgs") {
  EgressSystem sys({fapRevMajor8});
  const Mox::TypeRecord* type = Mox::typeLookup("Hardware::Vorn::EgressBufferingSm");
  const Mox::Value args[] = {CliConfig::Ptr(), sys.status, sys.redundancy, sys.chips};
  auto sm = Mox::Value(type->newObject(args)).as<EgressBufferingSm::Ptr>();
  ASSERT_TRUE(sm && *sm);
  EXPECT_TRUE((*sm)->ebStatus() == sys.status && sys.status->version() == 1);
  const Mox::Value swapped[] = {sys.config, sys.redundancy, sys.status, sys.chips};
  const Mox::Value three[] = {CliConfig::Ptr(), sys.status, sys.redundancy};
  EXPECT_THROW(EgressBufferingSm::moxNewFromArgs(*type, swapped), Mox::NewEntityArgumentsException);
  EXPECT_THROW(EgressBufferingSm::moxNewFromArgs(*type, three), Mox::NewEntityArgumentsException);
}

TEST(EgressBufferingSm, TracesEntriesAndSummariesAtLevelEight) {
  VornTest::TraceCapture capture({"EgressBufferSm"});
  EgressSystem({fapRevMajor3, fapRevMajor8}).build();
  std::vector<std::string> level8, level3;
  for (const auto& line : capture.lines()) {
    EXPECT_TRUE(line.level == 8 || line.level == 3) << line.level;
    (line.level == 8 ? level8 : level3).push_back(line.text);
  }
  EXPECT_THAT(
      level8,
      ElementsAre("EgressBufferingSm::handleInitialized",
                  "EgressBufferingSm::generateCgmConfigurations",
                  "EgressBufferingSm:generateCgmConfigurations EgressBufThresholdsProfile:0 "
                  "totalUcBuffers:32768 totalUcDescriptors:32768 totalMcBuffers:32768 "
                  "totalMcDescriptors:65536",
                  "Reserved SP0 max values DB : 1200 PD : 6144",
                  "EgressBufferingSm:generateCgmConfigurations EgressBufThresholdsProfile:1 "
                  "totalUcBuffers:64000 totalUcDescriptors:64000 totalMcBuffers:64000 "
                  "totalMcDescriptors:329216",
                  "Reserved SP0 max values DB : 1200 PD : 12288",
                  "EgressBufferingSm::generateEgqConfigurations"));
  // Per threshold profile one opening line, then seven per EGQ profile.
  ASSERT_EQ(level3.size(), 2u * (1 + 11 * 7));
  EXPECT_EQ(level3[0], "Calculating per profile and per queue thresholds in EGQ");
  EXPECT_THAT(std::vector<std::string>(level3.begin() + 1, level3.begin() + 8),
              ElementsAre("Calculating per OTM port thresholds for profile5",
                          "Calculating per egress queue thresholds for profile5",
                          "prof 5 queue drop 910 port flow control 1365",
                          "prof 5 queue drop 910 port flow control 1365",
                          "Calculating per egress queue per DP shared thresholds for profile5",
                          "Setting egress profile for prof 5",
                          "Done setting the egress threshold profile for 5"));
  EXPECT_EQ(level3.back(), "Done setting the egress threshold profile for 15");
}

}  // namespace
