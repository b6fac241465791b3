// Reference-counted pointers of the framework.
//
// Objects that are shared between the library and its callers derive from
// PtrInterface, which carries an atomic reference count; Mox::Ptr<T> and
// Mox::Ptr<T const> hold one reference each. An object dies with its last
// reference.
#pragma once

#include <atomic>
#include <cstddef>
#include <type_traits>
#include <utility>

namespace Mox {

class PtrInterface {
 public:
  PtrInterface() noexcept = default;
  PtrInterface(const PtrInterface&) noexcept {}  // a copy is a new object: count starts at 0
  PtrInterface& operator=(const PtrInterface&) noexcept { return *this; }
  virtual ~PtrInterface() = default;

  void newRef() const noexcept { refs_.fetch_add(1, std::memory_order_relaxed); }
  void delRef() const noexcept {
    if (refs_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  int references() const noexcept { return refs_.load(std::memory_order_relaxed); }

 private:
  mutable std::atomic<int> refs_{0};
};

template <typename T>
class Ptr {
 public:
  using element_type = T;

  Ptr() noexcept = default;
  Ptr(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)
  Ptr(T* p) noexcept : p_(p) {      // NOLINT(google-explicit-constructor)
    if (p_) p_->newRef();
  }
  Ptr(const Ptr& o) noexcept : Ptr(o.p_) {}
  Ptr(Ptr&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
  template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  Ptr(const Ptr<U>& o) noexcept : Ptr(o.get()) {}  // NOLINT(google-explicit-constructor)
  ~Ptr() {
    if (p_) p_->delRef();
  }

  Ptr& operator=(const Ptr& o) noexcept {
    Ptr(o).swap(*this);
    return *this;
  }
  Ptr& operator=(Ptr&& o) noexcept {
    Ptr(std::move(o)).swap(*this);
    return *this;
  }

  T* get() const noexcept { return p_; }
  T* ptr() const noexcept { return p_; }
  T* operator->() const noexcept { return p_; }
  T& operator*() const noexcept { return *p_; }
  explicit operator bool() const noexcept { return p_ != nullptr; }
  void swap(Ptr& o) noexcept { std::swap(p_, o.p_); }

  friend bool operator==(const Ptr& a, const Ptr& b) noexcept { return a.p_ == b.p_; }
  friend bool operator==(const Ptr& a, std::nullptr_t) noexcept { return a.p_ == nullptr; }

 private:
  T* p_ = nullptr;
};

}  // namespace Mox
