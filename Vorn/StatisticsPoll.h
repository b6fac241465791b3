// The statistics poll's mark, "devstats ", found in a command's text. The
// poll is the driver's most frequent request, and the ring trace leaves it
// out wherever the mark stands, so every traced command is searched: eight
// characters at a time, never past the text's end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Hardware::Vorn::dma {

// The bytes of `word` equal to `c`, each marked by its top bit. Exact: no
// byte is marked that differs from `c`.
constexpr std::uint64_t bytesEqual(std::uint64_t word, unsigned char c) noexcept {
  constexpr std::uint64_t kLow7 = 0x7f7f7f7f7f7f7f7full;
  const std::uint64_t x = word ^ (0x0101010101010101ull * c);
  return ~(((x & kLow7) + kLow7) | x | kLow7);
}

// True when "devstats " stands anywhere in the `length` characters at `text`.
inline bool isStatisticsPoll(const char* text, std::size_t length) noexcept {
  constexpr char kMark[] = "devstats ";
  constexpr std::size_t kMarkLength = sizeof kMark - 1;
  if (length < kMarkLength) return false;
  const std::size_t lastStart = length - kMarkLength;
  // Each block of eight holds candidate starts; a mark starting in it ends
  // within the text, so the block itself does too.
  for (std::size_t block = 0; block <= lastStart; block += 8) {
    std::uint64_t word;
    std::memcpy(&word, text + block, 8);
    static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "a byte's place is its bit / 8");
    for (std::uint64_t found = bytesEqual(word, 'd'); found; found &= found - 1) {
      const std::size_t start = block + static_cast<std::size_t>(__builtin_ctzll(found)) / 8;
      if (start > lastStart) break;
      if (std::memcmp(text + start, kMark, kMarkLength) == 0) return true;
    }
  }
  return false;
}

}  // namespace Hardware::Vorn::dma
