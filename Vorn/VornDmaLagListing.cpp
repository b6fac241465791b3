#include "Vorn/VornDmaLagListing.h"

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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

// A flag (the 0x80 bit) in each byte of `w` that is a blank; the lowest flag
// is exact, later ones may not be.
std::uint64_t blankFlags(std::uint64_t w) noexcept {
  const std::uint64_t x = w ^ (kOnes * ' ');
  return (x - kOnes) & ~x & (kOnes * 0x80);
}

// The end of the token that starts at `from`: the next blank, or the end.
std::size_t tokenEnd(std::string_view s, std::size_t from) noexcept {
  if constexpr (kWordScans) {
    for (; s.size() - from >= 8; from += 8)
      if (const std::uint64_t blanks = blankFlags(wordAt(s, from)); blanks != 0)
        return from + firstFlagged(blanks);
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

// The longest name whose order (and bytes) two 64-bit numbers hold.
constexpr std::size_t kKeyedNameMax = Mox::String::kShortMax;

// The order of the `len` (at most 15) bytes at `p` as two numbers that
// compare as the texts do: the bytes zero-padded to 15 and read big-endian,
// then the length (which puts "ab" before "ab\0"). Reads only those bytes.
void orderKey(const char* p, std::size_t len, std::uint64_t& key0, std::uint64_t& key1) noexcept {
  std::uint64_t lo = 0, hi = 0;  // the padded bytes, the first one lowest
  if constexpr (kWordScans) {
    // Loads that stay inside the text: two that overlap, whose common bytes
    // agree.
    auto load = [p](std::size_t at, std::size_t n) -> std::uint64_t {
      if (n == 8) {
        std::uint64_t w;
        std::memcpy(&w, p + at, sizeof w);
        return w;
      }
      std::uint32_t w;
      std::memcpy(&w, p + at, sizeof w);
      return w;
    };
    if (len >= 8) {
      lo = load(0, 8);
      if (len > 8) hi = load(len - 8, 8) >> (8 * (16 - len));
    } else if (len >= 4) {
      lo = load(0, 4) | load(len - 4, 4) << (8 * (len - 4));
    } else if (len > 0) {
      auto byte = [p](std::size_t i) {
        return static_cast<std::uint64_t>(static_cast<unsigned char>(p[i])) << (8 * i);
      };
      lo = byte(0) | byte(len / 2) | byte(len - 1);
    }
  } else {
    for (std::size_t i = 0; i < len; ++i) {
      const auto byte = static_cast<std::uint64_t>(static_cast<unsigned char>(p[i]));
      (i < 8 ? lo : hi) |= byte << (8 * (i % 8));
    }
  }
  // The sixteenth byte is always zero: the length takes its place.
  key0 = __builtin_bswap64(lo);
  key1 = __builtin_bswap64(hi) | len;
}

// A member the driver's way, whose name starts at `at`: a name of up to 15
// characters ended by a blank, then an id of one to four plain digits ended
// by a blank or the end of the line, with the sixteen characters from `at`
// inside the line. Then the exact walk finds the same name and id: fills
// `id`, `length` and the key of `member` and returns where the id ends.
// Otherwise returns npos, and the exact walk reads the member. The name's
// end and its key come from the same two words.
std::size_t usualMember(std::string_view s, std::size_t at, std::uint16_t& id, std::size_t& length,
                        std::uint64_t& key0, std::uint64_t& key1) noexcept {
  if constexpr (!kWordScans) return std::string_view::npos;
  if (s.size() - at < 16) return std::string_view::npos;
  std::uint64_t lo = wordAt(s, at);
  std::uint64_t hi = wordAt(s, at + 8);
  std::size_t len;
  if (const std::uint64_t blanks = blankFlags(lo); blanks != 0) {
    len = firstFlagged(blanks);
    // The bytes past the name are zero in the key; the second word is.
    lo &= len == 0 ? 0 : ~std::uint64_t{0} >> (64 - 8 * len);
    hi = 0;
  } else if (const std::uint64_t blanks = blankFlags(hi); blanks != 0) {
    len = 8 + firstFlagged(blanks);
    hi &= len == 8 ? 0 : ~std::uint64_t{0} >> (64 - 8 * (len - 8));
  } else {
    return std::string_view::npos;
  }
  const std::size_t idStart = at + len + 1;
  std::size_t pos = idStart;
  unsigned value = 0;
  for (; pos != s.size() && pos - idStart != 5 && isDigit(s[pos]); ++pos)
    value = value * 10 + static_cast<unsigned>(s[pos] - '0');
  if (pos == idStart || pos - idStart == 5 || (pos != s.size() && s[pos] != ' '))
    return std::string_view::npos;
  id = static_cast<std::uint16_t>(value);
  length = len;
  key0 = __builtin_bswap64(lo);
  key1 = __builtin_bswap64(hi) | len;
  return pos;
}

// Whether `s` holds the literal `text` at `pos`. The length is a constant, so
// the comparison is a load or two, not a call.
template <std::size_t N>
bool literalAt(std::string_view s, std::size_t pos, const char (&text)[N]) noexcept {
  return s.size() - pos >= N - 1 && std::memcmp(s.data() + pos, text, N - 1) == 0;
}

// The first character at or below ' ' in [from, stop), or `stop`: where a
// name that the driver wrote ends (at a blank). Sixteen or eight characters
// at a time where the range has them: interface names run ten to fifteen
// characters. White space is among these characters, but not all of them are
// white space: a caller that finds no blank there has not found a plain line.
std::size_t lowFrom(std::string_view s, std::size_t from, std::size_t stop) noexcept {
#ifdef __SSE2__
  if (stop - from >= 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s.data() + from));
    const __m128i low = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(' ')), bytes);
    const auto flags = static_cast<unsigned>(_mm_movemask_epi8(low));
    if (flags != 0) return from + static_cast<std::size_t>(std::countr_zero(flags));
    from += 16;
  }
