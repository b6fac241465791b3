// Hardware::Vorn::EgressBufferParameters: the egress-buffer settings of the
// system configuration (CliConfig). A plain value; default-constructed it
// holds the defaults that apply when there is no configuration.
//
//   EgressBufferParameters params;          // 150, 160, ..., 150, 3, 50
//   params.reservedMcPerQueue = 40;
//   cliConfig->egressBufferParametersIs(params);
#pragma once

#include "HardwareVorn/Enums.h"
#include "Interface/EthSpeed.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

struct EgressBufferParameters {
  // SP0 multicast buffers reserved per traffic class (x8: the SP0 maximum).
  U8 reservedMcBuffersPerTc = 150;
  // Multicast descriptors reserved per port and speed unit.
  U8 reservedMcPdPerSpeedUnit = 160;
  // Multicast ports per speed that the agents allow to fill at once when they
  // program per-port overrides; the threshold generator takes its port counts
  // from the chip tables instead (maxPortsWithoutMcHolb).
  U8 mcPortsFull10g = 4;
  U8 mcPortsFull25g = 4;
  U8 mcPortsFull40g = 2;
  U8 mcPortsFull50g = 2;
  U8 mcPortsFull100g = 1;
  U8 mcPortsFull200g = 1;
  U8 mcPortsFull400g = 1;
  // Multicast buffers and descriptors kept back before the rest is shared
  // among ports.
  U8 reservedMcPerPort = 150;
  // Multicast queues of a port that may be full at once.
  U32 maxQueuesFullPerPortMc = 3;
  // Multicast buffers and descriptors kept back per queue before the port's
  // rest is shared among queues.
  U8 reservedMcPerQueue = 50;

  bool operator==(const EgressBufferParameters&) const noexcept = default;

  // How many ports of `speed` may fill with multicast at once without
  // head-of-line blocking under threshold profile `p`; from the chip tables
  // (HardwareVorn/EgressBufferConstants.h), 0 for a speed without ports.
  static U8 maxPortsWithoutMcHolb(Interface::EthSpeed speed, EgressBufThresholdsProfile p);
};

}  // namespace Hardware::Vorn
