#include "emu/Command.h"

#include <charconv>
#include <cstring>

namespace Emu {

bool parseCommand(const char* buf, std::size_t size, Command& out) noexcept {
  out = Command{};
  if (!buf || size == 0) return false;
  const void* nul = std::memchr(buf, '\0', size);
  if (!nul) return false;
  std::string_view text(buf, static_cast<const char*>(nul) - buf);
  out.text = text;
  std::size_t start = 0;
  bool first = true;
  while (true) {
    std::size_t blank = text.find(' ', start);
    std::string_view token = text.substr(start, blank == std::string_view::npos ? std::string_view::npos
                                                                                 : blank - start);
    if (first) {
      if (token.empty()) return false;
      out.keyword = token;
      first = false;
    } else {
      if (out.argc == Command::kMaxArgs) return false;
      out.args[out.argc++] = token;
    }
    if (blank == std::string_view::npos) break;
    start = blank + 1;
  }
  return true;
}

bool parseUnsigned(std::string_view token, unsigned long long& out, int base) noexcept {
  if (token.empty()) return false;
  auto [end, ec] = std::from_chars(token.data(), token.data() + token.size(), out, base);
  return ec == std::errc() && end == token.data() + token.size();
}

bool parseSigned(std::string_view token, long long& out) noexcept {
  if (token.empty()) return false;
  auto [end, ec] = std::from_chars(token.data(), token.data() + token.size(), out, 10);
  return ec == std::errc() && end == token.data() + token.size();
}

}  // namespace Emu
