#include "Mox/Type.h"

#include <cstring>
#include <map>
#include <mutex>
#include <string>

namespace Mox {
namespace {

struct Registry {
  std::mutex mutex;
  std::map<std::string, const TypeRecord*, std::less<>> types;
};

// Constructed on first use, so that static registrations of any unit find it.
Registry& registry() {
  static Registry* r = new Registry();  // lives for the process
  return *r;
}

}  // namespace

const AttrInfo* TypeRecord::attr(const char* name) const noexcept {
  for (const AttrInfo& a : attrs_)
    if (std::strcmp(a.name, name) == 0) return &a;
  return nullptr;
}

const AttrInfo* TypeRecord::attr(AttrId id) const noexcept {
  for (const AttrInfo& a : attrs_)
    if (a.id == id) return &a;
  return nullptr;
}

Ptr<PtrInterface> TypeRecord::newObject(std::span<const Value> args) const {
  if (args.size() != ctorArgs_.size()) {
    throw NewEntityArgumentsException(std::string(name_) + ": " + std::to_string(ctorArgs_.size()) +
                                      " arguments expected, " + std::to_string(args.size()) +
                                      " given");
  }
  return construct_(*this, args);
}

void throwNewEntityArguments(const TypeRecord& type, std::size_t index) {
  const ArgInfo& arg = type.ctorArgs()[index];
  throw NewEntityArgumentsException(std::string(type.name()) + ": argument " + arg.name +
                                    " must be " + arg.typeName);
}

void typeRegister(const TypeRecord& type) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  r.types.emplace(type.name(), &type);
}

const TypeRecord* typeLookup(const char* name) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  auto it = r.types.find(std::string_view(name));
  return it == r.types.end() ? nullptr : it->second;
}

Ptr<PtrInterface> newObject(const char* typeName, std::span<const Value> args) {
  const TypeRecord* type = typeLookup(typeName);
  if (!type) throw NewEntityArgumentsException(std::string("unknown type ") + typeName);
  return type->newObject(args);
}

}  // namespace Mox
