#include "Vorn/VornDmaLagListing.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <iterator>
#include <utility>

namespace Hardware::Vorn::dma {
namespace {

// The section headers; which one opened a section makes no difference.
constexpr std::string_view kSectionHeaders[] = {"lags:", "ilags:", "lagconfigmap:"};

// isspace() of the C locale.
bool isSpace(char c) noexcept {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}
bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// How a directive of a scanf format ended.
enum class Match { kOk, kInputFailure, kMatchingFailure };

// What sscanf returns when a directive ends the scan after `done` fields: the
// fields assigned, or EOF when the input ran out before the first one.
int stopped(Match m, int done) noexcept {
  return m == Match::kInputFailure && done == 0 ? EOF : done;
}

// The digits at `pos` as strtol accumulates them: saturated at the range of
// long. Advances `pos` past them; `any` tells whether there was one.
long digitsToLong(std::string_view s, std::size_t& pos, bool negative, bool& any) noexcept {
  const unsigned long limit =
      negative ? static_cast<unsigned long>(LONG_MAX) + 1 : static_cast<unsigned long>(LONG_MAX);
  unsigned long magnitude = 0;
  bool saturated = false;
  std::size_t start = pos;
  for (; pos < s.size() && isDigit(s[pos]); ++pos) {
    unsigned long digit = static_cast<unsigned long>(s[pos] - '0');
    if (saturated || magnitude > (limit - digit) / 10) {
      saturated = true;
      continue;
    }
    magnitude = magnitude * 10 + digit;
  }
  any = pos > start;
  if (saturated) return negative ? LONG_MIN : LONG_MAX;
  if (!negative || magnitude == 0) return static_cast<long>(magnitude);
  return -static_cast<long>(magnitude - 1) - 1;
}

// A reading position over one line, with the directives of the two formats as
// glibc's scanf carries them out. Never reads past the line.
class Scanner {
 public:
  explicit Scanner(std::string_view s) noexcept : s_(s) {}

  // An ordinary character of the format.
  Match literal(char c) noexcept {
    if (pos_ == s_.size()) return Match::kInputFailure;
    if (s_[pos_] != c) return Match::kMatchingFailure;
    ++pos_;
    return Match::kOk;
  }
  // Ordinary characters, the first preceded by white space in the format
  // (which matches any amount of white space, none included).
  Match text(std::string_view chars, bool spaced) noexcept {
    if (spaced) skipSpace();
    for (char c : chars)
      if (Match m = literal(c); m != Match::kOk) return m;
    return Match::kOk;
  }
  // "%d": white space, a sign, at least one digit; the value as strtol gives
  // it, narrowed to int. Nothing is stored when there is no digit.
  Match decimal(int& out) noexcept {
    skipSpace();
    if (pos_ == s_.size()) return Match::kInputFailure;
    bool negative = false;
    if (s_[pos_] == '+' || s_[pos_] == '-') negative = s_[pos_++] == '-';
    bool any = false;
    long value = digitsToLong(s_, pos_, negative, any);
    if (!any) return Match::kMatchingFailure;
    out = static_cast<int>(value);
    return Match::kOk;
  }
  // "%<width>s": white space, then up to `width` characters that are not.
  Match word(std::size_t width, std::string_view& out) noexcept {
    skipSpace();
    if (pos_ == s_.size()) return Match::kInputFailure;
    std::size_t start = pos_;
    while (pos_ < s_.size() && !isSpace(s_[pos_]) && pos_ - start < width) ++pos_;
    out = s_.substr(start, pos_ - start);
    return Match::kOk;
  }

 private:
  void skipSpace() noexcept {
    while (pos_ < s_.size() && isSpace(s_[pos_])) ++pos_;
  }

  std::string_view s_;
  std::size_t pos_ = 0;
};

// The driver's name of port-channel `number`: "po" and the number as an int
// prints.
Mox::String lagName(int number) {
  char name[16];
  int n = std::snprintf(name, sizeof name, "po%d", number);
  return Mox::String(name, static_cast<std::size_t>(n));
}

// The end of the token that starts at `from`: the next blank, or the end.
std::size_t tokenEnd(std::string_view s, std::size_t from) noexcept {
  std::size_t blank = s.find(' ', from);
  return blank == std::string_view::npos ? s.size() : blank;
}

}  // namespace

int scanLagHead(std::string_view line, int& number, int& lagId) noexcept {
  Scanner s(line);
  if (Match m = s.text("po", false); m != Match::kOk) return stopped(m, 0);
  if (Match m = s.decimal(number); m != Match::kOk) return stopped(m, 0);
  // The blank of the format is covered by the white space "%d" skips.
  if (Match m = s.decimal(lagId); m != Match::kOk) return stopped(m, 1);
  return 2;
}

int scanConfigLine(std::string_view line, std::string_view& intfName, int& sysPort,
                   int& number) noexcept {
  Scanner s(line);
  if (Match m = s.word(kConfigNameMax, intfName); m != Match::kOk) return stopped(m, 0);
  if (Match m = s.text("sys_port", true); m != Match::kOk) return stopped(m, 1);
  if (Match m = s.decimal(sysPort); m != Match::kOk) return stopped(m, 1);
  if (Match m = s.text(":", false); m != Match::kOk) return stopped(m, 2);
  if (Match m = s.text("po", true); m != Match::kOk) return stopped(m, 2);
  if (Match m = s.decimal(number); m != Match::kOk) return stopped(m, 2);
  return 3;
}

long textToLong(std::string_view text) noexcept {
  std::size_t pos = 0;
  while (pos < text.size() && isSpace(text[pos])) ++pos;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) negative = text[pos++] == '-';
  bool any = false;
  long value = digitsToLong(text, pos, negative, any);
  return any ? value : 0;
}

