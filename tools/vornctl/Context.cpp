#include "vornctl/Context.h"

#include <cstdio>
#include <cstring>

#include "Vorn/VornDma.h"

namespace vornctl {

Refusal::Refusal(const std::string& call, int error)
    : std::runtime_error(call + ": driver answered " + std::to_string(error) + " (" +
                         std::strerror(error) + ")"),
      error(error) {}

void Context::useDriver() {
  if (chosen_) return;
  chosen_ = true;
  DriverChoice choice = choice_;
  bool useKernel = choice == DriverChoice::kKernel ||
                   (choice == DriverChoice::kAuto && Hardware::Vorn::vornDmaDevFabricPresent());
  if (!useKernel) emulator_ = std::make_unique<Emu::FabricDriver>();
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
