// Test entry point. Death tests re-execute the test binary, so that a child
// starts with the process-wide state (the cached driver descriptor, the SAI
// answer) a fresh process has.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  return RUN_ALL_TESTS();
}
