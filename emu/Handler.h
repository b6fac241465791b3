// The emulator's command table: one row per keyword, with the buffer size the
// library sends it with. Each command family keeps its rows in its own file.
#pragma once

#include <span>
#include <string_view>

#include "emu/Command.h"

namespace Emu {

class FabricDriver;

struct Handler {
  std::string_view keyword;
  unsigned size;  // the buffer capacity, which is also the ioctl request
  // Carries the command out; returns 0 or an errno. May write an answer into
  // `buf` (at most `size` bytes).
  int (*run)(FabricDriver& driver, const Command& cmd, char* buf, unsigned size);
};

// The families' rows.
std::span<const Handler> deviceHandlers();
std::span<const Handler> hostHandlers();
std::span<const Handler> qosHandlers();
std::span<const Handler> l3Handlers();
std::span<const Handler> lagHandlers();
std::span<const Handler> sflowHandlers();

// Every row of every family.
std::span<const std::span<const Handler>> handlerFamilies();

}  // namespace Emu
