// Router MACs as an Arad chip compares them: the top 45 bits.
#include <gtest/gtest.h>

#include "Vorn/FhrpAradCompatibilityUtils.h"

using namespace Hardware::Vorn;

namespace {

Wirl::EthAddr mac(const char* text) {
  Wirl::EthAddr a;
  EXPECT_TRUE(Wirl::EthAddr::parse(text, a)) << text;
  return a;
}

TEST(FhrpArad, LowThreeBitsOfTheLastByteDoNotCount) {
  EXPECT_TRUE(routerMacMsbsAreEqual(mac("02:00:00:00:00:08"), mac("02:00:00:00:00:0f")));
  EXPECT_TRUE(routerMacMsbsAreEqual(mac("02:00:00:00:00:0f"), mac("02:00:00:00:00:08")));
  EXPECT_TRUE(routerMacMsbsAreEqual(mac("00:1c:73:aa:bb:c8"), mac("00:1c:73:aa:bb:c8")));
  EXPECT_FALSE(routerMacMsbsAreEqual(mac("02:00:00:00:00:08"), mac("02:00:00:00:00:10")));
  // Bit 3 of the last byte counts.
  EXPECT_FALSE(routerMacMsbsAreEqual(mac("02:00:00:00:00:00"), mac("02:00:00:00:00:08")));
}

TEST(FhrpArad, EveryOtherByteCountsInFull) {
  const Wirl::EthAddr base = mac("02:00:00:00:00:08");
  for (unsigned i = 0; i < 5; ++i) {
    Wirl::EthAddr other = base;
    other.byteIs(i, base.byte(i) ^ 0x01);
    EXPECT_FALSE(routerMacMsbsAreEqual(base, other)) << "byte " << i;
    EXPECT_FALSE(routerMacMsbsAreEqual(other, base)) << "byte " << i;
  }
}

TEST(FhrpArad, MaskingClearsOnlyTheLowThreeBits) {
  EXPECT_EQ(maskAwayAradLsbOfMac(mac("02:00:00:00:00:0f")), mac("02:00:00:00:00:08"));
  EXPECT_EQ(maskAwayAradLsbOfMac(mac("ff:ff:ff:ff:ff:ff")), mac("ff:ff:ff:ff:ff:f8"));
  EXPECT_EQ(maskAwayAradLsbOfMac(mac("00:1c:73:aa:bb:c8")), mac("00:1c:73:aa:bb:c8"));
  // Masked addresses compare equal exactly when the originals do.
  EXPECT_TRUE(routerMacMsbsAreEqual(maskAwayAradLsbOfMac(mac("02:00:00:00:00:0f")),
                                    mac("02:00:00:00:00:0b")));
}

}  // namespace
