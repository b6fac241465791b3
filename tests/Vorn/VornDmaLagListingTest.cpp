// The grammar of the LAG sections of "/proc/vorn-dma", read by the parser
// that reports broken lines as values.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "Vorn/LagTestSupport.h"
#include "Vorn/VornDmaLagListing.h"

using namespace Hardware::Vorn;
using dma::LagListingParser;
using dma::LineKind;
using dma::LineOutcome;
using testing::ElementsAre;
using testing::IsEmpty;
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

// The kinds the parser reports line by line.
std::vector<LineKind> kinds(std::initializer_list<std::string_view> lines) {
  VornDmaLags::Ptr table = vornDmaLagsFactory("vornDmaLags");
  LagListingParser parser(*table);
  std::vector<LineKind> out;
  for (std::string_view line : lines) out.push_back(parser.line(line).kind);
  return out;
}

TEST(LagListing, SectionsWithoutDataLinesGiveAnEmptyTable) {
  for (const char* text : {"", "lags:", "lags:\n", "lags:\n\n\n", "ilags:\n\nlagconfigmap:\n\n"}) {
    Parsed p = parse(text);
    EXPECT_FALSE(p.outcome.failed()) << text;
    EXPECT_THAT(p.lags(), IsEmpty()) << text;
  }
}

TEST(LagListing, TheExampleListing) {
  Parsed p = parse("lags:\npo3 5 et1 0 et2 1\n\nlagconfigmap:\net7 sys_port 40: po3\n");
  ASSERT_FALSE(p.outcome.failed());
  EXPECT_EQ(p.lags(), lagTable({lagDevice("po3", LagId(5), {{"et1", 0}, {"et2", 1}}, {"et7"})}));
}

TEST(LagListing, OnlyLinesInsideASectionAreRead) {
  // Before any header, after the empty line that closes a section, and in
  // other sections of the file, lines are ignored, even malformed ones.
  EXPECT_THAT(kinds({"po1 2", "devices:", "fap0 up", "lags:", "po2 3", "", "po3 4", "garbage",
                     "ilags:", "po4", "lagconfigmap:", "x sys_port 1: po4"}),
              ElementsAre(LineKind::kIgnored, LineKind::kIgnored, LineKind::kIgnored,
                          LineKind::kHeader, LineKind::kLag, LineKind::kIgnored,
                          LineKind::kIgnored, LineKind::kIgnored, LineKind::kHeader, LineKind::kLag,
                          LineKind::kHeader, LineKind::kConfig));
  Parsed p = parse("po1 2\nlags:\npo2 3\n\npo3 4\n");
  EXPECT_EQ(p.lags(), lagTable({lagDevice("po2", LagId(3))}));
}

TEST(LagListing, HeadersMustMatchExactly) {
  // A header-like word inside a section is a malformed data line.
  EXPECT_EQ(parse("lags:\nlags: \n").outcome.text, std::string("matches == 3"));
  EXPECT_EQ(parse("lags:\nLags:\n").outcome.text, std::string("matches == 3"));
  // Outside a section it is nothing.
  EXPECT_FALSE(parse("lags: \npo1\n").outcome.failed());
  EXPECT_THAT(parse("lags: \npo1\n").lags(), IsEmpty());
}

TEST(LagListing, LagIdsAtTheirLimits) {
  EXPECT_EQ(parse("lags:\npo7").lags(), lagTable({lagDevice("po7", LagId())}));
  EXPECT_EQ(parse("lags:\npo7 1024").lags(), lagTable({lagDevice("po7", LagId(1024))}));
  EXPECT_EQ(parse("lags:\npo7 0").lags(), lagTable({lagDevice("po7", LagId(0))}));
  for (const char* line : {"lags:\npo7 1025", "lags:\npo7 -1", "lags:\npo7 2147483647"}) {
    Parsed p = parse(line);
    EXPECT_EQ(p.outcome.kind, LineKind::kRangeError) << line;
    EXPECT_EQ(p.outcome.text, std::string(kLagIdRange));
    EXPECT_THAT(p.lags(), IsEmpty());
  }
}