#endif
  if constexpr (kWordScans) {
    for (; stop - from >= 8; from += 8) {
      // A flag in each byte below '!'; the lowest flag is exact, later ones
      // may not be.
      const std::uint64_t w = wordAt(s, from);
      const std::uint64_t below = (w - kOnes * '!') & ~w & (kOnes * 0x80);
      if (below != 0) return from + firstFlagged(below);
    }
  }
  while (from != stop && static_cast<unsigned char>(s[from]) > ' ') ++from;
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
// scanner then reads. What follows the number is not read, as by sscanf;
// `end` is where it starts.
// The part of such a line after a name of `nameEnd` characters: false, with
// nothing changed, when it is not there.
[[gnu::always_inline]] inline bool plainConfigTail(std::string_view s, std::size_t nameEnd,
                                                   int& sysPort, int& number,
                                                   std::size_t& end) noexcept {
  if (nameEnd == 0 || !literalAt(s, nameEnd, " sys_port ")) return false;
  std::size_t pos = nameEnd + sizeof " sys_port " - 1;
  int port = 0;
  if (!plainDigits(s, pos, port) || !literalAt(s, pos, ": po")) return false;
  pos += sizeof ": po" - 1;
  if (!plainDigits(s, pos, number)) return false;
  sysPort = port;
  end = pos;
  return true;
}

bool scanPlainConfigLine(std::string_view s, std::string_view& intfName, int& sysPort, int& number,
                         std::size_t& end) noexcept {
  // The name: up to the blank, at most 63 characters, none of them white
  // space (nor another character at or below ' ', which the scanner reads).
  const std::size_t nameEnd = lowFrom(s, 0, std::min(s.size(), kConfigNameMax));
  if (!plainConfigTail(s, nameEnd, sysPort, number, end)) return false;
  intfName = s.substr(0, nameEnd);
  return true;
}

