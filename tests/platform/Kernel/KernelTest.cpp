// The kernel seam: Linux by default, a test's table when one is installed,
// including a table that keeps Linux's ioctl (the command path then calls the
// C library directly) or replaces it.
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

#include "Kernel/Kernel.h"

namespace {

int gIoctlCalls = 0;

TEST(KernelSeam, IoctlReachesLinuxOrTheInstalledTable) {
  int pipeFds[2];
  ASSERT_EQ(::pipe(pipeFds), 0);
  ASSERT_EQ(::write(pipeFds[1], "abc", 3), 3);
  int pending = -1;
  EXPECT_EQ(Kernel::ioctl(pipeFds[0], FIONREAD, &pending), 0);
  EXPECT_EQ(pending, 3);

  // A copy of the Linux table with its own open still reaches Linux's ioctl.
  Kernel::Ops keepsIoctl = Kernel::linuxOps();
  keepsIoctl.open = [](const char*, int) { return -1; };
  {
    Kernel::ScopedOps scoped(&keepsIoctl);
    pending = -1;
    EXPECT_EQ(Kernel::ioctl(pipeFds[0], FIONREAD, &pending), 0);
    EXPECT_EQ(pending, 3);
    EXPECT_EQ(Kernel::open("/dev/null", 0), -1);
  }

  Kernel::Ops ownIoctl = Kernel::linuxOps();
  ownIoctl.ioctl = [](int, unsigned long, void*) {
    ++gIoctlCalls;
    return -7;
  };
  {
    Kernel::ScopedOps scoped(&ownIoctl);
    EXPECT_EQ(Kernel::ioctl(pipeFds[0], FIONREAD, &pending), -7);
    EXPECT_EQ(gIoctlCalls, 1);
  }
  EXPECT_EQ(Kernel::ioctl(pipeFds[0], FIONREAD, &pending), 0);  // Linux again
  EXPECT_EQ(gIoctlCalls, 1);
  ::close(pipeFds[0]);
  ::close(pipeFds[1]);
}

TEST(KernelSeam, GetenvReadsTheEnvironmentAsItIsNow) {
  ::setenv("VORN_KERNEL_TEST", "one", 1);
  EXPECT_STREQ(Kernel::getenv("VORN_KERNEL_TEST"), "one");
  ::setenv("VORN_KERNEL_TEST", "", 1);
  EXPECT_STREQ(Kernel::getenv("VORN_KERNEL_TEST"), "");
  EXPECT_EQ(Kernel::getenv("VORN_KERNEL_TES"), nullptr);    // a prefix of a name
  EXPECT_EQ(Kernel::getenv("VORN_KERNEL_TESTS"), nullptr);  // longer than a name
  ::unsetenv("VORN_KERNEL_TEST");
  EXPECT_EQ(Kernel::getenv("VORN_KERNEL_TEST"), nullptr);
  EXPECT_EQ(Kernel::getenv(""), std::getenv(""));
}

}  // namespace
