// LAG identifier encodings: LAG ids, system aggregate port ids, LAG
// destinations and the per-mode split of the 14-bit LAG field.
#include <iterator>

#include "Mox/Assert.h"
#include "Vorn/VornCommonUtils.h"
#include "Vorn/VornCommonUtilsPrivate.h"

namespace Hardware::Vorn {

namespace {

// The LAG field's width, shared by LAG id and member id.
constexpr U8 kLagFieldBits = 14;

// LAG id bits of each LAG mode, the same on every chip family. Modes 0 and 1
// share their split on purpose.
constexpr U8 kLagIdBits[] = {10, 10, 9, 8, 7, 6};

}  // namespace

U32 lagIdToSysAggrPortId(FapType fapType, LagId lagId) {
  return lagId.value() | sysAggrPortMask(fapType);
}

LagId sysAggrPortIdToLagId(FapType fapType, U32 sysAggrPortId) {
  const U32 mask = sysAggrPortMask(fapType);
  if (!(sysAggrPortId & mask)) return LagId();
  return LagId(sysAggrPortId & ~mask);
}

U8 lagIdBitsForMode(FapType fapType, LagMode lagMode) {
  U8 bits = 0;
  if (fapType >= fapTypePetra && fapType <= fapTypeJericho && lagMode < std::size(kLagIdBits))
    bits = kLagIdBits[lagMode];
  MOX_ASSERT_TEXT(bits, "bits",
                  "U8 Hardware::Vorn::lagIdBitsForMode(Hardware::Vorn::FapType, "
                  "Hardware::Vorn::LagMode)");
  return bits;
}

U8 memberIdBitsForMode(FapType fapType, LagMode lagMode) {
  constexpr const char* kFunction =
      "U8 Hardware::Vorn::memberIdBitsForMode(Hardware::Vorn::FapType, Hardware::Vorn::LagMode)";
  MOX_ASSERT_TEXT(fapType != fapTypeUnknown_, "fapType != fapTypeUnknown_", kFunction);
  const U8 bits = static_cast<U8>(kLagFieldBits - lagIdBitsForMode(fapType, lagMode));
  MOX_ASSERT_TEXT(bits, "bits", kFunction);
  return bits;
}

U32 maxMemberIdsForMode(FapType fapType, LagMode lagMode) {
  return 1u << memberIdBitsForMode(fapType, lagMode);
}

U32 lagIdMaskForMode(FapType fapType, LagMode lagMode) {
  return (1u << lagIdBitsForMode(fapType, lagMode)) - 1;
}

U32 lagDestIdToSysAggrPortId(FapType fapType, LagMode lagMode, DestinationId dest) {
  // LagId keeps its own range check, though the mask leaves at most 1023.
  const LagId lagId(dest.destination & lagIdMaskForMode(fapType, lagMode));
  return lagIdToSysAggrPortId(fapType, lagId);
}

DestinationId lagToDestination(LagDestinationId lagDest) {
  DestinationId dest;
  if (lagDest.isDestination) {
    dest.type = destinationTypeDirect;
    if (lagDest.destination != DestinationId::unset) dest.destinationIs(lagDest.destination);
  } else {
    dest.type = destinationTypeLag;
    if (lagDest.lagId != 0xFFFF) dest.destination = lagDest.lagId;
  }
  return dest;
}

}  // namespace Hardware::Vorn
