// vornctl id ...: conversions between the platform's identifier spaces.
//   id lag [--family F] [--mode M] [--lag L]   LAG bit budgets and aggregate port ids
//   id sysaggr --family F --port P             the LAG id of a system aggregate port
//   id tcam --faps N --fap F --tcam T          system TCAM id (TCAM-major) and back
//   id cpu-tm                                  the CPU traffic-manager ports
//   id linecard (--slot S | --fap-name N | --intf I)
#include <cstdio>
#include <optional>
#include <string>

#include "Vorn/VornCommonUtils.h"
#include "vornctl/Commands.h"
#include "vornctl/Table.h"

using namespace Hardware::Vorn;

namespace vornctl {
namespace {

// Chip families 1 to 3 and LAG modes 0 to 5 are the library's tables; other
// values are caller errors there, so they are refused here first.
FapType family(unsigned f) {
  if (f < 1 || f > 3) throw BadInput("--family", "a chip family from 1 to 3");
  return static_cast<FapType>(f);
}

LagMode mode(unsigned m) {
  if (m > 5) throw BadInput("--mode", "a LAG mode from 0 to 5");
  return static_cast<LagMode>(m);
}

std::string hex(U32 v) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "0x%04x", v);
  return buf;
}

int runLag(Context& ctx, std::optional<unsigned> fam, std::optional<unsigned> mod, unsigned lag) {
  if (lag > LagId::null()) throw BadInput("--lag", "a LAG id from 0 to 1024");
  Table table({"family", "mode", "LAG id bits", "member bits", "members per LAG", "LAG id mask",
               "LAG", "system aggregate port"});
  nlohmann::json rows = nlohmann::json::array();
  for (unsigned f = 1; f <= 3; ++f) {
    if (fam && *fam != f) continue;
    for (unsigned m = 0; m <= 5; ++m) {
      if (mod && *mod != m) continue;
      FapType t = family(f);
      LagMode lm = mode(m);
      U32 port = lagIdToSysAggrPortId(t, LagId(lag));
      table.row({std::to_string(f), std::to_string(m), std::to_string(lagIdBitsForMode(t, lm)),
                 std::to_string(memberIdBitsForMode(t, lm)), std::to_string(maxMemberIdsForMode(t, lm)),
                 hex(lagIdMaskForMode(t, lm)), std::to_string(lag), hex(port)});
      rows.push_back({{"family", f},
                      {"mode", m},
                      {"lagIdBits", lagIdBitsForMode(t, lm)},
                      {"memberIdBits", memberIdBitsForMode(t, lm)},
                      {"maxMemberIds", maxMemberIdsForMode(t, lm)},
                      {"lagIdMask", lagIdMaskForMode(t, lm)},
                      {"lagId", lag},
                      {"sysAggrPortId", port}});
    }
  }
  if (fam) family(*fam);
  if (mod) mode(*mod);
  if (ctx.json())
    ctx.printJson({{"lag", rows}});
  else
    std::printf("%s", table.render().c_str());
  return kOk;
}

int runSysAggr(Context& ctx, unsigned fam, unsigned port) {
  LagId id = sysAggrPortIdToLagId(family(fam), port);  // throws for bits 11 to 14
  if (ctx.json())
    ctx.printJson({{"sysAggrPortId", port}, {"lagId", id.value()}, {"aggregate", !id.isNull()}});
  else if (id.isNull())
    std::printf("%s is not a system aggregate port (LAG id null, 1024)\n", hex(port).c_str());
  else
    std::printf("%s is LAG %u\n", hex(port).c_str(), id.value());
  return kOk;
}

int runTcam(Context& ctx, unsigned faps, unsigned fap, unsigned tcam) {
  if (faps < 1 || faps > 128) throw BadInput("--faps", "FAPs in the system, 1 to 128");
  if (fap >= faps) throw BadInput("--fap", "a FAP id below --faps");
  if (tcam >= LocalTcamId::null()) throw BadInput("--tcam", "a local TCAM id from 0 to 3");
  Status::Ptr status(new Status());
  status->maxFapsInSystemIs(faps);
  status->maxTcamsInSystemIs(faps * LocalTcamId::null());
  Status::PtrConst ro = status;
  SystemTcamId sys = fapLocalTcamIdToSystemTcamId(ro, FapId(static_cast<U16>(fap)),
                                                  LocalTcamId(static_cast<U16>(tcam)));
  FapId back = systemTcamIdToFapId(ro, sys);
  LocalCoreId core = systemTcamIdToLocalCoreId(ro, sys);
  if (ctx.json())
    ctx.printJson({{"faps", faps}, {"fap", fap}, {"localTcam", tcam}, {"systemTcam", sys.value()},
                   {"fapBack", back.value()}, {"localBack", core.value()}});
  else
    std::printf("FAP %u local TCAM %u -> system TCAM %u -> FAP %u, local %u\n", fap, tcam,
                sys.value(), back.value(), core.value());
  return kOk;
}

