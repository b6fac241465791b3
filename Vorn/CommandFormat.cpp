#include "Vorn/CommandFormat.h"

#include <cstdio>
#include <cstring>

namespace Hardware::Vorn::dma {
namespace {

// Writes into the buffer while there is room, and counts every byte, as
// snprintf's result does.
struct Out {
  char* buf;
  std::size_t cap;  // bytes that may hold text (size - 1)
  std::size_t len = 0;

  void put(char c) {
    if (len < cap) buf[len] = c;
    ++len;
  }
  void put(const char* s, std::size_t n) {
    if (len < cap) std::memcpy(buf + len, s, n < cap - len ? n : cap - len);
    len += n;
  }
  void pad(char c, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) put(c);
  }
};

// The digits of `v` in `base`, most significant first, into the end of `tmp`.
char* digits(unsigned long long v, unsigned base, bool upper, char* end) {
  const char* set = upper ? "0123456789ABCDEF" : "0123456789abcdef";
  char* p = end;
  do {
    *--p = set[v % base];
    v /= base;
  } while (v);
  return p;
}

}  // namespace

int formatCommandV(char* buf, std::size_t size, const char* fmt, va_list ap) {
  va_list original;
  va_copy(original, ap);
  Out out{buf, size ? size - 1 : 0};
  for (const char* p = fmt; *p; ++p) {
    if (*p != '%') {
      out.put(*p);  // literal runs in commands are a few characters
      continue;
    }
    ++p;  // past the percent sign
    if (*p == '%') {
      out.put('%');
      continue;
    }
    bool zero = false, left = false;
    for (;; ++p) {
      if (*p == '0') zero = true;
      else if (*p == '-') left = true;
      else break;
    }
    std::size_t width = 0;
    while (*p >= '0' && *p <= '9') width = width * 10 + static_cast<std::size_t>(*p++ - '0');
    int length = 0;  // -2 hh, -1 h, 0 int, 1 l, 2 ll
    if (*p == 'h') {
      length = -1;
      if (*++p == 'h') {
        length = -2;
        ++p;
      }
    } else if (*p == 'l') {
      length = 1;
      if (*++p == 'l') {
        length = 2;
        ++p;
      }
    }
    char conv = *p;
    bool ours;
    switch (conv) {
      case 's':
      case 'c':
        ours = length == 0;
        break;
      case 'i':
      case 'd':
      case 'u':
      case 'o':
      case 'x':
      case 'X':
        ours = true;
        break;
      default:
        ours = false;
    }
    if (!ours) {
      // Not one of ours (precision, '+', '#', floating point...): the C
      // library formats the whole text.
      int n = std::vsnprintf(buf, size, fmt, original);
      va_end(original);
      return n;
    }
    char tmp[32];
    const char* text;
    std::size_t n;
    bool negative = false;
    if (conv == 's') {
      text = va_arg(ap, const char*);
      if (!text) text = "(null)";
      n = std::strlen(text);
      zero = false;
    } else if (conv == 'c') {
      tmp[0] = static_cast<char>(va_arg(ap, int));
      text = tmp;
      n = 1;
      zero = false;
    } else if (conv == 'd' || conv == 'i') {
      long long v;
      if (length == 2) v = va_arg(ap, long long);
      else if (length == 1) v = va_arg(ap, long);
      else v = va_arg(ap, int);
      if (length == -1) v = static_cast<short>(v);
      if (length == -2) v = static_cast<signed char>(v);
      negative = v < 0;
      unsigned long long mag = negative ? 0ull - static_cast<unsigned long long>(v)
                                        : static_cast<unsigned long long>(v);
      text = digits(mag, 10, false, tmp + sizeof tmp);
      n = static_cast<std::size_t>(tmp + sizeof tmp - text);
    } else {
      unsigned long long v;
      if (length == 2) v = va_arg(ap, unsigned long long);
      else if (length == 1) v = va_arg(ap, unsigned long);
      else v = va_arg(ap, unsigned int);
      if (length == -1) v = static_cast<unsigned short>(v);
      if (length == -2) v = static_cast<unsigned char>(v);
      unsigned base = conv == 'u' ? 10 : conv == 'o' ? 8 : 16;
      text = digits(v, base, conv == 'X', tmp + sizeof tmp);
      n = static_cast<std::size_t>(tmp + sizeof tmp - text);
    }
    std::size_t shown = n + (negative ? 1 : 0);
    std::size_t fill = width > shown ? width - shown : 0;
    if (left) {
      if (negative) out.put('-');
      out.put(text, n);
      out.pad(' ', fill);
    } else if (zero) {
      if (negative) out.put('-');
      out.pad('0', fill);
      out.put(text, n);
    } else {
      out.pad(' ', fill);
      if (negative) out.put('-');
      out.put(text, n);
    }
  }
  va_end(original);
  if (size) buf[out.len < out.cap ? out.len : out.cap] = '\0';
  return static_cast<int>(out.len);
}

int formatCommand(char* buf, std::size_t size, const char* fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  int n = formatCommandV(buf, size, fmt, ap);
  va_end(ap);
  return n;
}

}  // namespace Hardware::Vorn::dma
