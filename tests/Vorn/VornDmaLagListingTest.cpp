// The grammar of the LAG sections of "/proc/vorn-dma", read by the parser
// that reports broken lines as values.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "Vorn/LagTestSupport.h"
#include "Vorn/VornDmaLagListing.h"

using namespace Hardware::Vorn;
using dma::LagListingParser;
using dma::LineKind;
using dma::LineOutcome;
using VornTest::lagDevice;
using VornTest::lagTable;

namespace {

constexpr const char kLagIdRange[] = "LagId::value < LagId::min or > LagId::null not allowed";
constexpr const char kMemberIdRange[] =
    "LagMemberId::value < LagMemberId::min or > LagMemberId::null not allowed";

struct Parsed {
  VornDmaLags::Ptr table;
  LineOutcome outcome;
  const VornDmaLags::LagDeviceMap& lags() const { return table->lagDevices(); }
};

Parsed parse(std::string_view text) {
  Parsed p{vornDmaLagsFactory("vornDmaLags"), {}};
  LagListingParser parser(*p.table);
  parser.feed(text);
  p.outcome = parser.finish();
  return p;
}

// Listings and their tables, or the failure and the table before it.
TEST(LagListing, ListingsAndTheirTables) {
  const std::string name63(dma::kConfigNameMax, 'x');
  const struct {
    std::string text;
    VornDmaLags::LagDeviceMap lags;
    const char* failure = nullptr;
  } rows[] = {
      {"", {}},
      {"ilags:\n\nlagconfigmap:\n\n", {}},
      // Lines outside a section (before any header, in other sections, after
      // the empty line that closes one) are ignored, even malformed ones.
      {"po1 2\ndevices:\nfap0 up\nlags:\npo2 3\n\npo3 4\ngarbage\n",
       lagTable({lagDevice("po2", LagId(3))})},
      {"lags: \npo1\n", {}},                    // a header with a blank is no header...
      {"lags:\nlags: \n", {}, "matches == 3"},  // ...and inside a section a bad line
      {"lags:\npo7", lagTable({lagDevice("po7", LagId())})},
      {"lags:\npo7 1024", lagTable({lagDevice("po7", LagId(1024))})},
      {"lags:\npo1 1\npo7 1025", lagTable({lagDevice("po1", LagId(1))}), kLagIdRange},
      {"lags:\npo7 -1", {}, kLagIdRange},
      // Member ids are checked on their low 16 bits.
      {"lags:\npo7 3 et1 65792", lagTable({lagDevice("po7", LagId(3), {{"et1", 256}})})},
      {"lags:\npo7 3 et1 257", {}, kMemberIdRange},
      // Member ids read as strtol reads them: none, empty, not a number, signs.
      {"lags:\npo7 3 et1", lagTable({lagDevice("po7", LagId(3), {{"et1", 0}})})},
      {"lags:\npo7 3 et1  5", lagTable({lagDevice("po7", LagId(3), {{"et1", 0}})})},
      {"lags:\npo7 3 et1 x9 et2 \t+12abc",
       lagTable({lagDevice("po7", LagId(3), {{"et1", 0}, {"et2", 12}})})},
      // Members are found by searching "et"; the last of a name twice counts.
      {"lags:\npo4 2 xet1 5 Ethernet3 7",
       lagTable({lagDevice("po4", LagId(2), {{"et1", 5}, {"et3", 7}})})},
      {"lags:\npo4 2 et1 et2 et3 4",
       lagTable({lagDevice("po4", LagId(2), {{"et1", 0}, {"et3", 4}})})},
      {"lags:\npo5 1 et1 2 et1 3", lagTable({lagDevice("po5", LagId(1), {{"et1", 3}})})},
      // The head as scanf reads "po%d %d".
      {"lags:\npo 3 \t4", lagTable({lagDevice("po3", LagId(4))})},
      {"lags:\npo-1", lagTable({lagDevice("po-1", LagId())})},
      {"lags:\npo3x et1 2", lagTable({lagDevice("po3", LagId(), {{"et1", 2}})})},
      {"lags:\npo3 5\r", lagTable({lagDevice("po3", LagId(5))})},
      {"lags:\np", {}, "matches == 3"},  // no number after "po": a bad config line
      // A LAG line replaces its entry whole, config members included.
      {"lags:\npo1 2 et3 0\net9 sys_port 1: po1\npo1 2 et3 0\n",
       lagTable({lagDevice("po1", LagId(2), {{"et3", 0}})})},
      // Config lines add to their LAG, as scanf reads "%63s sys_port %d: po%d".
      {"ilags:\npo12\n\nlags:\npo3 5 et1 0\n\nlagconfigmap:\net7 sys_port 40: po3\n"
       "Ethernet3/1\tsys_port   -2:po12\net8 sys_port +1: po+3\net7 sys_port 0: po3\n",
       lagTable({lagDevice("po3", LagId(5), {{"et1", 0}}, {"et7", "et8"}),
                 lagDevice("po12", LagId(), {}, {"Ethernet3/1"})})},
      {"lags:\npo3 5\net7 sys_port 40 : po3", lagTable({lagDevice("po3", LagId(5))}),
       "matches == 3"},
      {"lagconfigmap:\net7 sys_port 40: po3\n\nlags:\npo3 5\n", {}, "!!lagDevice"},
      // The name stops after 63 characters.
      {"lags:\npo1\n" + name63 + " sys_port 1: po1\n",
       lagTable({lagDevice("po1", LagId(), {}, {name63.c_str()})})},
      {"lags:\npo1\n" + name63 + "sys_port 1: po1\n",
       lagTable({lagDevice("po1", LagId(), {}, {name63.c_str()})})},
      {"lags:\npo1\n" + name63 + "x sys_port 1: po1\n", lagTable({lagDevice("po1", LagId())}),
       "matches == 3"},
  };
  for (const auto& r : rows) {
    Parsed p = parse(r.text);
    EXPECT_EQ(p.lags(), r.lags) << r.text;
    ASSERT_EQ(p.outcome.failed(), r.failure != nullptr) << r.text;
    if (!r.failure) continue;
    EXPECT_STREQ(p.outcome.text, r.failure) << r.text;
    const bool range = std::string_view(r.failure).find("::") != std::string_view::npos;
    EXPECT_EQ(p.outcome.kind, range ? LineKind::kRangeError : LineKind::kAssertionFailed) << r.text;
  }
}

TEST(LagListing, MemberIdTextToLongAsStrtolReadsIt) {
  for (const std::string text :
       {"", "-", "+", " -0", "2147483648", "-2147483649", "9223372036854775807",
        "9223372036854775808", "-9223372036854775808", "-9223372036854775809",
        "99999999999999999999999", "\t\v\f\r 12x"}) {
    std::string padded = text + "123";  // what lies behind the text must not be read
    EXPECT_EQ(dma::textToLong(std::string_view(padded).substr(0, text.size())),
              std::strtol(text.c_str(), nullptr, 10))
        << '"' << text << '"';
  }
}

}  // namespace