LineOutcome LagListingParser::line(std::string_view text) {
  if (failure_.failed()) return failure_;
  const bool open = inSection_ && !text.empty();
  if (std::find(std::begin(kSectionHeaders), std::end(kSectionHeaders), text) !=
      std::end(kSectionHeaders)) {
    inSection_ = true;
    return {LineKind::kHeader};
  }
  inSection_ = false;
  if (!open) return {LineKind::kIgnored};
  LineOutcome outcome = dataLine(text);
  if (outcome.failed()) {
    failure_ = outcome;
    return outcome;
  }
  inSection_ = true;
  return outcome;
}

LineOutcome LagListingParser::dataLine(std::string_view text) {
  int number = 0;
  int lagId = 0;
  int matches = scanLagHead(text, number, lagId);
  if (matches <= 0) return configLine(text);
  return lagLine(text, number, matches == 2, lagId);
}

LineOutcome LagListingParser::lagLine(std::string_view text, int number, bool hasLagId,
                                      int lagId) {
  LagId id;  // null when the line has none
  if (hasLagId) {
    const U32 value = static_cast<U32>(lagId);
    if (value > LagId::null()) return {LineKind::kRangeError, LagId::kRangeText};
    id = LagId(value);
  }
  LagDevice lag(lagName(number), id);
  // Members: every "et" starts a member name that runs to the next blank; the
  // token after the one blank is its id. The search is plain substring search
  // from the start of the line, and what lies between hits is skipped unread.
  std::size_t pos = 0;
  for (std::size_t at; (at = text.find("et", pos)) != std::string_view::npos;) {
    const std::size_t nameEnd = tokenEnd(text, at);
    const std::size_t idStart = nameEnd < text.size() ? nameEnd + 1 : nameEnd;
    const std::size_t idEnd = tokenEnd(text, idStart);
    // The check is on the low 16 bits: 65792 reads as 256.
    const U16 memberId = static_cast<U16>(textToLong(text.substr(idStart, idEnd - idStart)));
    if (memberId > LagMemberId::null()) return {LineKind::kRangeError, LagMemberId::kRangeText};
    lag.lagMemberDeviceIs(LagMemberDevice(Mox::String(text.data() + at, nameEnd - at),
                                          LagMemberId(memberId), false));
    pos = idEnd;
  }
  table_.lagDeviceIs(std::move(lag));
  return {LineKind::kLag};
}

LineOutcome LagListingParser::configLine(std::string_view text) {
  std::string_view intfName;
  int sysPort = 0;  // read, not kept
  int number = 0;
  if (scanConfigLine(text, intfName, sysPort, number) != 3)
    return {LineKind::kAssertionFailed, "matches == 3"};
  // A config line adds to its LAG in place: the same table as copying the
  // entry, adding to the copy and storing it back, without copying all the
  // LAG's config members per line.
  if (!table_.lagDeviceMemberConfigIs(lagName(number), Mox::String(intfName.data(), intfName.size()),
                                      true))
    return {LineKind::kAssertionFailed, "!!lagDevice"};
  return {LineKind::kConfig};
}

LineOutcome LagListingParser::feed(std::string_view chunk) {
  while (!failure_.failed()) {
    std::size_t newline = chunk.find('\n');
    if (newline == std::string_view::npos) {
      partial_.append(chunk);
      break;
    }
    if (partial_.empty()) {
      line(chunk.substr(0, newline));
    } else {
      partial_.append(chunk.substr(0, newline));
      line(partial_);
      partial_.clear();
    }
    chunk.remove_prefix(newline + 1);
  }
  return failure_;
}

LineOutcome LagListingParser::finish() {
  if (!failure_.failed() && !partial_.empty()) {
    line(partial_);
    partial_.clear();
  }
  return failure_;
}

}  // namespace Hardware::Vorn::dma
