// The system that `vornctl bringup` brings up, and the steps that do it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Fru/Fru.h"

namespace vornctl {

struct Chip {
  std::string name;  // "fap0"
  Fru::PciAddress pci;
  unsigned fapId;
  unsigned linecard;  // 0 on a fixed system
};

struct SystemPlan {
  bool chassis = false;
  unsigned linecards = 1;
  std::vector<Chip> chips;
};

// A fixed system has two chips on one board; a chassis two per linecard.
SystemPlan planSystem(bool chassis, unsigned linecards);

// One driver request of the bring-up: what it is called, and the call, which
// returns the driver's answer (0 or an errno) or -1 for a failed check.
struct Step {
  std::string what;
  std::function<int()> run;
};

}  // namespace vornctl
