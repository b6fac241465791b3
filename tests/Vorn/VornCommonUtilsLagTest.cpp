// LAG identifier encodings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/VornCommonUtils.h"

using namespace Hardware::Vorn;
using VornTest::assertionPattern;

namespace {

constexpr FapType kFamilies[] = {fapTypePetra, fapTypeArad, fapTypeJericho};

template <typename F>
void expectRangeText(F&& f, const char* text) {
  try {
    f();
    ADD_FAILURE() << "no range exception, expected " << text;
  } catch (const Mox::RangeException& e) {
    EXPECT_STREQ(e.what(), text);
  }
}

TEST(LagEncodings, SystemAggregatePortIds) {
  for (FapType type : kFamilies) {
    EXPECT_EQ(lagIdToSysAggrPortId(type, LagId(5)), 0x8005u);
    EXPECT_EQ(lagIdToSysAggrPortId(type, LagId(0)), 0x8000u);
    EXPECT_EQ(lagIdToSysAggrPortId(type, LagId()), 0x8400u);
    EXPECT_EQ(sysAggrPortIdToLagId(type, 0x8005), LagId(5));
    EXPECT_EQ(sysAggrPortIdToLagId(type, 5), LagId());       // not an aggregate
    EXPECT_EQ(sysAggrPortIdToLagId(type, 0x8400), LagId());  // 1024 itself is the null id
    EXPECT_EQ(sysAggrPortIdToLagId(type, 0x83FF), LagId(1023));
    expectRangeText([&] { sysAggrPortIdToLagId(type, 0x8401); },
                    "LagId::value < LagId::min or > LagId::null not allowed");
    expectRangeText([&] { sysAggrPortIdToLagId(type, 0x8800); },
                    "LagId::value < LagId::min or > LagId::null not allowed");
  }
}

TEST(LagEncodings, BitsOfEachMode) {
  struct Row {
    LagMode mode;
    U8 lagBits;
    U32 mask;
    U8 memberBits;
    U32 members;
  };
  const Row rows[] = {
      {lagMode0, 10, 0x3FF, 4, 16},  {lagMode1, 10, 0x3FF, 4, 16}, {lagMode2, 9, 0x1FF, 5, 32},
      {lagMode3, 8, 0xFF, 6, 64},    {lagMode4, 7, 0x7F, 7, 128},  {lagMode5, 6, 0x3F, 8, 256},
  };
  for (FapType type : kFamilies) {
    for (const Row& row : rows) {
      EXPECT_EQ(lagIdBitsForMode(type, row.mode), row.lagBits) << type << "/" << row.mode;
      EXPECT_EQ(lagIdMaskForMode(type, row.mode), row.mask) << type << "/" << row.mode;
      EXPECT_EQ(memberIdBitsForMode(type, row.mode), row.memberBits) << type << "/" << row.mode;
      EXPECT_EQ(maxMemberIdsForMode(type, row.mode), row.members) << type << "/" << row.mode;
    }
  }
}

TEST(LagEncodingsDeath, FamiliesAndModesOutsideTheTable) {
  const std::string lagBits = assertionPattern(
      "U8 Hardware::Vorn::lagIdBitsForMode(Hardware::Vorn::FapType, Hardware::Vorn::LagMode)",
      "bits");
  EXPECT_DEATH(lagIdBitsForMode(fapTypePetra, static_cast<LagMode>(6)), lagBits);
  EXPECT_DEATH(lagIdBitsForMode(static_cast<FapType>(4), lagMode0), lagBits);
  EXPECT_DEATH(lagIdBitsForMode(fapTypeUnknown_, lagMode0), lagBits);
  EXPECT_DEATH(lagIdMaskForMode(fapTypeArad, static_cast<LagMode>(6)), lagBits);
  EXPECT_DEATH(
      memberIdBitsForMode(fapTypeUnknown_, lagMode0),
      assertionPattern("U8 Hardware::Vorn::memberIdBitsForMode(Hardware::Vorn::FapType, "
                       "Hardware::Vorn::LagMode)",
                       "fapType != fapTypeUnknown_"));
  EXPECT_DEATH(maxMemberIdsForMode(fapTypeJericho, static_cast<LagMode>(9)), lagBits);
}

TEST(LagEncodingsDeath, UnsupportedFamilyHasNoAggregateMask) {
  const std::string mask = assertionPattern(
      "U32 Hardware::Vorn::sysAggrPortMask(Hardware::Vorn::FapType)", "false");
  EXPECT_DEATH(lagIdToSysAggrPortId(fapTypeUnknown_, LagId(1)), mask);
  EXPECT_DEATH(sysAggrPortIdToLagId(static_cast<FapType>(4), 5), mask);  // before the bit test
}

TEST(LagEncodings, DestinationsKeepTheLowLagIdBits) {
  DestinationId dest;
  dest.destinationIs(0x1234);
  EXPECT_EQ(lagDestIdToSysAggrPortId(fapTypeArad, lagMode3, dest), 0x8034u);
  EXPECT_EQ(lagDestIdToSysAggrPortId(fapTypeArad, lagMode0, dest), 0x8234u);
  EXPECT_EQ(lagDestIdToSysAggrPortId(fapTypeArad, lagMode5, dest), 0x8034u);
  dest.destinationIs(0xFFFF);
  EXPECT_EQ(lagDestIdToSysAggrPortId(fapTypeJericho, lagMode1, dest), 0x83FFu);
}

TEST(LagEncodings, LagChoiceToDestination) {
  LagDestinationId lag;
  lag.lagId = 7;
  lag.destination = 99;  // ignored for a LAG choice
  DestinationId d = lagToDestination(lag);
  EXPECT_EQ(d.type, destinationTypeLag);
  EXPECT_EQ(d.destination, 7u);
  EXPECT_FALSE(d.flag1);
  EXPECT_FALSE(d.flag2);

  lag.lagId = 0xFFFF;  // unset
  d = lagToDestination(lag);
  EXPECT_EQ(d.type, destinationTypeLag);
  EXPECT_EQ(d.destination, 0xFFFFu);
}

TEST(LagEncodings, PlainChoiceToDestination) {
  LagDestinationId plain;
  plain.isDestination = true;
  plain.lagId = 3;  // ignored for a plain choice
  plain.destination = 0x200000;
  DestinationId d = lagToDestination(plain);
  EXPECT_EQ(d.type, destinationTypeDirect);
  EXPECT_EQ(d.destination, 0x200000u);

  plain.destination = 0xFFFF;
  d = lagToDestination(plain);
  EXPECT_EQ(d.type, destinationTypeDirect);
  EXPECT_EQ(d.destination, 0xFFFFu);

  plain.destination = 0x200001;
  expectRangeText([&] { lagToDestination(plain); },
                  "DestinationId::destination < DestinationId::min or > DestinationId::destDrop "
                  "not allowed");
}

}  // namespace
