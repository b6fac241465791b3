// Mox::String: the framework's immutable text value.
//
// A String is 16 bytes. Text of up to 15 characters lives inside the object
// (driver names such as "et1024_15" and interface names such as
// "Ethernet1024/15" fit), so building, copying and dropping one allocates
// nothing. Longer text lives in one reference-counted buffer (atomic counts)
// that copies share, so passing any name by value stays cheap. The empty
// string is inline and never allocates.
//
// Layout: the last byte tells the two apart. Inline, it holds 15 minus the
// length, so a 15-character text ends in the NUL it needs; the bytes past the
// text are zero, so two inline strings are equal exactly when their bytes
// are. On the heap it holds kHeapTag and the first bytes hold the buffer's
// address. A heap string is always longer than 15 characters.
//
// charPtr() points into the object for inline text: it stays valid while the
// String it came from lives and is not assigned to or moved from.
#pragma once

#include <atomic>
#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Mox {

class String {
 public:
  // The empty string.
  String() noexcept { clear(); }
  // Copies `text` (NUL-terminated; null is the empty string).
  String(const char* text)  // NOLINT(google-explicit-constructor): names are literals
      : String(text, text ? std::strlen(text) : 0) {}
  // Copies `len` bytes of `text`.
  String(const char* text, std::size_t len) {
    if (len > kInlineMax) {
      setRep(Rep::make(text, len));
      return;
    }
    setInline(text, len);
  }
  explicit String(std::string_view text) : String(text.data(), text.size()) {}
  explicit String(const std::string& text) : String(text.data(), text.size()) {}

  // A text of up to kShortMax bytes given as numbers: byte i is bits 8i to
  // 8i + 7 of `first` for i below 8, of `rest` for the others; the bits past
  // the text are zero. For a caller that has the bytes in registers already:
  // building the String reads nothing and allocates nothing.
  static constexpr std::size_t kShortMax = 15;
  struct Bytes {
    std::uint64_t first = 0;
    std::uint64_t rest = 0;
    std::size_t length = 0;
  };
  explicit String(const Bytes& text) noexcept {
    if constexpr (std::endian::native == std::endian::little) {
      setWords(text.first,
               text.rest | tagWord(static_cast<unsigned char>(kInlineMax - text.length)));
    } else {
      std::memset(buf_, 0, kSize);
      for (std::size_t i = 0; i < text.length; ++i)
        buf_[i] =
            static_cast<char>((i < 8 ? text.first >> (8 * i) : text.rest >> (8 * (i - 8))) & 0xFF);
      buf_[kTag] = static_cast<char>(kInlineMax - text.length);
    }
  }

  String(const String& other) noexcept {
    std::memcpy(buf_, other.buf_, kSize);
    if (onHeap()) rep()->refs.fetch_add(1, std::memory_order_relaxed);
  }
  String(String&& other) noexcept {
    std::memcpy(buf_, other.buf_, kSize);
    other.clear();
  }
  String& operator=(const String& other) noexcept {
    if (this != &other) {
      if (other.onHeap()) other.rep()->refs.fetch_add(1, std::memory_order_relaxed);
      release();
      std::memcpy(buf_, other.buf_, kSize);
    }
    return *this;
  }
  String& operator=(String&& other) noexcept {
    if (this != &other) {
      release();
      std::memcpy(buf_, other.buf_, kSize);
      other.clear();
    }
    return *this;
  }
  ~String() { release(); }

  // The characters, always NUL-terminated; "" for the empty string.
  const char* charPtr() const noexcept { return onHeap() ? rep()->data : buf_; }
  // Length in bytes, without the terminating NUL.
  std::size_t bytes() const noexcept {
    return onHeap() ? rep()->len : kInlineMax - static_cast<unsigned char>(buf_[kTag]);
  }
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

  bool operator==(const String& other) const noexcept {
    // Different tags: different lengths, or one inline and one not (which
    // differ in length too).
    if (buf_[kTag] != other.buf_[kTag]) return false;
    if (!onHeap()) return std::memcmp(buf_, other.buf_, kSize) == 0;
    return rep() == other.rep() || view() == other.view();
  }
  bool operator==(const char* other) const noexcept {
    return other ? view() == std::string_view(other) : empty();
  }
  std::strong_ordering operator<=>(const String& other) const noexcept {
    if (onHeap() || other.onHeap()) return view() <=> other.view();
    // Two inline texts: their zero-padded bytes in order, as two big-endian
    // words, then the length (which tells "ab" from "ab\0").
    if (auto c = word(0) <=> other.word(0); c != 0) return c;
    if (auto c = (word(8) >> 8) <=> (other.word(8) >> 8); c != 0) return c;
    return bytes() <=> other.bytes();
  }

  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

