#include "Mox/String.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <ostream>

namespace Mox {

struct String::Rep {
  std::atomic<int> refs;
  std::size_t len;
  char data[1];

  static Rep* make(const char* text, std::size_t len) {
    void* mem = ::operator new(offsetof(Rep, data) + len + 1);
    Rep* r = new (mem) Rep;
    r->refs.store(1, std::memory_order_relaxed);
    r->len = len;
    if (len) std::memcpy(r->data, text, len);
    r->data[len] = '\0';
    return r;
  }
  static void ref(Rep* r) noexcept {
    if (r) r->refs.fetch_add(1, std::memory_order_relaxed);
  }
  static void unref(Rep* r) noexcept {
    if (r && r->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      r->~Rep();
      ::operator delete(r);
    }
  }
};

String::String(const char* text) : String(text, text ? std::strlen(text) : 0) {}

String::String(const char* text, std::size_t len) {
  if (len) rep_ = Rep::make(text, len);
}

String::String(const String& other) noexcept : rep_(other.rep_) { Rep::ref(rep_); }

String& String::operator=(const String& other) noexcept {
  Rep::ref(other.rep_);  // before the release: `a = a` stays valid
  Rep::unref(rep_);
  rep_ = other.rep_;
  return *this;
}

String& String::operator=(String&& other) noexcept {
  if (this != &other) {
    Rep::unref(rep_);
    rep_ = other.rep_;
    other.rep_ = nullptr;
  }
  return *this;
}

String::~String() { Rep::unref(rep_); }

const char* String::charPtr() const noexcept { return rep_ ? rep_->data : ""; }
std::size_t String::bytes() const noexcept { return rep_ ? rep_->len : 0; }

String String::substr(std::size_t offset, std::size_t length) const {
  std::size_t n = bytes();
  if (offset >= n) return String();
  std::size_t take = (length > n - offset) ? n - offset : length;
  if (offset == 0 && take == n) return *this;
  return String(charPtr() + offset, take);
}

int String::pos(const char* needle, std::size_t start) const noexcept {
  std::size_t at = view().find(needle ? needle : "", start);
  return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

int String::pos(char c, std::size_t start) const noexcept {
  std::size_t at = view().find(c, start);
  return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

String format(const char* fmt, ...) {
  char small[256];
  va_list ap;
  va_start(ap, fmt);
  int n = std::vsnprintf(small, sizeof small, fmt, ap);
  va_end(ap);
  if (n < 0) return String();
  if (static_cast<std::size_t>(n) < sizeof small) return String(small, static_cast<std::size_t>(n));
  std::string big(static_cast<std::size_t>(n) + 1, '\0');
  va_start(ap, fmt);
  std::vsnprintf(big.data(), big.size(), fmt, ap);
  va_end(ap);
  return String(big.data(), static_cast<std::size_t>(n));
}

std::ostream& operator<<(std::ostream& os, const String& s) { return os << s.view(); }

}  // namespace Mox
