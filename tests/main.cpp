// Test entry point. Death tests re-execute the test binary, so that a child
// starts with the process-wide state (the cached driver descriptor, the SAI
// answer) a fresh process has.
//
// Every scratch file of a run goes below one directory, made here and handed
// down through TMPDIR: a death-test child ends without running its
// destructors, so whatever it made is removed by the process that made the
// directory, when its tests are done. The aborts the death tests provoke
// leave no core files (qemu's user-mode emulator, which runs the 32-bit
// programs on some machines, would write one per abort into the working
// directory).
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <filesystem>
#include <string>

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const rlimit noCore{0, 0};
  setrlimit(RLIMIT_CORE, &noCore);

  std::string scratch;
  if (!getenv("VORN_TEST_SCRATCH")) {
    const char* tmp = getenv("TMPDIR");
    scratch = std::string(tmp && *tmp ? tmp : "/tmp") + "/vorn-tests-XXXXXX";
    if (!mkdtemp(scratch.data())) {
      perror(scratch.c_str());
      return 2;
    }
    setenv("VORN_TEST_SCRATCH", scratch.c_str(), 1);
    setenv("TMPDIR", scratch.c_str(), 1);
  }
  const int result = RUN_ALL_TESTS();
  if (!scratch.empty()) {
    std::error_code ignored;
    std::filesystem::remove_all(scratch, ignored);
  }
  return result;
}
