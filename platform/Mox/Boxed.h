// Mox::Boxed: a plain value handed through generic attribute access. A value
// type of a model (a struct of configuration fields) is no Mox::Value kind, so
// a getter hands a shared copy of it instead.
//
//   Mox::Value v = Mox::boxed(params);
//   auto box = v.as<Mox::Ptr<Mox::Boxed<Params> const>>();   // (*box)->value
#pragma once

#include <utility>

#include "Mox/Ptr.h"

namespace Mox {

template <typename T>
class Boxed : public PtrInterface {
 public:
  explicit Boxed(T v) : value(std::move(v)) {}
  const T value;
};

// A new shared copy of `v`.
template <typename T>
Ptr<Boxed<T> const> boxed(T v) {
  return Ptr<Boxed<T> const>(new Boxed<T>(std::move(v)));
}

}  // namespace Mox
