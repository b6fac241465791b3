// Singleton entities of the framework, one per type, found by type name.
//
//   auto limits = Mox::singletonExists<Hardware::Vorn::SystemLimits>();
//   if (!limits) limits = Mox::singletonIs<Hardware::Vorn::SystemLimits>();
//
// T derives from Mox::PtrInterface, is default-constructible and names itself
// with `static constexpr const char kTypeName[]`.
#pragma once

#include "Mox/Ptr.h"

namespace Mox {

// The object registered under `typeName`, or null.
Ptr<PtrInterface> singletonLookup(const char* typeName);
// Registers `object` under `typeName` unless one is there; returns the one
// that is registered afterwards.
Ptr<PtrInterface> singletonInsert(const char* typeName, Ptr<PtrInterface> object);
// Forgets the object registered under `typeName` (tests start afresh with it).
void singletonErase(const char* typeName);

// The singleton of type T, or null when it does not exist yet.
template <typename T>
Ptr<T> singletonExists() {
  Ptr<PtrInterface> p = singletonLookup(T::kTypeName);
  return Ptr<T>(static_cast<T*>(p.get()));
}

// The singleton of type T, created (default-constructed) when missing.
template <typename T>
Ptr<T> singletonIs() {
  Ptr<PtrInterface> p = singletonLookup(T::kTypeName);
  if (!p) p = singletonInsert(T::kTypeName, Ptr<PtrInterface>(new T()));
  return Ptr<T>(static_cast<T*>(p.get()));
}

template <typename T>
void singletonDel() {
  singletonErase(T::kTypeName);
}

}  // namespace Mox
