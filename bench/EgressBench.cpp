// The egress buffering state machine's start-up cost: constructing it for a
// two-revision system (both threshold profiles generated and published),
// beside a construction that the redundancy gate keeps from generating.
#include <benchmark/benchmark.h>

#include "Mox/Trace.h"
#include "Ratios.h"
#include "Vorn/EgressBufferSm.h"
#include "Workloads.h"

using namespace Hardware::Vorn;

namespace {

template <Redundancy::RedundancyMode kMode>
void BM_EgressBufferingSm(benchmark::State& state) {
  VornBench::TwoRevisionSystem sys(kMode);
  for (auto _ : state) {
    EgressBufferStatus::Ptr status(new EgressBufferStatus());
    benchmark::DoNotOptimize(egressBufferingSmFactory(nullptr, status, sys.redundancy, sys.chips));
  }
}
BENCHMARK(BM_EgressBufferingSm<Redundancy::redundancyModeActive>)->Name("BM_EgressBufferingSm");
BENCHMARK(BM_EgressBufferingSm<Redundancy::redundancyModeStandby>)
    ->Name("BM_EgressBufferingSm/standby");

const bool registered = [] {
  VornBench::ratio("EgressBufferingSm two revisions / gated construction", "BM_EgressBufferingSm",
                   "BM_EgressBufferingSm/standby", 0);
  return true;
}();

}  // namespace
