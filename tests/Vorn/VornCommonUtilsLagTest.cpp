// LAG identifier encodings.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornCommonUtils.h"

using namespace Hardware::Vorn;
using VornTest::expectRangeText;
using VornTest::failedAssertion;

namespace {

constexpr FapType kFamilies[] = {fapTypePetra, fapTypeArad, fapTypeJericho};
constexpr const char kLagRange[] = "LagId::value < LagId::min or > LagId::null not allowed";

CATALOGUE_TEST(LagEncodingsDeathTest, SystemAggregatePortIds, "lagIdToSysAggrPortId",
               "sysAggrPortIdToLagId") {
  for (FapType t : kFamilies) {
    EXPECT_EQ(lagIdToSysAggrPortId(t, LagId()), 0x8400u);
    EXPECT_EQ(sysAggrPortIdToLagId(t, 0x83FF), LagId(1023));
    EXPECT_EQ(sysAggrPortIdToLagId(t, 0x8400), LagId());  // 1024 itself is the null id
    for (U32 notAggregate : {0u, 0x7FFFu, 0x10000u})
      EXPECT_EQ(sysAggrPortIdToLagId(t, notAggregate), LagId()) << notAggregate;
    for (U32 tooBig : {0x8401u, UINT_MAX})
      expectRangeText([&] { sysAggrPortIdToLagId(t, tooBig); }, kLagRange);
  }
  EXPECT_DEATH(lagIdToSysAggrPortId(fapTypeUnknown_, LagId(1)), failedAssertion("false"));
  EXPECT_DEATH(sysAggrPortIdToLagId(static_cast<FapType>(4), 5), failedAssertion("false"));
}

CATALOGUE_TEST(LagEncodingsDeathTest, BitsOfEachMode, "lagIdBitsForMode", "memberIdBitsForMode",
               "maxMemberIdsForMode", "lagIdMaskForMode") {
  const U8 lagBits[] = {10, 10, 9, 8, 7, 6};
  for (FapType type : kFamilies) {
    for (U32 m = 0; m < 6; ++m) {
      const auto mode = static_cast<LagMode>(m);
      EXPECT_EQ(lagIdBitsForMode(type, mode), lagBits[m]) << type << "/" << m;
      EXPECT_EQ(lagIdMaskForMode(type, mode), (1u << lagBits[m]) - 1) << type << "/" << m;
      EXPECT_EQ(memberIdBitsForMode(type, mode), 14 - lagBits[m]) << type << "/" << m;
      EXPECT_EQ(maxMemberIdsForMode(type, mode), 1u << (14 - lagBits[m])) << type << "/" << m;
    }
  }
  EXPECT_DEATH(lagIdBitsForMode(fapTypePetra, static_cast<LagMode>(6)), failedAssertion("bits"));
  EXPECT_DEATH(memberIdBitsForMode(fapTypeUnknown_, lagMode0),
               failedAssertion("fapType != fapTypeUnknown_"));
}

// The destination's member bits are dropped, whatever they hold.
CATALOGUE_TEST(LagEncodings, DestinationsKeepTheLowLagIdBits, "lagDestIdToSysAggrPortId") {
  DestinationId dest;  // unset: 0xFFFF
  EXPECT_EQ(lagDestIdToSysAggrPortId(fapTypePetra, lagMode0, dest), 0x83FFu);
  dest.destinationIs(0x1234);
  EXPECT_EQ(lagDestIdToSysAggrPortId(fapTypeArad, lagMode3, dest), 0x8034u);
  dest.destination = UINT_MAX;  // as a caller's record may hold it
  EXPECT_EQ(lagDestIdToSysAggrPortId(fapTypeJericho, lagMode5, dest), 0x803Fu);
}

// A LAG choice takes the LAG id unchecked; a plain one its checked destination.
CATALOGUE_TEST(LagEncodings, ChoicesToDestinations, "lagToDestination") {
  LagDestinationId lag;
  lag.destination = 99;  // ignored for a LAG choice
  for (U16 v : {U16{7}, U16{0xFFFF}}) {
    lag.lagId = v;
    const DestinationId d = lagToDestination(lag);
    EXPECT_TRUE(d.destination == v && d.type == destinationTypeLag && !d.flag1 && !d.flag2) << v;
  }
  LagDestinationId plain;
  plain.isDestination = true;
  plain.lagId = 3;  // ignored for a plain choice
  for (U32 v : {0u, 0xFFFFu, 0x200000u}) {
    plain.destination = v;
    const DestinationId d = lagToDestination(plain);
    EXPECT_TRUE(d.destination == v && d.type == destinationTypeDirect) << v;
  }
  plain.destination = 0x200001;
  expectRangeText([&] { lagToDestination(plain); }, DestinationId::kRangeText);
}

}  // namespace
