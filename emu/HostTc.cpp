// The host's traffic-control tool, as far as the library uses it: adding the
// root queueing discipline of a netdevice the driver made.
#include <cstring>
#include <string>

#include "Zell/Zell.h"
#include "emu/FabricDriver.h"

namespace Emu {
namespace {

int emulatedTc(const char* command, void* context) {
  auto* driver = static_cast<FabricDriver*>(context);
  return driver->runTc(command);
}

}  // namespace

int FabricDriver::runTc(const char* command) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  tcCommands_.emplace_back(command);
  static constexpr char kPrefix[] = "/sbin/tc qdisc add dev ";
  if (std::strncmp(command, kPrefix, sizeof kPrefix - 1) != 0) return 1;
  std::string rest(command + sizeof kPrefix - 1);
  std::string name = rest.substr(0, rest.find(' '));
  return host_.netdevs.count(name) ? 0 : 1;
}

void FabricDriver::tcEmulatedIs(bool on) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  tcEmulated_ = on;
  Zell::runnerIs(on ? emulatedTc : nullptr, on ? this : nullptr);
}

std::vector<std::string> FabricDriver::tcCommands() const {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  return tcCommands_;
}

}  // namespace Emu
