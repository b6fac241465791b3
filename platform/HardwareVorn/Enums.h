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

namespace Hardware::Vorn {

// The chip's major revision. 0 is unknown; 1 to 9 are the revisions of the
// three families (the type library names them only by number).
enum FapRevMajor : U32 {
  fapRevMajorUnknown_ = 0,
  fapRevMajor1 = 1,
  fapRevMajor2 = 2,
  fapRevMajor3 = 3,
  fapRevMajor4 = 4,
  fapRevMajor5 = 5,
  fapRevMajor6 = 6,
  fapRevMajor7 = 7,
  fapRevMajor8 = 8,
  fapRevMajor9 = 9,
};

// Chip variants as the FAP masks name them: 1 to 7 and 10; 8 and 9 are not
// used and 0 is no known variant.
enum FapMaskType : U32 {
  fapMaskTypeNone_ = 0,
  fapMaskType1 = 1,
  fapMaskType2 = 2,
  fapMaskType3 = 3,
  fapMaskType4 = 4,
  fapMaskType5 = 5,
  fapMaskType6 = 6,
  fapMaskType7 = 7,
  fapMaskType10 = 10,
};

// The chip's LAG mode: how the 14-bit LAG field splits between LAG id and
// member id (modes 0 and 1: 1024 LAGs of 16; each further mode halves the LAGs
// and doubles the members, down to 64 LAGs of 256 in mode 5).
enum LagMode : U32 {
  lagMode0 = 0,
  lagMode1 = 1,
  lagMode2 = 2,
  lagMode3 = 3,
  lagMode4 = 4,
  lagMode5 = 5,
};

// The two egress buffer threshold profiles; which revision uses which is
// EgqProfile::egrBufThresholdProfileForFapRevMajor.
enum EgressBufThresholdsProfile : U32 {
  egressBufThresholdsProfile0 = 0,
  egressBufThresholdsProfile1 = 1,
};

}  // namespace Hardware::Vorn
