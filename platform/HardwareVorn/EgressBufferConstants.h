// The chip constants of the egress buffers: per FAP revision the buffer and
// descriptor totals, per threshold profile the profile each port speed uses,
// the front-panel profile range and how many ports of a speed may fill at
// once without head-of-line blocking (HOLB).
//
// The values are placeholders for the platform's chip tables: plausible
// figures, consistent with the threshold generator (every speed that maps to
// a profile has a reserved-descriptor factor, every mapped profile lies in
// the front-panel range, and every revision and pair of revisions yields
// thresholds that pass the generator's checks). They live as one table per
// quantity in EgressBufferConstants.cpp.
//
// Readers go through the provider, which a test replaces for a scope:
//
//   EgressChipTables t = defaultEgressChipTables();
//   t.totalBuffers[fapRevMajor3] = 2001;
//   ScopedEgressChipTables scoped(t);
//   EgressBufferConstantsByFapRev::totalBuffersByFapRevMajor(fapRevMajor3);   // 2001
#pragma once

#include <array>
#include <cstddef>

#include "HardwareVorn/EgqProfile.h"
#include "HardwareVorn/Enums.h"
#include "Interface/EthSpeed.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

// FapRevMajor 0 (unknown) to 9.
inline constexpr std::size_t kFapRevMajors = 10;
inline constexpr std::size_t kEgressBufThresholdsProfiles = 2;

struct EgressChipTables {
  template <typename T>
  using PerRevision = std::array<T, kFapRevMajors>;
  template <typename T>
  using PerSpeed = std::array<T, Interface::ethSpeedOrdinals>;
  template <typename T>
  using PerProfile = std::array<T, kEgressBufThresholdsProfiles>;

  // Indexed by FapRevMajor; revision 0 (no chip) is all zero.
  PerRevision<U32> totalBuffers;
  PerRevision<U32> totalDescriptors;
  PerRevision<U32> maxReservedDescriptors;
  PerRevision<U32> maxDescriptorsPerQueue;
  // Indexed by threshold profile, then speed ordinal. A profile number of 16
  // means no front-panel port of that speed; a port count of 0 likewise.
  PerProfile<PerSpeed<U8>> egqProfileForSpeed;
  PerProfile<PerSpeed<U8>> maxPortsWithoutUcHolb;
  PerProfile<PerSpeed<U8>> maxPortsWithoutMcHolb;
  // Indexed by threshold profile; 16 where the profile has no such port.
  PerProfile<U8> frontPanelMin;
  PerProfile<U8> frontPanelMax;
  PerProfile<U8> frontPanel100g;
  PerProfile<U8> frontPanel200g;
  PerProfile<U8> frontPanel400g;
};

// The tables the platform ships.
const EgressChipTables& defaultEgressChipTables() noexcept;
// The tables in force: the defaults unless replaced.
const EgressChipTables& egressChipTables() noexcept;
// Puts `tables` in force (the caller keeps them alive); null restores the
// defaults.
void egressChipTablesIs(const EgressChipTables* tables) noexcept;

// Puts a copy of `tables` in force for a scope, then restores what was before.
class ScopedEgressChipTables {
 public:
  explicit ScopedEgressChipTables(const EgressChipTables& tables)
      : tables_(tables), previous_(&egressChipTables()) {
    egressChipTablesIs(&tables_);
  }
  ~ScopedEgressChipTables() { egressChipTablesIs(previous_); }
  ScopedEgressChipTables(const ScopedEgressChipTables&) = delete;
  ScopedEgressChipTables& operator=(const ScopedEgressChipTables&) = delete;

 private:
  EgressChipTables tables_;
  const EgressChipTables* previous_;
};

// The per-revision constants. A revision outside 0 to 9 has 0 of everything.
class EgressBufferConstantsByFapRev {
 public:
  static U32 totalBuffersByFapRevMajor(FapRevMajor rev);
  static U32 totalDescriptorsByFapRevMajor(FapRevMajor rev);
  static U32 maxReservedDescriptorsByFapRevMajor(FapRevMajor rev);
  static U32 maxDescriptorsPerQueueByFapRevMajor(FapRevMajor rev);
};

class EgressBufferConstants {
 public:
  // How many ports of `speed` may fill with unicast at once without HOLB
  // under threshold profile `p`; 0 for a speed without ports.
  static U8 maxPortsWithoutUcHolb(Interface::EthSpeed speed, EgressBufThresholdsProfile p);
};

}  // namespace Hardware::Vorn
