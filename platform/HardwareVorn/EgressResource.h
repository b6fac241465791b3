// Hardware::Vorn::EgressResource: a pair of egress limits, data buffers ("DB")
// and packet descriptors ("PD").
//
//   EgressResource r{1000, 1000};   // db, pd
#pragma once

#include <ostream>

#include "Mox/Types.h"

namespace Hardware::Vorn {

struct EgressResource {
  U16 db = 0;
  U32 pd = 0;
  constexpr bool operator==(const EgressResource&) const noexcept = default;
};

inline std::ostream& operator<<(std::ostream& os, const EgressResource& r) {
  return os << "{db " << r.db << " pd " << r.pd << "}";
}

}  // namespace Hardware::Vorn
