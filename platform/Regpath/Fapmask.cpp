#include "Regpath/Fapmask.h"

#include <cstdio>

namespace Regpath {

FapId Fapmask::firstFrom(unsigned start) const noexcept {
  for (unsigned id = start; id < FapId::null(); ++id) {
    if ((words_[id / 32] >> (id % 32)) & 1u) return FapId(static_cast<U16>(id));
  }
  return FapId();
}

std::ostream& operator<<(std::ostream& os, const Fapmask& mask) {
  char text[40];
  std::snprintf(text, sizeof text, "0x%08x:%08x:%08x:%08x", mask.word(3), mask.word(2),
                mask.word(1), mask.word(0));
  return os << text;
}

}  // namespace Regpath
