#include "Mox/String.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <ostream>

namespace Mox {

String::Rep* String::Rep::make(const char* text, std::size_t len) {
  void* mem = ::operator new(offsetof(Rep, data) + len + 1);
  Rep* r = new (mem) Rep;
  r->refs.store(1, std::memory_order_relaxed);
  r->len = len;
  std::memcpy(r->data, text, len);
  r->data[len] = '\0';
  return r;
}

void String::Rep::unref(Rep* r) noexcept {
  if (r->refs.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    r->~Rep();
    ::operator delete(r);
  }
}

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
