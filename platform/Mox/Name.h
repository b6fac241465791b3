// Mox::Name: the name of an entity in the framework's directory tree.
#pragma once

#include <ostream>

#include "Mox/String.h"

namespace Mox {

class Name {
 public:
  Name() = default;
  Name(const char* s) : s_(s) {}      // NOLINT(google-explicit-constructor)
  Name(const String& s) : s_(s) {}    // NOLINT(google-explicit-constructor)
  const String& stringValue() const noexcept { return s_; }
  const char* charPtr() const noexcept { return s_.charPtr(); }
  bool operator==(const Name& o) const noexcept { return s_ == o.s_; }
  bool operator==(const char* o) const noexcept { return s_ == o; }

 private:
  String s_;
};

inline std::ostream& operator<<(std::ostream& os, const Name& n) { return os << n.stringValue(); }

}  // namespace Mox
