// The driver commands' formatter, resolved at compile time.
//
// A command's format is a literal known where it is written, so its pieces
// (literal runs and conversions) are split by the compiler, every argument's
// type is checked against its conversion, and what runs is a straight line of
// bounded copies and digit writes: no format parsing, no va_list. The bytes
// and the result are those of snprintf(buf, size, format, ...) for the
// conversions the commands use: %s %c %d %i %u %o %x %X, each optionally with
// the h or hh length modifier, and %%. Flags, widths, precisions and other
// conversions are rejected at compile time; formatCommand serves them.
//
//   char buf[kCommandSize];
//   dma::command<"ifportupdate %s %d">(buf, ifname, sysPort);
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

namespace Hardware::Vorn::dma {

// A format as a template argument.
template <std::size_t N>
struct CommandFormatText {
  char chars[N] = {};
  // NOLINTNEXTLINE(google-explicit-constructor): formats are written as literals
  consteval CommandFormatText(const char (&text)[N]) {
    for (std::size_t i = 0; i < N; ++i) chars[i] = text[i];
  }
  static constexpr std::size_t length = N - 1;
};

namespace writer {

enum class Conv : unsigned char { kString, kChar, kSigned, kUnsigned, kOctal, kHex, kHexUpper };
// The argument's width before the conversion: int, short (h), char (hh).
enum class Width : unsigned char { kInt, kShort, kChar };

struct Conversion {
  Conv conv;
  Width width;
  std::size_t start;  // where the literal run after it begins
};

// A format's pieces: a literal run, then each conversion followed by the
// literal run after it. A run is [start, end) of the format, with "%%" kept
// as two characters and written as one.
template <std::size_t Convs>
struct Pieces {
  std::array<Conversion, Convs> conversions{};
  std::array<std::size_t, Convs + 1> runStart{};
  std::array<std::size_t, Convs + 1> runEnd{};
};

// Parses the conversion at `i` (just past the percent sign): what it is and
// where the literal run after it starts. Throws (a compile error, since it
// runs in a constant expression) on anything unsupported.
constexpr Conversion parseConversion(const char* f, std::size_t i) {
  Width width = Width::kInt;
  if (f[i] == 'h') {
    width = Width::kShort;
    if (f[++i] == 'h') {
      width = Width::kChar;
      ++i;
    }
  }
  struct Letter {
    char letter;
    Conv conv;
  };
  constexpr Letter kLetters[] = {{'s', Conv::kString}, {'c', Conv::kChar},     {'d', Conv::kSigned},
                                 {'i', Conv::kSigned}, {'u', Conv::kUnsigned}, {'o', Conv::kOctal},
                                 {'x', Conv::kHex},    {'X', Conv::kHexUpper}};
  const Letter* found = nullptr;
  for (const Letter& l : kLetters)
    if (l.letter == f[i]) found = &l;
  if (!found) throw "unsupported conversion in a command format";
  const Conv conv = found->conv;
  if ((conv == Conv::kString || conv == Conv::kChar) && width != Width::kInt)
    throw "length modifier on %s or %c";
  return {conv, width, i + 1};
}

template <CommandFormatText F>
consteval std::size_t conversionCount() {
  std::size_t n = 0;
  for (std::size_t i = 0; i < F.length; ++i) {
    if (F.chars[i] != '%') continue;
    if (F.chars[i + 1] == '%') {
      ++i;
      continue;
    }
    ++n;
  }
  return n;
}

template <CommandFormatText F>
consteval auto parse() {
  Pieces<conversionCount<F>()> p;
  std::size_t run = 0;
  for (std::size_t i = 0; i < F.length; ++i) {
    if (F.chars[i] != '%') continue;
    if (F.chars[i + 1] == '%') {
      ++i;
      continue;
    }
    p.runEnd[run] = i;
    Conversion c = parseConversion(F.chars, i + 1);
    p.conversions[run] = c;
    p.runStart[run + 1] = c.start;
    i = c.start - 1;
    ++run;
  }
  p.runEnd[run] = F.length;
  return p;
}

// The characters a literal run writes ("%%" is one).
constexpr std::size_t runLength(const char* f, std::size_t start, std::size_t end) {
  std::size_t n = 0;
  for (std::size_t i = start; i < end; ++i, ++n)
    if (f[i] == '%') ++i;
  return n;
}

template <CommandFormatText F, std::size_t Start, std::size_t End>
consteval auto runText() {
  std::array<char, runLength(F.chars, Start, End) + 1> text{};
  std::size_t n = 0;
  for (std::size_t i = Start; i < End; ++i) {
    text[n++] = F.chars[i];
    if (F.chars[i] == '%') ++i;
  }
  return text;
}

// The argument types a conversion takes, after the default promotions.
template <Conv C, typename T>
consteval bool accepts() {
  using U = std::remove_cvref_t<T>;
  if constexpr (C == Conv::kString) {
    return std::is_same_v<U, const char*> || std::is_same_v<U, char*>;
  } else if constexpr (std::is_same_v<U, bool> || !std::is_integral_v<U>) {
    return false;
  } else {
    using Promoted = decltype(+U{});
    return std::is_same_v<Promoted, int> || std::is_same_v<Promoted, unsigned>;
  }
}

// Writes into the buffer while there is room, and counts every byte, as
// snprintf's result does.
class Out {
 public:
  Out(char* buf, std::size_t size) noexcept : p_(buf), room_(size ? size - 1 : 0), size_(size) {}

