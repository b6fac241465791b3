// The parser reads the driver's usual lines directly and falls back to the
// exact reading otherwise; both against sscanf and strtol, on random listings
// around the bounds of the direct readers.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "Vorn/LagTestSupport.h"
#include "Vorn/VornDmaLagListing.h"

using namespace Hardware::Vorn;
using dma::LagListingParser;
using dma::LineKind;
using dma::LineOutcome;

namespace {

struct Result {
  VornDmaLags::LagDeviceMap lags;
  LineKind failure = LineKind::kIgnored;  // kIgnored: none
  std::string text;
};

bool isHeader(const std::string& line) {
  return line == "lags:" || line == "ilags:" || line == "lagconfigmap:";
}

// The listing as the driver's documentation reads it, with the C library.
Result referenceRead(const std::vector<std::string>& lines) {
  VornDmaLags::Ptr table = vornDmaLagsFactory("vornDmaLags");
  Result r;
  auto fail = [&](LineKind kind, const char* text) {
    r.failure = kind;
    r.text = text;
    r.lags = table->lagDevices();
    return r;
  };
  bool inSection = false;
  for (const std::string& line : lines) {
    const bool open = inSection && !line.empty();
    if (isHeader(line)) {
      inSection = true;
      continue;
    }
    inSection = false;
    if (!open) continue;
    int number = 0, lagId = 0;
    const int head = std::sscanf(line.c_str(), "po%d %d", &number, &lagId);
    if (head > 0) {
      if (head == 2 && static_cast<U32>(lagId) > LagId::null())
        return fail(LineKind::kRangeError, LagId::kRangeText);
      LagDevice lag(Mox::format("po%d", number),
                    head == 2 ? LagId(static_cast<U32>(lagId)) : LagId());
      for (std::size_t pos = 0, at; (at = line.find("et", pos)) != std::string::npos;) {
        const std::size_t nameEnd = std::min(line.find(' ', at), line.size());
        const std::size_t idStart = nameEnd < line.size() ? nameEnd + 1 : nameEnd;
        const std::size_t idEnd = std::min(line.find(' ', idStart), line.size());
        const std::string idText = line.substr(idStart, idEnd - idStart);
        const auto id = static_cast<U16>(std::strtol(idText.c_str(), nullptr, 10));
        if (id > LagMemberId::null()) return fail(LineKind::kRangeError, LagMemberId::kRangeText);
        const std::string name = line.substr(at, nameEnd - at);
        lag.lagMemberDeviceIs(LagMemberDevice(Mox::String(name), LagMemberId(id), false));
        pos = idEnd;
      }
      table->lagDeviceIs(lag);
    } else {
      char name[64];
      int sysPort = 0;
      if (std::sscanf(line.c_str(), "%63s sys_port %d: po%d", name, &sysPort, &number) != 3)
        return fail(LineKind::kAssertionFailed, "matches == 3");
      const LagDevice* stored = table->lagDevice(Mox::format("po%d", number));
      if (stored == nullptr) return fail(LineKind::kAssertionFailed, "!!lagDevice");
      LagDevice copy = *stored;
      copy.lagMemberConfigIs(name, true);
      table->lagDeviceIs(copy);
    }
    inSection = true;
  }
  r.lags = table->lagDevices();
  return r;
}

Result resultOf(const VornDmaLags& table, LineOutcome outcome) {
  Result r;
  r.lags = table.lagDevices();
  if (outcome.failed()) {
    r.failure = outcome.kind;
    r.text = outcome.text;
  }
  return r;
}

// Mostly the driver's shapes, with variations for the exact reading.
class ListingMaker {
 public:
  std::vector<std::string> listing() {
    std::vector<std::string> lines;
    numbers_.clear();
    for (int section = pick(1, 3); section > 0; --section) {
      lines.push_back(chance(10) ? "lags: " : header());
      for (int n = pick(0, 12); n > 0; --n)
        lines.push_back(numbers_.empty() || chance(35) ? lagLine() : configLine());
      if (chance(80)) lines.push_back("");
    }
    return lines;
  }

