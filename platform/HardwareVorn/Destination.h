// Forwarding destinations of the chip type library.
//
//   DestinationId d;                        // destination 0xFFFF, kind 0
//   d.destinationIs(0x1234);                // checked against destDrop
//   LagDestinationId l;  l.lagId = 5;       // a LAG choice
#pragma once

#include "Mox/RangeException.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

// What a DestinationId's number means.
enum DestinationType : U32 {
  destinationTypeInvalid_ = 0,
  destinationTypeLag = 2,     // destination is a LAG id
  destinationTypeDirect = 3,  // destination is taken as it is
};

// A forwarding destination: a number, two flags whose meaning belongs to the
// forwarding agents, and the kind of the number.
struct DestinationId {
  static constexpr U32 unset = 0xFFFF;
  static constexpr U32 min = 0;
  static constexpr U32 destDrop = 2097152;
  static constexpr const char kRangeText[] =
      "DestinationId::destination < DestinationId::min or > DestinationId::destDrop not allowed";

  // Sets destination, checked against destDrop.
  void destinationIs(U32 value) {
    if (value > destDrop) Mox::throwRangeException(kRangeText);
    destination = value;
  }
  constexpr bool operator==(const DestinationId&) const noexcept = default;

  U32 destination = unset;
  bool flag1 = false;
  bool flag2 = false;
  DestinationType type = destinationTypeInvalid_;
};

// Either a LAG or a plain destination. A field holding 0xFFFF is not set.
struct LagDestinationId {
  U8 choice = 0;
  bool isDestination = false;  // true: `destination` holds the value
  U32 destination = 0xFFFF;
  U16 lagId = 0xFFFF;
};

}  // namespace Hardware::Vorn
