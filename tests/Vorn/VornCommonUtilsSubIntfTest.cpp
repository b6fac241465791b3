// Sub-interfaces and the correspondence of LAG and member sub-interfaces.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/VornCommonUtils.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using VornTest::assertionPattern;
using Wirl::IntfId;

namespace {

TEST(SubIntfPorts, RangeFromTheStatus) {
  Status::Ptr status(new Status());
  status->subIntfSysPortMinIs(1000);
  status->numSubIntfSysPortsIs(24);
  Status::PtrConst s = status;
  EXPECT_FALSE(isSubIntf(s, SystemPhyPortId(999)));
  EXPECT_TRUE(isSubIntf(s, SystemPhyPortId(1000)));
  EXPECT_TRUE(isSubIntf(s, SystemPhyPortId(1023)));
  EXPECT_FALSE(isSubIntf(s, SystemPhyPortId(1024)));
  EXPECT_FALSE(isSubIntf(s, SystemPhyPortId()));
  VornTest::TraceCapture trace({"VornCommonUtils"});
  isSubIntf(s, SystemPhyPortId(1010));
  EXPECT_THAT(trace.texts(),
              ElementsAre("isSubIntf subIntfSysPortMin:1000 subIntfSysPortMax:1023 sppid:1010"));
}

TEST(SubIntfPortsDeath, FirstPortMustBePositive) {
  Status::PtrConst status(new Status());
  EXPECT_DEATH(isSubIntf(status, SystemPhyPortId(1000)),
               assertionPattern("bool Hardware::Vorn::isSubIntf(const "
                                "Hardware::Vorn::Status::PtrConst&, "
                                "Hardware::Vorn::SystemPhyPortId)",
                                "minSppid > 0"));
}

TEST(SubIntfKinds, EthernetAndLag) {
  EXPECT_FALSE(isEthSubIntf(IntfId("Ethernet3")));
  EXPECT_TRUE(isEthSubIntf(IntfId("Ethernet3.10")));
  EXPECT_TRUE(isEthSubIntf(IntfId("Ethernet3/1/2.10")));
  EXPECT_FALSE(isEthSubIntf(IntfId("Port-Channel5.10")));
  EXPECT_FALSE(isEthSubIntf(IntfId("Vlan10")));
  EXPECT_FALSE(isEthSubIntf(IntfId()));
  EXPECT_TRUE(isLagSubIntf(IntfId("Port-Channel5.10")));
  EXPECT_FALSE(isLagSubIntf(IntfId("Ethernet3.10")));
}

TEST(SubIntfKindsDeath, LagTestNeedsASubInterface) {
  const std::string pattern = assertionPattern("bool Hardware::Vorn::isLagSubIntf(Wirl::IntfId)",
                                               "Wirl::SubIntfId::isSubIntfId( subIntfId )");
  EXPECT_DEATH(isLagSubIntf(IntfId("Ethernet3")), pattern);
  EXPECT_DEATH(isLagSubIntf(IntfId("Port-Channel5")), pattern);
}

// Port-Channel5 of Ethernet3 and Ethernet4 (configured), Port-Channel6 of
// Ethernet7; the port status says Ethernet4 carries Port-Channel5.100 and
// Ethernet7 carries Port-Channel6.200; Port-Channel5.100 exists.
class LagSubIntfs : public testing::Test {
 protected:
  LagSubIntfs() {
    config->memberIs(IntfId("Ethernet4"), IntfId("Port-Channel5"));
    config->memberIs(IntfId("Ethernet3"), IntfId("Port-Channel5"));
    config->memberIs(IntfId("Ethernet7"), IntfId("Port-Channel6"));
    ports->lagSubIntfToPhyIntfStatus().is(IntfId("Port-Channel5.100"), IntfId("Ethernet4"));
    ports->lagSubIntfToPhyIntfStatus().is(IntfId("Port-Channel6.200"), IntfId("Ethernet7"));
    subIntfs->intfStatusIs(IntfId("Port-Channel5.100"));
  }
  IntfId lagOf(const char* member, bool mustExist, bool useConfig) {
    return obtainLagSubIntfIdFromMemberSubIntfId(config, subIntfs, ports, IntfId(member),
                                                 mustExist, useConfig);
  }
  IntfId memberOf(const char* lagSub, bool useConfig) {
    return obtainMemberSubIntfIdFromLagSubIntfId(config, ports, IntfId(lagSub), useConfig);
  }
  Lag::Input::Config::Ptr config{new Lag::Input::Config()};
  SubIntfPortStatusDir::Ptr ports{new SubIntfPortStatusDir()};
  Interface::SubIntfStatusDir::Ptr subIntfs{new Interface::SubIntfStatusDir()};
};

TEST_F(LagSubIntfs, LagSideFromThePortStatus) {
  EXPECT_EQ(lagOf("Ethernet4.100", false, false), IntfId("Port-Channel5.100"));
  EXPECT_EQ(lagOf("Ethernet4.101", false, false), IntfId());  // other number
  EXPECT_EQ(lagOf("Ethernet3.100", false, false), IntfId());  // carries nothing
  EXPECT_EQ(lagOf("Ethernet7.200", true, false), IntfId("Port-Channel6.200"));  // no check
  EXPECT_EQ(obtainLagSubIntfIdFromMemberSubIntfId(config, subIntfs, nullptr,
                                                  IntfId("Ethernet4.100"), false, false),
            IntfId());
}

TEST_F(LagSubIntfs, LagSideFromTheConfiguration) {
  EXPECT_EQ(lagOf("Ethernet3.100", false, true), IntfId("Port-Channel5.100"));
  EXPECT_EQ(lagOf("Ethernet3.101", false, true), IntfId("Port-Channel5.101"));
  // With mustExist, only sub-interfaces that exist.
  EXPECT_EQ(lagOf("Ethernet3.100", true, true), IntfId("Port-Channel5.100"));
  EXPECT_EQ(lagOf("Ethernet3.101", true, true), IntfId());
  EXPECT_EQ(lagOf("Ethernet7.200", true, true), IntfId());
  // A port of no LAG.
  EXPECT_EQ(lagOf("Ethernet9.100", false, true), IntfId());
  EXPECT_EQ(obtainLagSubIntfIdFromMemberSubIntfId(nullptr, subIntfs, ports,
                                                  IntfId("Ethernet3.100"), false, true),
            IntfId());
}

TEST_F(LagSubIntfs, MemberSideFromTheConfiguration) {
  // The first member in the configuration's order: Ethernet3 before Ethernet4.
  EXPECT_EQ(memberOf("Port-Channel5.100", true), IntfId("Ethernet3.100"));
  EXPECT_EQ(memberOf("Port-Channel6.7", true), IntfId("Ethernet7.7"));
  EXPECT_EQ(memberOf("Port-Channel8.100", true), IntfId());
  config->memberDel(IntfId("Ethernet3"));
  EXPECT_EQ(memberOf("Port-Channel5.100", true), IntfId("Ethernet4.100"));
  EXPECT_EQ(obtainMemberSubIntfIdFromLagSubIntfId(nullptr, ports, IntfId("Port-Channel5.1"), true),
            IntfId());
}

TEST_F(LagSubIntfs, MemberSideFromThePortStatus) {
  VornTest::TraceCapture trace({"VornCommonUtils"});
  EXPECT_EQ(memberOf("Port-Channel5.100", false), IntfId("Ethernet4.100"));
  EXPECT_EQ(memberOf("Port-Channel5.101", false), IntfId());
  EXPECT_THAT(trace.texts(),
              ElementsAre("obtainMemberSubIntfIdFromLagSubIntfId lagSubIntfId:Port-Channel5.100 "
                          "memberSubIntfId:Ethernet4.100",
                          "obtainMemberSubIntfIdFromLagSubIntfId lagSubIntfId:Port-Channel5.101 "
                          "memberSubIntfId:"));
}

TEST_F(LagSubIntfs, BothWaysAgree) {
  for (const char* member : {"Ethernet3.100", "Ethernet7.5"}) {
    const IntfId lag = lagOf(member, false, true);
    EXPECT_EQ(memberOf(lag.stringValue().charPtr(), true), IntfId(member)) << member;
  }
  EXPECT_EQ(memberOf(lagOf("Ethernet4.100", false, false).stringValue().charPtr(), false),
            IntfId("Ethernet4.100"));
}

TEST_F(LagSubIntfs, MemberPresence) {
  EXPECT_TRUE(isLagMemberPresent(config, IntfId("Port-Channel5.100"), IntfId("Ethernet3")));
  EXPECT_TRUE(isLagMemberPresent(config, IntfId("Port-Channel5.100"), IntfId("Ethernet4")));
  EXPECT_TRUE(isLagMemberPresent(config, IntfId("Port-Channel5"), IntfId("Ethernet4")));
  EXPECT_FALSE(isLagMemberPresent(config, IntfId("Port-Channel5.100"), IntfId("Ethernet7")));
  EXPECT_FALSE(isLagMemberPresent(config, IntfId("Port-Channel9.1"), IntfId("Ethernet3")));
  EXPECT_FALSE(isLagMemberPresent(nullptr, IntfId("Port-Channel5.100"), IntfId("Ethernet3")));
}

TEST_F(LagSubIntfs, LagSideFunctionsNeedAPortChannel) {
  EXPECT_DEATH(memberOf("Ethernet3.100", true),
               assertionPattern("const Wirl::IntfId "
                                "Hardware::Vorn::obtainMemberSubIntfIdFromLagSubIntfId("
                                "Lag::Input::Config::PtrConst, "
                                "Hardware::Vorn::SubIntfPortStatusDir::PtrConst, Wirl::IntfId, "
                                "bool)",
                                "Wirl::PortChannelIntfId::isPortChannelIntfId( intfId )"));
  EXPECT_DEATH(isLagMemberPresent(config, IntfId("Ethernet3.100"), IntfId("Ethernet3")),
               assertionPattern("bool Hardware::Vorn::isLagMemberPresent("
                                "Lag::Input::Config::PtrConst, Wirl::IntfId, Wirl::IntfId)",
                                "Wirl::PortChannelIntfId::isPortChannelIntfId( lagSubIntfId )"));
}

}  // namespace
