// A new host device's MAC text, arbitrary: never read past its end.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Emu::FabricDriver* driver = [] {
    ::unsetenv("SIMULATION_VMID");
    auto* d = new Emu::FabricDriver();
    d->tcEmulatedIs(true);
    return d;
  }();
  // In an allocation of its own size, so that a read past the end is caught.
  std::string text(reinterpret_cast<const char*>(data), size);
  char* mac = static_cast<char*>(std::malloc(text.size() + 1));
  std::memcpy(mac, text.c_str(), text.size() + 1);
  int rc = Hardware::Vorn::vornDmaIfadd("et1", 100, 0, Mox::String(), false, false, mac);
  std::free(mac);
  if (rc < 0) __builtin_trap();
  Hardware::Vorn::vornDmaIfdel("et1");
  driver->clearLog();
  return 0;
}
