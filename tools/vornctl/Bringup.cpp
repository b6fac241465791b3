// vornctl bringup: a scripted bring-up of a whole system through the library.
#include "vornctl/Bringup.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "Ringlog/RingFile.h"
#include "Vorn/VornCommonUtils.h"
#include "Vorn/VornDma.h"
#include "vornctl/Commands.h"
#include "vornctl/Lags.h"

using namespace Hardware::Vorn;

namespace vornctl {

SystemPlan planSystem(bool chassis, unsigned linecards) {
  SystemPlan plan;
  plan.chassis = chassis;
  plan.linecards = chassis ? linecards : 1;
  unsigned fap = 0;
  for (unsigned lc = 0; lc < plan.linecards; ++lc) {
    for (unsigned i = 0; i < 2; ++i, ++fap) {
      Chip c;
      c.name = "fap" + std::to_string(fap);
      c.pci = {0, static_cast<std::uint8_t>(3 + fap), 0, 0};
      c.fapId = fap;
      c.linecard = chassis ? lc + 1 : 0;
      plan.chips.push_back(c);
    }
  }
  return plan;
}

namespace {

std::string pciText(const Fru::PciAddress& a) {
  char text[32];
  std::snprintf(text, sizeof text, "%04x:%02x:%02x.%1x", a.domain, a.bus, a.device, a.function);
  return text;
}

std::vector<Step> chipSteps(const SystemPlan& plan) {
  std::vector<Step> steps;
  for (const Chip& c : plan.chips) {
    auto ham = Fru::PciHam::pciHamIs(c.pci);
    Mox::String name(c.name.c_str());
    steps.push_back(
        {"devpresent " + c.name, [=] { return vornDmaPresent(name, ham) ? 0 : ENODEV; }});
    steps.push_back({"devname " + c.name, [=] { return vornDmaDeviceRename(name, ham); }});
    steps.push_back({"devparams " + c.name, [=] {
                       return vornDmaDeviceParam(name, fapTypeJericho,
                                                 FapId(static_cast<U16>(c.fapId)), c.linecard, 0, 0,
                                                 0, 0, 0);
                     }});
    steps.push_back({"devstate " + c.name + " up", [=] { return vornDmaDeviceUp(name); }});
  }
  return steps;
}

// The front-panel ports of the system: eight per chip, named as the platform
// names interfaces, with the host device name the library derives.
struct Port {
  std::string intf;    // "Ethernet3" or "Ethernet2/3"
  std::string device;  // its host device, from the library
  int sysPort;
  std::string mac;
};

constexpr unsigned kPortsPerChip = 8;
constexpr unsigned kLagMode = 3;  // 256 LAGs, 64 members each

std::vector<Port> frontPanelPorts(const SystemPlan& plan) {
  std::vector<Port> ports;
  unsigned index = 0;
  for (const Chip& c : plan.chips) {
    for (unsigned i = 0; i < kPortsPerChip; ++i, ++index) {
      Port p;
      unsigned number = (index % (2 * kPortsPerChip)) + 1;
      p.intf = plan.chassis ? "Ethernet" + std::to_string(c.linecard) + "/" + std::to_string(number)
                            : "Ethernet" + std::to_string(number);
      p.device = intfNameToDeviceName(Wirl::IntfId(Mox::String(p.intf.c_str()))).stdString();
      p.sysPort = static_cast<int>(100 + index);
      char mac[32];
      std::snprintf(mac, sizeof mac, "02:00:00:00:%02x:%02x", (index >> 8) & 0xff, index & 0xff);
      p.mac = mac;
      ports.push_back(p);
    }
  }
  return ports;
}

// A port-channel per four front-panel ports: the first two are members, the
// other two config members.
struct PortChannel {
  int number;
  std::string device;  // "PortChannel<N>", the LAG's host device
  std::vector<std::string> members, configMembers;
};

std::vector<PortChannel> portChannels(const std::vector<Port>& ports) {
  std::vector<PortChannel> out;
  for (std::size_t i = 0; i + 3 < ports.size(); i += 4) {
    PortChannel pc;
    pc.number = static_cast<int>(i / 4 + 1);
    pc.device = "PortChannel" + std::to_string(pc.number);
    pc.members = {ports[i].device, ports[i + 1].device};
    pc.configMembers = {ports[i + 2].device, ports[i + 3].device};
    out.push_back(pc);
  }
  return out;
}

void hostAndQosSteps(const std::vector<Port>& ports, std::vector<Step>& steps) {
  for (unsigned cos = 0; cos < 8; ++cos)
    steps.push_back({"vprimap " + std::to_string(cos),
                     [=] { return static_cast<int>(vornDmaSetCosToTc(cos, cos)); }});
  for (unsigned tc = 0; tc < 8; ++tc)
    steps.push_back({"tcmap " + std::to_string(tc),
                     [=] { return static_cast<int>(vornDmaSetTcToCos(tc, tc)); }});
  for (unsigned dscp = 0; dscp < 64; ++dscp)
    steps.push_back({"dscpmap " + std::to_string(dscp),
                     [=] { return static_cast<int>(vornDmaSetDscpToTc(dscp, dscp >> 3)); }});
  for (const Port& p : ports)
    steps.push_back({"ifadd " + p.device, [=] {
                       return vornDmaIfadd(p.device.c_str(), p.sysPort, 0, Mox::String(), false,
                                           false, p.mac.c_str());
                     }});
}

void lagSteps(const std::vector<PortChannel>& pcs, std::vector<Step>& steps) {
  steps.push_back({"drvparams", [] { return vornDmaSetLagMode(kLagMode, 0, fapTypeJericho); }});
  for (const PortChannel& pc : pcs) {
    int id = 0;
    for (const std::string& m : pc.members)
      steps.push_back({"lagmember_add " + pc.device + " " + m,
                       [=] { return vornDmaLagMemberAdd(pc.device.c_str(), m.c_str(), id); }}),
          ++id;
    for (const std::string& m : pc.configMembers)
      steps.push_back({"lagmemberconfig_add " + pc.device + " " + m,
                       [=] { return vornDmaLagMemberConfigAdd(pc.device.c_str(), m.c_str()); }});
  }
}

// What the listing must show for what was built; empty when it does.
std::vector<std::string> checkLags(const VornDmaLags& table, const std::vector<PortChannel>& pcs) {
  std::vector<std::string> problems;
  for (const PortChannel& pc : pcs) {
    std::string name = "po" + std::to_string(pc.number);
    const LagDevice* lag = table.lagDevice(Mox::String(name.c_str()));
    if (!lag) {
      problems.push_back(name + " is not listed");
      continue;
    }
    if (lag->lagId().isNull()) problems.push_back(name + " has no LAG id");
    for (std::size_t i = 0; i < pc.members.size(); ++i) {
      const LagMemberDevice* m = lag->lagMemberDevice(Mox::String(pc.members[i].c_str()));
      if (!m || m->memberId().value() != i)
        problems.push_back(name + " lacks member " + pc.members[i] + " with id " +
                           std::to_string(i));
    }
    if (lag->lagMemberDevices().size() != pc.members.size())
      problems.push_back(name + " lists " + std::to_string(lag->lagMemberDevices().size()) +
                         " members");
    for (const std::string& c : pc.configMembers)
      if (!lag->lagMemberConfig(Mox::String(c.c_str())))
        problems.push_back(name + " lacks config member " + c);
  }
  if (table.lagDeviceSize() != pcs.size())
    problems.push_back("the listing has " + std::to_string(table.lagDeviceSize()) + " LAGs, " +
                       std::to_string(pcs.size()) + " were built");
  return problems;
}

// "[#########           ] 45/100" on a terminal, redrawn in place.
void progress(std::size_t done, std::size_t total) {
  const int width = 40;
  int filled = total ? static_cast<int>(width * done / total) : width;
  std::fprintf(stdout, "\r[%.*s%*s] %zu/%zu", filled, "########################################",
               width - filled, "", done, total);
  std::fflush(stdout);
}

// Makes the run's post-mortem ring file in `dir` (made when missing) and
// returns its path; the file stays for `vornctl trace`.
std::string openRingTrace(const std::string& dir) {
  ::setenv("VORN_RINGLOG_DIR", dir.c_str(), 1);
  Ringlog::RingFile* ring = Ringlog::openDefaultRingFile("vornctl-bringup");
  if (!ring) throw BadInput("--ring-trace", dir + ": cannot make a ring file there");
  return ring->path();
}

int runBringup(Context& ctx, bool chassis, unsigned linecards, bool showCommands,
               const std::string& ringDir) {
  std::string ringPath = ringDir.empty() ? std::string() : openRingTrace(ringDir);
  ctx.useDriver();
  SystemPlan plan = planSystem(chassis, linecards);
  if (Emu::FabricDriver* emu = ctx.emulator())
    for (const Chip& c : plan.chips) emu->pciDevicePresentIs(pciText(c.pci));

  if (Emu::FabricDriver* emu = ctx.emulator()) emu->tcEmulatedIs(true);
  std::vector<Step> steps = chipSteps(plan);
  const std::vector<Port> ports = frontPanelPorts(plan);
  const std::vector<PortChannel> pcs = portChannels(ports);
  hostAndQosSteps(ports, steps);
  lagSteps(pcs, steps);
  const bool tty = !ctx.json() && ::isatty(STDOUT_FILENO);
  std::map<int, unsigned> answers;
  std::vector<std::string> failures;
  auto start = std::chrono::steady_clock::now();
  Emu::FabricDriver* emu = ctx.emulator();
  for (std::size_t i = 0; i < steps.size(); ++i) {
    std::size_t seen = emu ? emu->commands().size() : 0;
    int rc = steps[i].run();
    ++answers[rc];
    if (rc != 0)
      failures.push_back(steps[i].what + ": driver answered " + std::to_string(rc) +
                         (rc > 0 ? std::string(" (") + std::strerror(rc) + ")" : std::string()));
    if (showCommands && !ctx.json()) {
      // Each driver command of the step with the driver's answer.
      if (emu) {
        auto commands = emu->commands();
        auto rcs = emu->answers();
        for (std::size_t k = seen; k < commands.size(); ++k)
          std::printf("  %-56s -> %d%s%s\n", commands[k].c_str(), rcs[k], rcs[k] ? " " : "",
                      rcs[k] ? std::strerror(rcs[k]) : "");
      } else {
        std::printf("  %-56s -> %d\n", steps[i].what.c_str(), rc);
      }
    } else if (tty) {
      progress(i + 1, steps.size());
    }
  }
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (tty) std::printf("\n");
  std::string up = vornDmaListUpDevices().stdString();
  VornDmaLags::Ptr lags = vornDmaListLags();
  std::vector<std::string> lagProblems = checkLags(*lags, pcs);

  if (ctx.json()) {
    nlohmann::json doc;
    doc["system"] = chassis ? "chassis" : "fixed";
    doc["chips"] = plan.chips.size();
    doc["commands"] = steps.size();
    for (auto [rc, n] : answers) doc["answers"][std::to_string(rc)] = n;
    doc["failures"] = failures;
    doc["seconds"] = seconds;
    doc["upDevices"] = up;
    doc["ports"] = ports.size();
    doc["lags"] = lagTableJson(*lags);
    doc["lagCheck"] = lagProblems.empty() ? nlohmann::json("passed") : nlohmann::json(lagProblems);
    if (!ringPath.empty()) doc["ringTrace"] = ringPath;
    ctx.printJson(doc);
  } else {
    std::printf("system: %s, %zu chips\n", chassis ? "chassis" : "fixed", plan.chips.size());
    std::printf("%zu front-panel ports, %zu port-channels\n", ports.size(), pcs.size());
    std::printf("up devices:\n%s", up.c_str());
    std::printf("LAG table read back:\n%s", lagTableText(*lags).c_str());
    if (lagProblems.empty()) std::printf("LAG table check: passed\n");
    for (const std::string& p : lagProblems) std::printf("LAG table check: %s\n", p.c_str());
    for (const std::string& f : failures) std::printf("refused: %s\n", f.c_str());
    std::printf("%zu commands in %.3f s (%.0f commands/s); answers:", steps.size(), seconds,
                seconds > 0 ? steps.size() / seconds : 0.0);
    for (auto [rc, n] : answers)
      std::printf(" %d%s%s: %u", rc, rc ? " " : "",
                  rc > 0   ? std::strerror(rc)
                  : rc < 0 ? "check failed"
                           : "",
                  n);
    std::printf("\n");
    if (!ringPath.empty()) std::printf("ring trace: %s\n", ringPath.c_str());
  }
  return failures.empty() && lagProblems.empty() ? kOk : kRefused;
}

}  // namespace

void addBringup(CLI::App& app, Action& action) {
  auto* cmd = app.add_subcommand("bringup", "bring a whole system up through the library");
  static std::string system = "fixed";
  static unsigned linecards = 2;
  static bool showCommands = false;
  static std::string ringDir;
  cmd->add_option("--system", system, "fixed or chassis")
      ->check(CLI::IsMember({"fixed", "chassis"}))
      ->capture_default_str();
  cmd->add_option("--linecards", linecards, "linecards of a chassis (1 to 16)")
      ->check(CLI::Range(1u, 16u))
      ->capture_default_str();
  cmd->add_flag("--show-commands", showCommands, "print each driver command and its answer");
  cmd->add_option(
         "--ring-trace", ringDir,
         "keep the run's ring trace in DIR and print its path (read it with vornctl trace)")
      ->type_name("DIR");
  cmd->callback([&action] {
    action = [](Context& ctx) {
      return runBringup(ctx, system == "chassis", linecards, showCommands, ringDir);
    };
  });
}

}  // namespace vornctl
