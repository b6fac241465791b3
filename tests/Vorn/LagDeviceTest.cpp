// The LAG agent's records as the library uses them: the table's
// replace-whole, and LagDevice::operator= (defined by libvorn.so).
#include <gmock/gmock.h>
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

// Assignment copies every field into an independent record, also from
// itself, through an alias, from a table entry, from a record that shares
// its name's text, and from the empty and the largest records.
CATALOGUE_TEST(LagDevice, AssignmentCopiesEveryField, "LagDevice::operator=") {
  const LagDevice source = sample();
  LagDevice target = lagDevice("po1", LagId(1), {{"et9", 9}}, {"Ethernet9"});
  target = source;
  EXPECT_EQ(target, source);
  target.lagMemberConfigIs("Ethernet3", true);
  EXPECT_FALSE(source.lagMemberConfig("Ethernet3"));
  LagDevice moved;
  moved = sample();
  EXPECT_EQ(moved, source);

  LagDevice lag = sample();
  LagDevice* alias = &lag;
  lag = *alias;
  EXPECT_EQ(lag, source);
  VornDmaLags::Ptr table = vornDmaLagsFactory("vornDmaLags");
  table->lagDeviceIs(sample());
  lag = *table->lagDevice("po12");
  EXPECT_EQ(lag, source);
  {
    LagDevice sharer = lag;  // lag then holds the last reference but one to the name
    sharer.lagModeIs(4);
    lag = sharer;
  }
  EXPECT_EQ(lag.name(), "po12");
  EXPECT_EQ(lag.lagMode(), 4);

  const LagDevice empty{Mox::String(), LagId()};
  lag = empty;
  EXPECT_TRUE(lag.isEmpty());
  const LagDevice big(Mox::String(std::string(1000, 'p').c_str()), LagId(LagId::null()));
  lag = big;
  EXPECT_EQ(lag, big);
}

TEST(VornDmaLags, LagDeviceIsReplacesWholeAndIteratesByName) {
  VornDmaLags::Ptr table = vornDmaLagsFactory("vornDmaLags");
  table->lagDeviceIs(lagDevice("po3", LagId(1), {{"et1", 0}}, {"Ethernet1"}));
  table->lagDeviceIs(lagDevice("po10", LagId(2)));
  table->lagDeviceIs(lagDevice("po3", LagId(4), {{"et2", 1}}));
  ASSERT_EQ(table->lagDeviceSize(), 2u);
  EXPECT_EQ(*table->lagDevice("po3"), lagDevice("po3", LagId(4), {{"et2", 1}}));
  EXPECT_EQ(table->lagDevice("po4"), nullptr);
  std::vector<std::string> names;
  for (const auto& [name, lag] : table->lagDevices()) names.push_back(name.stdString());
  EXPECT_THAT(names, testing::ElementsAre("po10", "po3"));
  // A config member added in place is the same as copy, add, store back.
  EXPECT_TRUE(table->lagDeviceMemberConfigIs("po10", "Ethernet5", true));
  LagDevice copy = lagDevice("po10", LagId(2));
  copy.lagMemberConfigIs("Ethernet5", true);
  EXPECT_EQ(*table->lagDevice("po10"), copy);
  EXPECT_FALSE(table->lagDeviceMemberConfigIs("po11", "Ethernet5", true));
  EXPECT_EQ(table->lagDeviceSize(), 2u);
}

}  // namespace