// A config line the driver's way whose name has at most 15 characters, with
// sixteen characters of `s` from its start: the name's bytes as two numbers
// (as Mox::String::Bytes holds them) and its length. What follows is as for
// scanPlainConfigLine. False, with nothing changed, on anything else.
bool scanShortConfigLine(std::string_view s, std::uint64_t& first, std::uint64_t& rest,
                         std::size_t& nameLength, int& number, std::size_t& end) noexcept {
  if constexpr (!kWordScans) return false;
  if (s.size() < 16) return false;
  std::uint64_t lo = wordAt(s, 0);
  std::uint64_t hi = wordAt(s, 8);
  // The name ends at the first character at or below ' ' (the lowest flag
  // is exact); its bytes are kept, the rest cleared.
  std::size_t len;
  if (const std::uint64_t low = (lo - kOnes * '!') & ~lo & (kOnes * 0x80); low != 0) {
    len = firstFlagged(low);
    lo &= len == 0 ? 0 : ~std::uint64_t{0} >> (64 - 8 * len);
    hi = 0;
  } else if (const std::uint64_t low = (hi - kOnes * '!') & ~hi & (kOnes * 0x80); low != 0) {
    len = 8 + firstFlagged(low);
    hi &= len == 8 ? 0 : ~std::uint64_t{0} >> (64 - 8 * (len - 8));
  } else {
    return false;
  }
  int sysPort = 0;
  if (!plainConfigTail(s, len, sysPort, number, end)) return false;
  first = lo;
  rest = hi;
  nameLength = len;
  return true;
}

// strtol(text, nullptr, 10) of a text that does not start with a digit, or
// has more than nine characters.
[[gnu::noinline]] long readLongAsStrtol(std::string_view text) noexcept {
  std::size_t pos = 0;
  while (pos < text.size() && isSpace(text[pos])) ++pos;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) negative = text[pos++] == '-';
  bool any = false;
  long value = digitsToLong(text, pos, negative, any);
  return any ? value : 0;
}

