// vorn_instructions FIGURE COUNT: does one figure's work COUNT times inside
// vorn_measure(), the one function bench/instructions.sh has callgrind count
// in, and prints how many units of work that was (commands, messages, listing
// lines or constructions). Everything a first call opens (the device, the
// trace handle, a message's descriptor) is opened before, outside the count.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "Ringlog/Ringlog.h"
#include "Vorn/EgressBufferSm.h"
#include "Vorn/VornDma.h"
#include "Workloads.h"

using namespace Hardware::Vorn;

namespace {

constexpr int kLags = 1024, kConfigs = 16;  // the listing vorn_bench times

int nothing() {
  return 0;
}
int ringMessage() {
  RINGLOG("fab_ioctl buf=%s", std::string_view("ifportupdate et3_1 1234"));
  return 0;
}
int listLags() {
  if (vornDmaListLags()->lagDeviceSize() != kLags) std::abort();
  return 0;
}
int egressGeneration() {
  static VornBench::TwoRevisionSystem sys(Redundancy::redundancyModeActive);
  EgressBufferStatus::Ptr status(new EgressBufferStatus());
  egressBufferingSmFactory(nullptr, status, sys.redundancy, sys.chips);
  return 0;
}

struct Figure {
  const char* name;
  int (*work)();
  bool ring;
  std::size_t unitsPerCall;
};
const Figure kFigures[] = {
    {"nothing", nothing, false, 1},  // the measuring loop alone
    {"deviceup", VornBench::deviceUp, false, 1},
    {"deviceup-ring", VornBench::deviceUp, true, 1},
    {"ifportupdate", VornBench::ifPortUpdate, false, 1},
    {"ifportupdate-ring", VornBench::ifPortUpdate, true, 1},
    {"vlanvsiadd", VornBench::vlanVsiAdd, false, 1},
    {"vlanvsiadd-ring", VornBench::vlanVsiAdd, true, 1},
    {"tcvprimap", VornBench::tcToVpriMapAdd, false, 1},
    {"tcvprimap-ring", VornBench::tcToVpriMapAdd, true, 1},
    {"ring-message", ringMessage, true, 1},
    {"lag-listing-line", listLags, false, VornBench::listingLines(kLags, kConfigs)},
    {"egress-generation", egressGeneration, false, 1},
};

}  // namespace

// Not inlined and not renamed: callgrind counts from its entry to its return.
extern "C" [[gnu::noinline]] void vorn_measure(int (*work)(), long count) {
  for (long i = 0; i < count; ++i) work();
}

int main(int argc, char** argv) {
  const Figure* figure = nullptr;
  for (const Figure& f : kFigures)
    if (argc == 3 && std::strcmp(argv[1], f.name) == 0) figure = &f;
  const long count = argc == 3 ? std::atol(argv[2]) : 0;
  if (!figure || count <= 0) {
    std::fprintf(stderr, "usage: vorn_instructions FIGURE COUNT; figures:");
    for (const Figure& f : kFigures) std::fprintf(stderr, " %s", f.name);
    std::fprintf(stderr, "\n");
    return 2;
  }
  VornBench::commandPathSetup();
  if (figure->work == listLags)
    VornBench::listingPath = VornBench::listingFile(kLags, kConfigs).c_str();
  std::optional<VornBench::RingOn> ring;
  if (figure->ring) ring.emplace();
  figure->work();
  vorn_measure(figure->work, count);
  std::printf("%zu\n", static_cast<std::size_t>(count) * figure->unitsPerCall);
  return 0;
}
