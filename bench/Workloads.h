// The work that vorn_bench times and vorn_instructions counts, set up the
// same way for both: the command path against a refusing descriptor, a ring
// trace file, the driver's LAG listing of a given size, and a two-revision
// system for the egress state machine.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <utility>

#include "Kernel/Kernel.h"
#include "Mox/Trace.h"
#include "Ringlog/RingFile.h"
#include "Vorn/EgressBufferSm.h"
#include "Vorn/VornDma.h"
#include "emu/LagState.h"

namespace VornBench {

// A real descriptor that refuses every request: the random device answers
// EINVAL to requests it does not know, which the benchmarked commands return
// rather than ending the process.
inline int refusingDevice() {
  static const int fd = ::open("/dev/urandom", O_RDWR | O_CLOEXEC);
  return fd;
}

// The file "/proc/vorn-dma" opens while benchOps() is in force; none: Linux's.
inline const char* listingPath = nullptr;

// Linux, except that "/dev/fabric" is the refusing device and
// "/proc/vorn-dma" the file listingPath names.
inline const Kernel::Ops& benchOps() {
  static const Kernel::Ops ops = [] {
    Kernel::Ops o = Kernel::linuxOps();
    o.open = [](const char* path, int flags) {
      if (std::strcmp(path, "/dev/fabric") == 0) return ::dup(refusingDevice());
      if (listingPath && std::strcmp(path, "/proc/vorn-dma") == 0) path = listingPath;
      return Kernel::linuxOps().open(path, flags);
    };
    return o;
  }();
  return ops;
}

// The command path as an agent meets it on hardware: no simulation, the
// refusing "/dev/fabric", the module's trace off.
inline void commandPathSetup() {
  ::unsetenv("SIMULATION_VMID");
  Kernel::opsIs(&benchOps());
  Mox::traceHandle("VornDma").allLevelsIs(false);
}

// The commands the command path is judged by, as agents send them. The
// random device refuses each (vornDmaTcToVpriMapAdd's with ENOTTY), and each
// returns the refusal rather than ending the process.
inline int deviceUp() {
  static const Mox::String name("fap0");
  return Hardware::Vorn::vornDmaDeviceUp(name);
}
inline int ifPortUpdate() {
  return Hardware::Vorn::vornDmaIfPortUpdate("et3_1", 1234);
}
inline int vlanVsiAdd() {
  return Hardware::Vorn::vornDmaVlanVsiAdd("et3_1", 100, 200, 0, 4096);
}
inline int tcToVpriMapAdd() {
  static unsigned map[8] = {0, 1, 2, 3, 4, 5, 6, 7};
  return Hardware::Vorn::vornDmaTcToVpriMapAdd("et3_1", map);
}

// A new empty file in TMPDIR (else /tmp) named after `pattern`, whose last
// `suffix` characters follow its six X's.
inline std::string scratchFile(const char* pattern, int suffix) {
  const char* dir = std::getenv("TMPDIR");
  std::string path = std::string(dir && *dir ? dir : "/tmp") + "/" + pattern;
  const int fd = ::mkstemps(path.data(), suffix);
  if (fd < 0) std::perror("vorn_bench: scratch file"), std::exit(1);
  ::close(fd);
  return path;
}

// A ring trace file as the default for the object's scope.
class RingOn {
 public:
  RingOn() : path_(scratchFile("vorn-bench-XXXXXX.rlog", 5)), file_(path_.c_str(), 1 << 20) {
    Ringlog::defaultFileIs(&file_);
  }
  ~RingOn() {
    Ringlog::defaultFileIs(nullptr);
    ::unlink(path_.c_str());
  }

 private:
  std::string path_;
  Ringlog::RingFile file_;
};

inline constexpr int kMembersPerLag = 16;

// The lines of the driver's listing of `lags` LAGs, each with 16 members and
// `configs` config members: the headers and their empty lines, a LAG line per
// LAG, a config line per config member.
inline std::size_t listingLines(int lags, int configs) {
  return 6 + static_cast<std::size_t>(lags) * (1 + static_cast<std::size_t>(configs));
}

// That listing, rendered by the driver emulator and written once to a
// temporary file, removed when the program ends.
inline const std::string& listingFile(int lags, int configs) {
  static std::map<std::pair<int, int>, std::string> files;
  auto [it, fresh] = files.try_emplace({lags, configs});
  if (fresh) {
    Emu::LagState state;
    for (int n = 1; n <= lags; ++n) {
      Emu::Lag& lag = state.lags[n];
      lag.lagId = n - 1;
      for (int m = 0; m < kMembersPerLag; ++m)
        lag.members[m] = "et" + std::to_string(n) + "_" + std::to_string(m);
      for (int c = 0; c < configs; ++c)
        lag.configMembers.insert("Ethernet" + std::to_string(n) + "/" + std::to_string(c));
    }
    const std::string path = scratchFile("vorn-bench-lags-XXXXXX", 0);
    if (!(std::ofstream(path) << Emu::lagListing(state)))
      std::perror("vorn_bench: listing file"), std::exit(1);
    it->second = path;
    std::atexit([] {
      for (const auto& [size, file] : files) ::unlink(file.c_str());
    });
  }
  return it->second;
}

// A system with a revision-3 Arad and a revision-8 Jericho, for constructing
// the egress buffering state machine.
struct TwoRevisionSystem {
  explicit TwoRevisionSystem(Redundancy::RedundancyMode mode)
      : redundancy(new Redundancy::RedundancyStatus()), chips(new Hardware::Vorn::Status()) {
    Mox::traceHandle("EgressBufferSm").allLevelsIs(false);
    redundancy->modeIs(mode);
    chips->supportedFapRevMajors().is(Hardware::Vorn::fapRevMajor3, Hardware::Vorn::fapTypeArad);
    chips->supportedFapRevMajors().is(Hardware::Vorn::fapRevMajor8, Hardware::Vorn::fapTypeJericho);
  }
  Redundancy::RedundancyStatus::Ptr redundancy;
  Hardware::Vorn::Status::Ptr chips;
};

}  // namespace VornBench
