// The subcommands of vornctl. Each adds itself to the application; when it is
// the one chosen on the command line, its action runs with the context.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "vornctl/Context.h"

namespace vornctl {

using Action = std::function<int(Context&)>;

void addBringup(CLI::App& app, Action& action);
void addDevices(CLI::App& app, Action& action);
void addTrace(CLI::App& app, Action& action);
void addCopp(CLI::App& app, Action& action);
void addId(CLI::App& app, Action& action);
void addLags(CLI::App& app, Action& action);
void addThresholds(CLI::App& app, Action& action);
void addDriverServices(CLI::App& app, Action& action);
void addFault(CLI::App& app, Action& action);

}  // namespace vornctl
