// The device commands of the driver: devpresent, devname, devparams,
// devcleanup, devstate, devstats, devlist, devparamslist, mpcmode.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "emu/FabricDriver.h"
#include "emu/Handler.h"

namespace Emu {
namespace {

Device* findDevice(FabricDriver& d, std::string_view name) {
  auto it = d.devices().devices.find(std::string(name));
  return it == d.devices().devices.end() ? nullptr : &it->second;
}

bool present(const DeviceState& devices, const std::string& pci) {
  return devices.anyPciPresent || devices.pciPresent.count(pci);
}

int devpresent(FabricDriver& d, const Command& c, char*, unsigned) {
  if (c.argc != 1) return EINVAL;
  return present(d.devices(), std::string(c.args[0])) ? 0 : ENODEV;
}

int devname(FabricDriver& d, const Command& c, char*, unsigned) {
  if (c.argc != 2 || c.args[0].empty()) return EINVAL;
  std::string name(c.args[0]), pci(c.args[1]);
  if (pci != "nopcidev" && !present(d.devices(), pci)) return ENODEV;
  auto& devices = d.devices().devices;
  if (devices.count(name)) return EEXIST;
  for (const auto& [other, dev] : devices)
    if (pci != "nopcidev" && dev.pci == pci) return EEXIST;  // the device has its name already
  Device dev;
  dev.name = name;
  dev.pci = pci;
  devices.emplace(name, dev);
  return 0;
}

int devparams(FabricDriver& d, const Command& c, char*, unsigned) {
  if (c.argc != 9) return EINVAL;
  unsigned long long v[8];
  for (unsigned i = 0; i < 8; ++i)
    if (!parseUnsigned(c.args[i + 1], v[i]) || v[i] > 0xFFFFFFFFull) return EINVAL;
  Device* dev = findDevice(d, c.args[0]);
  if (!dev) return ENODEV;
  if (dev->paramsSet) return EBUSY;
  dev->fapType = static_cast<std::uint32_t>(v[0]);
  dev->fapId = static_cast<std::uint32_t>(v[1]);
  for (unsigned i = 0; i < 6; ++i) dev->params[i] = static_cast<std::uint32_t>(v[i + 2]);
  dev->paramsSet = true;
  return 0;
}

int devcleanup(FabricDriver& d, const Command& c, char*, unsigned) {
  if (c.argc != 1) return EINVAL;
  Device* dev = findDevice(d, c.args[0]);
  if (!dev) return ENODEV;
  dev->paramsSet = false;
  dev->params = {};
  dev->up = false;
  return 0;
}

int devstate(FabricDriver& d, const Command& c, char*, unsigned) {
  if (c.argc != 2 || (c.args[1] != "up" && c.args[1] != "down")) return EINVAL;
  Device* dev = findDevice(d, c.args[0]);
  if (!dev) return ENODEV;
  dev->up = c.args[1] == "up";
  return 0;
}

int devstats(FabricDriver& d, const Command& c, char* buf, unsigned size) {
  if (c.argc != 1) return EINVAL;
  Device* dev = findDevice(d, c.args[0]);
  if (!dev) return ENODEV;
  // The record: a header word, the up word at byte 4, the driver's counters.
  std::memset(buf, 0, size);
  std::uint32_t words[2] = {dev->statsHeader, dev->up ? 1u : 0u};
  std::memcpy(buf, words, sizeof words);
  return 0;
}

int listing(char* buf, unsigned size, const std::string& text) {
  if (text.size() + 1 > size) return ENOSPC;
  std::memcpy(buf, text.c_str(), text.size() + 1);
  return 0;
}

int devlist(FabricDriver& d, const Command& c, char* buf, unsigned size) {
  if (c.argc != 0) return EINVAL;
  std::string text;
  for (const auto& [name, dev] : d.devices().devices)
    if (dev.up) text += name + " " + dev.pci + "\n";
  return listing(buf, size, text);
}

int devparamslist(FabricDriver& d, const Command& c, char* buf, unsigned size) {
  if (c.argc != 0) return EINVAL;
  std::string text;
  char line[256];
  for (const auto& [name, dev] : d.devices().devices) {
    if (!dev.paramsSet) continue;
    std::snprintf(line, sizeof line, "%s type %u fap %u params %u %u %u %u %u %u\n", name.c_str(),
                  dev.fapType, dev.fapId, dev.params[0], dev.params[1], dev.params[2],
                  dev.params[3], dev.params[4], dev.params[5]);
    text += line;
  }
  return listing(buf, size, text);
}

int mpcmode(FabricDriver& d, const Command& c, char*, unsigned) {
  if (c.argc != 1 || (c.args[0] != "on" && c.args[0] != "off")) return EINVAL;
  d.devices().mpcMode = c.args[0] == "on";
  return 0;
}

constexpr Handler kHandlers[] = {
    {"devpresent", 256, devpresent}, {"devname", 256, devname},
    {"devparams", 256, devparams},   {"devcleanup", 256, devcleanup},
    {"devstate", 256, devstate},     {"devstats", 96, devstats},
    {"devlist", 6240, devlist},      {"devparamslist", 6240, devparamslist},
    {"mpcmode", 256, mpcmode},
};

}  // namespace

std::span<const Handler> deviceHandlers() {
  return kHandlers;
}

}  // namespace Emu
