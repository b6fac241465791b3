#include "support/AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {
thread_local std::size_t tAllocations = 0;

void* counted(std::size_t n) {
  ++tAllocations;
  if (void* p = std::malloc(n ? n : 1)) return p;
  throw std::bad_alloc();
}
}  // namespace

namespace VornTest {
std::size_t allocationsOfThisThread() noexcept { return tAllocations; }
}  // namespace VornTest

void* operator new(std::size_t n) { return counted(n); }
void* operator new[](std::size_t n) { return counted(n); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
