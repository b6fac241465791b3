// Counts the heap allocations of the calling thread. The test program that
// links tests/support/AllocationCounter.cpp replaces the global operator new.
#pragma once

#include <cstddef>

namespace VornTest {

// Allocations made by this thread since it started.
std::size_t allocationsOfThisThread() noexcept;

// Counts the allocations of this thread during its lifetime.
class AllocationScope {
 public:
  AllocationScope() noexcept : start_(allocationsOfThisThread()) {}
  std::size_t count() const noexcept { return allocationsOfThisThread() - start_; }

 private:
  std::size_t start_;
};

}  // namespace VornTest
