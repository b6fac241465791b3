#include "Vorn/VornDmaLagListing.h"

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>

namespace Hardware::Vorn::dma {
namespace {

// The section headers; which one opened a section makes no difference.
constexpr std::string_view kSectionHeaders[] = {"lags:", "ilags:", "lagconfigmap:"};

// isspace() of the C locale, as a table: it is asked of every character.
constexpr auto kSpaces = [] {
  std::array<bool, 256> table{};
  for (unsigned char c : {' ', '\t', '\n', '\v', '\f', '\r'}) table[c] = true;
  return table;
}();
bool isSpace(char c) noexcept {
  return kSpaces[static_cast<unsigned char>(c)];
}
bool isDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}

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
  // The magnitude may reach `limit`: one more digit overflows when the
  // magnitude is past limit / 10, or at it and the digit is past limit % 10.
  // Both are constants, so no digit costs a division.
  constexpr unsigned long kPositive = static_cast<unsigned long>(LONG_MAX);
  constexpr unsigned long kNegative = kPositive + 1;
  const unsigned long cutoff = negative ? kNegative / 10 : kPositive / 10;
  const unsigned long lastDigit = negative ? kNegative % 10 : kPositive % 10;
  unsigned long magnitude = 0;
  bool saturated = false;
  std::size_t start = pos;
  for (; pos < s.size() && isDigit(s[pos]); ++pos) {
    unsigned long digit = static_cast<unsigned long>(s[pos] - '0');
    if (saturated || magnitude > cutoff || (magnitude == cutoff && digit > lastDigit)) {
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
    // The common case whole; character by character only to tell how a
    // mismatch ends the scan.
    if (s_.substr(pos_, chars.size()) == chars) {
      pos_ += chars.size();
      return Match::kOk;
    }
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
    const std::size_t start = pos_;
    const std::size_t stop = start + std::min(width, s_.size() - start);
    while (pos_ != stop && !isSpace(s_[pos_])) ++pos_;
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

// The driver's name of port-channel `number`: "po" and the number as "%d"
// prints it (po-1 for -1). Written by hand: it is built for every line.
Mox::String lagName(int number) {
  char name[16] = {'p', 'o'};
  std::size_t len = 2;
  unsigned magnitude = static_cast<unsigned>(number);
  if (number < 0) {
    name[len++] = '-';
    magnitude = 0u - magnitude;
  }
  char digits[10];
  std::size_t count = 0;
  do {
    digits[count++] = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  while (count != 0) name[len++] = digits[--count];
  return Mox::String(name, len);
}

// Eight bytes of the line as one word, the first byte lowest. Word-wise scans
// run on little-endian machines only; elsewhere the byte loops do it all.
constexpr bool kWordScans = std::endian::native == std::endian::little;
constexpr std::uint64_t kOnes = 0x0101010101010101u;
std::uint64_t wordAt(std::string_view s, std::size_t pos) noexcept {
  std::uint64_t w;
  std::memcpy(&w, s.data() + pos, sizeof w);
  return w;
}
// The byte whose flag (its 0x80 bit) is the lowest in `flags`.
std::size_t firstFlagged(std::uint64_t flags) noexcept {
  return static_cast<std::size_t>(std::countr_zero(flags)) / 8;
}

// The end of the token that starts at `from`: the next blank, or the end.
std::size_t tokenEnd(std::string_view s, std::size_t from) noexcept {
  if constexpr (kWordScans) {
    for (; s.size() - from >= 8; from += 8) {
      // A flag in each byte that is a blank; the lowest flag is exact,
      // later ones may not be.
      const std::uint64_t x = wordAt(s, from) ^ (kOnes * ' ');
      const std::uint64_t blanks = (x - kOnes) & ~x & (kOnes * 0x80);
      if (blanks != 0) return from + firstFlagged(blanks);
    }
  }
  while (from < s.size() && s[from] != ' ') ++from;
  return from;
}

// Where the next "et" at or after `from` starts, or npos.
std::size_t findEt(std::string_view s, std::size_t from) noexcept {
  for (; from + 1 < s.size(); ++from)
    if (s[from] == 'e' && s[from + 1] == 't') return from;
  return std::string_view::npos;
}

// Whether `s` holds the literal `text` at `pos`. The length is a constant, so
// the comparison is a load or two, not a call.
template <std::size_t N>
bool literalAt(std::string_view s, std::size_t pos, const char (&text)[N]) noexcept {
  return s.size() - pos >= N - 1 && std::memcmp(s.data() + pos, text, N - 1) == 0;
}

// The first white space in [from, stop), or `stop`. Eight bytes at a time
// where the range has them: interface names run ten to fifteen characters.
std::size_t spaceFrom(std::string_view s, std::size_t from, std::size_t stop) noexcept {
  if constexpr (kWordScans) {
    for (; stop - from >= 8; from += 8) {
      // A flag in each byte below '!' (white space is among them); the
      // lowest flag is exact, later ones may not be.
      const std::uint64_t w = wordAt(s, from);
      const std::uint64_t below = (w - kOnes * '!') & ~w & (kOnes * 0x80);
      if (below != 0) {
        from += firstFlagged(below);
        break;
      }
    }
  }
  while (from != stop && !isSpace(s[from])) ++from;
  return from;
}

// Up to nine plain digits at `pos` (no white space, no sign): their value in
// `out`, `pos` past them. False, with nothing changed, when there is no digit
// or there are more: the scanner reads those.
bool plainDigits(std::string_view s, std::size_t& pos, int& out) noexcept {
  std::size_t at = pos;
  int value = 0;
  for (; at != s.size() && isDigit(s[at]); ++at) {
    if (at - pos == 9) return false;
    value = value * 10 + (s[at] - '0');
  }
  if (at == pos) return false;
  out = value;
  pos = at;
  return true;
}

// A config line as the driver writes it: "<name> sys_port <S>: po<N>" with
// one blank between the parts and plain numbers. On such a line the scanner's
// answer is three fields with these values; false on anything else, which the
// scanner then reads. What follows the number is not read, as by sscanf.
bool scanPlainConfigLine(std::string_view s, std::string_view& intfName, int& sysPort,
                         int& number) noexcept {
  if (s.empty() || isSpace(s[0])) return false;
  const std::size_t nameEnd = spaceFrom(s, 0, std::min(s.size(), kConfigNameMax));
  if (!literalAt(s, nameEnd, " sys_port ")) return false;
  std::size_t pos = nameEnd + sizeof " sys_port " - 1;
  int port = 0;
  if (!plainDigits(s, pos, port) || !literalAt(s, pos, ": po")) return false;
  pos += sizeof ": po" - 1;
  if (!plainDigits(s, pos, number)) return false;
  intfName = s.substr(0, nameEnd);
  sysPort = port;
  return true;
}

// strtol(text, nullptr, 10): a short run of digits directly, the rest as
// strtol has it.
long readLong(std::string_view text) noexcept {
  // Nine digits fit even a 32-bit long; a non-digit ends the number.
  if (!text.empty() && text.size() <= 9 && isDigit(text[0])) {
    long value = 0;
    for (std::size_t i = 0; i < text.size() && isDigit(text[i]); ++i)
      value = value * 10 + (text[i] - '0');
    return value;
  }
  std::size_t pos = 0;
  while (pos < text.size() && isSpace(text[pos])) ++pos;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) negative = text[pos++] == '-';
  bool any = false;
  long value = digitsToLong(text, pos, negative, any);
  return any ? value : 0;
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
  if (scanPlainConfigLine(line, intfName, sysPort, number)) return 3;
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
  return readLong(text);
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

LineOutcome LagListingParser::lagLine(std::string_view text, int number, bool hasLagId, int lagId) {
  LagId id;  // null when the line has none
  if (hasLagId) {
    const U32 value = static_cast<U32>(lagId);
    if (value > LagId::null()) return {LineKind::kRangeError, LagId::kRangeText};
    id = LagId(value);
  }
  // Members: every "et" starts a member name that runs to the next blank; the
  // token after the one blank is its id. The search is plain substring search
  // from the start of the line, and what lies between hits is skipped unread.
  // They are gathered in listing order and put in name order once.
  members_.clear();
  std::size_t pos = 0;
  for (std::size_t at; (at = findEt(text, pos)) != std::string_view::npos;) {
    const std::size_t nameEnd = tokenEnd(text, at);
    const std::size_t idStart = nameEnd < text.size() ? nameEnd + 1 : nameEnd;
    const std::size_t idEnd = tokenEnd(text, idStart);
    // The check is on the low 16 bits: 65792 reads as 256.
    const U16 memberId = static_cast<U16>(readLong(text.substr(idStart, idEnd - idStart)));
    if (memberId > LagMemberId::null()) return {LineKind::kRangeError, LagMemberId::kRangeText};
    Mox::String name(text.data() + at, nameEnd - at);
    members_.emplace_back(name, LagMemberDevice(name, LagMemberId(memberId), false));
    pos = idEnd;
  }
  LagDevice::LagMemberDeviceMap members;
  members.assign(members_.begin(), members_.end());
  configLag_ = nullptr;  // the entry it points to may be the one replaced
  const std::size_t lagsBefore = table_.lagDeviceSize();
  LagDevice& stored = table_.lagDeviceIs(LagDevice(lagName(number), id, std::move(members)));
  if (table_.lagDeviceSize() == lagsBefore) {
    stored_.clear();
    nextStored_ = 0;
  }
  stored_.emplace_back(number, &stored);
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
  // LAG's config members per line. The config lines of one LAG come
  // together, so the LAG of the previous line is kept at hand.
  if (configLag_ == nullptr || number != configLagNumber_) {
    configLag_ = storedLag(number);
    configLagNumber_ = number;
    if (configLag_ == nullptr) return {LineKind::kAssertionFailed, "!!lagDevice"};
  }
  configLag_->lagMemberConfigIs(Mox::String(intfName.data(), intfName.size()), true);
  return {LineKind::kConfig};
}

LagDevice* LagListingParser::storedLag(int number) {
  if (nextStored_ < stored_.size() && stored_[nextStored_].first == number)
    return stored_[nextStored_++].second;
  return table_.lagDeviceInPlace(lagName(number));
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
