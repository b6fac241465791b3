// Mox::Value: one value of generic attribute access and generic construction.
//
// A small variant of what attributes hold: nothing, a bool, an integer (any
// integral or enumeration type, kept as 64 bits), a floating-point number, a
// String, a Name or a pointer to a shared object. Reading one back with
// `as<T>()` checks the kind (and, for pointers, the object's dynamic type) and
// answers nullopt on a mismatch, so the caller decides what a mismatch means.
#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <variant>

#include "Mox/Name.h"
#include "Mox/Ptr.h"
#include "Mox/String.h"

namespace Mox {

class Value {
 public:
  enum class Kind : U8 { empty, boolean, integer, floating, string, name, ptr };

  Value() noexcept = default;
  Value(bool v) : rep_(v) {}  // NOLINT(google-explicit-constructor): values convert freely
  template <typename T>
  requires((std::integral<T> && !std::same_as<T, bool>) || std::is_enum_v<T>) Value(T v)
      : rep_(static_cast<std::int64_t>(v)) {}  // NOLINT(google-explicit-constructor)
  Value(double v) : rep_(v) {}                 // NOLINT(google-explicit-constructor)
  Value(String v) : rep_(std::move(v)) {}      // NOLINT(google-explicit-constructor)
  Value(const char* v) : rep_(String(v)) {}    // NOLINT(google-explicit-constructor)
  Value(Name v) : rep_(std::move(v)) {}        // NOLINT(google-explicit-constructor)
  // A pointer to a constant object is held like any other; `as` gives back
  // the constness the reader asks for.
  template <typename T>
  Value(const Ptr<T>& p)  // NOLINT(google-explicit-constructor)
      : rep_(Ptr<PtrInterface>(
            const_cast<PtrInterface*>(static_cast<const PtrInterface*>(p.get())))) {}

  Kind kind() const noexcept { return static_cast<Kind>(rep_.index()); }

  // The value as T, or nullopt when it holds another kind. T is bool, an
  // integral or enumeration type, float or double, String, Name, or `Ptr<U>`
  // (a null pointer reads as any `Ptr<U>`; a non-null one must be a U).
  template <typename T>
  std::optional<T> as() const {
    if constexpr (std::same_as<T, bool>) {
      return pick<bool, T>();
    } else if constexpr (std::integral<T> || std::is_enum_v<T>) {
      return pick<std::int64_t, T>();
    } else if constexpr (std::floating_point<T>) {
      return pick<double, T>();
    } else if constexpr (std::same_as<T, String> || std::same_as<T, Name>) {
      return pick<T, T>();
    } else {
      using U = typename T::element_type;
      const Ptr<PtrInterface>* p = std::get_if<Ptr<PtrInterface>>(&rep_);
      if (!p) return std::nullopt;
      if (!*p) return T();
      U* u = dynamic_cast<U*>(p->get());
      if (!u) return std::nullopt;
      return T(u);
    }
  }

  bool operator==(const Value& o) const { return rep_ == o.rep_; }

 private:
  template <typename Held, typename T>
  std::optional<T> pick() const {
    const Held* h = std::get_if<Held>(&rep_);
    if (!h) return std::nullopt;
    return static_cast<T>(*h);
  }

  std::variant<std::monostate, bool, std::int64_t, double, String, Name, Ptr<PtrInterface>> rep_;
};

}  // namespace Mox
