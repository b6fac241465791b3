// The shape every identifier value type of the chip type library shares: a
// small unsigned number with a minimum and a null value. Constructing a value
// below the minimum or above null throws the framework's range exception with
// the type's fixed text ("FapId::value < FapId::min or > FapId::null not
// allowed").
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <ostream>

#include "Mox/RangeException.h"

namespace Hardware::Vorn {

template <typename Derived, typename Rep, std::uint64_t Null, std::uint64_t Min = 0>
class BoundedId {
 public:
  using ValueType = Rep;

  static constexpr Rep null() noexcept { return static_cast<Rep>(Null); }
  static constexpr Rep min() noexcept { return static_cast<Rep>(Min); }

  // The null value.
  constexpr BoundedId() noexcept : value_(static_cast<Rep>(Null)) {}
  // `value`, checked against [min, null].
  constexpr explicit BoundedId(Rep value) : value_(value) {
    if constexpr (Min > 0) {
      if (value < static_cast<Rep>(Min)) Mox::throwRangeException(Derived::kRangeText);
    }
    if (value > static_cast<Rep>(Null)) Mox::throwRangeException(Derived::kRangeText);
  }

  constexpr Rep value() const noexcept { return value_; }
  constexpr bool isNull() const noexcept { return value_ == static_cast<Rep>(Null); }

  friend constexpr bool operator==(const Derived& a, const Derived& b) noexcept {
    return a.value_ == b.value_;
  }
  friend constexpr auto operator<=>(const Derived& a, const Derived& b) noexcept {
    return a.value_ <=> b.value_;
  }
  friend std::ostream& operator<<(std::ostream& os, const Derived& v) {
    return os << static_cast<std::uint64_t>(v.value_);
  }

 private:
  Rep value_;
};

}  // namespace Hardware::Vorn

// Hash for every bounded identifier.
template <typename T>
  requires requires(const T& t) {
    typename T::ValueType;
    { t.value() } -> std::same_as<typename T::ValueType>;
    T::null();
  }
struct std::hash<T> {
  std::size_t operator()(const T& v) const noexcept { return std::hash<std::uint64_t>()(v.value()); }
};
