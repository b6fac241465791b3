// Identifier value types of the chip type library (namespace Hardware::Vorn).
#pragma once

#include "HardwareVorn/BoundedId.h"
#include "HardwareVorn/SystemPhyPortId.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

// A FAP (forwarding processor) number within the system.
class FapId : public BoundedId<FapId, U16, 2048> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] = "FapId::value < FapId::min or > FapId::null not allowed";
};

class SystemCoreId : public BoundedId<SystemCoreId, U16, 2048> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "SystemCoreId::value < SystemCoreId::min or > SystemCoreId::null not allowed";
};

class SystemTcamId : public BoundedId<SystemTcamId, U16, 2048> {
 public:
  using BoundedId::BoundedId;
  static constexpr U16 allTcams() noexcept { return 2046; }
  static constexpr const char kRangeText[] =
      "SystemTcamId::value < SystemTcamId::min or > SystemTcamId::null not allowed";
};

class LocalCoreId : public BoundedId<LocalCoreId, U16, 4> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "LocalCoreId::value < LocalCoreId::min or > LocalCoreId::null not allowed";
};

class LocalTcamId : public BoundedId<LocalTcamId, U16, 4> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "LocalTcamId::value < LocalTcamId::min or > LocalTcamId::null not allowed";
};

class LagId : public BoundedId<LagId, U32, 1024> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "LagId::value < LagId::min or > LagId::null not allowed";
};

class LagMemberId : public BoundedId<LagMemberId, U16, 256> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "LagMemberId::value < LagMemberId::min or > LagMemberId::null not allowed";
};

// A port number on one FAP. Port 0 and the extended ports 133 to 137 are the
// FAP's CPU traffic-manager ports.
class FapPortId : public BoundedId<FapPortId, U32, 256> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "FapPortId::value < FapPortId::min or > FapPortId::null not allowed";
  // The CPU TM ports beyond port 0, which run from cpuTmExtendedMin() on.
  static constexpr U32 numCpuTmExtendeds() noexcept { return 5; }
  static constexpr U32 cpuTmExtendedMin() noexcept { return 133; }
  // Exactly the six CPU TM ports: 0, and 133 to 137. The FAP numbers no other
  // port as a CPU port, so this is the whole rule.
  constexpr bool isCpuTmPort() const noexcept {
    return value() == 0 ||
           (value() >= cpuTmExtendedMin() && value() < cpuTmExtendedMin() + numCpuTmExtendeds());
  }
};

// Multicast group ids; those of VLAN flooding are the VLAN ids themselves.
class MulticastId {
 public:
  static constexpr U32 vlanMulticastIdMin() noexcept { return 1; }
  static constexpr U32 vlanMulticastIdMax() noexcept { return 4095; }
};

// Constants of the chip type library.
class Constants {
 public:
  // CPU TM ports per FAP: port 0 and the FapPortId::numCpuTmExtendeds().
  static constexpr U32 numCpuTms() noexcept { return 6; }
};

}  // namespace Hardware::Vorn
