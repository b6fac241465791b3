// Hardware::Vorn::FapRevision: a FAP's revision as the chip status keeps it.
// The zero record (revision 0.0) is what callers get for a FAP without one.
#pragma once

#include <ostream>

#include "HardwareVorn/Enums.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

struct FapRevision {
  FapRevMajor fapRevMajor = fapRevMajorUnknown_;
  U32 fapRevMinor = 0;
  constexpr bool operator==(const FapRevision&) const noexcept = default;
};

// A revision major renders as its number ("Incorrect fapRevMajor 0").
inline std::ostream& operator<<(std::ostream& os, FapRevMajor rev) {
  return os << static_cast<U32>(rev);
}

inline std::ostream& operator<<(std::ostream& os, const FapRevision& rev) {
  return os << rev.fapRevMajor << '.' << rev.fapRevMinor;
}

}  // namespace Hardware::Vorn
