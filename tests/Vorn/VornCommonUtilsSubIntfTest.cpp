// Sub-interfaces and the correspondence of LAG and member sub-interfaces.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornCommonUtils.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using VornTest::failedAssertion;
using Wirl::IntfId;

namespace {

CATALOGUE_TEST(SubIntfPortsDeathTest, RangeFromTheStatus, "isSubIntf") {
  Status::Ptr status(new Status());
  status->subIntfSysPortMinIs(1000);
  status->numSubIntfSysPortsIs(24);
  Status::PtrConst s = status;
  const std::pair<U16, bool> rows[] = {{999, false}, {1000, true}, {1023, true}, {1024, false}};
  for (const auto& [port, want] : rows)
    EXPECT_EQ(isSubIntf(s, SystemPhyPortId(port)), want) << port;
  VornTest::TraceCapture trace({"VornCommonUtils"});
  isSubIntf(s, SystemPhyPortId(1010));
  EXPECT_THAT(trace.texts(),
              ElementsAre("isSubIntf subIntfSysPortMin:1000 subIntfSysPortMax:1023 sppid:1010"));
  status->numSubIntfSysPortsIs(0);  // an empty range: nothing is a sub-interface
  EXPECT_FALSE(isSubIntf(s, SystemPhyPortId(1000)));
  status->subIntfSysPortMinIs(2);
  status->numSubIntfSysPortsIs(UINT_MAX - 1);  // up to the last U32
  EXPECT_TRUE(isSubIntf(s, SystemPhyPortId()));
  status->subIntfSysPortMinIs(0);
  EXPECT_DEATH(isSubIntf(s, SystemPhyPortId(1000)), failedAssertion("minSppid > 0"));
}

CATALOGUE_TEST(SubIntfKindsDeathTest, EthernetAndLag, "isEthSubIntf", "isLagSubIntf") {
  const std::pair<const char*, bool> eth[] = {
      {"Ethernet3", false}, {"Ethernet3/1/2.10", true}, {"Port-Channel5.10", false}, {"", false}};
  for (const auto& [name, want] : eth) EXPECT_EQ(isEthSubIntf(IntfId(name)), want) << name;
  EXPECT_TRUE(isLagSubIntf(IntfId("Port-Channel5.10")));
  EXPECT_FALSE(isLagSubIntf(IntfId("Ethernet3.10")));
  EXPECT_DEATH(isLagSubIntf(IntfId("Port-Channel5")),
               failedAssertion("Wirl::SubIntfId::isSubIntfId( subIntfId )"));
}

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
    return obtainLagSubIntfIdFromMemberSubIntfId(config, subIntfs, ports, IntfId(member), mustExist,
                                                 useConfig);
  }
  IntfId memberOf(const char* lagSub, bool useConfig) {
    return obtainMemberSubIntfIdFromLagSubIntfId(config, ports, IntfId(lagSub), useConfig);
  }
  Lag::Input::Config::Ptr config{new Lag::Input::Config()};
  SubIntfPortStatusDir::Ptr ports{new SubIntfPortStatusDir()};
  Interface::SubIntfStatusDir::Ptr subIntfs{new Interface::SubIntfStatusDir()};
};

CATALOGUE_TEST_F(LagSubIntfs, LagSideFromThePortStatusOrConfiguration,
                 "obtainLagSubIntfIdFromMemberSubIntfId") {
  VornTest::TraceCapture trace({"VornCommonUtils"});
  const struct {
    const char* member;
    bool mustExist, useConfig;
    const char* lag;
  } rows[] = {
      {"Ethernet4.100", false, false, "Port-Channel5.100"},
      {"Ethernet4.101", false, false, ""},                  // other number
      {"Ethernet7.200", true, false, "Port-Channel6.200"},  // no check
      {"Ethernet3.101", false, true, "Port-Channel5.101"},
      {"Ethernet3.100", true, true, "Port-Channel5.100"},  // with mustExist, only those
      {"Ethernet3.101", true, true, ""},                   // that exist
      {"Ethernet9.100", false, true, ""},                  // a port of no LAG
      {"", true, true, ""},
  };
  for (const auto& r : rows)
    EXPECT_EQ(lagOf(r.member, r.mustExist, r.useConfig), IntfId(r.lag))
        << r.member << " mustExist " << r.mustExist << " useConfig " << r.useConfig;
  EXPECT_EQ(trace.texts().front(),
            "obtainLagSubIntfIdFromMemberSubIntfId memberSubIntfId:Ethernet4.100 mustExist:0 "
            "useConfig:0");
  EXPECT_EQ(obtainLagSubIntfIdFromMemberSubIntfId(config, subIntfs, nullptr,
                                                  IntfId("Ethernet4.100"), false, false),
            IntfId());
  EXPECT_EQ(obtainLagSubIntfIdFromMemberSubIntfId(nullptr, subIntfs, ports, IntfId("Ethernet3.100"),
                                                  false, true),
            IntfId());
}

CATALOGUE_TEST_F(LagSubIntfs, MemberSideFromTheConfigurationOrPortStatus,
                 "obtainMemberSubIntfIdFromLagSubIntfId") {
  EXPECT_EQ(memberOf("Port-Channel5.100", true), IntfId("Ethernet3.100"));
  EXPECT_EQ(memberOf("Port-Channel8.100", true), IntfId());
  EXPECT_EQ(memberOf("Port-Channel8", true), IntfId());
  EXPECT_THROW(memberOf("Port-Channel5", true), Wirl::InvalidIntfName);
  EXPECT_EQ(obtainMemberSubIntfIdFromLagSubIntfId(nullptr, ports, IntfId("Port-Channel5.1"), true),
            IntfId());
  {
    VornTest::TraceCapture trace({"VornCommonUtils"});
    EXPECT_EQ(memberOf("Port-Channel5.100", false), IntfId("Ethernet4.100"));
    EXPECT_EQ(memberOf("Port-Channel5.101", false), IntfId());
    EXPECT_THAT(trace.texts(),
                testing::Contains("obtainMemberSubIntfIdFromLagSubIntfId "
                                  "lagSubIntfId:Port-Channel5.101 memberSubIntfId:"));
  }
  config->memberDel(IntfId("Ethernet3"));
  EXPECT_EQ(memberOf("Port-Channel5.100", true), IntfId("Ethernet4.100"));
  EXPECT_DEATH(memberOf("Ethernet3.100", true),
               failedAssertion("Wirl::PortChannelIntfId::isPortChannelIntfId( intfId )"));
}

CATALOGUE_TEST_F(LagSubIntfs, MemberPresence, "isLagMemberPresent") {
  EXPECT_TRUE(isLagMemberPresent(config, IntfId("Port-Channel5.100"), IntfId("Ethernet3")));
  EXPECT_TRUE(isLagMemberPresent(config, IntfId("Port-Channel5"), IntfId("Ethernet4")));
  EXPECT_FALSE(isLagMemberPresent(config, IntfId("Port-Channel5.100"), IntfId("Ethernet7")));
  EXPECT_FALSE(isLagMemberPresent(config, IntfId("Port-Channel9.1"), IntfId("Ethernet3")));
  EXPECT_FALSE(isLagMemberPresent(config, IntfId("Port-Channel5.10"), IntfId()));
  EXPECT_FALSE(isLagMemberPresent(nullptr, IntfId("Port-Channel5.100"), IntfId("Ethernet3")));
  EXPECT_DEATH(isLagMemberPresent(config, IntfId("Ethernet3.100"), IntfId("Ethernet3")),
               failedAssertion("Wirl::PortChannelIntfId::isPortChannelIntfId( lagSubIntfId )"));
}

}  // namespace
