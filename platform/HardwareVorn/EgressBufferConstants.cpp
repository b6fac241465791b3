#include "HardwareVorn/EgressBufferConstants.h"

#include <atomic>

#include "HardwareVorn/EgressBufferParameters.h"

namespace Hardware::Vorn {
namespace {

using Tables = EgressChipTables;

// Per revision, 0 (no chip) to 9. Revisions 7 to 9 (threshold profile 1)
// have the larger buffers. Unicast takes half the buffers as buffers and as
// descriptors, so every total of descriptors exceeds half the buffers, and
// half the buffers fits a 16-bit buffer count.
constexpr Tables::PerRevision<U32> kTotalBuffers = {0,     32768, 32768, 65536,  65536,
                                                    65536, 98304, 98304, 128000, 128000};
constexpr Tables::PerRevision<U32> kTotalDescriptors = {0,      65536,  65536,  98304,  98304,
                                                        131072, 196608, 262144, 393216, 524288};
constexpr Tables::PerRevision<U32> kMaxReservedDescriptors = {0,     8192,  8192,  16384, 16384,
                                                              16384, 24576, 32768, 49152, 49152};
constexpr Tables::PerRevision<U32> kMaxDescriptorsPerQueue = {0,    4096,  4096,  8192,  8192,
                                                              8192, 16384, 16384, 32768, 32768};

// Per threshold profile and speed ordinal (unknown, 10M, 100M, 1G, 2.5G, 5G,
// 10G, 25G, 40G, 50G, 100G, 200G, 400G). Profile 0 chips run ports up to
// 100G, profile 1 chips up to 400G. Profiles 5, 8 and 9 are the special port
// profiles no speed maps to.
constexpr U8 kNo = EgqProfile::kNone;
constexpr Tables::PerProfile<Tables::PerSpeed<U8>> kEgqProfileForSpeed = {{
    {kNo, kNo, 7, kNo, kNo, kNo, 6, 10, 11, 12, 13, kNo, kNo},
    {kNo, kNo, 7, kNo, kNo, kNo, 6, 10, 11, 12, 13, 14, 15},
}};
constexpr Tables::PerProfile<Tables::PerSpeed<U8>> kMaxPortsWithoutUcHolb = {{
    {0, 0, 16, 0, 0, 0, 12, 8, 6, 4, 2, 0, 0},
    {0, 0, 16, 0, 0, 0, 16, 12, 8, 6, 4, 2, 1},
}};
constexpr Tables::PerProfile<Tables::PerSpeed<U8>> kMaxPortsWithoutMcHolb = {{
    {0, 0, 8, 0, 0, 0, 4, 4, 2, 2, 1, 0, 0},
    {0, 0, 8, 0, 0, 0, 4, 4, 2, 2, 1, 1, 1},
}};

// Per threshold profile.
constexpr Tables::PerProfile<U8> kFrontPanelMin = {6, 6};
constexpr Tables::PerProfile<U8> kFrontPanelMax = {13, 15};
constexpr Tables::PerProfile<U8> kFrontPanel100g = {13, 13};
constexpr Tables::PerProfile<U8> kFrontPanel200g = {kNo, 14};
constexpr Tables::PerProfile<U8> kFrontPanel400g = {kNo, 15};

constexpr Tables kDefaultTables = {
    .totalBuffers = kTotalBuffers,
    .totalDescriptors = kTotalDescriptors,
    .maxReservedDescriptors = kMaxReservedDescriptors,
    .maxDescriptorsPerQueue = kMaxDescriptorsPerQueue,
    .egqProfileForSpeed = kEgqProfileForSpeed,
    .maxPortsWithoutUcHolb = kMaxPortsWithoutUcHolb,
    .maxPortsWithoutMcHolb = kMaxPortsWithoutMcHolb,
    .frontPanelMin = kFrontPanelMin,
    .frontPanelMax = kFrontPanelMax,
    .frontPanel100g = kFrontPanel100g,
    .frontPanel200g = kFrontPanel200g,
    .frontPanel400g = kFrontPanel400g,
};

std::atomic<const Tables*> tablesInForce{&kDefaultTables};

U32 perRevision(const Tables::PerRevision<U32> Tables::*table, FapRevMajor rev) {
  return rev < kFapRevMajors ? (egressChipTables().*table)[rev] : 0;
}

// Entries of a profile outside 0 and 1 or of a speed above 12 are `absent`.
U8 perSpeed(const Tables::PerProfile<Tables::PerSpeed<U8>> Tables::*table,
            EgressBufThresholdsProfile p, Interface::EthSpeed speed, U8 absent) {
  if (p >= kEgressBufThresholdsProfiles || speed >= Interface::ethSpeedOrdinals) return absent;
  return (egressChipTables().*table)[p][speed];
}

EgqProfile perProfile(const Tables::PerProfile<U8> Tables::*table, EgressBufThresholdsProfile p) {
  if (p >= kEgressBufThresholdsProfiles) return EgqProfile::none();
  return EgqProfile((egressChipTables().*table)[p]);
}

}  // namespace

const EgressChipTables& defaultEgressChipTables() noexcept {
  return kDefaultTables;
}

const EgressChipTables& egressChipTables() noexcept {
  return *tablesInForce.load(std::memory_order_acquire);
}

void egressChipTablesIs(const EgressChipTables* tables) noexcept {
  tablesInForce.store(tables ? tables : &kDefaultTables, std::memory_order_release);
}

U32 EgressBufferConstantsByFapRev::totalBuffersByFapRevMajor(FapRevMajor rev) {
  return perRevision(&Tables::totalBuffers, rev);
}
U32 EgressBufferConstantsByFapRev::totalDescriptorsByFapRevMajor(FapRevMajor rev) {
  return perRevision(&Tables::totalDescriptors, rev);
}
U32 EgressBufferConstantsByFapRev::maxReservedDescriptorsByFapRevMajor(FapRevMajor rev) {
  return perRevision(&Tables::maxReservedDescriptors, rev);
}
U32 EgressBufferConstantsByFapRev::maxDescriptorsPerQueueByFapRevMajor(FapRevMajor rev) {
  return perRevision(&Tables::maxDescriptorsPerQueue, rev);
}

U8 EgressBufferConstants::maxPortsWithoutUcHolb(Interface::EthSpeed speed,
                                                EgressBufThresholdsProfile p) {
  return perSpeed(&Tables::maxPortsWithoutUcHolb, p, speed, 0);
}

U8 EgressBufferParameters::maxPortsWithoutMcHolb(Interface::EthSpeed speed,
                                                 EgressBufThresholdsProfile p) {
  return perSpeed(&Tables::maxPortsWithoutMcHolb, p, speed, 0);
}

EgqProfile EgqProfile::egqProfileForSpeed(EgressBufThresholdsProfile p, Interface::EthSpeed speed) {
  return EgqProfile(perSpeed(&Tables::egqProfileForSpeed, p, speed, kNone));
}
EgqProfile EgqProfile::frontPanelMin(EgressBufThresholdsProfile p) {
  return perProfile(&Tables::frontPanelMin, p);
}
EgqProfile EgqProfile::frontPanelMax(EgressBufThresholdsProfile p) {
  return perProfile(&Tables::frontPanelMax, p);
}
EgqProfile EgqProfile::frontPanel100g(EgressBufThresholdsProfile p) {
  return perProfile(&Tables::frontPanel100g, p);
}
EgqProfile EgqProfile::frontPanel200g(EgressBufThresholdsProfile p) {
  return perProfile(&Tables::frontPanel200g, p);
}
EgqProfile EgqProfile::frontPanel400g(EgressBufThresholdsProfile p) {
  return perProfile(&Tables::frontPanel400g, p);
}

}  // namespace Hardware::Vorn
