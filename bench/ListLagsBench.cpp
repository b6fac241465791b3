// vornDmaListLags against the size of the listing: its cost grows linearly
// with the lines, config lines included (a config line adds to its LAG in
// place), and it is set against merely reading the same file line by line.
//
// The listing is rendered by the driver emulator from its LAG state, written
// to a temporary file, and served as "/proc/vorn-dma" through the kernel seam.
#include <benchmark/benchmark.h>

#include <fstream>
#include <string>

#include "Kernel/Kernel.h"
#include "Ratios.h"
#include "Vorn/VornDma.h"
#include "Workloads.h"

namespace {

void BM_ListLags(benchmark::State& state) {
  const int lags = static_cast<int>(state.range(0));
  const int configs = static_cast<int>(state.range(1));
  VornBench::listingPath = VornBench::listingFile(lags, configs).c_str();
  Kernel::ScopedOps scoped(&VornBench::benchOps());
  ::unsetenv("SIMULATION_VMID");
  for (auto _ : state) {
    Hardware::Vorn::VornDmaLags::Ptr table = Hardware::Vorn::vornDmaListLags();
    if (table->lagDeviceSize() != static_cast<std::size_t>(lags))
      state.SkipWithError("short table");
    benchmark::DoNotOptimize(table.get());
  }
  state.counters["lines"] = static_cast<double>(VornBench::listingLines(lags, configs));
  state.counters["ns_per_line"] = benchmark::Counter(
      static_cast<double>(VornBench::listingLines(lags, configs)),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Reading the same file line by line and nothing else.
void BM_ReadLinesOnly(benchmark::State& state) {
  const std::string& file =
      VornBench::listingFile(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
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
