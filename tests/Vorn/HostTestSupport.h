// Captured tc command lines and SAI-mode children.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Zell/Zell.h"

namespace VornTest {

// Records the command lines given to Zell::run and answers `result`.
class TcCapture {
 public:
  explicit TcCapture(int result = 0) : result_(result) { Zell::runnerIs(&TcCapture::run, this); }
  ~TcCapture() { Zell::runnerIs(nullptr, nullptr); }
  TcCapture(const TcCapture&) = delete;
  TcCapture& operator=(const TcCapture&) = delete;
  const std::vector<std::string>& lines() const { return lines_; }
  void resultIs(int result) { result_ = result; }

 private:
  static int run(const char* command, void* self) {
    auto* me = static_cast<TcCapture*>(self);
    me->lines_.push_back(command);
    return me->result_;
  }
  std::vector<std::string> lines_;
  int result_;
};

// In a death-test child: a failed condition goes to standard error and `ok`.
#define CHILD_CHECK(ok, cond)                                                 \
  do {                                                                        \
    if (!(cond)) {                                                            \
      std::fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, __LINE__, #cond); \
      (ok) = false;                                                           \
    }                                                                         \
  } while (0)

// Runs `body`, which returns whether its checks held, in a child in SAI mode
// (saimode() is fixed per process at its first call).
#define EXPECT_IN_SAI_MODE(body)         \
  EXPECT_EXIT(                           \
      {                                  \
        ::setenv("KRIX_MODE", "sai", 1); \
        std::_Exit((body)() ? 0 : 1);    \
      },                                 \
      testing::ExitedWithCode(0), "")

}  // namespace VornTest
