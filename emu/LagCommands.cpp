// The LAG commands of the driver: drvparams, lagmember_add, lagmember_del,
// lagmemberconfig_add, lagmemberconfig_del, lagconfigmap_del; and the LAG
// sections of its listing. The naming and numbering rules are in LagState.h.
#include <cerrno>
#include <cstdio>
#include <string>
#include <vector>

#include "emu/FabricDriver.h"
#include "emu/Handler.h"
#include "emu/LagState.h"

namespace Emu {
namespace {

// LAG id bits per LAG mode; the member id takes the rest of 14 bits.
constexpr int kLagIdBits[] = {10, 10, 9, 8, 7, 6};
constexpr int kLagModes = sizeof kLagIdBits / sizeof kLagIdBits[0];
constexpr std::size_t kNetdevNameMax = 15;
// The names by which the library may call a LAG.
constexpr std::string_view kLagNamePrefixes[] = {"PortChannel", "po"};

int lagsForMode(int mode) { return 1 << kLagIdBits[mode]; }
int membersForMode(int mode) { return 1 << (14 - kLagIdBits[mode]); }

// The port-channel number of a LAG name, or -1.
int lagNumber(std::string_view name) {
  for (std::string_view prefix : kLagNamePrefixes) {
    if (name.substr(0, prefix.size()) != prefix) continue;
    std::string_view digits = name.substr(prefix.size());
    unsigned long long n = 0;
    if (digits.size() > 9 || !parseUnsigned(digits, n)) return -1;
    return static_cast<int>(n);
  }
  return -1;
}

// A netdevice name: 1 to 15 characters, no white space.
bool validNetdevName(std::string_view name) {
  if (name.empty() || name.size() > kNetdevNameMax) return false;
  for (char c : name)
    if (c == ' ' || (c >= '\t' && c <= '\r')) return false;
  return true;
}

bool validMemberName(std::string_view name) {
  return validNetdevName(name) && name.substr(0, 2) == "et";
}

// The smallest LAG id the mode allows that no LAG holds, or -1.
int freeLagId(const LagState& state) {
  std::vector<bool> used(static_cast<std::size_t>(lagsForMode(state.lagMode)));
  for (const auto& [number, lag] : state.lags)
    if (lag.lagId >= 0 && lag.lagId < static_cast<int>(used.size())) used[lag.lagId] = true;
  for (std::size_t id = 0; id < used.size(); ++id)
    if (!used[id]) return static_cast<int>(id);
  return -1;
}

// Forgets a LAG that has neither members nor config members.
void dropIfEmpty(LagState& state, std::map<int, Lag>::iterator it) {
  if (it->second.members.empty()) it->second.lagId = -1;
  if (it->second.members.empty() && it->second.configMembers.empty()) state.lags.erase(it);
}

// Finds the existing LAG that `name` names: 0, or 22 for a name that is no
// LAG name, 19 for a LAG the driver does not have.
int existingLag(LagState& state, std::string_view name, std::map<int, Lag>::iterator& it) {
  int number = lagNumber(name);
  if (number < 0) return EINVAL;
  it = state.lags.find(number);
  return it == state.lags.end() ? ENODEV : 0;
}

bool memberInAnyLag(const LagState& state, const std::string& name) {
  for (const auto& [number, lag] : state.lags)
    for (const auto& [id, member] : lag.members)
      if (member == name) return true;
  return false;
}

bool configMemberInAnyLag(const LagState& state, const std::string& name) {
  for (const auto& [number, lag] : state.lags)
    if (lag.configMembers.count(name)) return true;
  return false;
}

int drvparams(FabricDriver& d, const Command& c, char*, unsigned) {
  long long v[3];
  if (c.argc != 3) return EINVAL;
  for (unsigned i = 0; i < 3; ++i)
    if (!parseSigned(c.args[i], v[i])) return EINVAL;
  if (v[0] < 0 || v[0] >= kLagModes || v[2] < 1 || v[2] > 3) return EINVAL;
  LagState& s = d.lags();
  // The id space cannot change under LAGs that hold ids.
  if (v[0] != s.lagMode && !s.lags.empty()) return EBUSY;
  s.paramsSet = true;
  s.lagMode = static_cast<int>(v[0]);
  s.lagParam = static_cast<int>(v[1]);
  s.fapType = static_cast<int>(v[2]);
  return 0;
}

int lagmemberAdd(FabricDriver& d, const Command& c, char*, unsigned) {
  LagState& s = d.lags();
  long long memberId = 0;
  if (c.argc != 3 || !parseSigned(c.args[2], memberId)) return EINVAL;
  int number = lagNumber(c.args[0]);
  std::string member(c.args[1]);
  if (number < 0 || !validMemberName(member)) return EINVAL;
  if (memberId < 0 || memberId >= membersForMode(s.lagMode)) return EINVAL;
  if (auto absent = s.absentMembers.find(member); absent != s.absentMembers.end()) {
    if (absent->second > 0) {
      if (--absent->second == 0) s.absentMembers.erase(absent);
      return ENODEV;
    }
    s.absentMembers.erase(absent);
  }
  if (memberInAnyLag(s, member)) return EEXIST;
  Lag& lag = s.lags[number];
  if (lag.members.count(static_cast<int>(memberId))) return EEXIST;
  if (lag.lagId < 0) {
    lag.lagId = freeLagId(s);
    if (lag.lagId < 0) {
      dropIfEmpty(s, s.lags.find(number));
      return ENOSPC;
    }
  }
  lag.members.emplace(static_cast<int>(memberId), member);
  return 0;
}

int lagmemberDel(FabricDriver& d, const Command& c, char*, unsigned) {
  LagState& s = d.lags();
  long long memberId = 0;
  if (c.argc != 2 || !parseSigned(c.args[1], memberId)) return EINVAL;
  std::map<int, Lag>::iterator it;
  if (int rc = existingLag(s, c.args[0], it)) return rc;
  if (!it->second.members.erase(static_cast<int>(memberId))) return ENOENT;
  dropIfEmpty(s, it);
  return 0;
}

int lagmemberconfigAdd(FabricDriver& d, const Command& c, char*, unsigned) {
  LagState& s = d.lags();
  if (c.argc != 2) return EINVAL;
  int number = lagNumber(c.args[0]);
  std::string member(c.args[1]);
  if (number < 0 || !validNetdevName(member)) return EINVAL;
  if (configMemberInAnyLag(s, member)) return EEXIST;
  s.lags[number].configMembers.insert(member);
  return 0;
}

int lagmemberconfigDel(FabricDriver& d, const Command& c, char*, unsigned) {
  LagState& s = d.lags();
  if (c.argc != 2) return EINVAL;
  std::map<int, Lag>::iterator it;
  if (int rc = existingLag(s, c.args[0], it)) return rc;
  if (!it->second.configMembers.erase(std::string(c.args[1]))) return ENOENT;
  dropIfEmpty(s, it);
  return 0;
}

int lagconfigmapDel(FabricDriver& d, const Command& c, char*, unsigned) {
  LagState& s = d.lags();
  if (c.argc != 1) return EINVAL;
  std::map<int, Lag>::iterator it;
  if (int rc = existingLag(s, c.args[0], it)) return rc;
  it->second.configMembers.clear();
  dropIfEmpty(s, it);
  return 0;
}

constexpr Handler kHandlers[] = {
    {"drvparams", 256, drvparams},
    {"lagmember_add", 256, lagmemberAdd},
    {"lagmember_del", 256, lagmemberDel},
    {"lagmemberconfig_add", 256, lagmemberconfigAdd},
    {"lagmemberconfig_del", 256, lagmemberconfigDel},
    {"lagconfigmap_del", 256, lagconfigmapDel},
};

}  // namespace

std::span<const Handler> lagHandlers() { return kHandlers; }

std::string lagListing(const LagState& state) {
  std::string lags = "lags:\n", idle = "ilags:\n", config = "lagconfigmap:\n";
  char line[128];
  for (const auto& [number, lag] : state.lags) {
    if (lag.lagId >= 0) {
      std::snprintf(line, sizeof line, "po%d %d", number, lag.lagId);
      lags += line;
      for (const auto& [id, member] : lag.members) {
        std::snprintf(line, sizeof line, " %s %d", member.c_str(), id);
        lags += line;
      }
      lags += '\n';
    } else {
      std::snprintf(line, sizeof line, "po%d\n", number);
      idle += line;
    }
    for (const std::string& member : lag.configMembers) {
      auto port = state.sysPorts.find(member);
      std::snprintf(line, sizeof line, "%s sys_port %d: po%d\n", member.c_str(),
                    port == state.sysPorts.end() ? 0 : port->second, number);
      config += line;
    }
  }
  return lags + "\n" + idle + "\n" + config + "\n";
}

}  // namespace Emu
