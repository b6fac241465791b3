// Hardware::Vorn::EgqProfile: an egress queuing profile of the chip type
// library. Profiles 5 to 15 are the front-panel and special port profiles; 16
// means no profile. Of the library's tables it gives which threshold profile
// each FAP revision uses and, per threshold profile, which profile a port
// speed uses and where the front-panel profiles lie.
//
//   EgqProfile prof = EgqProfile::egqProfileForSpeed(egressBufThresholdsProfile1,
//                                                    Interface::speed100Gbps);
//   if (prof != EgqProfile::none()) ... prof.value() ...
#pragma once

#include <compare>
#include <ostream>

#include "HardwareVorn/Enums.h"
#include "Interface/EthSpeed.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

class EgqProfile {
 public:
  // The first and last profile with thresholds, and the one that means none.
  static constexpr U32 kFirst = 5;
  static constexpr U32 kLast = 15;
  static constexpr U32 kNone = 16;

  constexpr EgqProfile() noexcept = default;
  constexpr explicit EgqProfile(U32 value) noexcept : value_(value) {}
  constexpr U32 value() const noexcept { return value_; }
  static constexpr EgqProfile none() noexcept { return EgqProfile(kNone); }
  friend constexpr auto operator<=>(EgqProfile, EgqProfile) noexcept = default;

  // The egress buffer threshold profile of revision `rev`. Revisions 7 to 9
  // (the generation with 128 FAP ports and 128 NIF ports, whose buffers hold
  // twice the reserved descriptors) use profile 1; revisions 0 to 6, unknown
  // included, use profile 0.
  static constexpr EgressBufThresholdsProfile egrBufThresholdProfileForFapRevMajor(
      FapRevMajor rev) noexcept {
    return rev >= fapRevMajor7 && rev <= fapRevMajor9 ? egressBufThresholdsProfile1
                                                      : egressBufThresholdsProfile0;
  }

  // The profile of front-panel ports of `speed` under threshold profile `p`;
  // none() for a speed that no front-panel port runs at. From the chip
  // tables (HardwareVorn/EgressBufferConstants.h).
  static EgqProfile egqProfileForSpeed(EgressBufThresholdsProfile p, Interface::EthSpeed speed);
  // The range of front-panel profiles under `p`.
  static EgqProfile frontPanelMin(EgressBufThresholdsProfile p);
  static EgqProfile frontPanelMax(EgressBufThresholdsProfile p);
  // The profiles of 100G, 200G and 400G front-panel ports under `p`; none()
  // where `p` has no such port.
  static EgqProfile frontPanel100g(EgressBufThresholdsProfile p);
  static EgqProfile frontPanel200g(EgressBufThresholdsProfile p);
  static EgqProfile frontPanel400g(EgressBufThresholdsProfile p);

 private:
  U32 value_ = kNone;
};

// A profile streams as its number.
inline std::ostream& operator<<(std::ostream& os, EgqProfile prof) {
  return os << prof.value();
}

}  // namespace Hardware::Vorn