  template <std::size_t N>
  void literal(const std::array<char, N>& text) noexcept {
    constexpr std::size_t n = N - 1;
    if constexpr (n > 0) {
      if (n <= room_) {
        std::memcpy(p_, text.data(), n);
        p_ += n;
        room_ -= n;
      } else {
        clipped(text.data(), n);
      }
      len_ += n;
    }
  }

  void string(const char* s) noexcept {
    if (!s) s = "(null)";
    // Copied through locals: a store through a char pointer may change any
    // member, so a loop on p_ and room_ themselves reloads and stores them
    // at every character (10 instructions a character instead of 5).
    char* const to = p_;
    const std::size_t room = room_;
    std::size_t n = 0;
    for (; n < room && s[n]; ++n) to[n] = s[n];
    p_ = to + n;
    room_ = room - n;
    while (s[n]) ++n;  // the part that did not fit still counts
    len_ += n;
  }

  void character(char c) noexcept {
    if (room_) {
      *p_++ = c;
      --room_;
    }
    ++len_;
  }

  // The digits of `v` in base `Base`, after a minus sign when `negative`.
  // Expanded where it is used: as a call, each number spilled and reloaded
  // the writer's state, and vornDmaVlanVsiAdd took 652 instructions instead
  // of 547 (bench/instructions.sh).
  template <unsigned Base, bool Upper = false>
  [[gnu::always_inline]] void number(unsigned v, bool negative = false) noexcept {
    std::size_t n = (negative ? 1 : 0) + length<Base>(v);
    if (n <= room_) {
      // Written in place, last digit first: no copy on the common path.
      char* const end = p_ + n;
      char* d = digits<Base, Upper>(v, end);
      if (negative) *--d = '-';
      p_ = end;
      room_ -= n;
    } else {
      char tmp[12];
      char* d = digits<Base, Upper>(v, tmp + sizeof tmp);
      if (negative) *--d = '-';
      clipped(d, static_cast<std::size_t>(tmp + sizeof tmp - d));  // n characters
    }
    len_ += n;
  }

  int finish() noexcept {
    if (size_) *p_ = '\0';
    return static_cast<int>(len_);
  }

 private:
  // How many digits `v` has in base `Base`, counted without a loop: numbers
  // of mixed lengths, one after another, would mispredict its end. A decimal
  // length is first guessed from the binary one (1233 / 4096 is just under
  // log10 of 2, so the guess is the length or one short) and then settled by
  // one compare.
  template <unsigned Base>
  static std::size_t length(unsigned v) noexcept {
    static_assert(sizeof(unsigned) == 4);
    const unsigned significant = 32u - static_cast<unsigned>(__builtin_clz(v | 1u));
    if constexpr (Base == 10) {
      static constexpr unsigned kPowers[] = {1u,      10u,      100u,      1000u,      10000u,
                                             100000u, 1000000u, 10000000u, 100000000u, 1000000000u};
      const unsigned guess = significant * 1233u >> 12;
      return guess + ((v | 1u) >= kPowers[guess] ? 1 : 0);
    } else {
      static_assert(Base == 8 || Base == 16);
      constexpr unsigned kBits = Base == 8 ? 3 : 4;
      return (significant + kBits - 1) / kBits;
    }
  }

