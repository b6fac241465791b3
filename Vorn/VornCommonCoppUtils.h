// VornCommonCoppUtils: control-plane policing (CoPP) defaults. Each CPU
// system port of the Arad generation belongs to one static CoPP class
// ("copp-system-..."), whose default rates apply until a policy gives its own;
// the rate functions read a policy's rates and map the QoS model's sentinels
// onto what the hardware layer programs.
#pragma once

#include "HardwareVorn/SystemPhyPortId.h"
#include "Mox/String.h"
#include "Mox/Types.h"
#include "Qos/ClassAction.h"
#include "Qos/ClassMapCpStaticType.h"
#include "Vorn/Export.h"

namespace Hardware::Vorn {

//@{
// Rate sentinels of the QoS model, and the hardware layer's "no shaping".
inline constexpr U32 kRateNotSet = 10000001;
inline constexpr U32 kRateUnlimited = 10000002;
inline constexpr U32 kHwNoShaping = 0xFFFFFFFF;
//@}

// The static CoPP class of a CPU system port and its default parameters,
// filled in place: a class leaves the members it has no value for as the
// caller's record held them, so callers pass a freshly initialised record.
struct CoppStaticConfig {
  Mox::String className;                  // "copp-system-..."
  U32 bandwidth = 0;                      // default guaranteed rate
  U32 shape = 0;                          // default maximum (shaping) rate
  U32 hwClassIndex = 0;                   // 1..46, unique per class, for the hardware layer
  Qos::ClassMapCpStaticType classType{};  // the static class type
  U32 specialPortIndex = 0;      // index among the classes with a special-port configuration
  U32 specialPortSlot = 0;       // specialPortIndex + 1 on a special CPU port
  U32 specialPortBandwidth = 0;  // guaranteed rate on the special port
  U32 specialPortShape = 0;      // maximum rate on the special port
};

// Fills `config` with the static class of `port` (Arad generation) and
// returns true. A CPU traffic-manager port is "copp-system-default". A port
// without a class is a programming error: traces "port is <port>" at level 0
// and aborts on an assertion.
VORN_EXPORT bool doGetAradCoppClassParameters(SystemPhyPortId port, CoppStaticConfig& config);

//@{
// The Petra generation has no static classes: both return false and write
// nothing.
VORN_EXPORT bool doGetPetraGenericClassParameters(SystemPhyPortId port, U32 unused,
                                                  CoppStaticConfig& config);
VORN_EXPORT bool doGetPetraSpecialSysPortParameters(SystemPhyPortId port, CoppStaticConfig& config);
//@}

// Whether the system supports the static class type `type`. A type the
// system does not know writes "Failed(false) Unhandled class map type <type>"
// to standard error and aborts on an assertion.
VORN_EXPORT bool isClassSupported(Qos::ClassMapCpStaticType type);

// Reads the shape rate (action type 0) and bandwidth rate (action type 1) of
// `action` into `shape` and `bandwidth`; a null action or an absent action
// leaves its output as it is. An action without a rate object aborts.
VORN_EXPORT void doGetClassActionRate(Qos::ClassAction::PtrConst action,
                                      Qos::ActionRateType& bandwidth, Qos::ActionRateType& shape);

// The bandwidth and shape to use for a class: the policy's rates, or the
// class's static ones where the policy sets none; unlimited shaping becomes
// kHwNoShaping and an unlimited bandwidth 0.
VORN_EXPORT void doGetBandwidthAndShapeRate(Qos::ClassAction::PtrConst action, U32& bandwidth,
                                            U32& shape, CoppStaticConfig config);

// Combines the policy's rates with the hardware layer's `hwRate` and
// `hwLimit`; `bandwidth` and `shape` are read and written. The policy's shape
// sentinel decides the bandwidth output and its bandwidth sentinel the shape
// output: the cross-over is how the hardware layer reads them.
VORN_EXPORT void doGetHardwareBandwidthAndShapeRate(Qos::ClassAction::PtrConst action, U32 hwRate,
                                                    U32 hwLimit, U32& bandwidth, U32& shape);

}  // namespace Hardware::Vorn
