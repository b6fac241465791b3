// The kernel seam: Linux by default, a test's table when one is installed,
// including a table that keeps Linux's ioctl and getenv (the command path then
// makes the system call and scans the environment itself) or replaces them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "Kernel/Kernel.h"

namespace {

int gIoctlCalls = 0;

// A pipe with `text` waiting to be read: FIONREAD on its read end answers
// the text's length.
class PipeWithPending {
 public:
  explicit PipeWithPending(std::string_view text) {
    if (::pipe(fds_) != 0 ||
        ::write(fds_[1], text.data(), text.size()) != static_cast<ssize_t>(text.size()))
      ADD_FAILURE() << "pipe";
  }
  ~PipeWithPending() {
    ::close(fds_[0]);
    ::close(fds_[1]);
  }
  int readEnd() const { return fds_[0]; }

 private:
  int fds_[2] = {-1, -1};
};

// Linux's ioctl, also through a copy of the Linux table with its own open;
// an installed table's ioctl instead. ioctlError is the command path's form:
// the answer as an error number, from the system call made inline or from the
// installed table.
TEST(KernelSeam, IoctlReachesLinuxOrTheInstalledTable) {
  PipeWithPending pipe("abc");
  const int readEnd = pipe.readEnd();
  int pending = -1;
  EXPECT_EQ(Kernel::ioctlError(readEnd, FIONREAD, &pending), 0);
  EXPECT_EQ(pending, 3);  // the kernel's answer reached the buffer
  EXPECT_EQ(Kernel::ioctlError(-1, FIONREAD, &pending), EBADF);
  // ENOTTY from Linux; ENOSYS from qemu's user-mode emulator, where 32-bit
  // programs run under it: either way the kernel's own number.
  const int unknownRequest = ::ioctl(readEnd, 0x7fff, &pending) == -1 ? errno : 0;
  EXPECT_THAT(unknownRequest, testing::AnyOf(ENOTTY, ENOSYS));
  EXPECT_EQ(Kernel::ioctlError(readEnd, 0x7fff, &pending), unknownRequest);

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
}

// The environment as it is now, and an installed table's getenv instead.
TEST(KernelSeam, GetenvReadsTheEnvironmentOrTheInstalledTable) {
  ::setenv("VORN_KERNEL_TEST", "one", 1);
  EXPECT_STREQ(Kernel::getenv("VORN_KERNEL_TEST"), "one");
  ::setenv("VORN_KERNEL_TEST", "", 1);
  EXPECT_STREQ(Kernel::getenv("VORN_KERNEL_TEST"), "");
  EXPECT_EQ(Kernel::getenv("VORN_KERNEL"), nullptr);  // a prefix of a name
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

// The scan against the plain definition, on an environment of awkward
// entries: empty, one character, a first letter or two shared with the
// name, a name without its '=', and one-letter names.
TEST(KernelSeam, EnvironmentScanFindsTheFirstEntryOfTheName) {
  std::vector<std::string> texts = {
      "",    "S",    "S=1", "SI", "SIM=2", "SHELL=/sh", "SIMULATION_VMIDX=3", "SIMULATION_VMID=",
      "A=4", "AB=5", "A=6", "x"};
  std::vector<char*> env;
  for (std::string& t : texts) env.push_back(t.data());
  env.push_back(nullptr);
  auto plain = [&](const std::string& name) -> const char* {
    for (char* const* e = env.data(); *e; ++e)
      if (std::strncmp(*e, name.c_str(), name.size()) == 0 && (*e)[name.size()] == '=')
        return *e + name.size() + 1;
    return nullptr;
  };
  int found = 0;
  for (const std::string name : {"S", "SI", "SIM", "SIMULATION_VMID", "SIMULATION_VMI", "SHELL",
                                 "A", "AB", "ABC", "x", "X", "SS"}) {
    const char* expected = plain(name);
    found += expected != nullptr;
    EXPECT_EQ(Kernel::detail::findInEnvironment(env.data(), name.c_str()), expected) << name;
  }
  EXPECT_EQ(found, 6);
  EXPECT_STREQ(Kernel::detail::findInEnvironment(env.data(), "A"), "4");
  char* none[] = {nullptr};
  EXPECT_EQ(Kernel::detail::findInEnvironment(none, "S"), nullptr);
}

}  // namespace
