#include "Vorn/VornPtpUtils.h"

#include <arpa/inet.h>

namespace Hardware::Vorn {

PtpClockQuality getPtpClockQuality() {
  PtpClockQuality q;
  q.clockClass = 248;
  q.clockAccuracy = 0x30;
  q.offsetScaledLogVariance = htons(0xFFFF);
  return q;
}

}  // namespace Hardware::Vorn
