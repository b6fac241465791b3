// Router MACs, virtual addresses, ARP snooping, private VLANs, VLAN routing
// and the virtual-cable settings of the driver.
//
// Entry messages: the MAC, virtual-address and virtual-cable commands write a
// ring-trace block message; ARP snooping, private VLANs and VLAN routing write
// a "VornDma" trace line at level 8 (function entry) instead. Their pieces are
// concatenated as they stand, so "vornDmaPvlanMapPrimary vlanId=..." is what
// operators see. MAC texts cost one small allocation each (the platform's
// EthAddr forms); these commands are rare.
#include <cerrno>

#include "Ringlog/Ringlog.h"
#include "Vorn/VornDma.h"
#include "Vorn/VornDmaPrivate.h"
#include "Vorn/VornDmaRefusal.h"

namespace Hardware::Vorn {
namespace {

using dma::command;
using dma::sendPair;
using dma::simulation;
using End = dma::RefusalRule::End;

// The answer rules. Here, unlike the per-device traffic-class tables, an
// invalid argument (22) is the library's fault and ends the process; a missing
// device and the like are returned. The virtual cable never ends it.
constexpr dma::RefusalRule kL3Rule = {true, End::onlyListed, {EINVAL}};
constexpr dma::RefusalRule kVlanRoutingRule = {true, End::onlyListed, {EINVAL}, " error= "};
constexpr dma::RefusalRule kVcableRule = {true, End::never, {}};

unsigned int sendMac(const char* fn, const char* keyword, const Wirl::EthAddr& mac) {
  dma::CommandBuffer buf;
  command<"%s %s">(buf, keyword, mac.stringValue().charPtr());
  return VORN_DMA_SEND(fn, buf, kL3Rule);
}

}  // namespace

unsigned int vornDmaVirtualMacSet(Wirl::EthAddrWithMask mac) {
  RINGLOG_BLOCK("vornDmaVirtualMacSet %s mask= %s", mac.addr().displayString(),
                mac.mask().displayString());
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"virtualmac %s %s">(buf, mac.addr().stringValue().charPtr(),
                              mac.mask().stringValue().charPtr());
  return VORN_DMA_SEND("vornDmaVirtualMacSet", buf, kL3Rule);
}

unsigned int vornDmaIpAddrVirtualSet(unsigned int vlanId, bool enable) {
  RINGLOG_BLOCK("vornDmaIpAddrVirtualSet vlanId: %u enable: %u", vlanId, unsigned{enable});
  if (simulation()) return 0;
  return sendPair("vornDmaIpAddrVirtualSet", "vlanipaddrvirtual", vlanId, unsigned{enable},
                  kL3Rule);
}

unsigned int vornDmaIp6AddrVirtualSet(unsigned int vlanId, bool enable) {
  RINGLOG_BLOCK("vornDmaIp6AddrVirtualSet vlanId: %u enable: %u", vlanId, unsigned{enable});
  if (simulation()) return 0;
  return sendPair("vornDmaIp6AddrVirtualSet", "vlanip6addrvirtual", vlanId, unsigned{enable},
                  kL3Rule);
}

unsigned int vornDmaPeerRouterMacSet(Wirl::EthAddr mac) {
  RINGLOG_BLOCK("vornDmaPeerRouterMacSet %s", mac.displayString());
  if (simulation()) return 0;
  return sendMac("vornDmaPeerRouterMacSet", "mlagpeermac", mac);
}

unsigned int vornDmaMlagSharedRouterMacIs(Wirl::EthAddr mac) {
  // The entry message says "Set", as the operators' tools expect.
  RINGLOG_BLOCK("vornDmaMlagSharedRouterMacSet %s", mac.displayString());
  if (simulation()) return 0;
  return sendMac("vornDmaMlagSharedRouterMacIs", "mlag_shared_mac", mac);
}

unsigned int vornDmaArpSnoopingVlan(unsigned short vlanId, bool on) {
  VORN_DMA_TRACE(8, "vornDmaArpSnoopingVlan", " vlanId=", vlanId, " on=", on);
  if (simulation()) return 0;
  return sendPair("vornDmaArpSnoopingVlan", "arp_snooping_vlan", unsigned{vlanId}, unsigned{on},
                  kL3Rule);
}

unsigned int vornDmaPvlanMap(unsigned short primary, unsigned short secondary) {
  VORN_DMA_TRACE(8, "vornDmaPvlanMap", "Primary vlanId=", primary, " Secondary VlanId=", secondary);
  if (simulation()) return 0;
  return sendPair("vornDmaPvlanMap", "pvlanmap", unsigned{primary}, unsigned{secondary}, kL3Rule);
}

unsigned int vornDmaVlanRoutingStatus(unsigned short vlanId, unsigned short enabled) {
  VORN_DMA_TRACE(8, "vornDmaVlanRoutingStatus", "vlanId=", vlanId, " enabled=", enabled);
  if (simulation()) return 0;
  return sendPair("vornDmaVlanRoutingStatus", "vlanroutingstatus", unsigned{vlanId},
                  unsigned{enabled}, kVlanRoutingRule);
}

unsigned int vornDmaVcableSetProto(unsigned short proto) {
  RINGLOG_BLOCK("vornDmaVcableSetProto proto=%u", unsigned{proto});
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"vcable_proto %hx">(buf, proto);
  return VORN_DMA_SEND("vornDmaVcableSetProto", buf, kVcableRule);
}

unsigned int vornDmaVcableSetMuxid(const char* ifname, unsigned short muxid) {
  RINGLOG_BLOCK("vornDmaVcableSetMuxid ifname=%s muxid=%u", ifname, unsigned{muxid});
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"vcable_muxid %s %hu">(buf, ifname, muxid);
  return VORN_DMA_SEND("vornDmaVcableSetMuxid", buf, kVcableRule);
}

}  // namespace Hardware::Vorn