TEST(LagListing, MemberIdsAreCheckedOnTheirLow16Bits) {
  EXPECT_EQ(parse("lags:\npo7 3 et1 256").lags(),
            lagTable({lagDevice("po7", LagId(3), {{"et1", 256}})}));
  EXPECT_EQ(parse("lags:\npo7 3 et1 65792").lags(),
            lagTable({lagDevice("po7", LagId(3), {{"et1", 256}})}));
  EXPECT_EQ(parse("lags:\npo7 3 et1 -65535").lags(),
            lagTable({lagDevice("po7", LagId(3), {{"et1", 1}})}));
  for (const char* line : {"lags:\npo7 3 et1 257", "lags:\npo7 3 et2 0 et1 -1",
                           "lags:\npo7 3 et1 65535"}) {
    Parsed p = parse(line);
    EXPECT_EQ(p.outcome.kind, LineKind::kRangeError) << line;
    EXPECT_EQ(p.outcome.text, std::string(kMemberIdRange));
    EXPECT_THAT(p.lags(), IsEmpty()) << "a LAG line that fails is not stored";
  }
}

TEST(LagListing, MemberIdTextIsReadAsStrtolDoes) {
  // No id, an empty id (two blanks), a non-numeric id, leading white space
  // and trailing rubbish.
  EXPECT_EQ(parse("lags:\npo7 3 et1").lags(), lagTable({lagDevice("po7", LagId(3), {{"et1", 0}})}));
  EXPECT_EQ(parse("lags:\npo7 3 et1  5").lags(),
            lagTable({lagDevice("po7", LagId(3), {{"et1", 0}})}));
  EXPECT_EQ(parse("lags:\npo7 3 et1 x9 et2 \t+12abc").lags(),
            lagTable({lagDevice("po7", LagId(3), {{"et1", 0}, {"et2", 12}})}));
}

TEST(LagListing, MembersAreFoundBySubstringSearchFor_et) {
  // "et" inside a later token starts a member; an id token that begins with
  // "et" is an id (0), and the search goes on after it.
  EXPECT_EQ(parse("lags:\npo4 2 xet1 5 Ethernet3 7").lags(),
            lagTable({lagDevice("po4", LagId(2), {{"et1", 5}, {"et3", 7}})}));
  EXPECT_EQ(parse("lags:\npo4 2 et1 et2 et3 4").lags(),
            lagTable({lagDevice("po4", LagId(2), {{"et1", 0}, {"et3", 4}})}));
  // The text between the head and the first "et" is skipped unread.
  EXPECT_EQ(parse("lags:\npo4 2 junk 9 9 et5 1").lags(),
            lagTable({lagDevice("po4", LagId(2), {{"et5", 1}})}));
  // A repeated member name replaces the earlier member.
  EXPECT_EQ(parse("lags:\npo5 1 et1 2 et1 3").lags(),
            lagTable({lagDevice("po5", LagId(1), {{"et1", 3}})}));
}

TEST(LagListing, LagHeadFollowsScanf) {
  // White space before a number, signs, partial matches.
  EXPECT_EQ(parse("lags:\npo 3 \t4").lags(), lagTable({lagDevice("po3", LagId(4))}));
  EXPECT_EQ(parse("lags:\npo+3 +4").lags(), lagTable({lagDevice("po3", LagId(4))}));
  EXPECT_EQ(parse("lags:\npo-1").lags(), lagTable({lagDevice("po-1", LagId())}));
  EXPECT_EQ(parse("lags:\npo007 x").lags(), lagTable({lagDevice("po7", LagId())}));
  EXPECT_EQ(parse("lags:\npo3x et1 2").lags(),
            lagTable({lagDevice("po3", LagId(), {{"et1", 2}})}));
  EXPECT_EQ(parse("lags:\npo3 5\r").lags(), lagTable({lagDevice("po3", LagId(5))}));
  // Without a number after "po" the line is a config line, and not a valid one.
  for (const char* line : {"lags:\np", "lags:\npo", "lags:\npo-", "lags:\npox 1", "lags:\n "})
    EXPECT_EQ(parse(line).outcome.text, std::string("matches == 3")) << line;
}

