// vornDmaListLags against the size of the listing: its cost grows linearly
// with the lines, config lines included (a config line adds to its LAG in
// place), and it is set against merely reading the same file line by line.
//
// The listing is rendered by the driver emulator from its LAG state, written
// to a temporary file, and served as "/proc/vorn-dma" through the kernel seam.
#include <benchmark/benchmark.h>
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
#include "Ratios.h"
#include "Vorn/VornDma.h"
#include "emu/LagState.h"

namespace {

constexpr int kMembersPerLag = 16;

// The driver's listing of `lags` LAGs, each with 16 members and `configs`
// config members.
std::string renderListing(int lags, int configs) {
  Emu::LagState state;
  for (int n = 1; n <= lags; ++n) {
    Emu::Lag& lag = state.lags[n];
    lag.lagId = n - 1;
    for (int m = 0; m < kMembersPerLag; ++m)
      lag.members[m] = "et" + std::to_string(n) + "_" + std::to_string(m);
    for (int c = 0; c < configs; ++c)
      lag.configMembers.insert("Ethernet" + std::to_string(n) + "/" + std::to_string(c));
  }
  return Emu::lagListing(state);
}

// The listing of each size, written once to a temporary file.
const std::string& listingFile(int lags, int configs) {
  static std::map<std::pair<int, int>, std::string> files;
  auto [it, fresh] = files.try_emplace({lags, configs});
  if (fresh) {
    char path[] = "/tmp/vorn-bench-lags-XXXXXX";
    int fd = ::mkstemp(path);
    std::string text = renderListing(lags, configs);
    if (fd < 0 || ::write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
      std::perror("vorn_bench: listing file");
      std::exit(1);
    }
    ::close(fd);
    it->second = path;
    std::atexit([] {
      for (const auto& [size, file] : files) ::unlink(file.c_str());
    });
  }
  return it->second;
}

// Opens of "/proc/vorn-dma" reach the file of the running benchmark.
const char* gProcFile = nullptr;

Kernel::Ops procRedirect() {
  Kernel::Ops ops = Kernel::linuxOps();
  ops.open = [](const char* path, int flags) {
    if (gProcFile && std::strcmp(path, "/proc/vorn-dma") == 0) path = gProcFile;
    return Kernel::linuxOps().open(path, flags);
  };
  return ops;
}

std::size_t lineCount(int lags, int configs) {
  // Headers and their empty lines, a LAG line per LAG, a config line per
  // config member.
  return 6 + static_cast<std::size_t>(lags) * (1 + static_cast<std::size_t>(configs));
}

void BM_ListLags(benchmark::State& state) {
  const int lags = static_cast<int>(state.range(0));
  const int configs = static_cast<int>(state.range(1));
  gProcFile = listingFile(lags, configs).c_str();
  static const Kernel::Ops ops = procRedirect();
  Kernel::ScopedOps scoped(&ops);
  ::unsetenv("SIMULATION_VMID");
  for (auto _ : state) {
    Hardware::Vorn::VornDmaLags::Ptr table = Hardware::Vorn::vornDmaListLags();
    if (table->lagDeviceSize() != static_cast<std::size_t>(lags)) state.SkipWithError("short table");
    benchmark::DoNotOptimize(table.get());
  }
  state.counters["lines"] = static_cast<double>(lineCount(lags, configs));
  state.counters["ns_per_line"] = benchmark::Counter(
      static_cast<double>(lineCount(lags, configs)),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Reading the same file line by line and nothing else.
void BM_ReadLinesOnly(benchmark::State& state) {
  const std::string& file = listingFile(static_cast<int>(state.range(0)),
                                        static_cast<int>(state.range(1)));
  std::size_t lines = 0;
  for (auto _ : state) {
    std::ifstream in(file);
    std::string line;
    lines = 0;
    while (std::getline(in, line)) ++lines;
    benchmark::DoNotOptimize(lines);
  }
  state.counters["lines"] = static_cast<double>(lines);
}

// 8 times more config lines per LAG: about 8 times the time.
BENCHMARK(BM_ListLags)->Args({16, 256})->Args({16, 2048})->Unit(benchmark::kMillisecond);
// The full table: 1024 LAGs x 16 members x 16 config members.
BENCHMARK(BM_ListLags)->Args({1024, 16})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadLinesOnly)->Args({1024, 16})->Unit(benchmark::kMillisecond);

const bool registered = [] {
  VornBench::ratio("vornDmaListLags, 8x config lines per LAG (linear: ~8)", "BM_ListLags/16/2048",
                   "BM_ListLags/16/256", 8.8);
  VornBench::ratio("vornDmaListLags 1024x16x16 / reading the lines", "BM_ListLags/1024/16",
                   "BM_ReadLinesOnly/1024/16", 2.0);
  return true;
}();

}  // namespace
