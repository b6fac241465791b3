// Wirl::EthAddr: a 48-bit MAC address, bytes 0..5 in transmission order.
//
// stringValue() is the form the driver accepts ("02:00:00:aa:bb:cc");
// displayString() the form people read in traces ("0200.00aa.bbcc").
#pragma once

#include <array>
#include <cstdint>
#include <ostream>

#include "Mox/String.h"

namespace Wirl {

class EthAddr {
 public:
  constexpr EthAddr() noexcept = default;
  constexpr EthAddr(std::uint8_t b0, std::uint8_t b1, std::uint8_t b2, std::uint8_t b3,
                    std::uint8_t b4, std::uint8_t b5) noexcept
      : bytes_{b0, b1, b2, b3, b4, b5} {}
  // Parses "xx:xx:xx:xx:xx:xx" (or with '-' or '.' between groups); returns
  // false and leaves `out` alone when the text is not one.
  static bool parse(const char* text, EthAddr& out) noexcept;

  constexpr std::uint8_t byte(unsigned i) const noexcept { return bytes_[i]; }
  constexpr void byteIs(unsigned i, std::uint8_t v) noexcept { bytes_[i] = v; }
  Mox::String stringValue() const;
  Mox::String displayString() const;

  constexpr bool operator==(const EthAddr&) const noexcept = default;

 private:
  std::array<std::uint8_t, 6> bytes_{};
};

// An address with a mask (both EthAddr).
class EthAddrWithMask {
 public:
  constexpr EthAddrWithMask() noexcept = default;
  constexpr EthAddrWithMask(EthAddr addr, EthAddr mask) noexcept : addr_(addr), mask_(mask) {}
  constexpr const EthAddr& addr() const noexcept { return addr_; }
  constexpr const EthAddr& mask() const noexcept { return mask_; }
  constexpr bool operator==(const EthAddrWithMask&) const noexcept = default;

 private:
  EthAddr addr_;
  EthAddr mask_;
};

std::ostream& operator<<(std::ostream& os, const EthAddr& a);

}  // namespace Wirl