TEST(LagListing, ALagLineReplacesItsEntryWhole) {
  Parsed p = parse("lags:\npo1 2 et3 0\net9 sys_port 1: po1\npo1 2 et3 0\n");
  EXPECT_EQ(p.lags(), lagTable({lagDevice("po1", LagId(2), {{"et3", 0}})}));
  p = parse("lags:\npo1 2 et3 0\npo1 4 et4 1\npo2\n");
  EXPECT_EQ(p.lags(), lagTable({lagDevice("po1", LagId(4), {{"et4", 1}}), lagDevice("po2", LagId())}));
}

TEST(LagListing, ConfigLinesAddToTheirLag) {
  Parsed p = parse(
      "ilags:\npo12\n\nlags:\npo3 5 et1 0\n\nlagconfigmap:\net7 sys_port 40: po3\n"
      "Ethernet3/1\tsys_port   -2:po12\net8 sys_port +1: po+3\net7 sys_port 0: po3\n");
  ASSERT_FALSE(p.outcome.failed()) << p.outcome.text;
  EXPECT_EQ(p.lags(), lagTable({lagDevice("po3", LagId(5), {{"et1", 0}}, {"et7", "et8"}),
                                lagDevice("po12", LagId(), {}, {"Ethernet3/1"})}));
}

TEST(LagListing, MalformedConfigLinesFailTheirAssertion) {
  for (const char* line : {"et7 sys_port 40 : po3", "et7 sys_port 40: p3", "et7 sys_port: po3",
                           "et7 sys_port 40: po", "et7 sysport 40: po3", "et7"}) {
    Parsed p = parse(std::string("lags:\npo3 5\n") + line + "\n");
    EXPECT_EQ(p.outcome.kind, LineKind::kAssertionFailed) << line;
    EXPECT_EQ(p.outcome.text, std::string("matches == 3")) << line;
  }
}

TEST(LagListing, AConfigLineBeforeItsLagFails) {
  Parsed p = parse("lagconfigmap:\net7 sys_port 40: po3\n\nlags:\npo3 5\n");
  EXPECT_EQ(p.outcome.kind, LineKind::kAssertionFailed);
  EXPECT_EQ(p.outcome.text, std::string("!!lagDevice"));
  // After the failure nothing more is read.
  EXPECT_THAT(p.lags(), IsEmpty());
}

TEST(LagListing, ConfigInterfaceNameIsReadWithItsBound) {
  // "%63s" stops after 63 characters; the rest of a longer name then meets
  // " sys_port" and the line does not match.
  std::string name63(dma::kConfigNameMax, 'x');
  Parsed p = parse("lags:\npo1\n" + name63 + " sys_port 1: po1\n");
  ASSERT_FALSE(p.outcome.failed());
  EXPECT_TRUE(p.lags().at("po1").lagMemberConfig(Mox::String(name63)));
  p = parse("lags:\npo1\n" + name63 + "x sys_port 1: po1\n");
  EXPECT_EQ(p.outcome.text, std::string("matches == 3"));
  // ...unless the 64th character starts "sys_port" itself.
  p = parse("lags:\npo1\n" + name63 + "sys_port 1: po1\n");
  ASSERT_FALSE(p.outcome.failed());
  EXPECT_TRUE(p.lags().at("po1").lagMemberConfig(Mox::String(name63)));
}

TEST(LagListing, LinesSplitAnywhereAcrossPiecesReadTheSame) {
  const std::string text =
      "devices:\nfap0 x up\n\nlags:\npo3 5 et1 0 et2 1\npo4 6 et3 2\n\nilags:\npo9\n\n"
      "lagconfigmap:\net7 sys_port 40: po3\net8 sys_port 41: po9";
  const Parsed whole = parse(text);
  ASSERT_EQ(whole.lags().size(), 3u);
  for (std::size_t piece = 1; piece <= 7; ++piece) {
    VornDmaLags::Ptr table = vornDmaLagsFactory("vornDmaLags");
    LagListingParser parser(*table);
    for (std::size_t at = 0; at < text.size(); at += piece)
      parser.feed(std::string_view(text).substr(at, piece));
    EXPECT_FALSE(parser.finish().failed());
    EXPECT_EQ(table->lagDevices(), whole.lags()) << piece;
  }
}

