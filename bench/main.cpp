// Runs every benchmark, then prints the registered ratios with their targets.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <new>
#include <vector>

#include "Ratios.h"

namespace VornBench {
namespace {

struct Ratio {
  std::string label, numerator, denominator;
  double target;
};

std::vector<Ratio>& ratios() {
  static std::vector<Ratio> r;
  return r;
}

thread_local std::size_t tAllocations = 0;

// Keeps every run's time per iteration (real time, nanoseconds) by name.
class Collector : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& r : runs) {
      if (r.run_type == Run::RT_Iteration && r.iterations > 0)
        ns[r.benchmark_name()] = r.GetAdjustedRealTime();
    }
  }
  std::map<std::string, double> ns;
};

}  // namespace

void ratio(const std::string& label, const std::string& numerator, const std::string& denominator,
           double target) {
  ratios().push_back({label, numerator, denominator, target});
}

std::size_t allocations() noexcept { return tAllocations; }

}  // namespace VornBench

void* operator new(std::size_t n) {
  ++VornBench::tAllocations;
  if (void* p = std::malloc(n ? n : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  VornBench::Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector);
  std::printf("\nRatios (same run):\n");
  int missed = 0;
  for (const auto& r : VornBench::ratios()) {
    auto n = collector.ns.find(r.numerator), d = collector.ns.find(r.denominator);
    if (n == collector.ns.end() || d == collector.ns.end() || d->second <= 0) continue;
    double value = n->second / d->second;
    bool ok = r.target <= 0 || value <= r.target;
    if (!ok) ++missed;
    if (r.target > 0)
      std::printf("  %-58s %7.3f  (target <= %.2f) %s\n", r.label.c_str(), value, r.target,
                  ok ? "met" : "MISSED");
    else
      std::printf("  %-58s %7.3f\n", r.label.c_str(), value);
  }
  benchmark::Shutdown();
  return 0;
}
