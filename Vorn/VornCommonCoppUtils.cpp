#include "Vorn/VornCommonCoppUtils.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "Mox/Assert.h"
#include "Mox/Trace.h"

namespace Hardware::Vorn {
namespace {

constexpr const char kFile[] = "Vorn/VornCommonCoppUtils.cpp";

Mox::TraceHandle& trace() {
  return Mox::traceHandle("VornCommonCoppUtils");
}

// One static class. An empty optional is a member the class does not write.
struct CoppClassRow {
  U16 port;
  const char* className;
  U32 bandwidth;
  U32 shape;
  std::optional<U32> hwClassIndex;
  U32 classType;
  std::optional<U32> specialPortIndex;
  std::optional<U32> specialPortBandwidth;
  std::optional<U32> specialPortShape;
};

constexpr std::nullopt_t blank = std::nullopt;

// The class of every CPU traffic-manager port (its port member is not read).
constexpr CoppClassRow kCpuTmPortClass = {
    0, "copp-system-default", 250, 2500, 1, 19, blank, blank, blank};

// The classes of the trap ports, one row per port. The odd values are the
// classes' own and stay as they are: the cfm rates 98 and 1367, the snoop
// classes' special-port shape 20, the vxlan-encapsulation special-port
// bandwidth above its special-port shape, and the drop class without a
// hardware class index.
constexpr CoppClassRow kCoppClasses[] = {
    // port, className, bandwidth, shape, hwClassIndex, classType,
    //   specialPortIndex, specialPortBandwidth, specialPortShape
    {12, "copp-system-vxlan-vtep-learn", 250, 2500, 28, 39, 1, 195, 200},
    {13, "copp-system-ipmcmiss", 250, 2500, 13, 8, 3, 195, 200},
    {14, "copp-system-ipmc", 250, 2500, 11, 22, 3, 195, 200},
    {15, "copp-system-l2broadcast", 250, 2500, 8, 27, 4, 195, 200},
    {16, "copp-system-linklocal", 250, 100000, 4, 33, 5, 195, 400},
    {17, "copp-system-multicastsnoop", 250, 2500, 3, 34, 6, 195, 2500},
    {18, "copp-system-l3ttl1", 250, 2500, 19, 15, 9, 195, 200},
    {19, "copp-system-OspfIsis", 250, 2500, 2, 31, 10, 195, 800},
    {20, "copp-system-vxlan-encapsulation", 250, 200000, 29, 38, 2, 400, 200},
    {21, "copp-system-ptp-snoop", 250, 2500, 39, 52, 11, 195, 20},
    {22, "copp-system-cfm-snoop", 250, 2500, 41, 56, 12, 195, 20},
    {24, "copp-system-igmp", 250, 2500, 17, 10, blank, blank, blank},
    {25, "copp-system-lldp", 250, 2500, 21, 3, blank, blank, blank},
    {26, "copp-system-lacp", 1250, 2500, 24, 2, blank, blank, blank},
    {27, "copp-system-bpdu", 1250, 2500, 25, 1, blank, blank, blank},
    {28, "copp-system-acllog", 250, 2500, 27, 20, blank, blank, blank},
    {29, "copp-system-kfr", 1250, 40000, 36, 49, blank, blank, blank},
    {30, "copp-system-kfr-heartbeat", 250, 2500, 37, 50, blank, blank, blank},
    {31, "copp-system-mvrp", 250, 2500, 31, 42, blank, blank, blank},
    {32, "copp-system-ptp", 250, 2500, 30, 40, blank, blank, blank},
    {33, "copp-system-bfd", 250, 2500, 22, 37, blank, blank, blank},
    {34, "copp-system-bgp", 250, 2500, 23, 35, blank, blank, blank},
    {35, "copp-system-mlag", 1000, 10000, 26, 36, blank, blank, blank},
    {36, "copp-system-l3destmiss", 250, 2500, 14, 9, blank, blank, blank},
    {37, "copp-system-ipunicast", 250, 250000, 12, 21, blank, blank, blank},
    {38, "copp-system-ipbroadcast", 200, 2000, 10, 23, blank, blank, blank},
    {39, "copp-system-l2ucast", 250, 250000, 7, 28, blank, blank, blank},
    {40, "copp-system-l3lpmoverflow", 200, 1000, 6, 32, blank, blank, blank},
    {41, "copp-system-l3ttl1", 250, 2500, 19, 15, 9, 195, 200},
    {42, "copp-system-OspfIsis", 250, 2500, 2, 31, 10, 195, 800},
    {43, "copp-system-mpls-ttl01", 250, 2500, 34, 46, blank, blank, blank},
    {44, "copp-system-mpls-label-miss", 250, 2500, 35, 47, blank, blank, blank},
    {45, "copp-system-mtu", 250, 2500, 32, 44, blank, blank, blank},
    {46, "copp-system-cfm", 98, 1367, 40, 55, blank, blank, blank},
    {47, "copp-system-dot1x-mba", 250, 2500, 42, 54, blank, blank, blank},
    {48, "copp-system-sflow", 250, 1000000, 5, 26, 0, 1000000, 1000},
    {49, "copp-system-mirroring", 250, 1000000, 38, 51, 0, 1000000, 1000},
    {50, "copp-system-arp-inspect", 250, 2500, 43, 57, blank, blank, blank},
    {51, "copp-system-mpls-arp-suppress", 250, 2500, 44, 58, blank, blank, blank},
    {52, "copp-system-ldp", 250, 250000, 45, 63, blank, blank, blank},
    {53, "copp-system-rsvp", 250, 250000, 46, 64, blank, blank, blank},
    {64, "copp-system-drop", 0, 80, blank, 18, blank, blank, blank},
};

// Supported class types that no port's class has.
constexpr U32 kClassTypesWithoutPort[] = {7, 14, 45};

void writeIfSet(const std::optional<U32>& value, U32& member) {
  if (value) member = *value;
}

void applyRow(const CoppClassRow& row, CoppStaticConfig& config) {
  config.className = row.className;
  config.bandwidth = row.bandwidth;
  config.shape = row.shape;
  writeIfSet(row.hwClassIndex, config.hwClassIndex);
  config.classType = static_cast<Qos::ClassMapCpStaticType>(row.classType);
  writeIfSet(row.specialPortIndex, config.specialPortIndex);
  writeIfSet(row.specialPortBandwidth, config.specialPortBandwidth);
  writeIfSet(row.specialPortShape, config.specialPortShape);
}

const CoppClassRow* classOfPort(U32 portNumber) {
  auto row = std::find_if(std::begin(kCoppClasses), std::end(kCoppClasses),
                          [&](const CoppClassRow& r) { return r.port == portNumber; });
  return row == std::end(kCoppClasses) ? nullptr : row;
}

bool classTypeSupported(U32 type) {
  return std::any_of(std::begin(kCoppClasses), std::end(kCoppClasses),
                     [&](const CoppClassRow& r) { return r.classType == type; }) ||
         kCpuTmPortClass.classType == type ||
         std::find(std::begin(kClassTypesWithoutPort), std::end(kClassTypesWithoutPort), type) !=
             std::end(kClassTypesWithoutPort);
}

}  // namespace

bool doGetAradCoppClassParameters(SystemPhyPortId port, CoppStaticConfig& config) {
  if (port.isCpuTmPort()) {
    applyRow(kCpuTmPortClass, config);
    return true;
  }
  const CoppClassRow* row = classOfPort(port.value() & 0xFFFFu);
  if (!row) {
    MOX_TRACE(trace(), 0, "port is ", port);
    MOX_ASSERT_AT(false, "false", kFile, 365,
                  "bool Hardware::Vorn::doGetAradCoppClassParameters(Hardware::Vorn::"
                  "SystemPhyPortId, Hardware::Vorn::CoppStaticConfig&)");
  }
  applyRow(*row, config);
  // The slot follows whatever index the record holds, also one this class
  // did not write.
  if (port.isSpecialCpuPort()) config.specialPortSlot = config.specialPortIndex + 1;
  return true;
}

bool doGetPetraGenericClassParameters(SystemPhyPortId, U32, CoppStaticConfig&) {
  return false;
}

bool doGetPetraSpecialSysPortParameters(SystemPhyPortId, CoppStaticConfig&) {
  return false;
}

bool isClassSupported(Qos::ClassMapCpStaticType type) {
  if (classTypeSupported(static_cast<U32>(type))) return true;
  Mox::failedLine("false", "Unhandled class map type ", type);
  MOX_ASSERT_AT(false, "false", kFile, 502,
                "bool Hardware::Vorn::isClassSupported(Qos::ClassMapCpStaticType)");
  return false;
}

void doGetClassActionRate(Qos::ClassAction::PtrConst action, Qos::ActionRateType& bandwidth,
                          Qos::ActionRateType& shape) {
  if (!action) return;
  constexpr const char kFn[] =
      "void Hardware::Vorn::doGetClassActionRate(Qos::ClassAction::PtrConst, "
      "Qos::ActionRateType&, Qos::ActionRateType&)";
  if (auto pAction = action->policyAction(Qos::actionSetShape)) {
    MOX_ASSERT_AT(pAction->rate(), "pAction->rate()", kFile, 387, kFn);
    shape = pAction->rate()->value();
  }
  if (auto pAction = action->policyAction(Qos::actionSetBandwidth)) {
    MOX_ASSERT_AT(pAction->rate(), "pAction->rate()", kFile, 393, kFn);
    bandwidth = pAction->rate()->value();
  }
}

void doGetBandwidthAndShapeRate(Qos::ClassAction::PtrConst action, U32& bandwidth, U32& shape,
                                CoppStaticConfig config) {
  Qos::ActionRateType b = kRateNotSet;
  Qos::ActionRateType s = kRateNotSet;
  doGetClassActionRate(action, b, s);
  bandwidth = b;
  shape = s;
  if (s == kRateNotSet) shape = config.shape;
  if (b == kRateNotSet) bandwidth = config.bandwidth;
  if (s == kRateUnlimited || (s == kRateNotSet && config.shape == kRateUnlimited))
    shape = kHwNoShaping;
  if (b == kRateUnlimited) bandwidth = 0;
}

void doGetHardwareBandwidthAndShapeRate(Qos::ClassAction::PtrConst action, U32 hwRate, U32 hwLimit,
                                        U32& bandwidth, U32& shape) {
  Qos::ActionRateType b = kRateNotSet;
  Qos::ActionRateType s = kRateNotSet;
  doGetClassActionRate(action, b, s);
  if (s == kRateUnlimited || hwRate == kHwNoShaping) {
    bandwidth = kRateUnlimited;
  } else if (hwLimit == 0 || hwRate <= hwLimit) {
    bandwidth = shape;
  } else {
    bandwidth = bandwidth + shape;  // wraps in 32 bits, as the hardware layer expects
  }
  if (b == kRateUnlimited || shape == kHwNoShaping) {
    shape = kRateUnlimited;
  } else if (hwRate <= hwLimit) {
    shape = bandwidth;
  }  // else the hardware rate is above its limit: the shape stays
}

}  // namespace Hardware::Vorn
