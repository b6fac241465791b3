// Interface names and their helpers on arbitrary text: an interface name or
// a clear error, never a read outside the text.
#include <cstdint>
#include <string>

#include "Vorn/VornCommonUtils.h"
#include "Wirl/IntfId.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string text(reinterpret_cast<const char*>(data), size);
  Mox::String name(text.c_str());  // up to the first NUL, as callers pass names
  vlanNameToId(name);
  bool po = isPortChannel(name);
  bool routed = isRoutedPort(name);
  if (po && !routed) __builtin_trap();
  l3SecondHopPortChannel(name);
  portChannelId(name);
  cellNameToMcastXactStatusDirName(name);
  try {
    Wirl::IntfId id(name);
    if (id.stringValue() != name) __builtin_trap();  // names round-trip
    isForwardingPlaneInterface(id);
    intfShortName(id);
    if (Wirl::EthIntfId::isEthIntfId(id) || Wirl::PortChannelIntfId::isPortChannelIntfId(id))
      intfNameToDeviceName(id);
    if (Wirl::SubIntfId::isSubIntfId(id)) {
      Hardware::Vorn::isLagSubIntf(id);
      Hardware::Vorn::isEthSubIntf(id);
    }
    std::hash<Wirl::IntfId>()(id);
  } catch (const Wirl::InvalidIntfName&) {
  }
  return 0;
}
