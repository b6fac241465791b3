// The host-device commands of the driver: ifadd, ifdel, ifportupdate,
// ifstate, native_vlan, vlan_vsi_add, vlan_vsi_del, internalvlan,
// encapvlan_routedport.
#include <cerrno>

#include "emu/FabricDriver.h"
#include "emu/Handler.h"
#include "emu/HandlerArgs.h"

namespace Emu {

HostInterface* hostInterface(FabricDriver& d, std::string_view name) {
  auto it = d.host().interfaces.find(std::string(name));
  return it == d.host().interfaces.end() ? nullptr : &it->second;
}

namespace {

bool isKeyword(std::string_view k) {
  return k.empty() || k == "ctrl" || k == "internallag";
}

// "ifadd name sysport port [devname [mac]] keyword": the keyword is always
// last, empty for a hardware LAG.
int ifadd(FabricDriver& d, const Command& c, char*, unsigned) {
  if (c.argc < 4 || c.argc > 6) return EINVAL;
  HostInterface intf;
  intf.name = std::string(c.args[0]);
  intf.keyword = std::string(c.args[c.argc - 1]);
  if (!argNetdevName(c.args[0]) || !argInt(c.args[1], intf.sysPort) ||
      !argInt(c.args[2], intf.portArg) || !isKeyword(intf.keyword))
    return EINVAL;
  if (c.argc >= 5) {
    if (c.args[3].empty()) return EINVAL;
    intf.devName = std::string(c.args[3]);
  }
  if (c.argc == 6) {
    Wirl::EthAddr mac;
    if (!argMac(c.args[4], mac)) return EINVAL;
    intf.mac = mac;
  }
  if (hostInterface(d, c.args[0])) return EEXIST;
  if (int rc = d.hostNetdevCreate(intf.name)) return rc;
  if (intf.mac && !d.realHostDevices()) d.host().netdevs[intf.name].mac = *intf.mac;
  d.host().interfaces.emplace(intf.name, std::move(intf));
  return 0;
}

int ifdel(FabricDriver& d, const Command& c, char*, unsigned) {
  if (c.argc != 1) return EINVAL;
  if (!hostInterface(d, c.args[0])) return ENODEV;
  std::string name(c.args[0]);
  d.hostNetdevRemove(name);
  d.host().interfaces.erase(name);
  std::erase_if(d.host().routedPortVlans, [&](const auto& e) { return e.second == name; });
  return 0;
}

int ifportupdate(FabricDriver& d, const Command& c, char*, unsigned) {
  int sysPort;
  if (c.argc != 2 || !argInt(c.args[1], sysPort)) return EINVAL;
  HostInterface* intf = hostInterface(d, c.args[0]);
  if (!intf) return ENODEV;
  intf->sysPort = sysPort;
  return 0;
}

int ifstate(FabricDriver& d, const Command& c, char*, unsigned) {
  if (c.argc != 2 || (c.args[1] != "up" && c.args[1] != "down")) return EINVAL;
  HostInterface* intf = hostInterface(d, c.args[0]);
  if (!intf) return ENODEV;
  intf->up = c.args[1] == "up";
  return 0;
}

int nativeVlan(FabricDriver& d, const Command& c, char*, unsigned) {
  bool on;
  unsigned vlan;
  if (c.argc != 3 || !argFlag(c.args[1], on) || !argVlan(c.args[2], vlan)) return EINVAL;
  HostInterface* intf = hostInterface(d, c.args[0]);
  if (!intf) return ENODEV;
  if (on)
    intf->nativeVlan = vlan;
  else
    intf->nativeVlan.reset();
  return 0;
}

// The range and inner VLAN of a "vlan_vsi_*" command; false when the range is
// not one.
bool vlanRange(const Command& c, VlanRange& range) {
  unsigned first, last, inner;
  if (!argVlan(c.args[1], first) || !argVlan(c.args[2], last) || !argVlan(c.args[3], inner) ||
      first > last)
    return false;
  range = {first, last, inner};
  return true;
}

int vlanVsiAdd(FabricDriver& d, const Command& c, char*, unsigned) {
  VlanRange range;
  unsigned vsi;
  if (c.argc != 5 || !vlanRange(c, range) || !argUnsigned(c.args[4], 0xFFFF, vsi)) return EINVAL;
  HostInterface* intf = hostInterface(d, c.args[0]);
  if (!intf) return ENODEV;
  if (!intf->vlanToVsi.emplace(range, vsi).second) return EEXIST;
  return 0;
}

int vlanVsiDel(FabricDriver& d, const Command& c, char*, unsigned) {
  VlanRange range;
  if (c.argc != 4 || !vlanRange(c, range)) return EINVAL;
  HostInterface* intf = hostInterface(d, c.args[0]);
  if (!intf) return ENODEV;
  return intf->vlanToVsi.erase(range) ? 0 : ENOENT;
}

// "internalvlan vlan name": the VLAN comes first.
int internalVlan(FabricDriver& d, const Command& c, char*, unsigned) {
  unsigned vlan;
  if (c.argc != 2 || !argVlan(c.args[0], vlan)) return EINVAL;
  if (!hostInterface(d, c.args[1])) return ENODEV;
  d.host().routedPortVlans[vlan] = std::string(c.args[1]);
  return 0;
}

int encapVlanRoutedPort(FabricDriver& d, const Command& c, char*, unsigned) {
  unsigned tag;
  if (c.argc != 2 || !argVlan(c.args[1], tag)) return EINVAL;
  HostInterface* intf = hostInterface(d, c.args[0]);
  if (!intf) return ENODEV;
  intf->encapVlan = tag;
  return 0;
}

constexpr Handler kHandlers[] = {
    {"ifadd", 256, ifadd},
    {"ifdel", 256, ifdel},
    {"ifportupdate", 256, ifportupdate},
    {"ifstate", 256, ifstate},
    {"native_vlan", 256, nativeVlan},
    {"vlan_vsi_add", 256, vlanVsiAdd},
    {"vlan_vsi_del", 256, vlanVsiDel},
    {"internalvlan", 256, internalVlan},
    {"encapvlan_routedport", 256, encapVlanRoutedPort},
};

}  // namespace

std::span<const Handler> hostHandlers() {
  return kHandlers;
}

}  // namespace Emu
