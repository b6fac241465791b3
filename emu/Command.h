// Parsing of one driver command line, apart from what the driver does with it
// so that it can be tested and fuzzed on arbitrary buffers.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace Emu {

// A command split at single blanks. Empty tokens are kept: "ifadd a 1 2 "
// has an empty last argument, as the driver sees it.
struct Command {
  static constexpr unsigned kMaxArgs = 16;
  std::string_view keyword;
  std::array<std::string_view, kMaxArgs> args{};
  unsigned argc = 0;
  // The whole text, up to its NUL.
  std::string_view text;
};

// Parses the NUL-terminated text in `buf` of capacity `size`. False when there
// is no NUL within `size`, the keyword is empty, or there are more than
// kMaxArgs arguments. Never reads past `size` bytes.
bool parseCommand(const char* buf, std::size_t size, Command& out) noexcept;

// Decimal and octal/hex conversions of an argument; false unless the whole
// token is a number that fits.
bool parseUnsigned(std::string_view token, unsigned long long& out, int base = 10) noexcept;
bool parseSigned(std::string_view token, long long& out) noexcept;

}  // namespace Emu
