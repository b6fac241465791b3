// Reference-counted pointers of the framework.
//
// Objects that are shared between the library and its callers derive from
// PtrInterface, which carries an atomic reference count; Mox::Ptr<T> and
// Mox::Ptr<T const> hold one reference each. An object dies with its last
// reference.
#pragma once

#include <atomic>
#include <cstddef>
#include <span>
#include <type_traits>
#include <utility>

#include "Mox/Types.h"

namespace Mox {

class Value;
class TypeRecord;
class Activity;
struct AllocTrackTypeInfo;

// Identifies an attribute within its type; ids up to 257 belong to the framework.
using AttrId = U32;

// The answer of a generic attribute access.
enum class AttrResult : U8 {
  done,            // the operation ran
  notAllowed,      // the attribute exists but not for this operation (set on a read-only one)
  notAnAttribute,  // the type has no such attribute; the base answers for it
};

class PtrInterface {
 public:
  PtrInterface() noexcept = default;
  PtrInterface(const PtrInterface&) noexcept {}  // a copy is a new object: count starts at 0
  PtrInterface& operator=(const PtrInterface&) noexcept { return *this; }
  virtual ~PtrInterface();

  void newRef() const noexcept { refs_.fetch_add(1, std::memory_order_relaxed); }
  void delRef() const noexcept {
    if (refs_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  int references() const noexcept { return refs_.load(std::memory_order_relaxed); }

  // Framework operations. A plain shared object has no type record, no
  // activity and no attributes; entity types override what they have.

  // The type record of the object's type, or null for an untyped object.
  virtual const TypeRecord* fwkType() const noexcept;
  // The activity the object's reactors run on; null when it has none.
  virtual Activity* moxFwkActivity() const noexcept;
  // Called when the object is being deleted (`zombie` true) or revived; a type
  // without reactors only records the mark.
  virtual void moxDoZombieReactors(bool zombie) noexcept;
  void moxMarkedForDeletionIs(bool marked) noexcept { markedForDeletion_ = marked; }
  bool moxMarkedForDeletion() const noexcept { return markedForDeletion_; }
  // Whether the object's notifications reach its notifiees yet.
  virtual void hasNotificationActiveIs(bool active) noexcept;
  bool hasNotificationActive() const noexcept { return notificationActive_; }

  // Generic attribute access by id. Each type answers for its own attributes
  // and hands any other id to its base; this base knows none.
  virtual AttrResult attrGet(AttrId id, Value& out) const;
  virtual AttrResult attrSet(AttrId id, const Value& in);
  virtual AttrResult attrCall(AttrId id, std::span<const Value> args, Value& out);

  // Counts the object as live in `info` until it is destroyed (allocTracked).
  void moxAllocTrackIs(AllocTrackTypeInfo* info) noexcept;

 private:
  mutable std::atomic<int> refs_{0};
  AllocTrackTypeInfo* allocTrack_ = nullptr;
  bool markedForDeletion_ = false;
  bool notificationActive_ = false;
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
