// Building and printing LAG records in the LAG tests.
#pragma once

#include <initializer_list>
#include <ostream>
#include <utility>

#include "HardwareVorn/VornDmaLags.h"

namespace Hardware::Vorn {

// Readable failures: "po3 id 5 {et1:0 et2:1} config {et7}".
inline void PrintTo(const LagDevice& lag, std::ostream* os) {
  *os << lag.name() << " id " << lag.lagId() << " {";
  for (const auto& [name, member] : lag.lagMemberDevices())
    *os << ' ' << name << ':' << member.memberId() << (member.active() ? "+" : "");
  *os << " } config {";
  for (const auto& [name, value] : lag.lagMemberConfigs())
    *os << ' ' << name << (value ? "" : "=0");
  *os << " } " << lag.sysAggrPortId() << '/' << static_cast<unsigned>(lag.lagMode());
}

}  // namespace Hardware::Vorn

namespace VornTest {

using MemberList = std::initializer_list<std::pair<const char*, unsigned>>;

// A LAG as the listing yields it: members (name, id) not active, config
// members true.
inline Hardware::Vorn::LagDevice lagDevice(const char* name, Hardware::Vorn::LagId lagId,
                                           MemberList members = {},
                                           std::initializer_list<const char*> config = {}) {
  using namespace Hardware::Vorn;
  LagDevice lag(name, lagId);
  for (const auto& [member, id] : members)
    lag.lagMemberDeviceIs(LagMemberDevice(member, LagMemberId(static_cast<U16>(id)), false));
  for (const char* intf : config) lag.lagMemberConfigIs(intf, true);
  return lag;
}

inline Hardware::Vorn::VornDmaLags::LagDeviceMap lagTable(
    std::initializer_list<Hardware::Vorn::LagDevice> lags) {
  Hardware::Vorn::VornDmaLags::LagDeviceMap out;
  for (const auto& lag : lags) out.emplace(lag.name(), lag);
  return out;
}

}  // namespace VornTest
