// vornctl devices: the driver's listings of up devices and device parameters.
#include <cstdio>

#include "Vorn/VornDma.h"
#include "vornctl/Commands.h"

using namespace Hardware::Vorn;

namespace vornctl {

void addDevices(CLI::App& app, Action& action) {
  auto* cmd = app.add_subcommand("devices", "the driver's up devices and device parameters");
  cmd->callback([&action] {
    action = [](Context& ctx) {
      ctx.useDriver();
      std::string up = vornDmaListUpDevices().stdString();
      std::string params = vornDmaListDeviceParams().stdString();
      if (ctx.json()) {
        ctx.printJson({{"upDevices", up}, {"deviceParams", params}});
      } else {
        std::printf("up devices:\n%sdevice parameters:\n%s", up.c_str(), params.c_str());
      }
      return kOk;
    };
  });
}

}  // namespace vornctl
