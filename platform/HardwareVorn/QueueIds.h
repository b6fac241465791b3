// Identifiers of the egress queues' classes: the traffic class (0 to 7) and
// the drop precedence (0 to 3) that the egress thresholds are kept by.
#pragma once

#include "HardwareVorn/BoundedId.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

// A traffic class, 0 to 7; 8 is null.
class TrafficClassId : public BoundedId<TrafficClassId, U8, 8> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "TrafficClassId::value < TrafficClassId::min or > TrafficClassId::null not allowed";
};

// A drop precedence, 0 to 3; 4 is null.
class DropPrecedence : public BoundedId<DropPrecedence, U8, 4> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "DropPrecedence::value < DropPrecedence::min or > DropPrecedence::null not allowed";
};

}  // namespace Hardware::Vorn
