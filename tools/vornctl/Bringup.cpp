// vornctl bringup: a scripted bring-up of a whole system through the library.
#include "vornctl/Bringup.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>

#include "Vorn/VornDma.h"
#include "vornctl/Commands.h"

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
    steps.push_back({"devpresent " + c.name,
                     [=] { return vornDmaPresent(name, ham) ? 0 : ENODEV; }});
    steps.push_back({"devname " + c.name, [=] { return vornDmaDeviceRename(name, ham); }});
    steps.push_back({"devparams " + c.name, [=] {
                       return vornDmaDeviceParam(name, fapTypeJericho, FapId(static_cast<U16>(c.fapId)),
                                                 c.linecard, 0, 0, 0, 0, 0);
                     }});
    steps.push_back({"devstate " + c.name + " up", [=] { return vornDmaDeviceUp(name); }});
  }
  return steps;
}

// "[#########           ] 45/100" on a terminal, redrawn in place.
void progress(std::size_t done, std::size_t total) {
  const int width = 40;
  int filled = total ? static_cast<int>(width * done / total) : width;
  std::fprintf(stdout, "\r[%.*s%*s] %zu/%zu", filled, "########################################",
               width - filled, "", done, total);
  std::fflush(stdout);
}

int runBringup(Context& ctx, bool chassis, unsigned linecards, bool showCommands) {
  ctx.useDriver();
  SystemPlan plan = planSystem(chassis, linecards);
  if (Emu::FabricDriver* emu = ctx.emulator())
    for (const Chip& c : plan.chips) emu->pciDevicePresentIs(pciText(c.pci));

  std::vector<Step> steps = chipSteps(plan);
  const bool tty = !ctx.json() && ::isatty(STDOUT_FILENO);
  std::map<int, unsigned> answers;
  std::vector<std::string> failures;
  auto start = std::chrono::steady_clock::now();
  Emu::FabricDriver* emu = ctx.emulator();
  for (std::size_t i = 0; i < steps.size(); ++i) {
    std::size_t seen = emu ? emu->commands().size() : 0;
    int rc = steps[i].run();
    ++answers[rc];
    if (rc != 0) failures.push_back(steps[i].what + ": " + std::to_string(rc));
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

  if (ctx.json()) {
    nlohmann::json doc;
    doc["system"] = chassis ? "chassis" : "fixed";
    doc["chips"] = plan.chips.size();
    doc["commands"] = steps.size();
    for (auto [rc, n] : answers) doc["answers"][std::to_string(rc)] = n;
    doc["failures"] = failures;
    doc["seconds"] = seconds;
    doc["upDevices"] = up;
    ctx.printJson(doc);
  } else {
    std::printf("system: %s, %zu chips\n", chassis ? "chassis" : "fixed", plan.chips.size());
    std::printf("up devices:\n%s", up.c_str());
    for (const std::string& f : failures) std::printf("refused: %s\n", f.c_str());
    std::printf("%zu commands in %.3f s (%.0f commands/s); answers:", steps.size(), seconds,
                seconds > 0 ? steps.size() / seconds : 0.0);
    for (auto [rc, n] : answers)
      std::printf(" %d%s%s: %u", rc, rc ? " " : "", rc > 0 ? std::strerror(rc) : rc < 0 ? "check failed" : "", n);
    std::printf("\n");
  }
  return failures.empty() ? kOk : kRefused;
}

}  // namespace

void addBringup(CLI::App& app, Action& action) {
  auto* cmd = app.add_subcommand("bringup", "bring a whole system up through the library");
  static std::string system = "fixed";
  static unsigned linecards = 2;
  static bool showCommands = false;
  cmd->add_option("--system", system, "fixed or chassis")
      ->check(CLI::IsMember({"fixed", "chassis"}))
      ->capture_default_str();
  cmd->add_option("--linecards", linecards, "linecards of a chassis (1 to 16)")
      ->check(CLI::Range(1u, 16u))
      ->capture_default_str();
  cmd->add_flag("--show-commands", showCommands, "print each driver command and its answer");
  cmd->callback([&action] {
    action = [](Context& ctx) { return runBringup(ctx, system == "chassis", linecards, showCommands); };
  });
}

}  // namespace vornctl
