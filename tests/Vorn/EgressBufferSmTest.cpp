// The egress buffering state machine as an entity: its one-time work under
// the redundancy gate, its parameters, generic access and construction, and
// its traces.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Mox/Boxed.h"
#include "Vorn/EgressTestSupport.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::HasSubstr;
using VornTest::EgressSystem;
using VornTest::smAssertion;

namespace {

TEST(EgressBufferingSm, OutsideModeFiveItPublishesNothingButIsInitialized) {
  for (U32 mode : {0u, 1u, 2u, 3u, 4u, 6u, 7u}) {
    SCOPED_TRACE(mode);
    EgressSystem sys({fapRevMajor3, fapRevMajor8}, static_cast<Redundancy::RedundancyMode>(mode));
    auto sm = sys.build();
    EXPECT_TRUE(sm->initialized());
    EXPECT_EQ(sys.status->version(), 0u);
    EXPECT_EQ(sys.status->records().size(), 0u);
  }
}

TEST(EgressBufferingSm, ModeFivePublishesBothProfilesWithOneVersionStep) {
  EgressSystem sys({fapRevMajor3, fapRevMajor8});
  sys.status->versionInc(41);
  auto sm = sys.build();
  EXPECT_TRUE(sm->initialized());
  EXPECT_EQ(sys.status->version(), 42u);
  for (auto p : {egressBufThresholdsProfile0, egressBufThresholdsProfile1}) {
    SCOPED_TRACE(p);
    EgressBufThresholds::Ptr thr = sys.thresholds(p);
    ASSERT_TRUE(thr);
    EXPECT_EQ(thr->egressProfiles().size(), 11u);
    EXPECT_EQ(thr->egressProfiles().begin()->first, EgqProfile(5));
    EXPECT_EQ(thr->sp0McPerTcThresholds().size(), 8u);
  }
}

TEST(EgressBufferingSm, WithoutConfigurationTheDefaultsApply) {
  EgressSystem sys({fapRevMajor3, fapRevMajor8});
  auto sm = sys.build();
  const EgressBufferParameters params = sm->ebParams();
  EXPECT_EQ(params.reservedMcBuffersPerTc, 150);
  EXPECT_EQ(params.reservedMcPdPerSpeedUnit, 160);
  EXPECT_EQ(params.mcPortsFull10g, 4);
  EXPECT_EQ(params.mcPortsFull25g, 4);
  EXPECT_EQ(params.mcPortsFull40g, 2);
  EXPECT_EQ(params.mcPortsFull50g, 2);
  EXPECT_EQ(params.mcPortsFull100g, 1);
  EXPECT_EQ(params.mcPortsFull200g, 1);
  EXPECT_EQ(params.mcPortsFull400g, 1);
  EXPECT_EQ(params.reservedMcPerPort, 150);
  EXPECT_EQ(params.maxQueuesFullPerPortMc, 3u);
  EXPECT_EQ(params.reservedMcPerQueue, 50);

  for (auto p : {egressBufThresholdsProfile0, egressBufThresholdsProfile1}) {
    SCOPED_TRACE(p);
    EgressBufThresholds::Ptr thr = sys.thresholds(p);
    EXPECT_EQ(thr->sp0MaxReservedThresholds().db, 1200);
    ASSERT_EQ(thr->sp0McReservedBuffersPerTc().size(), 8u);
    for (const auto& [tc, buffers] : thr->sp0McReservedBuffersPerTc()) EXPECT_EQ(buffers, 150u);
    EXPECT_EQ(thr->maxQueuesFullPerPortMcApplied(), 3);
    // The 100G profile reserves 10 units of 160 descriptors per queue.
    EXPECT_EQ(sys.egq(p, EgqProfile::frontPanel100g(p).value()).queueMulticastReservedDescriptor(),
              1600u);
  }
}

TEST(EgressBufferingSm, AConfigurationReplacesTheDefaults) {
  EgressSystem sys({fapRevMajor3});
  EgressBufferParameters params;
  params.reservedMcBuffersPerTc = 100;
  params.reservedMcPdPerSpeedUnit = 10;
  params.maxQueuesFullPerPortMc = 0x105;  // 261 queues; the low byte is published
  sys.config = CliConfig::Ptr(new CliConfig());
  sys.config->egressBufferParametersIs(params);
  auto sm = sys.build();
  EXPECT_EQ(sm->ebParams(), params);
  EXPECT_EQ(sm->reservedMcPdFromSpeed(Interface::speed100Gbps), 100u);
  EgressBufThresholds::Ptr thr = sys.thresholds(egressBufThresholdsProfile0);
  EXPECT_EQ(thr->sp0MaxReservedThresholds().db, 800);
  EXPECT_EQ(*thr->sp0McReservedBuffersPerTc().find(TrafficClassId(4)), 100u);
  EXPECT_EQ(thr->maxQueuesFullPerPortMcApplied(), 5);
  const EgqThresholds t = sys.egq(egressBufThresholdsProfile0, 13);
  EXPECT_EQ(t.queueMulticastReservedDescriptor(), 100u);
  EXPECT_EQ(t.queueMulticastDpBuffer(DropPrecedence(3)),
            VornTest::singleScaled((t.portMulticastBuffer() - 50) / 0x105, 0.2f));
}

TEST(EgressBufferingSm, HoldsItsObjectsAndReleasesThemWithTheLastReference) {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  sys.config = CliConfig::Ptr(new CliConfig());
  const int before = sys.status->references();
  const long live = EgressBufferingSm::moxAllocTrackTypeInfo_.live;
  auto sm = sys.build();
  EXPECT_EQ(sm->sysCliConfig(), Mox::Ptr<CliConfig const>(sys.config));
  EXPECT_EQ(sm->ebStatus(), sys.status);
  EXPECT_EQ(sm->redundancyStatus(), Mox::Ptr<Redundancy::RedundancyStatus const>(sys.redundancy));
  EXPECT_EQ(sm->sysStatus(), Mox::Ptr<Status const>(sys.chips));
  EXPECT_EQ(sys.status->references(), before + 1);
  EXPECT_EQ(EgressBufferingSm::moxAllocTrackTypeInfo_.live, live + 1);
  sm = nullptr;
  EXPECT_EQ(sys.status->references(), before);
  EXPECT_EQ(EgressBufferingSm::moxAllocTrackTypeInfo_.live, live);
}

TEST(EgressBufferingSm, FrameworkOperations) {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  auto sm = sys.build();
  ASSERT_NE(sm->fwkType(), nullptr);
  EXPECT_STREQ(sm->fwkType()->name(), "Hardware::Vorn::EgressBufferingSm");
  EXPECT_EQ(sm->moxFwkActivity(), nullptr);
  sm->moxDoZombieReactors(true);
  EXPECT_TRUE(sm->moxMarkedForDeletion());
  sm->moxDoZombieReactors(false);
  EXPECT_FALSE(sm->moxMarkedForDeletion());
  sm->hasNotificationActiveIs(true);
  EXPECT_TRUE(sm->hasNotificationActive());
}

// The attribute table, in its order.
struct Attr {
  const char* name;
  Mox::AttrId id;
  U8 ops;
};
const Attr kAttrs[] = {
    {"sysCliConfig", 258, Mox::attrGet_},
    {"ebParams", 259, Mox::attrGet_},
    {"ebStatus", 260, Mox::attrGet_},
    {"redundancyStatus", 261, Mox::attrGet_},
    {"sysStatus", 262, Mox::attrGet_},
    {"initialized", 263, Mox::attrGet_ | Mox::attrSet_},
    {"handleInitialized", 264, Mox::attrCall_},
    {"generateCgmConfigurations", 265, Mox::attrCall_},
    {"generateEgqConfigurations", 266, Mox::attrCall_},
    {"reservedMcPdFromSpeed", 267, Mox::attrCall_},
};

TEST(EgressBufferingSm, AttributeTableInOrder) {
  const Mox::TypeRecord* type = Mox::typeLookup("Hardware::Vorn::EgressBufferingSm");
  ASSERT_NE(type, nullptr);
  ASSERT_EQ(type->attrs().size(), std::size(kAttrs));
  for (std::size_t i = 0; i < std::size(kAttrs); ++i) {
    SCOPED_TRACE(kAttrs[i].name);
    EXPECT_STREQ(type->attrs()[i].name, kAttrs[i].name);
    EXPECT_EQ(type->attrs()[i].id, kAttrs[i].id);
    EXPECT_EQ(type->attrs()[i].ops, kAttrs[i].ops);
  }
}

TEST(EgressBufferingSm, GenericAccessAnswersPerOperation) {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  auto sm = sys.build();
  Mox::Value out;
  EXPECT_EQ(sm->attrGet(258, out), Mox::AttrResult::done);
  EXPECT_EQ(out.as<Mox::Ptr<CliConfig const>>(), Mox::Ptr<CliConfig const>());
  EXPECT_EQ(sm->attrGet(259, out), Mox::AttrResult::done);
  auto params = out.as<Mox::Ptr<Mox::Boxed<EgressBufferParameters> const>>();
  ASSERT_TRUE(params && *params);
  EXPECT_EQ((*params)->value, EgressBufferParameters());
  EXPECT_EQ(sm->attrGet(260, out), Mox::AttrResult::done);
  EXPECT_EQ(out.as<Mox::Ptr<EgressBufferStatus>>(), sys.status);
  EXPECT_EQ(sm->attrGet(261, out), Mox::AttrResult::done);
  EXPECT_EQ(out.as<Mox::Ptr<Redundancy::RedundancyStatus const>>(),
            Mox::Ptr<Redundancy::RedundancyStatus const>(sys.redundancy));
  EXPECT_EQ(sm->attrGet(262, out), Mox::AttrResult::done);
  EXPECT_EQ(out.as<Mox::Ptr<Status const>>(), Mox::Ptr<Status const>(sys.chips));
  EXPECT_EQ(sm->attrGet(263, out), Mox::AttrResult::done);
  EXPECT_EQ(out.as<bool>(), true);

  EXPECT_EQ(sm->attrSet(263, false), Mox::AttrResult::done);
  EXPECT_FALSE(sm->initialized());
  EXPECT_EQ(sm->attrSet(263, 1), Mox::AttrResult::notAllowed);  // only a bool
  EXPECT_FALSE(sm->initialized());

  for (const Attr& a : kAttrs) {
    SCOPED_TRACE(a.name);
    if (!(a.ops & Mox::attrGet_)) {
      EXPECT_EQ(sm->attrGet(a.id, out), Mox::AttrResult::notAllowed);
    }
    if (!(a.ops & Mox::attrSet_)) {
      EXPECT_EQ(sm->attrSet(a.id, true), Mox::AttrResult::notAllowed);
    }
    if (!(a.ops & Mox::attrCall_)) {
      EXPECT_EQ(sm->attrCall(a.id, {}, out), Mox::AttrResult::notAllowed);
    }
  }
  for (Mox::AttrId other : {0u, 257u, 268u, 0xFFFFFFFFu}) {
    EXPECT_EQ(sm->attrGet(other, out), Mox::AttrResult::notAnAttribute) << other;
    EXPECT_EQ(sm->attrSet(other, true), Mox::AttrResult::notAnAttribute) << other;
    EXPECT_EQ(sm->attrCall(other, {}, out), Mox::AttrResult::notAnAttribute) << other;
  }
}

TEST(EgressBufferingSm, GenericCallsRunTheOperations) {
  EgressSystem sys({fapRevMajor3}, Redundancy::redundancyModeStandby);
  auto sm = sys.build();
  Mox::Value out;
  const Mox::Value speed[] = {Interface::speed40Gbps};
  EXPECT_EQ(sm->attrCall(267, speed, out), Mox::AttrResult::done);
  EXPECT_EQ(out.as<U32>(), 640u);
  const Mox::Value twoSpeeds[] = {Interface::speed40Gbps, Interface::speed40Gbps};
  EXPECT_EQ(sm->attrCall(267, twoSpeeds, out), Mox::AttrResult::notAllowed);
  const Mox::Value text[] = {"40G"};
  EXPECT_EQ(sm->attrCall(267, text, out), Mox::AttrResult::notAllowed);
  EXPECT_EQ(sm->attrCall(267, {}, out), Mox::AttrResult::notAllowed);

  // The generators run on request, whatever the mode; they leave the version
  // to handleInitialized.
  EXPECT_EQ(sm->attrCall(265, {}, out), Mox::AttrResult::done);
  ASSERT_TRUE(sys.thresholds(egressBufThresholdsProfile1));
  EXPECT_EQ(sys.thresholds(egressBufThresholdsProfile1)->egressProfiles().size(), 0u);
  EXPECT_EQ(sm->attrCall(266, speed, out), Mox::AttrResult::notAllowed);
  EXPECT_EQ(sm->attrCall(266, {}, out), Mox::AttrResult::done);
  EXPECT_EQ(sys.thresholds(egressBufThresholdsProfile1)->egressProfiles().size(), 11u);
  EXPECT_EQ(sys.status->version(), 0u);

  // handleInitialized runs again once initialized is cleared.
  sys.redundancy->modeIs(Redundancy::redundancyModeActive);
  EXPECT_EQ(sm->attrSet(263, false), Mox::AttrResult::done);
  EXPECT_EQ(sm->attrCall(264, {}, out), Mox::AttrResult::done);
  EXPECT_EQ(sys.status->version(), 1u);
  EXPECT_TRUE(sm->initialized());
}

TEST(EgressBufferingSm, BuiltFromGenericArguments) {
  EgressSystem sys({fapRevMajor8});
  const Mox::TypeRecord* type = Mox::typeLookup("Hardware::Vorn::EgressBufferingSm");
  ASSERT_NE(type, nullptr);
  std::vector<std::string> argTypes;
  for (const Mox::ArgInfo& a : type->ctorArgs()) argTypes.push_back(a.typeName);
  EXPECT_THAT(argTypes,
              ElementsAre("Hardware::Vorn::CliConfig", "Hardware::Vorn::EgressBufferStatus",
                          "Redundancy::RedundancyStatus", "Hardware::Vorn::Status"));

  const long allocated = EgressBufferingSm::moxAllocTrackTypeInfo_.allocated;
  const Mox::Value args[] = {CliConfig::Ptr(), sys.status, sys.redundancy, sys.chips};
  Mox::Ptr<Mox::PtrInterface> object = Mox::newObject("Hardware::Vorn::EgressBufferingSm", args);
  auto sm = Mox::Value(object).as<EgressBufferingSm::Ptr>();
  ASSERT_TRUE(sm && *sm);
  EXPECT_TRUE((*sm)->initialized());
  EXPECT_EQ((*sm)->ebStatus(), sys.status);
  EXPECT_EQ(sys.status->version(), 1u);
  EXPECT_EQ(EgressBufferingSm::moxAllocTrackTypeInfo_.allocated, allocated + 1);

  // Each argument must be of its type: a status where the configuration goes
  // is refused, as is a missing argument.
  const Mox::Value swapped[] = {sys.chips, sys.status, sys.redundancy, sys.chips};
  EXPECT_THROW(type->newObject(swapped), Mox::NewEntityArgumentsException);
  const Mox::Value three[] = {CliConfig::Ptr(), sys.status, sys.redundancy};
  EXPECT_THROW(type->newObject(three), Mox::NewEntityArgumentsException);
  EXPECT_EQ(sys.status->version(), 1u);
}

TEST(EgressBufferingSm, TracesEntriesAndSummariesAtLevelEight) {
  EgressSystem sys({fapRevMajor3, fapRevMajor8});
  VornTest::TraceCapture capture({"EgressBufferSm"});
  sys.build();
  std::vector<std::string> level8;
  std::vector<std::string> level3;
  for (const auto& line : capture.lines()) {
    EXPECT_EQ(line.handle, "EgressBufferSm");
    (line.level == 8 ? level8 : level3).push_back(line.text);
    EXPECT_TRUE(line.level == 8 || line.level == 3) << line.level;
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
  // Per threshold profile: one opening line, then seven lines per EGQ profile.
  // Profile 5 shares the 10G port count (12): 32768 / 12 = 2730 buffers.
  ASSERT_EQ(level3.size(), 2u * (1 + 11 * 7));
  EXPECT_EQ(level3[0], "Calculating per profile and per queue thresholds in EGQ");
  EXPECT_THAT(std::vector<std::string>(level3.begin() + 1, level3.begin() + 10),
              ElementsAre("Calculating per OTM port thresholds for profile5",
                          "Calculating per egress queue thresholds for profile5",
                          "prof 5 queue drop 910 port flow control 1365",
                          "prof 5 queue drop 910 port flow control 1365",
                          "Calculating per egress queue per DP shared thresholds for profile5",
                          "Setting egress profile for prof 5",
                          "Done setting the egress threshold profile for 5",
                          "Calculating per OTM port thresholds for profile6",
                          "Calculating per egress queue thresholds for profile6"));
  EXPECT_THAT(level3.back(), HasSubstr("Done setting the egress threshold profile for 15"));
}

TEST(EgressBufferingSm, TracesNothingWhenItsLevelsAreOff) {
  EgressSystem sys({fapRevMajor3});
  VornTest::TraceCapture capture({});
  sys.build();
  for (const auto& line : capture.lines()) EXPECT_NE(line.handle, "EgressBufferSm");
}

TEST(EgressBufferingSmDeath, ASecondHandleInitializedAborts) {
  EgressSystem sys({fapRevMajor3});
  auto sm = sys.build();
  Mox::Value out;
  EXPECT_DEATH(sm->attrCall(EgressBufferingSm::handleInitializedAttrId, {}, out),
               smAssertion(62, "!initialized()"));
  EXPECT_DEATH(sm->handleInitialized(),
               ": void Hardware::Vorn::EgressBufferingSm::handleInitialized\\(\\): Assertion");
  EXPECT_EQ(sys.status->version(), 1u);
}

}  // namespace
