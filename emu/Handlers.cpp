#include "emu/Handler.h"

namespace Emu {

std::span<const std::span<const Handler>> handlerFamilies() {
  static const std::span<const Handler> families[] = {
      deviceHandlers(),
      sflowHandlers(),
  };
  return families;
}

}  // namespace Emu
