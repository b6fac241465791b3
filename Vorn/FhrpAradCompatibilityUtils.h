// FhrpAradCompatibilityUtils: router MACs of first-hop redundancy on Arad
// chips, which match a router MAC only down to the top 45 bits: the low three
// bits of the last byte are not compared.
#pragma once

#include "Vorn/Export.h"
#include "Wirl/EthAddr.h"

namespace Hardware::Vorn {

// Whether `a` and `b` are the same router MAC to an Arad chip: bytes 0 to 4
// equal and byte 5 equal but for its low three bits.
VORN_EXPORT bool routerMacMsbsAreEqual(Wirl::EthAddr const& a, Wirl::EthAddr const& b);

// `mac` with the low three bits of byte 5 cleared: the router MAC an Arad chip
// matches.
VORN_EXPORT Wirl::EthAddr maskAwayAradLsbOfMac(Wirl::EthAddr const& mac);

}  // namespace Hardware::Vorn