TEST(LagListing, AfterAFailureTheParserKeepsReportingIt) {
  VornDmaLags::Ptr table = vornDmaLagsFactory("vornDmaLags");
  LagListingParser parser(*table);
  parser.feed("lags:\npo1 1\npo2 2000\npo3 3\n");
  LineOutcome o = parser.line("po4 4");
  EXPECT_EQ(o.kind, LineKind::kRangeError);
  EXPECT_EQ(parser.finish().kind, LineKind::kRangeError);
  EXPECT_EQ(table->lagDevices(), lagTable({lagDevice("po1", LagId(1))}));
}

// The scanners against the C library's own sscanf and strtol, on lines made
// of the characters that matter to them. The C library needs NUL-terminated
// text; the scanners get a view of a larger buffer so that reading past the
// line would show.
class ScanAgainstLibc : public testing::Test {
 protected:
  std::string randomLine() {
    static constexpr char kAlphabet[] = "po et sys_port:0123456789+- \t\r\vx9";
    std::uniform_int_distribution<int> length(0, 24);
    std::uniform_int_distribution<int> pick(0, sizeof kAlphabet - 2);
    std::uniform_int_distribution<int> shape(0, 9);
    std::string line;
    // Often start like the real lines, so the scans get far.
    switch (shape(rng)) {
      case 0: line = "po"; break;
      case 1: line = "et7 sys_port "; break;
      case 2: line = "po" + std::to_string(rng()) + std::string(shape(rng), '9'); break;
      case 3: line = "x sys_port " + std::to_string(static_cast<int>(rng())) + ": po"; break;
      case 4: line = std::string(58 + shape(rng), 'x'); break;
      default: break;
    }
    for (int n = length(rng); n > 0; --n) line += kAlphabet[pick(rng)];
    return line;
  }
  std::mt19937 rng{20261123};
};

TEST_F(ScanAgainstLibc, LagHead) {
  for (int i = 0; i < 50000; ++i) {
    std::string line = randomLine();
    std::string padded = line + "7 9";  // what lies behind the line must not be read
    int a1 = -5, b1 = -5, a2 = -5, b2 = -5;
    int expected = std::sscanf(line.c_str(), "po%d %d", &a1, &b1);
    int got = dma::scanLagHead(std::string_view(padded).substr(0, line.size()), a2, b2);
    ASSERT_EQ(got, expected) << '"' << line << '"';
    ASSERT_EQ(a2, a1) << '"' << line << '"';
    ASSERT_EQ(b2, b1) << '"' << line << '"';
  }
}

TEST_F(ScanAgainstLibc, ConfigLine) {
  for (int i = 0; i < 50000; ++i) {
    std::string line = randomLine();
    std::string padded = line + "7: po9";
    char name[64] = "unset";
    int s1 = -5, n1 = -5, s2 = -5, n2 = -5;
    std::string_view name2 = "unset";
    int expected = std::sscanf(line.c_str(), "%63s sys_port %d: po%d", name, &s1, &n1);
    int got =
        dma::scanConfigLine(std::string_view(padded).substr(0, line.size()), name2, s2, n2);
    ASSERT_EQ(got, expected) << '"' << line << '"';
    ASSERT_EQ(name2, std::string_view(name)) << '"' << line << '"';
    ASSERT_EQ(s2, s1) << '"' << line << '"';
    ASSERT_EQ(n2, n1) << '"' << line << '"';
  }
}

TEST_F(ScanAgainstLibc, Strtol) {
  std::vector<std::string> texts = {"", "-", "+", " -0", "2147483648", "-2147483649",
                                    "9223372036854775807", "9223372036854775808",
                                    "-9223372036854775808", "-9223372036854775809",
                                    "99999999999999999999999", "\t\v\f\r 12x"};
  for (int i = 0; i < 20000; ++i) texts.push_back(randomLine());
  for (const std::string& text : texts) {
    std::string padded = text + "123";
    ASSERT_EQ(dma::textToLong(std::string_view(padded).substr(0, text.size())),
              std::strtol(text.c_str(), nullptr, 10))
        << '"' << text << '"';
  }
}

}  // namespace
