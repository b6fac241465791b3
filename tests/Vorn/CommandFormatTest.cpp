// The command formatter writes exactly what the C library's bounded print
// writes, for the formats in use, over many values and every truncation.
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <string>

#include "Vorn/CommandFormat.h"

using Hardware::Vorn::dma::formatCommand;

namespace {

// Formats with both at every capacity from 0 to past the text's length.
#define EXPECT_SAME_AS_SNPRINTF(fmt, ...)                                         \
  do {                                                                            \
    char want[300], got[300];                                                     \
    int full = std::snprintf(want, sizeof want, fmt, __VA_ARGS__);                \
    for (std::size_t cap = 0; cap <= static_cast<std::size_t>(full) + 2 && cap <= sizeof want; ++cap) { \
      std::memset(want, 'W', sizeof want);                                        \
      std::memset(got, 'W', sizeof got);                                          \
      int a = std::snprintf(want, cap, fmt, __VA_ARGS__);                         \
      int b = formatCommand(got, cap, fmt, __VA_ARGS__);                          \
      ASSERT_EQ(a, b) << fmt << " cap " << cap;                                   \
      ASSERT_EQ(0, std::memcmp(want, got, sizeof want)) << fmt << " cap " << cap; \
    }                                                                             \
  } while (0)

TEST(CommandFormat, BoundsOfEveryIntegerConversion) {
  for (int v : {0, 1, -1, 9, 10, 99, INT_MAX, INT_MIN}) {
    EXPECT_SAME_AS_SNPRINTF("ifportupdate %s %d", "et3_1", v);
    EXPECT_SAME_AS_SNPRINTF("%04x:%02x:%02x.%1x", v, v, v, v);
    EXPECT_SAME_AS_SNPRINTF("vcable_proto %hx", static_cast<unsigned short>(v));
    EXPECT_SAME_AS_SNPRINTF("vcable_muxid %s %hu", "et1", static_cast<unsigned short>(v));
    EXPECT_SAME_AS_SNPRINTF("%i %5d %-5d| %05d", v, v, v, v);
  }
  for (unsigned v : {0u, 1u, 7u, 8u, 255u, 256u, 65535u, 65536u, UINT_MAX}) {
    EXPECT_SAME_AS_SNPRINTF("internalvlan %u %s", v, "et1");
    EXPECT_SAME_AS_SNPRINTF("tc_vpri_map_add %s %o", "et1", v);
    EXPECT_SAME_AS_SNPRINTF("%x %X %hhu", v, v, static_cast<unsigned char>(v));
  }
  EXPECT_SAME_AS_SNPRINTF("%lu %ld %llu %lld", ULONG_MAX, LONG_MIN, ULLONG_MAX, LLONG_MIN);
}

TEST(CommandFormat, StringsLiteralsAndPercent) {
  std::string longName(400, 'n');
  EXPECT_SAME_AS_SNPRINTF("devname %s %s", longName.c_str(), "nopcidev");
  EXPECT_SAME_AS_SNPRINTF("ifadd %s %d %d %s %s", "et1", 5, 0, "", "internallag");
  const char* volatile none = nullptr;  // hidden from the compiler's format checks
  const char* nothing = none;
  EXPECT_SAME_AS_SNPRINTF("100%% %c %s", 'x', nothing);
  EXPECT_SAME_AS_SNPRINTF("%s", "");
}

TEST(CommandFormat, OtherConversionsFallBackToTheCLibrary) {
  EXPECT_SAME_AS_SNPRINTF("%.3s %+d %#x %5.2f", "abcdef", 5, 255u, 3.14159);
}

}  // namespace
