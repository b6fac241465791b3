// QoS maps, the per-device traffic-class tables, the PTP drop switch, the
// VXLAN settings and the internal form of a hardware-LAG system port.
#include <cerrno>

#include "Vorn/VornDma.h"
#include "Vorn/VornDmaPrivate.h"
#include "Vorn/VornDmaRefusal.h"

namespace Hardware::Vorn {
namespace {

using dma::command;
using dma::sendPair;
using dma::simulation;
using End = dma::RefusalRule::End;

// The answer rule of each command. A refused QoS map is a broken driver; the
// per-device tables tolerate a missing device and, for add and update, an
// argument the driver rejects.
constexpr dma::RefusalRule kCosToTcRule = {false, End::unlessListed, {}};
constexpr dma::RefusalRule kTcToCosRule = {false, End::unlessListed, {}};
constexpr dma::RefusalRule kDscpToTcRule = {true, End::unlessListed, {}};
constexpr dma::RefusalRule kTcMapAddRule = {true, End::unlessListed, {EINVAL, ENODEV}};
constexpr dma::RefusalRule kTcMapDelRule = {true, End::unlessListed, {ENODEV}};
constexpr dma::RefusalRule kTcMapUpdateRule = {true, End::unlessListed, {EINVAL, ENODEV}};
constexpr dma::RefusalRule kPtpDropRule = {true, End::never, {}};
constexpr dma::RefusalRule kVxlanRule = {true, End::never, {}};

constexpr unsigned kTrafficClasses = 8;

}  // namespace

unsigned int vornDmaSetCosToTc(unsigned int cos, unsigned int tc) {
  if (simulation()) return 0;
  return sendPair("vornDmaSetCosToTc", "vprimap", cos, tc, kCosToTcRule);
}

unsigned int vornDmaSetTcToCos(unsigned int tc, unsigned int cos) {
  if (simulation()) return 0;
  return sendPair("vornDmaSetTcToCos", "tcmap", tc, cos, kTcToCosRule);
}

unsigned int vornDmaSetDscpToTc(unsigned int dscp, unsigned int tc) {
  if (simulation()) return 0;
  return sendPair("vornDmaSetDscpToTc", "dscpmap", dscp, tc, kDscpToTcRule);
}

unsigned int vornDmaTcToVpriMapAdd(const char* ifname, unsigned int* map) {
  if (simulation()) return 0;
  // One octal digit per class, class 0 last. Entries are not masked: the
  // driver's contract is three bits each, and a larger value spills over.
  unsigned int word = 0;
  for (unsigned i = 0; i < kTrafficClasses; ++i) word |= map[i] << (3 * i);
  VORN_DMA_TRACE(2, "vornDmaTcToVpriMapAdd", ": applying mapping ", std::oct, word, std::dec,
                 " on ", ifname);
  dma::CommandBuffer buf;
  command<"tc_vpri_map_add %s %o">(buf, ifname, word);
  return VORN_DMA_SEND("vornDmaTcToVpriMapAdd", buf, kTcMapAddRule);
}

unsigned int vornDmaTcToVpriMapDel(const char* ifname) {
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"tc_vpri_map_del %s">(buf, ifname);
  return VORN_DMA_SEND("vornDmaTcToVpriMapDel", buf, kTcMapDelRule);
}

unsigned int vornDmaTcToVpriMapUpdate(const char* ifname, unsigned int tc, unsigned int cos) {
  if (simulation()) return 0;
  VORN_DMA_TRACE(8, "vornDmaTcToVpriMapUpdate", ": updating mapping tc ", tc, " to cos ", cos);
  dma::CommandBuffer buf;
  command<"tc_vpri_map_update %s %u %u">(buf, ifname, tc, cos);
  return VORN_DMA_SEND("vornDmaTcToVpriMapUpdate", buf, kTcMapUpdateRule);
}

unsigned int vornDmaSetPtpDropEventTxPkts(bool drop) {
  if (simulation()) return 0;
  dma::CommandBuffer buf;
  command<"drop_event_ptp_pkts %s">(buf, drop ? "on" : "off");
  return VORN_DMA_SEND("vornDmaSetPtpDropEventTxPkts", buf, kPtpDropRule);
}

// The VXLAN setters always reach the driver, also in simulation, and have no
// answer for their caller.
void vornDmaVniToVlanIs(unsigned int vni, unsigned int vlanId) {
  VORN_DMA_TRACE(8, "vornDmaVniToVlanIs", ": vni: ", vni, " vlanId ", vlanId);
  sendPair("vornDmaVniToVlanIs", "vnitovlan", vni, vlanId, kVxlanRule);
}

void vornDmaVtepLearnModeIs(unsigned int mode) {
  VORN_DMA_TRACE(8, "vornDmaVtepLearnModeIs", ": VxlanVtepLearnMode: ", mode);
  dma::CommandBuffer buf;
  command<"vtep_learn_mode %u">(buf, mode);
  VORN_DMA_SEND("vornDmaVtepLearnModeIs", buf, kVxlanRule);
}

unsigned short vornDmaInternalSysPortIdIs(unsigned short sysPortId) {
  return static_cast<unsigned short>((sysPortId & 0x3FFFu) | ((sysPortId >> 1) & 0x4000u));
}

}  // namespace Hardware::Vorn
