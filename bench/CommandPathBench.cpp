// The command path against the bare system call: the library's commands go
// through the real kernel seam to a real descriptor that refuses every
// request (the random device answers EINVAL to requests it does not know,
// which every command here returns rather than ending the process), beside a
// bare ioctl of the same size on the same descriptor.
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

int refusingDevice() {
  static const int fd = ::open("/dev/urandom", O_RDWR | O_CLOEXEC);
  return fd;
}

// Linux, except that "/dev/fabric" is the refusing device.
const Kernel::Ops& refusingFabric() {
  static const Kernel::Ops ops = [] {
    Kernel::Ops o = Kernel::linuxOps();
    o.open = [](const char* path, int flags) {
      if (std::strcmp(path, "/dev/fabric") == 0) return ::dup(refusingDevice());
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

template <bool kRing>
void BM_DeviceUp(benchmark::State& state) {
  Setup setup;
  const Mox::String name("fap0");
  vornDmaDeviceUp(name);
  std::optional<RingOn> ring;
  if (kRing) ring.emplace();
  std::size_t before = VornBench::allocations();
  for (auto _ : state) benchmark::DoNotOptimize(vornDmaDeviceUp(name));
  state.counters["allocs/cmd"] = static_cast<double>(VornBench::allocations() - before) /
                                 static_cast<double>(state.iterations());
}
BENCHMARK(BM_DeviceUp<false>)->Name("BM_vornDmaDeviceUp");
BENCHMARK(BM_DeviceUp<true>)->Name("BM_vornDmaDeviceUp/ring");

// The three commands the command path is judged by, each against the same
// refusing descriptor.
template <bool kRing>
void BM_IfPortUpdate(benchmark::State& state) {
  Setup setup;
  vornDmaIfPortUpdate("et3_1", 1234);
  std::optional<RingOn> ring;
  if (kRing) ring.emplace();
  std::size_t before = VornBench::allocations();
  for (auto _ : state) benchmark::DoNotOptimize(vornDmaIfPortUpdate("et3_1", 1234));
  state.counters["allocs/cmd"] = static_cast<double>(VornBench::allocations() - before) /
                                 static_cast<double>(state.iterations());
}
BENCHMARK(BM_IfPortUpdate<false>)->Name("BM_vornDmaIfPortUpdate");
BENCHMARK(BM_IfPortUpdate<true>)->Name("BM_vornDmaIfPortUpdate/ring");

template <bool kRing>
void BM_VlanVsiAdd(benchmark::State& state) {
  Setup setup;
  vornDmaVlanVsiAdd("et3_1", 100, 200, 0, 4096);
  std::optional<RingOn> ring;
  if (kRing) ring.emplace();
  std::size_t before = VornBench::allocations();
  for (auto _ : state) benchmark::DoNotOptimize(vornDmaVlanVsiAdd("et3_1", 100, 200, 0, 4096));
  state.counters["allocs/cmd"] = static_cast<double>(VornBench::allocations() - before) /
                                 static_cast<double>(state.iterations());
}
BENCHMARK(BM_VlanVsiAdd<false>)->Name("BM_vornDmaVlanVsiAdd");
BENCHMARK(BM_VlanVsiAdd<true>)->Name("BM_vornDmaVlanVsiAdd/ring");

// The driver refuses with ENOTTY, which this command returns (not one of the
// answers that end the process).
template <bool kRing>
void BM_TcToVpriMapAdd(benchmark::State& state) {
  Setup setup;
  unsigned map[8] = {0, 1, 2, 3, 4, 5, 6, 7};
  std::optional<RingOn> ring;
  if (kRing) ring.emplace();
  std::size_t before = VornBench::allocations();
  for (auto _ : state) benchmark::DoNotOptimize(vornDmaTcToVpriMapAdd("et3_1", map));
  state.counters["allocs/cmd"] = static_cast<double>(VornBench::allocations() - before) /
                                 static_cast<double>(state.iterations());
}
BENCHMARK(BM_TcToVpriMapAdd<false>)->Name("BM_vornDmaTcToVpriMapAdd");
BENCHMARK(BM_TcToVpriMapAdd<true>)->Name("BM_vornDmaTcToVpriMapAdd/ring");

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