 private:
  static constexpr std::size_t kSize = 16;
  static constexpr std::size_t kTag = kSize - 1;
  static constexpr std::size_t kInlineMax = kSize - 1;
  static constexpr unsigned char kHeapTag = 0xFF;

  // The shared buffer of a long text.
  struct Rep {
    std::atomic<int> refs;
    std::size_t len;
    char data[1];

    // A buffer holding `len` bytes of `text` and a NUL, one reference.
    static Rep* make(const char* text, std::size_t len);
    // Drops one reference; the last one frees the buffer.
    static void unref(Rep* r) noexcept;
  };

  bool onHeap() const noexcept { return static_cast<unsigned char>(buf_[kTag]) == kHeapTag; }
  Rep* rep() const noexcept {
    Rep* r;
    std::memcpy(&r, buf_, sizeof r);
    return r;
  }
  // The object is written whole, as one 16-byte store where the machine has
  // one: the comparisons and copies that follow read it in words, and a word
  // read of bytes that several narrower stores wrote waits for them to reach
  // the cache. `lo` holds bytes 0-7 and `hi` bytes 8-15, first byte lowest.
  void setWords(std::uint64_t lo, std::uint64_t hi) noexcept {
    using Words = std::uint64_t __attribute__((vector_size(16)));
    const Words words = {lo, hi};
    std::memcpy(buf_, &words, kSize);
  }
  static constexpr std::uint64_t tagWord(unsigned char tag) noexcept {
    return static_cast<std::uint64_t>(tag) << 56;
  }
  static std::uint64_t load(const char* p, std::size_t n) noexcept {
    if (n == 8) {
      std::uint64_t w;
      std::memcpy(&w, p, sizeof w);
      return w;
    }
    std::uint32_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
  }
  // Inline text: `len` (at most 15) bytes of `text`, built in registers from
  // loads that stay inside the text (two that overlap, whose common bytes
  // agree).
  void setInline(const char* text, std::size_t len) noexcept {
    if constexpr (std::endian::native == std::endian::little) {
      std::uint64_t lo = 0, hi = 0;
      if (len >= 8) {
        lo = load(text, 8);
        // Bytes 8 to len - 1, from the last eight of the text.
        if (len > 8) hi = load(text + len - 8, 8) >> (8 * (16 - len));
      } else if (len >= 4) {
        lo = load(text, 4) | load(text + len - 4, 4) << (8 * (len - 4));
      } else if (len > 0) {
        auto byte = [text](std::size_t i) {
          return static_cast<std::uint64_t>(static_cast<unsigned char>(text[i])) << (8 * i);
        };
        lo = byte(0) | byte(len / 2) | byte(len - 1);
      }
      setWords(lo, hi | tagWord(static_cast<unsigned char>(kInlineMax - len)));
    } else {
      std::memset(buf_, 0, kSize);
      if (len) std::memcpy(buf_, text, len);
      buf_[kTag] = static_cast<char>(kInlineMax - len);
    }
  }
  void setRep(Rep* r) noexcept {
    if constexpr (std::endian::native == std::endian::little) {
      setWords(reinterpret_cast<std::uintptr_t>(r), tagWord(kHeapTag));
    } else {
      std::memset(buf_, 0, kSize);
      std::memcpy(buf_, &r, sizeof r);
      buf_[kTag] = static_cast<char>(kHeapTag);
    }
  }
  // Makes this the empty string, without releasing what it held.
  void clear() noexcept {
    if constexpr (std::endian::native == std::endian::little) {
      setWords(0, tagWord(kInlineMax));
    } else {
      std::memset(buf_, 0, kSize);
      buf_[kTag] = static_cast<char>(kInlineMax);
    }
  }
  // Bytes [at, at + 8) as a big-endian number: compares as the bytes do.
  std::uint64_t word(std::size_t at) const noexcept {
    std::uint64_t w;
    std::memcpy(&w, buf_ + at, sizeof w);
    if constexpr (std::endian::native == std::endian::little) w = __builtin_bswap64(w);
    return w;
  }
  void release() noexcept {
    if (onHeap()) Rep::unref(rep());
  }

  alignas(Rep*) char buf_[kSize];
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
