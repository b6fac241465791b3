// Register-access types: Regpath::FapId, the FAP number a register path
// carries (0 to 127, null 128), and Regpath::Fapmask, a set of them kept as
// four 32-bit words (bit n of word n / 32 is FAP n).
//
//   Regpath::Fapmask mask;
//   mask.fapIdIs(Regpath::FapId(5), true);
//   for (auto id = mask.nextFapId(); !id.isNull(); id = mask.nextFapId(id)) ...
#pragma once

#include <array>
#include <ostream>

#include "HardwareVorn/BoundedId.h"
#include "Mox/Types.h"

namespace Regpath {

// Same range text as the chip library's FapId: the two are the same number
// in different widths.
class FapId : public Hardware::Vorn::BoundedId<FapId, U16, 128> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "FapId::value < FapId::min or > FapId::null not allowed";
};

class Fapmask {
 public:
  static constexpr unsigned kWords = 4;

  // The empty set.
  constexpr Fapmask() noexcept = default;
  constexpr Fapmask(U32 w0, U32 w1, U32 w2, U32 w3) noexcept : words_{w0, w1, w2, w3} {}

  constexpr U32 word(unsigned i) const noexcept { return words_[i]; }
  constexpr bool empty() const noexcept {
    return (words_[0] | words_[1] | words_[2] | words_[3]) == 0;
  }
  // Whether `id` is in the set; the null id never is.
  constexpr bool fapId(FapId id) const noexcept {
    return !id.isNull() && ((words_[id.value() / 32] >> (id.value() % 32)) & 1u);
  }
  // Adds (`member` true) or removes `id`. The null id has no bit: setting it
  // changes nothing.
  constexpr void fapIdIs(FapId id, bool member) noexcept {
    if (id.isNull()) return;
    const U32 bit = 1u << (id.value() % 32);
    U32& w = words_[id.value() / 32];
    w = member ? (w | bit) : (w & ~bit);
  }
  // The smallest id in the set, or null when it is empty.
  FapId nextFapId() const noexcept { return firstFrom(0); }
  // The smallest id in the set above `prev`, or null when there is none.
  FapId nextFapId(FapId prev) const noexcept {
    return prev.isNull() ? FapId() : firstFrom(prev.value() + 1u);
  }

  constexpr bool operator==(const Fapmask&) const noexcept = default;

 private:
  FapId firstFrom(unsigned start) const noexcept;
  std::array<U32, kWords> words_{};
};

// "0x00000000:00000000:00000000:00000022", most significant word first.
std::ostream& operator<<(std::ostream& os, const Fapmask& mask);

}  // namespace Regpath
