// The virtual fabric's costs: one command's round trip through vorn-fabricd
// beside the same command on the in-process emulator, both through the
// kernel seam's tables; and the daemon's throughput with 1, 2 and 8 client
// processes, each on a connection of its own. Wall-clock time: the work is
// shared with another process.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>

#include "Kernel/RemoteFabric.h"
#include "Ratios.h"
#include "emu/FabricDriver.h"

namespace {

using Kernel::fabric::Type;

constexpr unsigned kSize = 256;  // a command buffer, as the library sends it
constexpr char kCommand[] = "vprimap 1 1";

// A daemon for the whole run, stopped when the program ends.
const char* daemonPath() {
  static const std::string path = [] {
    std::string p = "/tmp/vorn-bench-fabric-" + std::to_string(::getpid()) + ".sock";
    static pid_t pid;
    const char* argv[] = {VORN_FABRICD_PATH, "--socket", p.c_str(), nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    if (posix_spawn(&pid, argv[0], &quiet, nullptr, const_cast<char**>(argv), environ) != 0)
      return std::string();
    std::atexit([] {
      ::kill(pid, SIGTERM);
      ::waitpid(pid, nullptr, 0);
    });
    for (int i = 0; i < 500; ++i) {
      int fd = Kernel::fabric::connectTo(p.c_str());
      if (fd >= 0) return ::close(fd), p;
      ::usleep(10000);
    }
    return std::string();
  }();
  return path.empty() ? nullptr : path.c_str();
}

// One command through `ops`' "/dev/fabric", as the library's command path
// makes it.
void roundTrips(benchmark::State& state, const Kernel::Ops& ops) {
  int fd = ops.open("/dev/fabric", O_RDWR);
  if (fd < 0) return state.SkipWithError("no /dev/fabric");
  char buf[kSize];
  for (auto _ : state) {
    std::memcpy(buf, kCommand, sizeof kCommand);
    if (ops.ioctl(fd, kSize, buf) != 0) return state.SkipWithError("the command was refused");
  }
  ops.close(fd);
}

void DaemonRoundTrip(benchmark::State& state) {
  const char* path = daemonPath();
  if (!path) return state.SkipWithError("vorn-fabricd did not start");
  roundTrips(state, *Kernel::fabric::detail::remoteOps(path));
}
BENCHMARK(DaemonRoundTrip)->UseRealTime();

void EmulatorRoundTrip(benchmark::State& state) {
  Emu::FabricDriver driver;
  roundTrips(state, Kernel::ops());
}
BENCHMARK(EmulatorRoundTrip)->UseRealTime();

// A client process: `count` commands on a connection of its own.
[[noreturn]] void clientProcess(const char* path, int count) {
  int fd = Kernel::fabric::connectTo(path);
  std::uint32_t flags;
  if (fd < 0 || Kernel::fabric::exchange(fd, Type::kOpen, nullptr, 0, &flags, sizeof flags) != 0)
    _exit(1);
  char buf[kSize] = {};
  Kernel::fabric::CommandHeader header{kSize};
  for (int i = 0; i < count; ++i) {
    std::memcpy(buf, kCommand, sizeof kCommand);
    iovec parts[] = {{&header, sizeof header}, {buf, kSize}};
    if (Kernel::fabric::exchange(fd, Type::kCommand, parts, 2, buf, kSize) != 0) _exit(1);
  }
  _exit(0);
}

// Each iteration: 4,000 commands shared out among state.range(0) client
// processes, so that the time per iteration is the inverse of the daemon's
// throughput.
void DaemonThroughput(benchmark::State& state) {
  const char* path = daemonPath();
  if (!path) return state.SkipWithError("vorn-fabricd did not start");
  constexpr int kCommands = 4000;
  const int clients = static_cast<int>(state.range(0));
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    for (int c = 0; c < clients; ++c)
      if (::fork() == 0) clientProcess(path, kCommands / clients);
    int failed = 0;
    for (int c = 0; c < clients; ++c) {
      int status = 0;
      ::wait(&status);
      failed += !WIFEXITED(status) || WEXITSTATUS(status) != 0;
    }
    if (failed) return state.SkipWithError("a client process failed");
    state.SetIterationTime(
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  state.SetItemsProcessed(state.iterations() * kCommands);
}
BENCHMARK(DaemonThroughput)->Arg(1)->Arg(2)->Arg(8)->UseManualTime();

[[maybe_unused]] const bool kRatios = [] {
  VornBench::ratio("daemon round trip / in-process emulator", "DaemonRoundTrip/real_time",
                   "EmulatorRoundTrip/real_time", 0);
  VornBench::ratio("daemon throughput, 1 client / 2 clients (time per command)",
                   "DaemonThroughput/1/manual_time", "DaemonThroughput/2/manual_time", 0);
  VornBench::ratio("daemon throughput, 1 client / 8 clients (time per command)",
                   "DaemonThroughput/1/manual_time", "DaemonThroughput/8/manual_time", 0);
  return true;
}();

}  // namespace
