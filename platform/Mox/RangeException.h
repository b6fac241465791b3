// The framework's range exception: an identifier constructed outside its
// range. Its text is fixed per type and names the bounds
// ("FapId::value < FapId::min or > FapId::null not allowed").
#pragma once

#include <stdexcept>

namespace Mox {

class RangeException : public std::range_error {
 public:
  explicit RangeException(const char* text) : std::range_error(text) {}
};

// Throws RangeException with `text`.
[[noreturn]] void throwRangeException(const char* text);

}  // namespace Mox
