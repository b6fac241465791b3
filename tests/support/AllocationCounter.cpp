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
std::size_t allocationsOfThisThread() noexcept {
  return tAllocations;
}
}  // namespace VornTest

void* operator new(std::size_t n) {
  return counted(n);
}
void* operator new[](std::size_t n) {
  return counted(n);
}
// The nothrow forms too (std::stable_sort's buffer): left to a sanitizer's
// runtime, they would hand the deletes above memory that free() must not take.
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
  ++tAllocations;
  return std::malloc(n ? n : 1);
}
void* operator new[](std::size_t n, const std::nothrow_t& t) noexcept {
  return operator new(n, t);
}
void operator delete(void* p) noexcept {
  std::free(p);
}
void operator delete[](void* p) noexcept {
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
  std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept {
  std::free(p);
}
