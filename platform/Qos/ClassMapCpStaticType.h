// Qos::ClassMapCpStaticType: the static class-map type of a control-plane
// (CoPP) class, 1 to 64 for the classes the system knows; 0 is no class. The
// QoS model names the values; this layer carries their numbers, which is what
// the library relies on.
#pragma once

#include <ostream>

#include "Mox/Types.h"

namespace Qos {

enum class ClassMapCpStaticType : U32 {};

// The type's number ("ClassMapCpStaticType(4)" prints "4").
inline std::ostream& operator<<(std::ostream& os, ClassMapCpStaticType t) {
  return os << static_cast<U32>(t);
}

}  // namespace Qos
