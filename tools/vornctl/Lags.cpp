// vornctl lags [--file PATH]: the LAG table from the driver's listing, or
// from a saved listing file, read by the library's own reader.
#include "vornctl/Lags.h"

#include <fcntl.h>

#include <cstdio>
#include <cstring>

#include "Kernel/Kernel.h"
#include "Vorn/VornDma.h"
#include "vornctl/Commands.h"
#include "vornctl/Table.h"

using namespace Hardware::Vorn;

namespace vornctl {

std::string lagTableText(const VornDmaLags& table) {
  Table t({"LAG", "LAG id", "members (name:id)", "config members"});
  for (const auto& [name, lag] : table.lagDevices()) {
    std::string members, configs;
    // Appended piece by piece: GCC 12 at -O3 warns falsely (-Wrestrict) on
    // "" + std::string chains.
    for (const auto& [m, dev] : lag.lagMemberDevices()) {
      if (!members.empty()) members += ' ';
      members.append(m.view()).append(":").append(std::to_string(dev.memberId().value()));
    }
    for (const auto& [c, on] : lag.lagMemberConfigs()) {
      if (!on) continue;
      if (!configs.empty()) configs += ' ';
      configs.append(c.view());
    }
    t.row({name.stdString(), lag.lagId().isNull() ? "none" : std::to_string(lag.lagId().value()),
           members, configs});
  }
  return t.render();
}

nlohmann::json lagTableJson(const VornDmaLags& table) {
  nlohmann::json list = nlohmann::json::array();
  for (const auto& [name, lag] : table.lagDevices()) {
    nlohmann::json members = nlohmann::json::object(), configs = nlohmann::json::array();
    for (const auto& [m, dev] : lag.lagMemberDevices()) members[m.stdString()] = dev.memberId().value();
    for (const auto& [c, on] : lag.lagMemberConfigs())
      if (on) configs.push_back(c.stdString());
    list.push_back({{"name", name.stdString()},
                    {"lagId", lag.lagId().isNull() ? nlohmann::json(nullptr) : nlohmann::json(lag.lagId().value())},
                    {"members", members},
                    {"configMembers", configs}});
  }
  return list;
}

namespace {

// A saved listing is read by the same reader: "/proc/vorn-dma" is pointed at
// the file for the one call.
const char* gListingFile = nullptr;
const Kernel::Ops* gBefore = nullptr;

int openListing(const char* path, int flags) {
  if (std::strcmp(path, "/proc/vorn-dma") == 0) path = gListingFile;
  return gBefore->open(path, flags);
}

VornDmaLags::Ptr readFile(const std::string& file) {
  static Kernel::Ops ops;
  gBefore = &Kernel::ops();
  ops = *gBefore;
  ops.open = openListing;
  gListingFile = file.c_str();
  Kernel::ScopedOps scoped(&ops);
  return vornDmaListLags();
}

int runLags(Context& ctx, const std::string& file) {
  VornDmaLags::Ptr table;
  if (file.empty()) {
    ctx.useDriver();
    table = vornDmaListLags();
  } else {
    table = readFile(file);
  }
  if (ctx.json())
    ctx.printJson({{"source", file.empty() ? "/proc/vorn-dma" : file}, {"lags", lagTableJson(*table)}});
  else
    std::printf("%s", lagTableText(*table).c_str());
  return kOk;
}

}  // namespace

void addLags(CLI::App& app, Action& action) {
  auto* cmd = app.add_subcommand("lags", "the driver's LAG table, from its listing or a saved file");
  static std::string file;
  cmd->add_option("--file", file, "a saved listing file instead of /proc/vorn-dma")
      ->check(CLI::ExistingFile);
  cmd->callback([&action] { action = [](Context& ctx) { return runLags(ctx, file); }; });
}

}  // namespace vornctl
