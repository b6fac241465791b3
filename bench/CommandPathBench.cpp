// The command path against the bare system call: the library's commands go
// through the real kernel seam to a real descriptor that refuses every
// request (/dev/null answers ENOTTY), beside a bare ioctl of the same size on
// the same descriptor.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <optional>

#include "Kernel/Kernel.h"
#include "Mox/Trace.h"
#include "Ratios.h"
#include "Ringlog/RingFile.h"
#include "Vorn/VornDma.h"

using namespace Hardware::Vorn;

namespace {

int devNull() {
  static const int fd = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  return fd;
}

// Linux, except that "/dev/fabric" is /dev/null.
const Kernel::Ops& refusingFabric() {
  static const Kernel::Ops ops = [] {
    Kernel::Ops o = Kernel::linuxOps();
    o.open = [](const char* path, int flags) {
      if (std::strcmp(path, "/dev/fabric") == 0) return ::dup(devNull());
      return Kernel::linuxOps().open(path, flags);
    };
    return o;
  }();
  return ops;
}

struct Setup {
  Setup() {
    ::unsetenv("SIMULATION_VMID");
    Kernel::opsIs(&refusingFabric());
    Mox::traceHandle("VornDma").allLevelsIs(false);
  }
};

// Ring tracing on for the benchmark's scope.
class RingOn {
 public:
  RingOn() : file_("/tmp/vorn-bench.rlog", 1 << 20) { Ringlog::defaultFileIs(&file_); }
  ~RingOn() {
    Ringlog::defaultFileIs(nullptr);
    ::unlink("/tmp/vorn-bench.rlog");
  }

 private:
  Ringlog::RingFile file_;
};

void BM_BareIoctl(benchmark::State& state) {
  Setup setup;
  int fd = devNull();
  char buf[kCommandSize];
  std::snprintf(buf, sizeof buf, "devstate %s %s", "fap0", "up");
  for (auto _ : state) benchmark::DoNotOptimize(::ioctl(fd, kCommandSize, buf));
}
BENCHMARK(BM_BareIoctl);

template <bool kRing>
void BM_DeviceUp(benchmark::State& state) {
  Setup setup;
  const Mox::String name("fap0");
  vornDmaDeviceUp(name);
  std::optional<RingOn> ring;
  if (kRing) ring.emplace();
  std::size_t before = VornBench::allocations();
  for (auto _ : state) benchmark::DoNotOptimize(vornDmaDeviceUp(name));
  state.counters["allocs/cmd"] =
      static_cast<double>(VornBench::allocations() - before) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_DeviceUp<false>)->Name("BM_vornDmaDeviceUp");
BENCHMARK(BM_DeviceUp<true>)->Name("BM_vornDmaDeviceUp/ring");

// One driver-command message to a present ring file, and the check when there
// is none.
void BM_RingMessage(benchmark::State& state) {
  RingOn ring;
  const char* cmd = "ifportupdate et3_1 1234";
  for (auto _ : state) RINGLOG("fab_ioctl buf=%s", cmd);
}
BENCHMARK(BM_RingMessage);

void BM_RingAbsent(benchmark::State& state) {
  const char* cmd = "ifportupdate et3_1 1234";
  for (auto _ : state) {
    RINGLOG("fab_ioctl buf=%s", cmd);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_RingAbsent);

const bool registered = [] {
  VornBench::ratio("vornDmaDeviceUp / bare ioctl (ring off)", "BM_vornDmaDeviceUp",
                   "BM_BareIoctl", 1.15);
  VornBench::ratio("vornDmaDeviceUp / bare ioctl (ring on)", "BM_vornDmaDeviceUp/ring",
                   "BM_BareIoctl", 1.3);
  VornBench::ratio("ring message / bare ioctl", "BM_RingMessage", "BM_BareIoctl", 0);
  VornBench::ratio("ring check without file / bare ioctl", "BM_RingAbsent", "BM_BareIoctl", 0);
  return true;
}();

}  // namespace
