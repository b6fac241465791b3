// Argument conversions the command handlers share. Each is false when the
// token is not what the driver accepts, which the handlers answer with 22.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Wirl/EthAddr.h"
#include "emu/Command.h"
#include "emu/HostState.h"

namespace Emu {

class FabricDriver;

// The host device `name` that the driver created, or null.
HostInterface* hostInterface(FabricDriver& d, std::string_view name);

inline constexpr unsigned kMaxVlan = 4095;
inline constexpr unsigned kMaxNetdevName = 15;  // the kernel's limit, without the NUL

// An unsigned number no larger than `max`.
inline bool argUnsigned(std::string_view token, unsigned long long max, unsigned& out,
                        int base = 10) {
  unsigned long long v;
  if (!parseUnsigned(token, v, base) || v > max) return false;
  out = static_cast<unsigned>(v);
  return true;
}

// A signed 32-bit number.
inline bool argInt(std::string_view token, int& out) {
  long long v;
  if (!parseSigned(token, v) || v < INT32_MIN || v > INT32_MAX) return false;
  out = static_cast<int>(v);
  return true;
}

// "0" or "1".
inline bool argFlag(std::string_view token, bool& out) {
  if (token != "0" && token != "1") return false;
  out = token == "1";
  return true;
}

// A VLAN id, 0 to 4095.
inline bool argVlan(std::string_view token, unsigned& out) {
  return argUnsigned(token, kMaxVlan, out);
}

// A MAC address "02:00:00:aa:bb:cc".
inline bool argMac(std::string_view token, Wirl::EthAddr& out) {
  return Wirl::EthAddr::parse(std::string(token).c_str(), out);
}

// A netdevice name the kernel accepts.
inline bool argNetdevName(std::string_view token) {
  return !token.empty() && token.size() <= kMaxNetdevName;
}

}  // namespace Emu
