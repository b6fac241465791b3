// VornPtpUtils: PTP defaults of the switch.
#pragma once

#include "Mox/Types.h"
#include "Vorn/Export.h"

namespace Hardware::Vorn {

// A PTP clock quality as IEEE 1588 lays it out on the wire (4 bytes).
struct PtpClockQuality {
  U8 clockClass;                // the clock's traceability class
  U8 clockAccuracy;             // the accuracy code of the time it serves
  U16 offsetScaledLogVariance;  // its stability, in network byte order
};
static_assert(sizeof(PtpClockQuality) == 4);

// The switch's default clock quality: class 248 (a clock that is not
// synchronised to a primary reference), accuracy 0x30 (unknown) and the
// largest variance 0xFFFF.
VORN_EXPORT PtpClockQuality getPtpClockQuality();

}  // namespace Hardware::Vorn
