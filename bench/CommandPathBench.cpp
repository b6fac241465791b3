// The command path against the bare system call: the library's commands go
// through the real kernel seam to a real descriptor that refuses every
// request (Workloads.h), beside a bare ioctl of the same size on the same
// descriptor.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "Kernel/Kernel.h"
#include "Mox/Trace.h"
#include "Ratios.h"
#include "Vorn/VornDma.h"
#include "Workloads.h"
#include "support/AllocationCounter.h"

using namespace Hardware::Vorn;

namespace {

using VornBench::refusingDevice;
using VornBench::RingOn;

struct Setup {
  Setup() { VornBench::commandPathSetup(); }
};

void BM_BareIoctl(benchmark::State& state) {
  Setup setup;
  int fd = refusingDevice();
  char buf[kCommandSize];
  std::snprintf(buf, sizeof buf, "devstate %s %s", "fap0", "up");
  for (auto _ : state) benchmark::DoNotOptimize(::ioctl(fd, kCommandSize, buf));
}
BENCHMARK(BM_BareIoctl);

// A function that makes only the system call, as the library does, without
// the C library's wrapper: the floor of any library function that sends a
// request (its own return is pending across the call, as a bare ioctl's is).
[[gnu::noinline]] int onlyTheSystemCall(int fd, char* buf) {
  return Kernel::detail::linuxIoctlError(fd, kCommandSize, buf);
}

void BM_BareSyscall(benchmark::State& state) {
  Setup setup;
  int fd = refusingDevice();
  char buf[kCommandSize];
  std::snprintf(buf, sizeof buf, "devstate %s %s", "fap0", "up");
  for (auto _ : state) benchmark::DoNotOptimize(onlyTheSystemCall(fd, buf));
}
BENCHMARK(BM_BareSyscall);

// A command against the refusing descriptor, its first call (which opens
// the device) made before the timing.
template <int (*kCommand)(), bool kRing>
void BM_Command(benchmark::State& state) {
  Setup setup;
  kCommand();
  std::optional<RingOn> ring;
  if (kRing) ring.emplace();
  const VornTest::AllocationScope allocations;
  for (auto _ : state) benchmark::DoNotOptimize(kCommand());
  state.counters["allocs/cmd"] =
      static_cast<double>(allocations.count()) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_Command<VornBench::deviceUp, false>)->Name("BM_vornDmaDeviceUp");
BENCHMARK(BM_Command<VornBench::deviceUp, true>)->Name("BM_vornDmaDeviceUp/ring");
BENCHMARK(BM_Command<VornBench::ifPortUpdate, false>)->Name("BM_vornDmaIfPortUpdate");
BENCHMARK(BM_Command<VornBench::ifPortUpdate, true>)->Name("BM_vornDmaIfPortUpdate/ring");
BENCHMARK(BM_Command<VornBench::vlanVsiAdd, false>)->Name("BM_vornDmaVlanVsiAdd");
BENCHMARK(BM_Command<VornBench::vlanVsiAdd, true>)->Name("BM_vornDmaVlanVsiAdd/ring");
BENCHMARK(BM_Command<VornBench::tcToVpriMapAdd, false>)->Name("BM_vornDmaTcToVpriMapAdd");
BENCHMARK(BM_Command<VornBench::tcToVpriMapAdd, true>)->Name("BM_vornDmaTcToVpriMapAdd/ring");

// One driver-command message to a present ring file, as the command path
// writes it (the text with the length its writer measured), and the check
// when there is no file.
void BM_RingMessage(benchmark::State& state) {
  RingOn ring;
  const std::string_view cmd = "ifportupdate et3_1 1234";
  for (auto _ : state) RINGLOG("fab_ioctl buf=%s", cmd);
}
BENCHMARK(BM_RingMessage);

void BM_RingAbsent(benchmark::State& state) {
  const std::string_view cmd = "ifportupdate et3_1 1234";
  for (auto _ : state) {
    RINGLOG("fab_ioctl buf=%s", cmd);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_RingAbsent);

const bool registered = [] {
  VornBench::ratio("vornDmaDeviceUp / bare ioctl (ring off)", "BM_vornDmaDeviceUp", "BM_BareIoctl",
                   1.15);
  VornBench::ratio("vornDmaDeviceUp / bare ioctl (ring on)", "BM_vornDmaDeviceUp/ring",
                   "BM_BareIoctl", 1.3);
  for (const char* cmd : {"vornDmaIfPortUpdate", "vornDmaVlanVsiAdd", "vornDmaTcToVpriMapAdd"}) {
    VornBench::ratio(std::string(cmd) + " / bare ioctl (ring off)", std::string("BM_") + cmd,
                     "BM_BareIoctl", 1.15);
    VornBench::ratio(std::string(cmd) + " / bare ioctl (ring on)",
                     std::string("BM_") + cmd + "/ring", "BM_BareIoctl", 1.3);
  }
  for (const char* cmd : {"vornDmaIfPortUpdate", "vornDmaVlanVsiAdd", "vornDmaTcToVpriMapAdd"})
    VornBench::ratio(std::string(cmd) + " / a function of one system call (ring off)",
                     std::string("BM_") + cmd, "BM_BareSyscall", 0);
  VornBench::ratio("ring message / bare ioctl", "BM_RingMessage", "BM_BareIoctl", 0);
  VornBench::ratio("ring check without file / bare ioctl", "BM_RingAbsent", "BM_BareIoctl", 0);
  return true;
}();

}  // namespace
