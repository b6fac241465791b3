// Chip types and variants, linecard names, the FAP mask of the system and
// threshold units.
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "Mox/Assert.h"
#include "Vorn/VornCommonUtils.h"

namespace Hardware::Vorn {

namespace {

constexpr const char kFixedSystem[] = "FixedSystem";

// ChipType of each FapMaskType; 0 marks the variants that do not exist.
constexpr Hardware::ChipType kChipTypeOfFapMaskType[] = {
    Hardware::chipTypeUnknown_,  // 0
    Hardware::chipType2,         // 1
    Hardware::chipType3,         // 2
    Hardware::chipType5,         // 3
    Hardware::chipType8,         // 4
    Hardware::chipType6,         // 5
    Hardware::chipType10,        // 6
    Hardware::chipType13,        // 7
    Hardware::chipTypeUnknown_,  // 8
    Hardware::chipTypeUnknown_,  // 9
    Hardware::chipType2,         // 10
};

// Cores of each ChipType; 0 marks the values that are no chip.
constexpr U8 kCoresOfChipType[] = {0, 1, 1, 1, 2, 2, 1, 1, 2, 2, 2, 2, 2, 1};

// The family words a FAP name begins with, tried in this order.
constexpr const char* kFapNamePrefixes[] = {"Fap", "Jericho", "Arad"};

}  // namespace

Mox::String intfIdToLinecardName(Wirl::IntfId intfId) {
  const U16 module = Wirl::EthIntfId::module(intfId);
  return module ? Mox::format("Linecard%d", module) : Mox::String(kFixedSystem);
}

Mox::String slotIdToLinecardName(Fru::SlotId slotId) {
  return slotId.value() == 1 ? Mox::String(kFixedSystem)
                             : Mox::format("Linecard%u", slotId.value());
}

Mox::String fapNameToLinecardName(Mox::String fapName) {
  Mox::String rest;
  bool known = false;
  for (const char* prefix : kFapNamePrefixes) {
    // The word may stand anywhere; what is dropped is its length from the start.
    if (fapName.pos(prefix) >= 0) {
      rest = fapName.substr(std::strlen(prefix));
      known = true;
      break;
    }
  }
  if (!known) {
    Mox::failedLine("false", "Incorrect fapName ", fapName);
    MOX_ASSERT_TEXT(false, "\"false\" == nullptr",
                    "Mox::String Hardware::Vorn::fapNameToLinecardName(Mox::String)");
  }
  const int slash = rest.pos('/');
  if (slash < 0) return Mox::String(kFixedSystem);
  const Mox::String linecard = rest.substr(0, static_cast<std::size_t>(slash));
  return Mox::format("Linecard%d", static_cast<int>(std::strtol(linecard.charPtr(), nullptr, 10)));
}

Regpath::Fapmask maxFapsInSystemMask(Status::PtrConst vornStatus) {
  Regpath::Fapmask mask;
  for (U32 id = 0; id < vornStatus->maxFapsInSystem(); ++id) {
    // Regpath::FapId checks the id: 129 throws before the walk gets further.
    mask.fapIdIs(Regpath::FapId(static_cast<U16>(id)), true);
  }
  return mask;
}

FapMaskType getFapMaskType(Status::PtrConst vornStatus, FapId fapId) {
  const FapRevMajor rev = vornStatus->fapRevision().valueOr(fapId, FapRevision()).fapRevMajor;
  const FapType* type = vornStatus->fapType().find(fapId);
  if (!type) return fapMaskTypeNone_;
  switch (*type) {
    case fapTypeUnknown_:
      return fapMaskTypeNone_;
    case fapTypePetra:
      return rev == fapRevMajor1 ? fapMaskType1 : fapMaskType2;
    case fapTypeArad:
      if (rev == fapRevMajor5) return fapMaskType5;
      return rev == fapRevMajor4 ? fapMaskType4 : fapMaskType3;
    case fapTypeJericho:
      return fapMaskType6;
  }
  MOX_ASSERT_TEXT(false, "0 && \"Invalid fapId\"",
                  "Hardware::Vorn::FapMaskType Hardware::Vorn::getFapMaskType("
                  "Hardware::Vorn::Status::PtrConst, Hardware::Vorn::FapId)");
  return fapMaskTypeNone_;
}

Hardware::ChipType getChipTypeFromFapMaskType(FapMaskType fapMaskType) {
  const bool known = fapMaskType < std::size(kChipTypeOfFapMaskType) &&
                     kChipTypeOfFapMaskType[fapMaskType] != Hardware::chipTypeUnknown_;
  MOX_ASSERT_TEXT(known, "0 && \"Invalid FapMaskType\"",
                  "Hardware::ChipType Hardware::Vorn::getChipTypeFromFapMaskType("
                  "Hardware::Vorn::FapMaskType)");
  return kChipTypeOfFapMaskType[fapMaskType];
}

U8 chipTypeToNumCores(Hardware::ChipType chipType) {
  const bool known = chipType < std::size(kCoresOfChipType) && kCoresOfChipType[chipType] != 0;
  MOX_ASSERT_TEXT(known, "0 && \"Invalid ChipType\"",
                  "U8 Hardware::Vorn::chipTypeToNumCores(Hardware::ChipType)");
  return kCoresOfChipType[chipType];
}

void getThresholdsInBytes(U32 first, U32 second, U32& firstOut, U32& secondOut,
                          Qos::QueueThresholdUnit unit) {
  firstOut = second;
  secondOut = first;
  U32 scale = 1;
  switch (unit) {
    case Qos::queueThresholdUnitBytes:
    case Qos::queueThresholdUnitPackets:
      break;
    case Qos::queueThresholdUnitKbytes:
      scale = 1000;
      break;
    case Qos::queueThresholdUnitMbytes:
      scale = 1000000;
      break;
    default:
      MOX_ASSERT_TEXT(false, "false",
                      "void Hardware::Vorn::getThresholdsInBytes(U32, U32, U32&, U32&, "
                      "Qos::QueueThresholdUnit)");
  }
  firstOut *= scale;
  secondOut *= scale;
}

}  // namespace Hardware::Vorn
