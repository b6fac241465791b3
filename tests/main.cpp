// Test entry point. Death tests re-execute the test binary, so a child starts
// with the process-wide state a fresh process has. Scratch files go below one
// directory made here and handed down through TMPDIR (death-test children end
// without their destructors; this process removes what they left). Aborts
// leave no core files.
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
