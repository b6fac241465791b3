// Counts the heap allocations of the calling thread (AllocationCounter.cpp
// replaces the global operator new).
#pragma once

#include <cstddef>

namespace VornTest {

std::size_t allocationsOfThisThread() noexcept;

class AllocationScope {
 public:
  AllocationScope() noexcept : start_(allocationsOfThisThread()) {}
  std::size_t count() const noexcept { return allocationsOfThisThread() - start_; }

 private:
  std::size_t start_;
};

}  // namespace VornTest
