// What the driver keeps about host network devices, VLANs, QoS maps, VXLAN,
// L3/MLAG settings and the virtual cable, and the host side of its devices
// (the kernel's view of each netdevice: MAC address and flags).
#pragma once

#include <net/if.h>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>

#include "Wirl/EthAddr.h"

namespace Emu {

// A VLAN range of a device with its inner VLAN: the key of a VSI mapping.
using VlanRange = std::tuple<unsigned, unsigned, unsigned>;  // first, last, inner

// A host device that the driver created with "ifadd".
struct HostInterface {
  std::string name;
  int sysPort = 0;
  int portArg = 0;                   // the second port number, as the caller gave it
  std::string devName;               // the kernel device name; empty when not given
  std::string keyword;               // "ctrl", "internallag" or "" (hardware LAG)
  std::optional<Wirl::EthAddr> mac;  // given with the command (SAI mode)
  std::optional<bool> up;            // "ifstate"; unset until told
  std::optional<unsigned> nativeVlan;
  std::map<VlanRange, unsigned> vlanToVsi;
  std::optional<unsigned> encapVlan;
  // The traffic-class-to-priority table: entry i is the priority of class i.
  std::optional<std::array<unsigned, 8>> tcToVpri;
  std::optional<unsigned> muxId;
};

// The kernel's side of a netdevice: what SIOCSIFHWADDR / SIOCGIFFLAGS /
// SIOCSIFFLAGS see.
struct HostNetdev {
  Wirl::EthAddr mac;
  std::uint16_t hwFamily = 1;  // ARPHRD_ETHER
  // IFF_* bits: a new device is down, with the broadcast and multicast bits
  // every Ethernet netdevice starts with.
  std::uint16_t flags = IFF_BROADCAST | IFF_MULTICAST;
};

struct HostState {
  // Driver state.
  std::map<std::string, HostInterface> interfaces;
  std::map<unsigned, std::string> routedPortVlans;  // internal VLAN -> device
  std::map<unsigned, unsigned> cosToTc;             // "vprimap"
  std::map<unsigned, unsigned> tcToCos;             // "tcmap"
  std::map<unsigned, unsigned> dscpToTc;            // "dscpmap"
  bool dropPtpEventTx = false;
  std::map<unsigned, unsigned> vniToVlan;
  std::optional<unsigned> vtepLearnMode;
  std::optional<Wirl::EthAddrWithMask> virtualMac;
  std::set<unsigned> ipVirtualVlans;
  std::set<unsigned> ip6VirtualVlans;
  std::optional<Wirl::EthAddr> mlagPeerMac;
  std::optional<Wirl::EthAddr> mlagSharedMac;
  std::set<unsigned> arpSnoopingVlans;
  std::map<unsigned, unsigned> pvlanPrimaryOf;  // secondary -> primary
  std::map<unsigned, bool> vlanRouting;
  std::optional<unsigned> vcableProto;

  // The host side: netdevices by name, as the kernel would list them.
  std::map<std::string, HostNetdev> netdevs;
};

}  // namespace Emu
