// Interface::EthSpeed: the speed of an Ethernet port as the interface model
// numbers it. The egress thresholds key their tables by the ordinal, so only
// the numbers matter to the library; the enumerator names are ours.
#pragma once

#include <cstddef>

#include "Mox/Types.h"

namespace Interface {

enum EthSpeed : U32 {
  speedUnknown = 0,
  speed10Mbps = 1,
  speed100Mbps = 2,
  speed1Gbps = 3,
  speed2p5Gbps = 4,
  speed5Gbps = 5,
  speed10Gbps = 6,
  speed25Gbps = 7,
  speed40Gbps = 8,
  speed50Gbps = 9,
  speed100Gbps = 10,
  speed200Gbps = 11,
  speed400Gbps = 12,
};

// Ordinals 0 to 12: the size of a table indexed by speed.
inline constexpr std::size_t ethSpeedOrdinals = 13;

}  // namespace Interface
