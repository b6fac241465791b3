// What the driver keeps about its devices (the forwarding processors).
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace Emu {

struct Device {
  std::string name;
  std::string pci;  // "0000:03:00.0", or "nopcidev"
  bool paramsSet = false;
  std::uint32_t fapType = 0;
  std::uint32_t fapId = 0;
  std::array<std::uint32_t, 6> params{};
  bool up = false;
  std::uint32_t statsHeader = 0;  // the first word of the statistics record
};

struct DeviceState {
  // PCI addresses of the processors the driver has probed; with
  // anyPciPresent, every address (a virtual switch has whatever chips are
  // brought up).
  std::set<std::string> pciPresent;
  bool anyPciPresent = false;
  // Named devices by name.
  std::map<std::string, Device> devices;
  bool mpcMode = false;
};

}  // namespace Emu
