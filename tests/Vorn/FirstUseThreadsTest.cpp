// Every first-use path taken from several threads at once; under
// ThreadSanitizer a race in one-time initialisation shows here.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "HardwareVorn/SystemLimits.h"
#include "Mox/Singleton.h"
#include "Mox/Trace.h"
#include "Ringlog/MemoryFile.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"

using namespace Hardware::Vorn;

namespace {

TEST(FirstUseThreads, ConcurrentFirstCallsAgree) {
  VornTest::ScopedEnv sim("SIMULATION_VMID", std::nullopt);
  Emu::FabricDriver driver;
  driver.pciDevicePresentIs("0000:03:00.0");
  Ringlog::ScopedMemoryFile ring;
  constexpr int kThreads = 8;
  std::atomic<int> go{0};
  std::vector<std::thread> threads;
  std::vector<int> answers(kThreads, -1);
  std::vector<char> sai(kThreads);  // not vector<bool>: its bits share words
  std::vector<const void*> handles(kThreads), limits(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      go.fetch_add(1);
      while (go.load() < kThreads) {
      }
      sai[t] = saimode();
      handles[t] = &Mox::traceHandle("VornDma");
      limits[t] = Mox::singletonIs<SystemLimits>().get();
      answers[t] = vornDmaPresent("fap0", Fru::PciHam::pciHamIs({0, 3, 0, 0})) ? 0 : 1;
    });
  }
  for (auto& th : threads) th.join();
  for (int t = 0; t < kThreads; ++t) {
    EXPECT_EQ(sai[t], sai[0]);
    EXPECT_EQ(handles[t], handles[0]);
    EXPECT_EQ(limits[t], limits[0]);
    EXPECT_EQ(answers[t], 0);
  }
  EXPECT_EQ(driver.commands().size(), static_cast<std::size_t>(kThreads));
  EXPECT_EQ(ring.messages().size(), static_cast<std::size_t>(kThreads));
  Mox::singletonDel<SystemLimits>();
}

}  // namespace
