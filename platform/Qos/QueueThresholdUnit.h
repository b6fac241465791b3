// Qos::QueueThresholdUnit: the unit a configured queue threshold is given in.
#pragma once

#include "Mox/Types.h"

namespace Qos {

enum QueueThresholdUnit : U32 {
  queueThresholdUnitBytes = 0,
  queueThresholdUnitKbytes = 1,   // scaled by 1000
  queueThresholdUnitMbytes = 2,   // scaled by 1000000
  queueThresholdUnitPackets = 3,  // a count, not scaled
};

}  // namespace Qos
