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

// Only the low three bits of the last byte do not count, whichever side.
CATALOGUE_TEST(FhrpArad, ComparesAndMasksAllButTheLowThreeBits, "routerMacMsbsAreEqual",
               "maskAwayAradLsbOfMac") {
  const struct {
    const char *a, *b;
    bool equal;
  } rows[] = {
      {"02:00:00:00:00:08", "02:00:00:00:00:0f", true},
      {"00:00:00:00:00:00", "00:00:00:00:00:07", true},
      {"00:1c:73:aa:bb:c8", "00:1c:73:aa:bb:c8", true},
      {"ff:ff:ff:ff:ff:ff", "ff:ff:ff:ff:ff:f8", true},
      {"02:00:00:00:00:00", "02:00:00:00:00:08", false},  // bit 3 counts
      {"02:00:00:00:00:08", "02:00:00:00:00:10", false},
      {"ff:ff:ff:ff:ff:ff", "7f:ff:ff:ff:ff:ff", false},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(routerMacMsbsAreEqual(mac(r.a), mac(r.b)), r.equal) << r.a << " " << r.b;
    EXPECT_EQ(routerMacMsbsAreEqual(mac(r.b), mac(r.a)), r.equal) << r.b << " " << r.a;
    // Masked addresses compare equal exactly when the originals do.
    EXPECT_EQ(maskAwayAradLsbOfMac(mac(r.a)) == maskAwayAradLsbOfMac(mac(r.b)), r.equal) << r.a;
  }
  const Wirl::EthAddr base = mac("02:00:00:00:00:08");
  for (unsigned i = 0; i < 5; ++i) {
    Wirl::EthAddr other = base;
    other.byteIs(i, base.byte(i) ^ 0x01);
    EXPECT_FALSE(routerMacMsbsAreEqual(base, other)) << "byte " << i;
  }
  EXPECT_EQ(maskAwayAradLsbOfMac(mac("02:00:00:00:00:0f")), mac("02:00:00:00:00:08"));
  EXPECT_EQ(maskAwayAradLsbOfMac(mac("ff:ff:ff:ff:ff:ff")), mac("ff:ff:ff:ff:ff:f8"));
  EXPECT_EQ(maskAwayAradLsbOfMac(mac("00:00:00:00:00:00")), mac("00:00:00:00:00:00"));
}

}  // namespace
