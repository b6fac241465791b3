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

// Only the low three bits of the last byte do not count, whichever side;
// masking clears exactly them.
CATALOGUE_TEST(FhrpArad, ComparesAndMasksAllButTheLowThreeBits, "routerMacMsbsAreEqual",
               "maskAwayAradLsbOfMac") {
  const struct {
    const char *a, *b;
    bool equal;
  } rows[] = {
      {"02:00:00:00:00:08", "02:00:00:00:00:0f", true},
      {"ff:ff:ff:ff:ff:ff", "ff:ff:ff:ff:ff:f8", true},
      {"02:00:00:00:00:00", "02:00:00:00:00:08", false},  // bit 3 counts
      {"02:00:00:00:00:08", "02:00:00:00:00:10", false},
      {"ff:ff:ff:ff:ff:ff", "7f:ff:ff:ff:ff:ff", false},
      {"02:00:00:00:00:08", "02:01:00:00:01:08", false},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(routerMacMsbsAreEqual(mac(r.a), mac(r.b)), r.equal) << r.a << " " << r.b;
    EXPECT_EQ(routerMacMsbsAreEqual(mac(r.b), mac(r.a)), r.equal) << r.b << " " << r.a;
  }
  EXPECT_EQ(maskAwayAradLsbOfMac(mac("ff:ff:ff:ff:ff:ff")), mac("ff:ff:ff:ff:ff:f8"));
  EXPECT_EQ(maskAwayAradLsbOfMac(mac("02:00:00:00:00:0f")), mac("02:00:00:00:00:08"));
}

}  // namespace
