// Hardware::Vorn::SystemPhyPortId (also reached through HardwareVorn/Ids.h): a
// system physical port of the forwarding chips, 2 to 16383 (16384 is null).
// The CPU-bound traffic arrives on CPU system ports:
//   - the CPU traffic-manager ports 2 to cpuTmMax() (7), one per CPU TM queue;
//   - the trap ports from 12 up, one per kind of trapped traffic, some of
//     which the chip configuration also reserves as special CPU ports (the
//     ports whose classes carry a special-port configuration).
#pragma once

#include "HardwareVorn/BoundedId.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

class SystemPhyPortId : public BoundedId<SystemPhyPortId, U16, 16384, 2> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "SystemPhyPortId::value < SystemPhyPortId::min or > SystemPhyPortId::null not allowed";

  // The last CPU traffic-manager port.
  static constexpr U16 cpuTmMax() noexcept { return 7; }

  // Whether this is one of the CPU traffic-manager ports min() to cpuTmMax().
  constexpr bool isCpuTmPort() const noexcept { return value() >= min() && value() <= cpuTmMax(); }

  // Whether the chip configuration reserves this port as a special CPU port:
  // its port number (below 64) is in specialCpuPorts().
  bool isSpecialCpuPort() const noexcept;

  // The special CPU ports, one bit per port number 0 to 63. By default the
  // trap ports whose static classes have a special-port configuration:
  // 12 to 22, 41, 42, 48 and 49.
  static constexpr U64 kDefaultSpecialCpuPorts = (((U64{1} << 23) - 1) & ~((U64{1} << 12) - 1)) |
                                                 (U64{1} << 41) | (U64{1} << 42) | (U64{1} << 48) |
                                                 (U64{1} << 49);
  static U64 specialCpuPorts() noexcept;
  // Replaces the special CPU ports (the platform sets them from the chip
  // configuration; tests choose their own).
  static void specialCpuPortsIs(U64 mask) noexcept;
};

}  // namespace Hardware::Vorn
