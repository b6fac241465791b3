// The emulator's command parser and handlers on arbitrary buffers: never a
// read or write outside the buffer.
#include <cstdint>
#include <cstring>
#include <vector>

#include "emu/FabricDriver.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Emu::FabricDriver* driver = [] {
    auto* d = new Emu::FabricDriver();
    d->pciDevicePresentIs("0000:03:00.0");
    return d;
  }();
  if (size < 1) return 0;
  // The first byte picks the buffer capacity the command is sent with.
  static const unsigned sizes[] = {256, 96, 6240, 128};
  unsigned cap = sizes[data[0] % 4];
  std::vector<char> buf(cap);
  std::size_t n = size - 1 < cap ? size - 1 : cap;
  std::memcpy(buf.data(), data + 1, n);
  int rc = driver->command(buf.data(), cap);
  if (rc < 0) __builtin_trap();
  driver->clearLog();
  return 0;
}
