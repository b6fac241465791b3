// Mox::String: the framework's immutable text value.
//
// A String is shared, not copied: copies take a reference on one
// reference-counted buffer (atomic counts), so passing names by value costs
// an increment. The empty string owns no buffer and never allocates.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Mox {

class String {
 public:
  // The empty string.
  String() noexcept = default;
  // Copies `text` (NUL-terminated; null is the empty string).
  String(const char* text);  // NOLINT(google-explicit-constructor): names are literals
  // Copies `len` bytes of `text`.
  String(const char* text, std::size_t len);
  explicit String(std::string_view text) : String(text.data(), text.size()) {}
  explicit String(const std::string& text) : String(text.data(), text.size()) {}

  String(const String& other) noexcept;
  String(String&& other) noexcept : rep_(other.rep_) { other.rep_ = nullptr; }
  String& operator=(const String& other) noexcept;
  String& operator=(String&& other) noexcept;
  ~String();

  // The characters, always NUL-terminated; "" for the empty string.
  const char* charPtr() const noexcept;
  // Length in bytes, without the terminating NUL.
  std::size_t bytes() const noexcept;
  std::size_t size() const noexcept { return bytes(); }
  bool empty() const noexcept { return bytes() == 0; }
  std::string_view view() const noexcept { return {charPtr(), bytes()}; }
  std::string stdString() const { return std::string(view()); }

  // Up to `length` characters from `offset`; shorter when the string ends
  // first, empty when `offset` is past the end.
  String substr(std::size_t offset, std::size_t length = npos) const;
  // Position of the first occurrence of `needle` at or after `start`, or -1.
  int pos(const char* needle, std::size_t start = 0) const noexcept;
  int pos(char c, std::size_t start = 0) const noexcept;

  bool operator==(const String& other) const noexcept { return view() == other.view(); }
  bool operator==(const char* other) const noexcept {
    return other ? view() == std::string_view(other) : empty();
  }
  auto operator<=>(const String& other) const noexcept { return view() <=> other.view(); }

  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

 private:
  struct Rep;
  Rep* rep_ = nullptr;
};

// printf-style construction of a String.
String format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

std::ostream& operator<<(std::ostream& os, const String& s);

}  // namespace Mox

template <>
struct std::hash<Mox::String> {
  std::size_t operator()(const Mox::String& s) const noexcept {
    return std::hash<std::string_view>()(s.view());
  }
};
