// The driver's LAG table as vornctl shows it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "HardwareVorn/VornDmaLags.h"

namespace vornctl {

// One row per LAG: name, LAG id, members (name:id), config members.
std::string lagTableText(const Hardware::Vorn::VornDmaLags& table);
nlohmann::json lagTableJson(const Hardware::Vorn::VornDmaLags& table);

}  // namespace vornctl
