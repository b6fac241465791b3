// The L3, MLAG and virtual-cable commands of the driver: virtualmac,
// vlanipaddrvirtual, vlanip6addrvirtual, mlagpeermac, mlag_shared_mac,
// arp_snooping_vlan, pvlanmap, vlanroutingstatus, vcable_proto, vcable_muxid.
#include <cerrno>

#include "emu/FabricDriver.h"
#include "emu/Handler.h"
#include "emu/HandlerArgs.h"

namespace Emu {
namespace {

int virtualMac(FabricDriver& d, const Command& c, char*, unsigned) {
  Wirl::EthAddr addr, mask;
  if (c.argc != 2 || !argMac(c.args[0], addr) || !argMac(c.args[1], mask)) return EINVAL;
  d.host().virtualMac = Wirl::EthAddrWithMask(addr, mask);
  return 0;
}

// "<keyword> vlan 0|1" into a set of VLANs.
int vlanSwitch(const Command& c, std::set<unsigned>& vlans) {
  unsigned vlan;
  bool on;
  if (c.argc != 2 || !argVlan(c.args[0], vlan) || !argFlag(c.args[1], on)) return EINVAL;
  if (on)
    vlans.insert(vlan);
  else
    vlans.erase(vlan);
  return 0;
}

int vlanIpAddrVirtual(FabricDriver& d, const Command& c, char*, unsigned) {
  return vlanSwitch(c, d.host().ipVirtualVlans);
}

int vlanIp6AddrVirtual(FabricDriver& d, const Command& c, char*, unsigned) {
  return vlanSwitch(c, d.host().ip6VirtualVlans);
}

int arpSnoopingVlan(FabricDriver& d, const Command& c, char*, unsigned) {
  return vlanSwitch(c, d.host().arpSnoopingVlans);
}

int setMac(const Command& c, std::optional<Wirl::EthAddr>& slot) {
  Wirl::EthAddr mac;
  if (c.argc != 1 || !argMac(c.args[0], mac)) return EINVAL;
  slot = mac;
  return 0;
}

int mlagPeerMac(FabricDriver& d, const Command& c, char*, unsigned) {
  return setMac(c, d.host().mlagPeerMac);
}

int mlagSharedMac(FabricDriver& d, const Command& c, char*, unsigned) {
  return setMac(c, d.host().mlagSharedMac);
}

// "pvlanmap primary secondary"; a VLAN cannot be its own secondary.
int pvlanMap(FabricDriver& d, const Command& c, char*, unsigned) {
  unsigned primary, secondary;
  if (c.argc != 2 || !argVlan(c.args[0], primary) || !argVlan(c.args[1], secondary) ||
      primary == secondary)
    return EINVAL;
  d.host().pvlanPrimaryOf[secondary] = primary;
  return 0;
}

int vlanRoutingStatus(FabricDriver& d, const Command& c, char*, unsigned) {
  unsigned vlan;
  bool enabled;
  if (c.argc != 2 || !argVlan(c.args[0], vlan) || !argFlag(c.args[1], enabled)) return EINVAL;
  d.host().vlanRouting[vlan] = enabled;
  return 0;
}

// "vcable_proto <hex EtherType>", no prefix.
int vcableProto(FabricDriver& d, const Command& c, char*, unsigned) {
  unsigned proto;
  if (c.argc != 1 || !argUnsigned(c.args[0], 0xFFFF, proto, 16)) return EINVAL;
  d.host().vcableProto = proto;
  return 0;
}

int vcableMuxid(FabricDriver& d, const Command& c, char*, unsigned) {
  unsigned muxid;
  if (c.argc != 2 || !argUnsigned(c.args[1], 0xFFFF, muxid)) return EINVAL;
  HostInterface* intf = hostInterface(d, c.args[0]);
  if (!intf) return ENODEV;
  intf->muxId = muxid;
  return 0;
}

constexpr Handler kHandlers[] = {
    {"virtualmac", 256, virtualMac},
    {"vlanipaddrvirtual", 256, vlanIpAddrVirtual},
    {"vlanip6addrvirtual", 256, vlanIp6AddrVirtual},
    {"mlagpeermac", 256, mlagPeerMac},
    {"mlag_shared_mac", 256, mlagSharedMac},
    {"arp_snooping_vlan", 256, arpSnoopingVlan},
    {"pvlanmap", 256, pvlanMap},
    {"vlanroutingstatus", 256, vlanRoutingStatus},
    {"vcable_proto", 256, vcableProto},
    {"vcable_muxid", 256, vcableMuxid},
};

}  // namespace

std::span<const Handler> l3Handlers() {
  return kHandlers;
}

}  // namespace Emu
