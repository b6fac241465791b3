// Type records of the framework: what the framework knows of an entity type
// (its name, its attribute table, its constructor arguments, how to build one
// from generic arguments), and the registry that finds them by name.
//
// The library unit that defines a type registers its record when the library
// loads, with a static registration object next to the record:
//
//   constinit const Mox::TypeRecord kFooType{"Ns::Foo", kFooAttrs, kFooArgs, &newFoo};
//   const Mox::TypeRegistration kFooRegistration(kFooType);
#pragma once

#include <atomic>
#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>

#include "Mox/Ptr.h"
#include "Mox/Value.h"

namespace Mox {

// The operations an attribute allows, as a bit set.
enum AttrOps : U8 { attrGet_ = 1, attrSet_ = 2, attrCall_ = 4 };

// One row of a type's attribute table.
struct AttrInfo {
  const char* name;
  AttrId id;
  U8 ops;  // AttrOps bits
};

// One argument of a type's generic constructor, typed by its type name
// ("Mox::Name", "Hardware::Vorn::Status").
struct ArgInfo {
  const char* name;
  const char* typeName;
};

class TypeRecord {
 public:
  // Builds an object from generic constructor arguments; the count is checked
  // before it is called, the kinds by ctorArg.
  using Constructor = Ptr<PtrInterface> (*)(const TypeRecord& type, std::span<const Value> args);

  constexpr TypeRecord(const char* name, std::span<const AttrInfo> attrs,
                       std::span<const ArgInfo> ctorArgs, Constructor construct) noexcept
      : name_(name), attrs_(attrs), ctorArgs_(ctorArgs), construct_(construct) {}

  // The type's qualified name ("Hardware::Vorn::ShapeRateSmState").
  const char* name() const noexcept { return name_; }
  // The attribute table, in the type's order.
  std::span<const AttrInfo> attrs() const noexcept { return attrs_; }
  // The generic constructor's arguments, in order.
  std::span<const ArgInfo> ctorArgs() const noexcept { return ctorArgs_; }
  // The attribute row named `name` or carrying `id`; null when there is none.
  const AttrInfo* attr(const char* name) const noexcept;
  const AttrInfo* attr(AttrId id) const noexcept;
  // Builds an object from `args`. Throws NewEntityArgumentsException when the
  // arguments do not match ctorArgs().
  Ptr<PtrInterface> newObject(std::span<const Value> args) const;

 private:
  const char* name_;
  std::span<const AttrInfo> attrs_;
  std::span<const ArgInfo> ctorArgs_;
  Constructor construct_;
};

// Raised when generic construction gets arguments its type cannot take.
class NewEntityArgumentsException : public std::invalid_argument {
 public:
  explicit NewEntityArgumentsException(const std::string& text) : std::invalid_argument(text) {}
};

// Adds `type` to the registry (a second record of the same name replaces
// nothing: the first stays). Thread-safe; usable from static initialisers.
void typeRegister(const TypeRecord& type);
// The registered record named `name`, or null.
const TypeRecord* typeLookup(const char* name);
// Builds an object of the registered type `typeName` from generic arguments.
// Throws NewEntityArgumentsException for an unknown type or wrong arguments.
Ptr<PtrInterface> newObject(const char* typeName, std::span<const Value> args);

// Registers its record when the unit that holds it is loaded.
class TypeRegistration {
 public:
  explicit TypeRegistration(const TypeRecord& type) { typeRegister(type); }
};

// Throws NewEntityArgumentsException naming argument `index` of `type`.
[[noreturn]] void throwNewEntityArguments(const TypeRecord& type, std::size_t index);

// Argument `index` of a generic construction as T; a value of another kind,
// or no value at all, raises NewEntityArgumentsException. Constructors are
// exported and may be called with fewer arguments than they read, not only
// through newObject, which checks the count first.
template <typename T>
T ctorArg(const TypeRecord& type, std::span<const Value> args, std::size_t index) {
  if (index >= args.size()) throwNewEntityArguments(type, index);
  std::optional<T> v = args[index].as<T>();
  if (!v) throwNewEntityArguments(type, index);
  return *std::move(v);
}

// The allocation tracker's record of one type: how many objects that its
// factory made are alive, and how many it made in all.
struct AllocTrackTypeInfo {
  const char* typeName;
  std::atomic<long> live{0};
  std::atomic<long> allocated{0};
};

// Allocates and constructs a T through the allocation tracker: the object
// counts in `info` until it is destroyed.
template <typename T, typename... Args>
Ptr<T> allocTracked(AllocTrackTypeInfo& info, Args&&... args) {
  T* object = new T(std::forward<Args>(args)...);
  object->moxAllocTrackIs(&info);
  return Ptr<T>(object);
}

}  // namespace Mox
