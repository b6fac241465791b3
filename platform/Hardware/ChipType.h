// Hardware::ChipType: the platform-wide chip type enumeration, 0 to 13. The
// type library names the values only by number; 0 is no chip.
#pragma once

#include "Mox/Types.h"

namespace Hardware {

enum ChipType : U32 {
  chipTypeUnknown_ = 0,
  chipType1 = 1,
  chipType2 = 2,
  chipType3 = 3,
  chipType4 = 4,
  chipType5 = 5,
  chipType6 = 6,
  chipType7 = 7,
  chipType8 = 8,
  chipType9 = 9,
  chipType10 = 10,
  chipType11 = 11,
  chipType12 = 12,
  chipType13 = 13,
};

}  // namespace Hardware
