// Enumerations of the chip type library whose numeric values the library
// relies on.
#pragma once

#include "Mox/Types.h"

namespace Hardware::Vorn {

// The chip family. 0 is unknown (and "any family" where a filter is taken).
enum FapType : U32 {
  fapTypeUnknown_ = 0,
  fapTypePetra = 1,
  fapTypeArad = 2,
  fapTypeJericho = 3,
};

}  // namespace Hardware::Vorn
