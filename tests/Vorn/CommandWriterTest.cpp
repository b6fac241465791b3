// The command writers write exactly what the C library's bounded print
// writes, over the bounds of each argument and every truncation.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string>

#include "Vorn/CommandFormat.h"
#include "Vorn/CommandWriter.h"

using Hardware::Vorn::dma::command;
using Hardware::Vorn::dma::formatCommand;
using Hardware::Vorn::dma::writeCommandInto;

namespace {

// Formats with snprintf and with `WRITE` at every capacity from 0 to past
// the text's length, and checks that nothing past the capacity is touched.
#define EXPECT_SAME_AS_SNPRINTF(WRITE, fmt, ...)                                                 \
  do {                                                                                           \
    char want[640], got[640];                                                                    \
    const int full = std::snprintf(want, sizeof want, fmt, __VA_ARGS__);                         \
    for (std::size_t cap = 0; cap <= std::min<std::size_t>(full + 2, sizeof want); ++cap) {      \
      std::memset(want, 'W', sizeof want);                                                       \
      std::memset(got, 'W', sizeof got);                                                         \
      int a = std::snprintf(want, cap, fmt, __VA_ARGS__);                                        \
      int b = WRITE(got, cap, fmt, __VA_ARGS__);                                                 \
      ASSERT_EQ(a, b) << fmt << " cap " << cap;                                                  \
      ASSERT_EQ(0, std::memcmp(want, got, sizeof want)) << fmt << " cap " << cap << ": " << got; \
    }                                                                                            \
  } while (0)
#define VIA_WRITER(buf, cap, fmt, ...) writeCommandInto<fmt>(buf, cap, __VA_ARGS__)
#define EXPECT_WRITES_AS_SNPRINTF(fmt, ...) EXPECT_SAME_AS_SNPRINTF(VIA_WRITER, fmt, __VA_ARGS__)
#define EXPECT_FORMATS_AS_SNPRINTF(fmt, ...) \
  EXPECT_SAME_AS_SNPRINTF(formatCommand, fmt, __VA_ARGS__)

// Formats of the driver commands, one of each shape.
void everyCommandFormat(const char* s, int d, unsigned u) {
  const auto us = static_cast<unsigned short>(u);
  EXPECT_WRITES_AS_SNPRINTF("devparams %s %u %u %u %u %u %u %u %u", s, u, u >> 1, u >> 2, u >> 3,
                            u >> 4, u >> 5, u >> 6, u >> 7);
  EXPECT_WRITES_AS_SNPRINTF("ifadd %s %d %d %s %s %s", s, d, ~d, s, "02:00:00:aa:bb:cc", "");
  EXPECT_WRITES_AS_SNPRINTF("drvparams %d %d %d", d, static_cast<int>(u), -1);
  EXPECT_WRITES_AS_SNPRINTF("tc_vpri_map_add %s %o", s, u);
  EXPECT_WRITES_AS_SNPRINTF("vcable_proto %hx", us);
  EXPECT_WRITES_AS_SNPRINTF("vcable_muxid %s %hu", s, us);
  EXPECT_WRITES_AS_SNPRINTF("%s %u %u", s, u, u >> 16);
  EXPECT_WRITES_AS_SNPRINTF("/sbin/tc qdisc add dev %s root handle 1: prio", s);
}

TEST(CommandWriter, BoundsOfEveryArgumentKind) {
  for (const char* s : {"et3_1", ""})
    for (int d : {0, 1, -1, 9, 10, 99, 4096, INT_MAX, INT_MIN})
      for (unsigned u : {0u, 1u, 7u, 8u, 255u, 256u, 65535u, 65536u, UINT_MAX})
        everyCommandFormat(s, d, u);
  // A name as long as the command buffer: every command is cut inside it.
  const std::string longest(255, 'n');
  everyCommandFormat(longest.c_str(), INT_MIN, UINT_MAX);
}

TEST(CommandWriter, LengthModifiersKeepTheLowBits) {
  for (int v : {0, 255, 256, -1, 65535, 65536, INT_MIN, INT_MAX}) {
    EXPECT_WRITES_AS_SNPRINTF("%hd %hhd %hu %hhu %hx %hhX", v, v, v, v, v, v);
    EXPECT_WRITES_AS_SNPRINTF("%i %x %X %o", v, v, v, v);
  }
}

// Every place where a number gains a digit, in each base.
TEST(CommandWriter, EveryDigitCountBoundary) {
  for (unsigned base : {8u, 10u, 16u}) {
    for (unsigned long long p = 1; p <= UINT_MAX; p *= base) {
      for (unsigned long long w : {p - 1, p, p + 1}) {
        if (w > UINT_MAX) continue;
        const auto u = static_cast<unsigned>(w);
        const auto d = static_cast<int>(u);
        EXPECT_WRITES_AS_SNPRINTF("%u %d %o %x %X", u, d, u, u, u);
        if (d > 0) EXPECT_WRITES_AS_SNPRINTF("%d", -d);
      }
    }
  }
}

TEST(CommandWriter, FormatsWithoutConversions) {
  char buf[8];
  EXPECT_EQ(command<"devlist">(buf), 7);
  EXPECT_STREQ(buf, "devlist");
  EXPECT_EQ(command<"devparamslist">(buf), 13);
  EXPECT_STREQ(buf, "devpara");
}

TEST(CommandFormat, BoundsOfEveryIntegerConversion) {
  for (int v : {0, 1, -1, 9, 10, 99, INT_MAX, INT_MIN}) {
    EXPECT_FORMATS_AS_SNPRINTF("%04x:%02x:%02x.%1x", v, v, v, v);
    EXPECT_FORMATS_AS_SNPRINTF("%i %5d %-5d| %05d %hd", v, v, v, v, v);
  }
  for (unsigned v : {0u, 1u, 7u, 8u, 255u, 256u, 65535u, 65536u, UINT_MAX})
    EXPECT_FORMATS_AS_SNPRINTF("%u %o %x %X %hx %hhu", v, v, v, v, static_cast<unsigned short>(v),
                               static_cast<unsigned char>(v));
  EXPECT_FORMATS_AS_SNPRINTF("%lu %ld %llu %lld", ULONG_MAX, LONG_MIN, ULLONG_MAX, LLONG_MIN);
}

// Both writers; other conversions fall back to the C library.
TEST(CommandFormat, StringsCharactersPercentAndOtherConversions) {
  const char* volatile none = nullptr;  // hidden from the compiler's format checks
  const char* nothing = none;
  EXPECT_WRITES_AS_SNPRINTF("100%% %c%c %s", 'x', '\x7f', nothing);
  EXPECT_WRITES_AS_SNPRINTF("%%%s%%", "");
  std::string longName(400, 'n');
  EXPECT_FORMATS_AS_SNPRINTF("devname %s %s", longName.c_str(), "nopcidev");
  EXPECT_FORMATS_AS_SNPRINTF("100%% %c %s", 'x', nothing);
  EXPECT_FORMATS_AS_SNPRINTF("%s", "");
  EXPECT_FORMATS_AS_SNPRINTF("%.3s %+d %#x %5.2f", "abcdef", 5, 255u, 3.14159);
}

}  // namespace
