#include "Wirl/EthAddr.h"

#include <cctype>
#include <cstdio>

namespace Wirl {
namespace {

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

bool EthAddr::parse(const char* text, EthAddr& out) noexcept {
  if (!text) return false;
  EthAddr a;
  const char* p = text;
  for (unsigned i = 0; i < 6; ++i) {
    int hi = hexValue(p[0]);
    int lo = hi < 0 ? -1 : hexValue(p[1]);
    if (hi < 0 || lo < 0) return false;
    a.bytes_[i] = static_cast<std::uint8_t>(hi * 16 + lo);
    p += 2;
    if (i < 5) {
      if (*p != ':' && *p != '-' && *p != '.') return false;
      ++p;
    }
  }
  if (*p != '\0') return false;
  out = a;
  return true;
}

Mox::String EthAddr::stringValue() const {
  return Mox::format("%02x:%02x:%02x:%02x:%02x:%02x", bytes_[0], bytes_[1], bytes_[2], bytes_[3],
                     bytes_[4], bytes_[5]);
}

Mox::String EthAddr::displayString() const {
  return Mox::format("%02x%02x.%02x%02x.%02x%02x", bytes_[0], bytes_[1], bytes_[2], bytes_[3],
                     bytes_[4], bytes_[5]);
}

std::ostream& operator<<(std::ostream& os, const EthAddr& a) { return os << a.stringValue(); }

}  // namespace Wirl
