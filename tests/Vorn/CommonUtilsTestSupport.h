// What the VornCommonUtils tests share: the texts a failed assertion prints,
// as death-test patterns.
#pragma once

#include <string>

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

// A "Failed(" diagnostic line followed by the assert line.
inline std::string failedThenAssertion(const std::string& failedLine, const std::string& function,
                                       const std::string& cond) {
  return "^" + regexQuoted(failedLine) + "\n.*" + assertionPattern(function, cond);
}

}  // namespace VornTest
