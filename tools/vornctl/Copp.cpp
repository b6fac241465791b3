// vornctl copp [--port N]: the static CoPP class of every CPU system port, or
// of one.
#include <cstdio>
#include <string>
#include <vector>

#include "Vorn/VornCommonCoppUtils.h"
#include "vornctl/Commands.h"
#include "vornctl/Table.h"

using namespace Hardware::Vorn;

namespace vornctl {
namespace {

// The CPU system ports that have a static class: the CPU traffic-manager
// ports and the trap ports of the class table. The library aborts on any
// other port (a caller error), so the tool checks before it asks.
std::vector<unsigned> classifiedPorts() {
  std::vector<unsigned> ports;
  for (unsigned p = SystemPhyPortId::min(); p <= SystemPhyPortId::cpuTmMax(); ++p) ports.push_back(p);
  for (unsigned p = 12; p <= 53; ++p)
    if (p != 23) ports.push_back(p);
  ports.push_back(64);
  return ports;
}

bool classified(unsigned port) {
  for (unsigned p : classifiedPorts())
    if (p == port) return true;
  return false;
}

std::string rate(U32 v) {
  if (v == kRateUnlimited) return "unlimited";
  if (v == kRateNotSet) return "not set";
  return std::to_string(v);
}

int runCopp(Context& ctx, int port) {
  std::vector<unsigned> ports;
  if (port >= 0) {
    if (!classified(static_cast<unsigned>(port)))
      throw BadInput("--port", "a CPU system port with a static class: 2 to 7, 12 to 22, 24 to 53 or 64");
    ports.push_back(static_cast<unsigned>(port));
  } else {
    ports = classifiedPorts();
  }
  Table table({"port", "class", "bandwidth", "shape", "hw index", "type",
               "special index", "special slot", "special bw", "special shape"});
  nlohmann::json list = nlohmann::json::array();
  for (unsigned p : ports) {
    CoppStaticConfig c;
    doGetAradCoppClassParameters(SystemPhyPortId(static_cast<U16>(p)), c);
    unsigned type = static_cast<unsigned>(c.classType);
    table.row({std::to_string(p), c.className.stdString(), rate(c.bandwidth), rate(c.shape),
               std::to_string(c.hwClassIndex), std::to_string(type), std::to_string(c.specialPortIndex),
               std::to_string(c.specialPortSlot), std::to_string(c.specialPortBandwidth),
               std::to_string(c.specialPortShape)});
    list.push_back({{"port", p},
                    {"className", c.className.stdString()},
                    {"bandwidth", c.bandwidth},
                    {"shape", c.shape},
                    {"hwClassIndex", c.hwClassIndex},
                    {"classType", type},
                    {"specialPortIndex", c.specialPortIndex},
                    {"specialPortSlot", c.specialPortSlot},
                    {"specialPortBandwidth", c.specialPortBandwidth},
                    {"specialPortShape", c.specialPortShape}});
  }
  if (ctx.json())
    ctx.printJson({{"classes", list}});
  else
    std::printf("%s", table.render().c_str());
  return kOk;
}

}  // namespace

void addCopp(CLI::App& app, Action& action) {
  auto* cmd = app.add_subcommand("copp", "the static CoPP class table, or one CPU system port's class");
  static int port = -1;
  cmd->add_option("--port", port, "one CPU system port");
  cmd->callback([&action] { action = [](Context& ctx) { return runCopp(ctx, port); }; });
}

}  // namespace vornctl