int runCpuTm(Context& ctx) {
  Table table({"n", "FAP port", "system port"});
  nlohmann::json rows = nlohmann::json::array();
  for (U16 n = 0; n < 6; ++n) {
    FapPortId fp = nthCpuTmFapPortId(n);
    SystemPhyPortId sp = nthCpuTmSystemPhyPortId(n);
    table.row({std::to_string(n), std::to_string(fp.value()), std::to_string(sp.value())});
    rows.push_back({{"n", n}, {"fapPortId", fp.value()}, {"systemPhyPortId", sp.value()}});
  }
  if (ctx.json())
    ctx.printJson({{"cpuTmPorts", rows}});
  else
    std::printf("%s", table.render().c_str());
  return kOk;
}

int runLinecard(Context& ctx, std::optional<unsigned> slot, std::optional<std::string> fapName,
                std::optional<std::string> intf) {
  int given = !!slot + !!fapName + !!intf;
  if (given != 1) throw BadInput("id linecard", "exactly one of --slot, --fap-name, --intf");
  Mox::String name;
  if (slot) {
    name = slotIdToLinecardName(Fru::SlotId(*slot));
  } else if (fapName) {
    const Mox::String text(fapName->c_str());
    if (text.pos("Fap") < 0 && text.pos("Jericho") < 0 && text.pos("Arad") < 0)
      throw BadInput("--fap-name", "a FAP name containing Fap, Jericho or Arad (Jericho3/1)");
    name = fapNameToLinecardName(text);
  } else {
    try {
      Wirl::IntfId id{Mox::String(intf->c_str())};
      if (!Wirl::EthIntfId::isEthIntfId(id)) throw BadInput("--intf", "an Ethernet interface name");
      name = intfIdToLinecardName(id);
    } catch (const Wirl::InvalidIntfName&) {
      throw BadInput("--intf", "an Ethernet interface name (Ethernet3/1)");
    }
  }
  if (ctx.json())
    ctx.printJson({{"linecard", name.stdString()}});
  else
    std::printf("%s\n", name.charPtr());
  return kOk;
}

}  // namespace

void addId(CLI::App& app, Action& action) {
  auto* id = app.add_subcommand("id", "identifier conversions");
  id->require_subcommand(1);

  auto* lag = id->add_subcommand("lag", "LAG bit budgets per chip family and LAG mode");
  static std::optional<unsigned> fam, mod;
  static unsigned lagId = 1;
  lag->add_option("--family", fam, "chip family 1 to 3 (all when absent)");
  lag->add_option("--mode", mod, "LAG mode 0 to 5 (all when absent)");
  lag->add_option("--lag", lagId, "a LAG id 0 to 1024")->capture_default_str();
  lag->callback([&action] { action = [](Context& c) { return runLag(c, fam, mod, lagId); }; });

  auto* sa = id->add_subcommand("sysaggr", "the LAG id of a system aggregate port id");
  static unsigned saFam = 1, saPort = 0;
  sa->add_option("--family", saFam, "chip family 1 to 3")->capture_default_str();
  sa->add_option("--port", saPort, "system aggregate port id (0x8005 or 32773)")->required();
  sa->callback([&action] { action = [](Context& c) { return runSysAggr(c, saFam, saPort); }; });

  auto* tc = id->add_subcommand("tcam", "a FAP's local TCAM as a system TCAM id, and back");
  static unsigned faps = 4, fap = 0, tcam = 0;
  tc->add_option("--faps", faps, "FAPs in the system")->capture_default_str();
  tc->add_option("--fap", fap, "the FAP id")->required();
  tc->add_option("--tcam", tcam, "the local TCAM id 0 to 3")->required();
  tc->callback([&action] { action = [](Context& c) { return runTcam(c, faps, fap, tcam); }; });

  auto* cpu = id->add_subcommand("cpu-tm", "the CPU traffic-manager ports");
  cpu->callback([&action] { action = [](Context& c) { return runCpuTm(c); }; });

  auto* lc = id->add_subcommand("linecard", "the linecard of a slot, a FAP name or an interface");
  static std::optional<unsigned> slot;
  static std::optional<std::string> fapName, intf;
  lc->add_option("--slot", slot, "a slot number");
  lc->add_option("--fap-name", fapName, "a FAP name (Jericho3/1)");
  lc->add_option("--intf", intf, "an Ethernet interface (Ethernet3/1)");
  lc->callback([&action] { action = [](Context& c) { return runLinecard(c, slot, fapName, intf); }; });
}

}  // namespace vornctl
