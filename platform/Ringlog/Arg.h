// Ringlog's message arguments: what a caller's value becomes in a record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "Mox/String.h"

namespace Ringlog {

using MsgId = std::uint32_t;

// One argument of a message. Strings are referenced, not copied: a file
// copies what it keeps before `write` returns.
struct Arg {
  enum Kind : std::uint8_t { kInt, kUint, kStr, kDouble };
  Kind kind;
  union {
    std::int64_t i;
    std::uint64_t u;
    double d;
  };
  const char* s;
  std::uint32_t len;
};

inline Arg arg(const char* s) {
  Arg a{};
  a.kind = Arg::kStr;
  a.s = s ? s : "(null)";
  a.len = static_cast<std::uint32_t>(std::char_traits<char>::length(a.s));
  return a;
}
inline Arg arg(const Mox::String& s) {
  Arg a{};
  a.kind = Arg::kStr;
  a.s = s.charPtr();
  a.len = static_cast<std::uint32_t>(s.bytes());
  return a;
}
inline Arg arg(std::string_view s) {
  Arg a{};
  a.kind = Arg::kStr;
  a.s = s.data();
  a.len = static_cast<std::uint32_t>(s.size());
  return a;
}
inline Arg arg(double v) {
  Arg a{};
  a.kind = Arg::kDouble;
  a.d = v;
  return a;
}
template <typename T, typename = std::enable_if_t<std::is_integral_v<T> || std::is_enum_v<T>>>
inline Arg arg(T v) {
  Arg a{};
  if constexpr (std::is_enum_v<T>) {
    a.kind = Arg::kInt;
    a.i = static_cast<std::int64_t>(v);
  } else if constexpr (std::is_signed_v<T>) {
    a.kind = Arg::kInt;
    a.i = v;
  } else {
    a.kind = Arg::kUint;
    a.u = v;
  }
  return a;
}

// Where an open block's message went, so that its file can close it.
struct BlockMark {
  std::uint64_t sequence;
  std::uint64_t start;  // the file's clock when the block opened
  void* record;         // null: nothing to close
  MsgId id;
};

}  // namespace Ringlog
