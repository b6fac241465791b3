// What the driver keeps about LAGs (port-channels).
//
// How the driver names and numbers LAGs:
// - The library names a LAG by its host device, "PortChannel<N>"; the driver
//   also takes its own name "po<N>". N is the port-channel number (decimal,
//   no sign, at most 9 digits); the driver lists the LAG as "po<N>".
// - A LAG comes into being with its first member or config member and goes
//   when it has neither.
// - A LAG gets its LAG id with its first member: the smallest id not in use
//   among the ids its LAG mode allows (1024 LAGs in modes 0 and 1, 512 in 2,
//   down to 64 in 5). It keeps it while it has members and frees it with the
//   last one. A LAG that has only config members has no id.
// - Member ids run below the members per LAG of the LAG mode (16 in modes 0
//   and 1, up to 256 in mode 5). Member netdevices are the driver's own,
//   named "et..." (at most 15 characters, as every netdevice name).
//
// The listing ("/proc/vorn-dma") shows the LAGs with members and their ids
// under "lags:", the LAGs that have only config members (no id) under
// "ilags:", and the config members of every LAG under "lagconfigmap:" with
// the system port of the member's host device (0 when the driver does not
// know it).
#pragma once

#include <map>
#include <set>
#include <string>

namespace Emu {

struct Lag {
  int lagId = -1;                          // -1 until the first member
  std::map<int, std::string> members;      // member netdevice by member id
  std::set<std::string> configMembers;     // interface names
};

struct LagState {
  // "drvparams": the LAG mode, the second parameter and the chip family.
  bool paramsSet = false;
  int lagMode = 0;
  int lagParam = 0;
  int fapType = 0;
  // LAGs by port-channel number.
  std::map<int, Lag> lags;
  // Member netdevices that are not there yet: each add of one is answered 19
  // and counts down; at 0 the netdevice is there. Tests fill it.
  std::map<std::string, unsigned> absentMembers;
  // The system port of a config member's host device, as the listing shows it.
  std::map<std::string, int> sysPorts;
};

// The LAG sections of the listing, each ended by an empty line.
std::string lagListing(const LagState& state);

}  // namespace Emu
