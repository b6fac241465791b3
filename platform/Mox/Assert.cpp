// glibc declares __assert_fail only without NDEBUG; the routine is always there.
#undef NDEBUG
#include "Mox/Assert.h"

#include <assert.h>
#include <unistd.h>

#include <cstdio>

namespace Mox {

void assertFail(const char* cond, const char* file, unsigned line, const char* function) noexcept {
  // glibc's own routine, so the text is exactly the C library's format.
  __assert_fail(cond, file, line, function);
}

void failedLineText(const char* cond, const std::string& detail) noexcept {
  std::fprintf(stderr, "Failed(%s) %s\n", cond, detail.c_str());
  std::fflush(stderr);
}

}  // namespace Mox
