#include "emu/Handler.h"

namespace Emu {

std::span<const std::span<const Handler>> handlerFamilies() {
  static const std::span<const Handler> families[] = {
      deviceHandlers(),
      hostHandlers(),
      qosHandlers(),
      l3Handlers(),
      lagHandlers(),
      sflowHandlers(),
  };
  return families;
}

}  // namespace Emu