 private:
  int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }
  bool chance(int percent) { return pick(1, 100) <= percent; }
  std::string text(int length, const char* alphabet) {
    std::string s;
    const int last = static_cast<int>(std::char_traits<char>::length(alphabet)) - 1;
    for (int i = 0; i < length; ++i) s += alphabet[pick(0, last)];
    return s;
  }
  std::string digits(int count) {
    return std::to_string(pick(1, 9)) + text(count - 1, "0123456789");
  }
  std::string header() {
    static const char* const kHeaders[] = {"lags:", "ilags:", "lagconfigmap:"};
    return kHeaders[pick(0, 2)];
  }
  std::string memberId() {
    const int kind = pick(0, 19);
    const std::string n = std::to_string(pick(0, 256));
    const std::string odd[] = {
        std::to_string(pick(4, 6) == 4 ? pick(1000, 9999) : 65536 + pick(0, 300)),
        "+" + n,
        "-" + std::to_string(65536 - pick(0, 256)),
        n + (chance(50) ? "x" : "et4"),
        "",
        "\t" + n,
        "0" + n};
    return kind < 7 ? odd[kind] : n;
  }
  std::string memberName() {
    // 15 and 16 characters in all are the bound.
    std::string name = "et" + text(pick(0, 16), "0123456789_/e");
    if (chance(5)) name = "x" + name;
    if (chance(5)) name = text(pick(1, 4), "ab9");
    return name;
  }
  std::string lagLine() {
    const int number = chance(70) || numbers_.empty() ? pick(1, 1100) : numbers_[0];
    numbers_.push_back(number);
    std::string line = "po" + std::to_string(number);
    if (chance(90)) line += " " + std::to_string(chance(97) ? pick(0, 1024) : 1025);
    for (int m = pick(0, 18); m > 0; --m) {
      line += chance(3) ? "  " : " ";
      line += memberName();
      line += " " + memberId();
    }
    if (chance(5)) line += " " + memberName();
    if (chance(5)) line += " ";
    return line;
  }
  std::string configLine() {
    int number = numbers_[pick(0, static_cast<int>(numbers_.size()) - 1)];
    if (chance(2)) number = 5000;  // no such LAG
    // A small pool, so that names come again and out of order.
    static const char* const kPool[] = {
        "Ethernet1/1",      "Ethernet1/10", "Ethernet12/3", "Ethernet1024/15",
        "Ethernet1024/16x", "et7",          "po9",          "Ethernet3/1.4094"};
    std::string name = chance(60) ? kPool[pick(0, 7)] : text(pick(1, 17), "Eth0123/._-");
    const std::string po = std::to_string(number);
    const std::string line =
        name + " sys_port " + digits(chance(95) ? pick(1, 4) : pick(9, 10)) + ": po" + po;
    const std::string odd[] = {name + "  sys_port 1: po" + po, line + "junk",
                               name + "\tsys_port -3:po+" + po, name + " sys_port 1 : po" + po,
                               name + " sys_port 1: po"};
    const int kind = pick(0, 29);
    return kind < 5 ? odd[kind] : line;
  }

  std::mt19937 rng_{20261124};
  std::vector<int> numbers_;
};

TEST(LagListingUsualShape, ReadsAsTheCLibraryDoesWhateverThePieces) {
  ListingMaker maker;
  std::mt19937 rng(11);
  for (int i = 0; i < 3000; ++i) {
    const std::vector<std::string> lines = maker.listing();
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    const Result expected = referenceRead(lines);
    SCOPED_TRACE(text);

    // In pieces of up to 40 bytes: lines whole and split, the fast reading
    // and the exact one.
    VornDmaLags pieces("vornDmaLags");
    LagListingParser piecesParser(pieces);
    for (std::size_t at = 0, size; at < text.size(); at += size) {
      size = std::uniform_int_distribution<std::size_t>(1, 40)(rng);
      piecesParser.feed(std::string_view(text).substr(at, size));
    }
    const Result split = resultOf(pieces, piecesParser.finish());
    ASSERT_EQ(split.failure, expected.failure);
    ASSERT_EQ(split.text, expected.text);
    ASSERT_EQ(split.lags, expected.lags);

    // Line by line, each a view of a longer buffer.
    VornDmaLags byLine("vornDmaLags");
    LagListingParser lineParser(byLine);
    LineOutcome outcome;
    for (const std::string& line : lines) {
      const std::string padded = line + " 7 et9 9 sys_port 1: po1";
      outcome = lineParser.line(std::string_view(padded).substr(0, line.size()));
    }
    const Result each = resultOf(byLine, outcome);
    ASSERT_EQ(each.failure, expected.failure);
    ASSERT_EQ(each.lags, expected.lags);
  }
}

}  // namespace
