// The default PTP clock quality, as its bytes go on the wire.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "Vorn/VornPtpUtils.h"

using namespace Hardware::Vorn;

namespace {

TEST(PtpClockQuality, IsClass248AccuracyUnknownLargestVariance) {
  const PtpClockQuality q = getPtpClockQuality();
  EXPECT_EQ(q.clockClass, 248);
  std::array<unsigned char, 4> wire;
  std::memcpy(wire.data(), &q, sizeof q);
  EXPECT_EQ(wire, (std::array<unsigned char, 4>{0xF8, 0x30, 0xFF, 0xFF}));
}

}  // namespace
