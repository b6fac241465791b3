#include "vornctl/Context.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Kernel/RemoteFabric.h"
#include "Vorn/VornDma.h"

namespace vornctl {

Refusal::Refusal(const std::string& call, int error)
    : std::runtime_error(call + ": driver answered " + std::to_string(error) + " (" +
                         std::strerror(error) + ")"),
      error(error) {}

DriverChoice driverChoiceOf(const std::string& value) {
  const char* fabric = std::getenv("VORN_FABRIC");
  if (value == "kernel" || value == "emulated") {
    // A daemon named in the environment would take the seam otherwise.
    ::unsetenv("VORN_FABRIC");
    return value == "kernel" ? DriverChoice::kKernel : DriverChoice::kEmulated;
  }
  if (value == "auto" && !(fabric && *fabric)) return DriverChoice::kAuto;
  std::string path = value.rfind("remote=", 0) == 0 ? value.substr(7)
                     : fabric && *fabric            ? std::string(fabric)
                                                    : Kernel::fabric::defaultSocketPath();
  if (path.empty())
    throw BadInput("--driver remote", "XDG_RUNTIME_DIR is not set: name the socket, remote=PATH");
  ::setenv("VORN_FABRIC", path.c_str(), 1);
  return DriverChoice::kRemote;
}

void Context::useDriver() {
  if (chosen_) return;
  chosen_ = true;
  DriverChoice choice = choice_;
  if (choice == DriverChoice::kRemote) {
    const char* path = Kernel::fabricPath();
    if (!path) throw BadInput("--driver remote", "the path is not a socket address");
    if (!Hardware::Vorn::vornDmaDevFabricPresent())
      throw BadInput(path, std::string("no fabric daemon answers there (start one: vorn-fabricd "
                                       "--socket ") +
                               path + ")");
    std::fprintf(stderr, "vornctl: driver: remote (the fabric daemon at %s)\n", path);
    return;
  }
  bool useKernel = choice == DriverChoice::kKernel ||
                   (choice == DriverChoice::kAuto && Hardware::Vorn::vornDmaDevFabricPresent());
  if (!useKernel) {
    emulator_ = std::make_unique<Emu::FabricDriver>();
    for (const std::string& line : script_) {
      auto eq = line.find('=');
      if (eq == std::string::npos || eq == 0)
        throw BadInput("--emu-answer", "keyword=errno[:count]");
      int error = std::atoi(line.c_str() + eq + 1);
      auto colon = line.find(':', eq);
      unsigned count = colon == std::string::npos
                           ? 1u
                           : static_cast<unsigned>(std::atoi(line.c_str() + colon + 1));
      emulator_->answerNext(line.substr(0, eq), error, count);
    }
  }
  std::fprintf(stderr, "vornctl: driver: %s%s\n", driverName(),
               choice == DriverChoice::kAuto
                   ? (useKernel ? " (/dev/fabric is present)" : " (no /dev/fabric here)")
                   : "");
}

void Context::check(const std::string& call, int rc) const {
  if (rc != 0) throw Refusal(call, rc);
}

void Context::printJson(nlohmann::json doc) const {
  if (chosen_) doc["driver"] = driverName();
  std::printf("%s\n", doc.dump(2).c_str());
}

}  // namespace vornctl
