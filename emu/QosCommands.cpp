// The QoS, PTP and VXLAN commands of the driver: vprimap, tcmap, dscpmap,
// tc_vpri_map_add, tc_vpri_map_del, tc_vpri_map_update, drop_event_ptp_pkts,
// vnitovlan, vtep_learn_mode.
#include <cerrno>

#include "emu/FabricDriver.h"
#include "emu/Handler.h"
#include "emu/HandlerArgs.h"

namespace Emu {
namespace {

constexpr unsigned kMaxPriority = 7;
constexpr unsigned kMaxTrafficClass = 7;
constexpr unsigned kMaxDscp = 63;
constexpr unsigned kMaxVni = (1u << 24) - 1;
constexpr unsigned long long kMaxTcTableWord = 077777777;  // eight 3-bit fields

// "<keyword> key value" into `map`, each bounded.
int setPair(const Command& c, std::map<unsigned, unsigned>& map, unsigned maxKey,
            unsigned maxValue) {
  unsigned key, value;
  if (c.argc != 2 || !argUnsigned(c.args[0], maxKey, key) ||
      !argUnsigned(c.args[1], maxValue, value))
    return EINVAL;
  map[key] = value;
  return 0;
}

int vprimap(FabricDriver& d, const Command& c, char*, unsigned) {
  return setPair(c, d.host().cosToTc, kMaxPriority, kMaxTrafficClass);
}

int tcmap(FabricDriver& d, const Command& c, char*, unsigned) {
  return setPair(c, d.host().tcToCos, kMaxTrafficClass, kMaxPriority);
}

int dscpmap(FabricDriver& d, const Command& c, char*, unsigned) {
  return setPair(c, d.host().dscpToTc, kMaxDscp, kMaxTrafficClass);
}

// "tc_vpri_map_add name word": the word in octal, class i's priority in
// digit i counted from the right.
int tcVpriMapAdd(FabricDriver& d, const Command& c, char*, unsigned) {
  unsigned long long word;
  if (c.argc != 2 || !parseUnsigned(c.args[1], word, 8) || word > kMaxTcTableWord) return EINVAL;
  HostInterface* intf = hostInterface(d, c.args[0]);
  if (!intf) return ENODEV;
  std::array<unsigned, 8> table;
  for (unsigned i = 0; i < table.size(); ++i) table[i] = (word >> (3 * i)) & 7u;
  intf->tcToVpri = table;
  return 0;
}

int tcVpriMapDel(FabricDriver& d, const Command& c, char*, unsigned) {
  if (c.argc != 1) return EINVAL;
  HostInterface* intf = hostInterface(d, c.args[0]);
  if (!intf) return ENODEV;
  intf->tcToVpri.reset();
  return 0;
}

// One entry; a device without a table gets one of zeros first.
int tcVpriMapUpdate(FabricDriver& d, const Command& c, char*, unsigned) {
  unsigned tc, cos;
  if (c.argc != 3 || !argUnsigned(c.args[1], kMaxTrafficClass, tc) ||
      !argUnsigned(c.args[2], kMaxPriority, cos))
    return EINVAL;
  HostInterface* intf = hostInterface(d, c.args[0]);
  if (!intf) return ENODEV;
  if (!intf->tcToVpri) intf->tcToVpri.emplace();
  (*intf->tcToVpri)[tc] = cos;
  return 0;
}

int dropEventPtpPkts(FabricDriver& d, const Command& c, char*, unsigned) {
  if (c.argc != 1 || (c.args[0] != "on" && c.args[0] != "off")) return EINVAL;
  d.host().dropPtpEventTx = c.args[0] == "on";
  return 0;
}

int vniToVlan(FabricDriver& d, const Command& c, char*, unsigned) {
  return setPair(c, d.host().vniToVlan, kMaxVni, kMaxVlan);
}

int vtepLearnMode(FabricDriver& d, const Command& c, char*, unsigned) {
  unsigned mode;
  if (c.argc != 1 || !argUnsigned(c.args[0], 0xFFFFFFFFull, mode)) return EINVAL;
  d.host().vtepLearnMode = mode;
  return 0;
}

constexpr Handler kHandlers[] = {
    {"vprimap", 256, vprimap},
    {"tcmap", 256, tcmap},
    {"dscpmap", 256, dscpmap},
    {"tc_vpri_map_add", 256, tcVpriMapAdd},
    {"tc_vpri_map_del", 256, tcVpriMapDel},
    {"tc_vpri_map_update", 256, tcVpriMapUpdate},
    {"drop_event_ptp_pkts", 256, dropEventPtpPkts},
    {"vnitovlan", 256, vniToVlan},
    {"vtep_learn_mode", 256, vtepLearnMode},
};

}  // namespace

std::span<const Handler> qosHandlers() {
  return kHandlers;
}

}  // namespace Emu
