// A driver command allocates nothing on its way to the kernel when tracing is
// off.
#include <gtest/gtest.h>

#include "Kernel/Kernel.h"
#include "Mox/Trace.h"
#include "Vorn/VornDma.h"
#include "support/AllocationCounter.h"
#include "support/Support.h"

using namespace Hardware::Vorn;

namespace {

int gIoctls = 0;

// A driver that refuses every request, allocating nothing itself.
Kernel::Ops refusingDriver() {
  Kernel::Ops ops = Kernel::linuxOps();
  ops.open = [](const char*, int) { return 1 << 24; };
  ops.ioctl = [](int, unsigned long, void*) {
    ++gIoctls;
    errno = ENODEV;
    return -1;
  };
  return ops;
}

TEST(CommandAllocation, DeviceCommandsAllocateNothingWithTracingOff) {
  static const Kernel::Ops ops = refusingDriver();
  Kernel::ScopedOps scoped(&ops);
  VornTest::ScopedEnv sim("SIMULATION_VMID", std::nullopt);
  Mox::traceHandle("VornDma").allLevelsIs(false);
  const Mox::String name("fap0");
  vornDmaDeviceUp(name);  // first use: opens the device, creates the trace handle

  gIoctls = 0;
  VornTest::AllocationScope scope;
  vornDmaDeviceUp(name);
  vornDmaDeviceDown(name);
  vornDmaDevcleanup(name);
  bool up;
  vornDmaIsDeviceUp(name, &up);
  vornDmaSflowSampleRateSet(16, 4, true, fapTypeArad);  // numbers formatted on the stack too
  vornDmaDisableSflowDrops(fapTypeArad);
  EXPECT_EQ(scope.count(), 0u);
  EXPECT_EQ(gIoctls, 6);  // each command reached the driver once
}

TEST(CommandAllocation, CounterSeesAllocations) {
  VornTest::AllocationScope scope;
  Mox::String s("a name longer than fifteen");
  EXPECT_EQ(scope.count(), 1u);
}

}  // namespace
