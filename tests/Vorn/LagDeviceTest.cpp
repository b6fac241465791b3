// The LAG agent's records as the library uses them: the table's config
// members, and LagDevice::operator= (defined by libvorn.so).
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/LagTestSupport.h"

using namespace Hardware::Vorn;
using VornTest::lagDevice;

namespace {

LagDevice sample() {
  // A name that this record alone holds: built from a temporary, not a literal.
  LagDevice lag = lagDevice(std::string("po12").c_str(), LagId(7), {{"et1", 0}, {"et2", 3}},
                            {"Ethernet1", "Ethernet2"});
  lag.sysAggrPortIdIs(0x8007);
  lag.lagModeIs(2);
  return lag;
}

// Assignment copies every field into an independent record, also from itself.
CATALOGUE_TEST(LagDevice, AssignmentCopiesEveryField, "LagDevice::operator=") {
  const LagDevice source = sample();
  LagDevice lag = lagDevice("po1", LagId(1), {{"et9", 9}}, {"Ethernet9"});
  lag = source;
  EXPECT_EQ(lag, source);
  lag.lagMemberConfigIs("Ethernet3", true);
  EXPECT_FALSE(source.lagMemberConfig("Ethernet3"));

  lag = sample();
  LagDevice* alias = &lag;
  lag = *alias;
  EXPECT_EQ(lag, source);
  {
    LagDevice sharer = lag;  // lag then holds the last reference but one to the name
    sharer.lagModeIs(4);
    lag = sharer;
  }
  EXPECT_EQ(lag.name(), "po12");
  EXPECT_EQ(lag.lagMode(), 4);
  lag = LagDevice{Mox::String(), LagId()};
  EXPECT_TRUE(lag.isEmpty());
}

// For a LAG that is not there, nothing is made.
TEST(VornDmaLags, MemberConfigIsAddsInPlace) {
  VornDmaLags::Ptr table = vornDmaLagsFactory("vornDmaLags");
  table->lagDeviceIs(lagDevice("po10", LagId(2), {{"et2", 1}}));
  EXPECT_TRUE(table->lagDeviceMemberConfigIs("po10", "Ethernet5", true));
  EXPECT_EQ(*table->lagDevice("po10"), lagDevice("po10", LagId(2), {{"et2", 1}}, {"Ethernet5"}));
  EXPECT_FALSE(table->lagDeviceMemberConfigIs("po11", "Ethernet5", true));
  EXPECT_EQ(table->lagDevice("po11"), nullptr);
}

}  // namespace
