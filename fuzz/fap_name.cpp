// fapNameToLinecardName on arbitrary names that carry one of the known words.
#include <cstdint>
#include <string>

#include "Vorn/VornCommonUtils.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string text(reinterpret_cast<const char*>(data), size);
  Mox::String name(text.c_str());
  if (name.pos("Fap") < 0 && name.pos("Jericho") < 0 && name.pos("Arad") < 0) return 0;
  Mox::String lc = Hardware::Vorn::fapNameToLinecardName(name);
  if (lc != "FixedSystem" && lc.substr(0, 8) != "Linecard") __builtin_trap();
  return 0;
}
