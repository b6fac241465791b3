// Runs every benchmark, then prints the registered ratios with their targets.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
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

// Keeps every benchmark's CPU time per iteration (nanoseconds) by name: the
// median of its repetitions when it was repeated, else its one run. CPU time,
// because the machine may be shared: time spent preempted is not the code's;
// wall-clock time for a benchmark that asks for it (real or manual time: its
// work is done in other processes).
class Collector : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& r : runs) {
      const std::string name = r.run_name.str();
      if (r.run_type == Run::RT_Aggregate && r.aggregate_name == "median") {
        median[name] = time(r);
      } else if (r.run_type == Run::RT_Iteration && r.iterations > 0) {
        single[name] = time(r);
      }
    }
  }
  // The figure of benchmark `name`, or a negative value.
  double ns(const std::string& name) const {
    if (auto m = median.find(name); m != median.end()) return m->second;
    if (auto s = single.find(name); s != single.end()) return s->second;
    return -1;
  }

 private:
  static double time(const Run& r) {
    return r.run_name.time_type.empty() ? r.GetAdjustedCPUTime() : r.GetAdjustedRealTime();
  }
  std::map<std::string, double> median, single;
};

// Repeated, interleaved runs unless the command line says otherwise: the
// ratios compare medians of runs taken side by side.
std::vector<char*> withDefaultRepetitions(int argc, char** argv) {
  static char repetitions[] = "--benchmark_repetitions=7";
  static char interleave[] = "--benchmark_enable_random_interleaving=true";
  static char aggregates[] = "--benchmark_display_aggregates_only=true";
  std::vector<char*> args(argv, argv + argc);
  bool repeated = false;
  for (int i = 1; i < argc; ++i)
    repeated = repeated || std::strncmp(argv[i], "--benchmark_repetitions", 23) == 0;
  if (!repeated) args.insert(args.begin() + 1, {repetitions, interleave, aggregates});
  args.push_back(nullptr);
  return args;
}

}  // namespace

void ratio(const std::string& label, const std::string& numerator, const std::string& denominator,
           double target) {
  ratios().push_back({label, numerator, denominator, target});
}

std::string processor() {
  std::FILE* f = std::fopen("/proc/cpuinfo", "r");
  char line[256];
  std::string model = "an unknown processor";
  while (f && std::fgets(line, sizeof line, f))
    if (std::strncmp(line, "model name", 10) == 0) {
      const char* colon = std::strchr(line, ':');
      model = colon ? colon + 2 : line;
      model.erase(model.find_last_not_of(" \n") + 1);
      break;
    }
  if (f) std::fclose(f);
  return model;
}

}  // namespace VornBench

int main(int argc, char** argv) {
  std::vector<char*> args = VornBench::withDefaultRepetitions(argc, argv);
  int count = static_cast<int>(args.size()) - 1;
  benchmark::Initialize(&count, args.data());
  VornBench::Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector);
  std::printf(
      "\nRatios (same run, medians of the repetitions; CPU time, or wall-clock time for"
      " .../real_time and .../manual_time) on %s:\n",
      VornBench::processor().c_str());
  int missed = 0;
  for (const auto& r : VornBench::ratios()) {
    double n = collector.ns(r.numerator), d = collector.ns(r.denominator);
    if (n < 0 || d <= 0) continue;
    double value = n / d;
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
