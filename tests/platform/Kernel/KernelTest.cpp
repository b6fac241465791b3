// The kernel seam: Linux by default, a test's table when one is installed.
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "Kernel/Kernel.h"

namespace {

int gIoctlCalls = 0;

// ioctlError answers with an error number, from the system call made inline
// or from the installed table.
TEST(KernelSeam, IoctlReachesLinuxOrTheInstalledTable) {
  int fds[2];
  ASSERT_EQ(::pipe(fds), 0);
  ASSERT_EQ(::write(fds[1], "abc", 3), 3);  // FIONREAD on the read end answers 3
  const int readEnd = fds[0];
  int pending = -1;
  EXPECT_EQ(Kernel::ioctlError(readEnd, FIONREAD, &pending), 0);
  EXPECT_EQ(pending, 3);  // the kernel's answer reached the buffer
  EXPECT_EQ(Kernel::ioctlError(-1, FIONREAD, &pending), EBADF);

  Kernel::Ops keepsIoctl = Kernel::linuxOps();
  keepsIoctl.open = [](const char*, int) { return -1; };
  {
    Kernel::ScopedOps scoped(&keepsIoctl);
    pending = -1;
    EXPECT_EQ(Kernel::ioctl(readEnd, FIONREAD, &pending), 0);
    EXPECT_EQ(pending, 3);
    EXPECT_EQ(Kernel::open("/dev/null", 0), -1);
  }

  Kernel::Ops ownIoctl = Kernel::linuxOps();
  ownIoctl.ioctl = [](int, unsigned long, void*) {
    ++gIoctlCalls;
    errno = ENODEV;
    return -7;
  };
  {
    Kernel::ScopedOps scoped(&ownIoctl);
    EXPECT_EQ(Kernel::ioctl(readEnd, FIONREAD, &pending), -7);
    EXPECT_EQ(Kernel::ioctlError(readEnd, FIONREAD, &pending), ENODEV);
    EXPECT_EQ(gIoctlCalls, 2);
  }
  EXPECT_EQ(Kernel::ioctl(readEnd, FIONREAD, &pending), 0);  // Linux again
  EXPECT_EQ(gIoctlCalls, 2);
  ::close(fds[0]);
  ::close(fds[1]);
}

TEST(KernelSeam, GetenvReadsTheEnvironmentOrTheInstalledTable) {
  ::setenv("VORN_KERNEL_TEST", "one", 1);
  EXPECT_STREQ(Kernel::getenv("VORN_KERNEL_TEST"), "one");
  ::unsetenv("VORN_KERNEL_TEST");
  EXPECT_EQ(Kernel::getenv("VORN_KERNEL_TEST"), nullptr);
  EXPECT_EQ(Kernel::getenv(""), std::getenv(""));

  Kernel::Ops ownGetenv = Kernel::linuxOps();
  ownGetenv.getenv = [](const char* name) -> const char* {
    return std::string_view(name) == "SIMULATION_VMID" ? "7" : nullptr;
  };
  Kernel::ScopedOps scoped(&ownGetenv);
  EXPECT_STREQ(Kernel::getenv("SIMULATION_VMID"), "7");
  EXPECT_EQ(Kernel::getenv("PATH"), nullptr);
}

TEST(KernelSeam, EnvironmentScanFindsTheFirstEntryOfTheName) {
  std::vector<std::string> texts = {
      "",    "S",    "S=1", "SI", "SIM=2", "SHELL=/sh", "SIMULATION_VMIDX=3", "SIMULATION_VMID=",
      "A=4", "AB=5", "A=6", "x"};
  std::vector<char*> env;
  for (std::string& t : texts) env.push_back(t.data());
  env.push_back(nullptr);
  auto find = [&](const char* name) { return Kernel::detail::findInEnvironment(env.data(), name); };
  for (const char* name : {"SI", "SIMULATION_VMI", "ABC", "x", "SS"})
    EXPECT_EQ(find(name), nullptr) << name;
  EXPECT_STREQ(find("S"), "1");
  EXPECT_STREQ(find("SIM"), "2");
  EXPECT_STREQ(find("SIMULATION_VMID"), "");
  EXPECT_STREQ(find("A"), "4");  // the first of two
  EXPECT_STREQ(find("AB"), "5");
  char* none[] = {nullptr};
  EXPECT_EQ(Kernel::detail::findInEnvironment(none, "S"), nullptr);
}

}  // namespace
