// Wirl::IpGenAddr: an IPv4 or IPv6 address, or the empty address.
//
//   Wirl::IpGenAddr none;                           // empty()
//   auto a = Wirl::IpGenAddr::ipv4(10, 0, 0, 1);    // a.family() == Family::ipv4
#pragma once

#include <array>

#include "Mox/Types.h"

namespace Wirl {

class IpGenAddr {
 public:
  enum class Family : U8 { none, ipv4, ipv6 };

  // The empty address.
  constexpr IpGenAddr() noexcept = default;
  static constexpr IpGenAddr ipv4(U8 a, U8 b, U8 c, U8 d) noexcept {
    IpGenAddr r;
    r.family_ = Family::ipv4;
    r.bytes_ = {a, b, c, d};
    return r;
  }
  static constexpr IpGenAddr ipv6(const std::array<U8, 16>& bytes) noexcept {
    IpGenAddr r;
    r.family_ = Family::ipv6;
    r.bytes_ = bytes;
    return r;
  }

  constexpr Family family() const noexcept { return family_; }
  constexpr bool empty() const noexcept { return family_ == Family::none; }
  // The address bytes in network order: 4 for IPv4, 16 for IPv6.
  constexpr const std::array<U8, 16>& bytes() const noexcept { return bytes_; }
  constexpr bool operator==(const IpGenAddr&) const noexcept = default;

 private:
  Family family_ = Family::none;
  std::array<U8, 16> bytes_{};
};

}  // namespace Wirl