// strtol(text, nullptr, 10): a short run of digits directly (a member id per
// member of a LAG line), the rest as strtol has it.
[[gnu::always_inline]] inline long readLong(std::string_view text) noexcept {
  // Nine digits fit even a 32-bit long; a non-digit ends the number.
  if (!text.empty() && text.size() <= 9 && isDigit(text[0])) {
    long value = 0;
    for (std::size_t i = 0; i < text.size() && isDigit(text[i]); ++i)
      value = value * 10 + (text[i] - '0');
    return value;
  }
  return readLongAsStrtol(text);
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
  if (std::size_t end; scanPlainConfigLine(line, intfName, sysPort, number, end)) return 3;
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
  members_.clear();
  bool keyed = true;  // all names short enough for a key
  std::size_t pos = 0;
  while (true) {
    std::size_t at;
    // The search goes on at the blank that ends an id; in the driver's lines
    // the next member starts right behind it.
    if (text.size() - pos > 2 && text[pos] == ' ' && text[pos + 1] == 'e' && text[pos + 2] == 't')
      at = pos + 1;
    else if ((at = findEt(text, pos)) == std::string_view::npos)
      break;
    MemberText& member = members_.emplace_back();
    member.at = at;
    std::uint16_t memberId = 0;
    std::size_t idEnd = usualMember(text, at, memberId, member.length, member.key0, member.key1);
    if (idEnd == std::string_view::npos) {
      const std::size_t nameEnd = tokenEnd(text, at);
      const std::size_t idStart = nameEnd < text.size() ? nameEnd + 1 : nameEnd;
      idEnd = tokenEnd(text, idStart);
      // The check is on the low 16 bits: 65792 reads as 256.
      memberId = static_cast<U16>(readLong(text.substr(idStart, idEnd - idStart)));
      member.length = nameEnd - at;
      if (member.length <= kKeyedNameMax)
        orderKey(text.data() + at, member.length, member.key0, member.key1);
      else
        keyed = false;
    }
    if (memberId > LagMemberId::null()) return {LineKind::kRangeError, LagMemberId::kRangeText};
    member.id = memberId;
    pos = idEnd;
  }
  LagDevice::LagMemberDeviceMap members = memberMap(text, keyed);
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

LagDevice::LagMemberDeviceMap LagListingParser::memberMap(std::string_view text, bool keyed) {
  LagDevice::LagMemberDeviceMap members;
  const std::size_t n = members_.size();
  if (!keyed) {
    // A long name: the collection puts the entries in order by their names.
    longMembers_.clear();
    for (const MemberText& m : members_) {
      Mox::String name(text.data() + m.at, m.length);
      longMembers_.emplace_back(name, LagMemberDevice(name, LagMemberId(m.id), false));
    }
    members.assign(longMembers_.begin(), longMembers_.end());
    return members;
  }
  if (n == 0) return members;
  // The positions in name order, of equal names the earlier one first: the
  // ascending runs of the listing (the driver lists members by id, which
  // leaves a few), merged in pairs until one is left. Which side a merge
  // takes from is a selection, not a branch: it follows the names, which no
  // predictor can.
  auto less = [m = members_.data()](std::uint32_t a, std::uint32_t b) {
    return m[a].key0 < m[b].key0 || (m[a].key0 == m[b].key0 && m[a].key1 < m[b].key1);
  };
  order_.resize(2 * n);
  std::uint32_t* order = order_.data();
  std::uint32_t* spare = order + n;
  runEnds_.clear();
  order[0] = 0;
  for (std::uint32_t i = 1; i < n; ++i) {
    order[i] = i;
    if (less(i, i - 1)) runEnds_.push_back(i);
  }
  runEnds_.push_back(static_cast<std::uint32_t>(n));
  while (runEnds_.size() > 1) {
    std::size_t merged = 0;
    std::uint32_t start = 0;
    for (std::size_t r = 0; r < runEnds_.size(); r += 2) {
      const std::uint32_t mid = runEnds_[r];
      const std::uint32_t end = r + 1 < runEnds_.size() ? runEnds_[r + 1] : mid;
      std::uint32_t i = start, j = mid, k = start;
      while (i != mid && j != end) {
        const bool right = less(order[j], order[i]);
        spare[k++] = right ? order[j] : order[i];
        j += right;
        i += !right;
      }
      while (i != mid) spare[k++] = order[i++];
      while (j != end) spare[k++] = order[j++];
      runEnds_[merged++] = end;
      start = end;
    }
    runEnds_.resize(merged);
    std::swap(order, spare);
  }
  // Each entry is built in place, once; of equal names the later one stays.
  members.reserve(n);
  for (std::size_t k = 0; k < n; ++k) {
    if (k + 1 < n && !less(order[k], order[k + 1])) continue;
    // The name's bytes are in its key.
    const MemberText& m = members_[order[k]];
    const Mox::String::Bytes name{__builtin_bswap64(m.key0),
                                  __builtin_bswap64(m.key1 & ~std::uint64_t{0xFF}), m.length};
    members.emplace_back(name, Mox::String(name), LagMemberId(m.id), false);
  }
  return members;
}

LineOutcome LagListingParser::configLine(std::string_view text) {
  std::string_view intfName;
  int sysPort = 0;  // read, not kept
  int number = 0;
  if (scanConfigLine(text, intfName, sysPort, number) != 3)
    return {LineKind::kAssertionFailed, "matches == 3"};
  return addConfig(intfName, number);
}

bool LagListingParser::switchConfigLag(int number) {
  configLag_ = storedLag(number);
  configLagNumber_ = number;
  // With no config member yet, any name is past the last one.
  lastConfigKnown_ = configLag_ != nullptr && configLag_->lagMemberConfigs().empty();
  lastConfigKey0_ = lastConfigKey1_ = 0;
  return configLag_ != nullptr;
}

LineOutcome LagListingParser::addConfig(std::string_view intfName, int number) {
  if (intfName.size() <= kKeyedNameMax) {
    // Through the same way as the usual lines, which keeps the order known.
    std::uint64_t key0, key1;
    orderKey(intfName.data(), intfName.size(), key0, key1);
    if (!addShortConfig(__builtin_bswap64(key0), __builtin_bswap64(key1 & ~std::uint64_t{0xFF}),
                        intfName.size(), number))
      return {LineKind::kAssertionFailed, "!!lagDevice"};
    return {LineKind::kConfig};
  }
  if (!toConfigLag(number)) return {LineKind::kAssertionFailed, "!!lagDevice"};
  configLag_->lagMemberConfigIs(Mox::String(intfName.data(), intfName.size()), true);
  lastConfigKnown_ = false;
  return {LineKind::kConfig};
}

bool LagListingParser::addShortConfig(std::uint64_t first, std::uint64_t rest, std::size_t length,
                                      int number) {
  if (!toConfigLag(number)) return false;
  const Mox::String::Bytes name{first, rest, length};
  // The order of the name, against the last config member's when it is
  // known: the driver lists them in order, so the new one goes at the end
  // without a comparison of the stored names.
  const std::uint64_t key0 = __builtin_bswap64(first);
  const std::uint64_t key1 = __builtin_bswap64(rest) | length;
  if (lastConfigKnown_ &&
      (key0 > lastConfigKey0_ || (key0 == lastConfigKey0_ && key1 > lastConfigKey1_))) {
    configLag_->lagMemberConfigAppend(name, true);
    lastConfigKey0_ = key0;
    lastConfigKey1_ = key1;
    return true;
  }
  configLag_->lagMemberConfigIs(Mox::String(name), true);
  lastConfigKnown_ = false;
  return true;
}

LagDevice* LagListingParser::storedLag(int number) {
  if (nextStored_ < stored_.size() && stored_[nextStored_].first == number)
    return stored_[nextStored_++].second;
  return table_.lagDeviceInPlace(lagName(number));
}

std::size_t LagListingParser::usualConfigLine(std::string_view chunk) {
  // A line that starts with 'p' may be a LAG line: the exact reading tells.
  if (chunk.empty() || chunk[0] == 'p') return 0;
  std::string_view intfName;
  int sysPort = 0;
  int number = 0;
  std::size_t end = 0;
  // The usual name, of up to 15 characters: taken as two numbers, which give
  // both the stored name and its order.
  std::uint64_t first = 0, rest = 0;
  std::size_t nameLength = 0;
  if (scanShortConfigLine(chunk, first, rest, nameLength, number, end) && end != chunk.size() &&
      chunk[end] == '\n') {
    if (!addShortConfig(first, rest, nameLength, number))
      failure_ = {LineKind::kAssertionFailed, "!!lagDevice"};
    return end + 1;
  }
  // Nothing before `end` is a newline (the name stops at white space, the
  // rest is text and digits): when one follows, the line is [0, end), not
  // empty, no header (it has a blank) and no LAG line.
  if (!scanPlainConfigLine(chunk, intfName, sysPort, number, end) || end == chunk.size() ||
      chunk[end] != '\n')
    return 0;
  if (LineOutcome outcome = addConfig(intfName, number); outcome.failed()) failure_ = outcome;
  return end + 1;
}

LineOutcome LagListingParser::feed(std::string_view chunk) {
  while (!failure_.failed()) {
    // Config lines come by the thousand: the usual ones are read whole from
    // the piece. The section stays open after them.
    if (inSection_ && partial_.empty()) {
      if (std::size_t used = usualConfigLine(chunk); used != 0) {
        chunk.remove_prefix(used);
        continue;
      }
    }
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
