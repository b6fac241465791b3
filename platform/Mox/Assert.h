// Assertions that stay in every build type.
//
// A failed assertion prints the C library's assert line
// ("prog: file:line: function: Assertion `cond' failed.") and aborts,
// whether or not NDEBUG is defined. Where the system's assertion has a fixed
// condition text or function text, pass it explicitly: compilers disagree on
// how they render function signatures.
#pragma once

#include <sstream>
#include <string>

namespace Mox {

// Prints the assert line for `cond` at file:line in `function` and aborts.
[[noreturn]] void assertFail(const char* cond, const char* file, unsigned line,
                             const char* function) noexcept;

// Writes the diagnostic line that precedes some assertions to standard error:
// "Failed(" cond ") " and then each piece in its stream rendering, one line.
void failedLineText(const char* cond, const std::string& detail) noexcept;

template <typename... Pieces>
void failedLine(const char* cond, const Pieces&... pieces) noexcept {
  std::ostringstream os;
  (os << ... << pieces);
  failedLineText(cond, os.str());
}

}  // namespace Mox

#define MOX_ASSERT(cond) \
  ((cond) ? static_cast<void>(0) : ::Mox::assertFail(#cond, __FILE__, __LINE__, __PRETTY_FUNCTION__))
// `text` is the condition as the message shows it; `fn` the function text.
#define MOX_ASSERT_TEXT(cond, text, fn) \
  ((cond) ? static_cast<void>(0) : ::Mox::assertFail(text, __FILE__, __LINE__, fn))
// As MOX_ASSERT_TEXT with the source position the message names.
#define MOX_ASSERT_AT(cond, text, file, line, fn) \
  ((cond) ? static_cast<void>(0) : ::Mox::assertFail(text, file, line, fn))
