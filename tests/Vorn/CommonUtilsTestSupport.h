// The texts a failed assertion prints, as death-test patterns.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "Mox/RangeException.h"

namespace VornTest {

// `text` with every extended-regex special character escaped.
inline std::string regexQuoted(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos) out.push_back('\\');
    out.push_back(c);
  }
  return out;
}

// The C library's assert line for `cond` in `function`, whatever file and line.
inline std::string assertionPattern(const std::string& function, const std::string& cond) {
  return ": " + regexQuoted(function) + ": Assertion `" + regexQuoted(cond) + "' failed\\.";
}

// Runs `f` and expects the range exception with `text`.
template <typename F>
void expectRangeText(F&& f, const char* text) {
  try {
    f();
    ADD_FAILURE() << "no range exception, expected " << text;
  } catch (const Mox::RangeException& e) {
    EXPECT_STREQ(e.what(), text);
  }
}

}  // namespace VornTest