  // "00" to "99", for writing decimal digits two at a time.
  static constexpr std::array<char, 200> kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (unsigned i = 0; i < 100; ++i) {
      pairs[2 * i] = static_cast<char>('0' + i / 10);
      pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
  }();

  // Writes the digits of `v` backwards from `end`; returns the first.
  template <unsigned Base, bool Upper>
  static char* digits(unsigned v, char* end) noexcept {
    if constexpr (Base == 10) {
      while (v >= 100) {
        const unsigned pair = v % 100;
        v /= 100;
        end -= 2;
        std::memcpy(end, &kDigitPairs[2 * pair], 2);
      }
      if (v >= 10) {
        end -= 2;
        std::memcpy(end, &kDigitPairs[2 * v], 2);
      } else {
        *--end = static_cast<char>('0' + v);
      }
    } else {
      do {
        unsigned digit = v % Base;
        *--end = static_cast<char>(digit < 10 ? '0' + digit : (Upper ? 'A' : 'a') + digit - 10);
        v /= Base;
      } while (v);
    }
    return end;
  }

  void clipped(const char* s, std::size_t n) noexcept {
    std::size_t k = n < room_ ? n : room_;
    std::memcpy(p_, s, k);
    p_ += k;
    room_ -= k;
  }

  char* p_;
  std::size_t room_;  // characters that still fit before the NUL
  std::size_t size_;
  std::size_t len_ = 0;
};

template <Conversion C, typename T>
inline void convert(Out& out, T v) noexcept {
  if constexpr (C.conv == Conv::kString) {
    out.string(v);
  } else if constexpr (C.conv == Conv::kChar) {
    out.character(static_cast<char>(static_cast<int>(v)));
  } else if constexpr (C.conv == Conv::kSigned) {
    int i = static_cast<int>(v);
    if constexpr (C.width == Width::kShort) i = static_cast<short>(i);
    if constexpr (C.width == Width::kChar) i = static_cast<signed char>(i);
    unsigned magnitude = i < 0 ? 0u - static_cast<unsigned>(i) : static_cast<unsigned>(i);
    out.number<10>(magnitude, i < 0);
  } else {
    auto u = static_cast<unsigned>(v);
    if constexpr (C.width == Width::kShort) u = static_cast<unsigned short>(u);
    if constexpr (C.width == Width::kChar) u = static_cast<unsigned char>(u);
    if constexpr (C.conv == Conv::kUnsigned) out.number<10>(u);
    if constexpr (C.conv == Conv::kOctal) out.number<8>(u);
    if constexpr (C.conv == Conv::kHex) out.number<16>(u);
    if constexpr (C.conv == Conv::kHexUpper) out.number<16, true>(u);
  }
}

template <CommandFormatText F, std::size_t... I, typename... A>
inline int write(char* buf, std::size_t size, std::index_sequence<I...>, A... args) noexcept {
  static constexpr auto pieces = parse<F>();
  static_assert((accepts<pieces.conversions[I].conv, A>() && ...),
                "an argument's type does not match its conversion");
  Out out(buf, size);
  static constexpr auto first = runText<F, pieces.runStart[0], pieces.runEnd[0]>();
  out.literal(first);
  ((convert<pieces.conversions[I]>(out, args),
    out.literal(runText<F, pieces.runStart[I + 1], pieces.runEnd[I + 1]>())),
   ...);
  return out.finish();
}

}  // namespace writer

// snprintf(buf, size, F, args...): the same bytes and result.
template <CommandFormatText F, typename... A>
inline int writeCommandInto(char* buf, std::size_t size, A... args) noexcept {
  static_assert(writer::conversionCount<F>() == sizeof...(A),
                "a command format's conversions and its arguments differ in number");
  return writer::write<F>(buf, size, std::index_sequence_for<A...>{}, args...);
}

// Formats a command into the whole of `buf`.
template <CommandFormatText F, std::size_t N, typename... A>
inline int command(char (&buf)[N], A... args) noexcept {
  return writeCommandInto<F>(buf, N, args...);
}

}  // namespace Hardware::Vorn::dma
