// Router MACs as an Arad chip compares them: the top 45 bits.
#include <gtest/gtest.h>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/FhrpAradCompatibilityUtils.h"

using namespace Hardware::Vorn;

namespace {

Wirl::EthAddr mac(const char* text) {
  Wirl::EthAddr a;
  EXPECT_TRUE(Wirl::EthAddr::parse(text, a)) << text;
  return a;
}

CATALOGUE_TEST(FhrpArad, ComparesAndMasksAllButTheLowThreeBits, "routerMacMsbsAreEqual",
               "maskAwayAradLsbOfMac") {
  EXPECT_TRUE(routerMacMsbsAreEqual(mac("02:00:00:00:00:08"), mac("02:00:00:00:00:0f")));
  EXPECT_FALSE(routerMacMsbsAreEqual(mac("02:00:00:00:00:00"), mac("02:00:00:00:00:08")));
  EXPECT_FALSE(routerMacMsbsAreEqual(mac("ff:ff:ff:ff:ff:ff"), mac("7f:ff:ff:ff:ff:ff")));
  EXPECT_EQ(maskAwayAradLsbOfMac(mac("ff:ff:ff:ff:ff:ff")), mac("ff:ff:ff:ff:ff:f8"));
}

}  // namespace
