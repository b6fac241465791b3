#include "Mox/Entity.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace Mox {

void NotifieeList::add(Notifiee* n) {
  if (std::find(notifiees_.begin(), notifiees_.end(), n) == notifiees_.end())
    notifiees_.push_back(n);
}

void NotifieeList::del(Notifiee* n) noexcept {
  notifiees_.erase(std::remove(notifiees_.begin(), notifiees_.end(), n), notifiees_.end());
}

void NotifieeList::visit(Entity& entity, AttrId attr) {
  const std::vector<Notifiee*> snapshot = notifiees_;
  for (Notifiee* n : snapshot) {
    if (std::find(notifiees_.begin(), notifiees_.end(), n) != notifiees_.end())
      n->onAttrChange(entity, attr);
  }
}

Dir::Dir(Name name, String fullName)
    : Entity(name),
      fullName_(fullName.empty() ? format("/%s", name.charPtr()) : std::move(fullName)) {}

Ptr<Entity> Dir::entity(const Name& name) const {
  auto it = entities_.find(name.stringValue());
  return it == entities_.end() ? Ptr<Entity>() : it->second;
}

Ptr<Entity> Dir::newEntity(const char* typeName, const Name& name) {
  if (Ptr<Entity> existing = entity(name)) return existing;
  const CreationAttr attrs[] = {
      {"fullName", format("%s/%s", fullName_.charPtr(), name.charPtr())},
      {"parent", Ptr<Dir>(this)},
      {"parentAttrName", Name("entity")},
      {"entity", name},
  };
  return newEntityInDir(typeName, attrs);
}

namespace {

[[noreturn]] void throwCreation(const char* typeName, const std::string& why) {
  throw NewEntityArgumentsException(std::string(typeName) + ": " + why);
}

// The value of the creation attribute `name` as T; raises when it is missing,
// given twice or of another kind.
template <typename T>
T creationAttr(const char* typeName, std::span<const CreationAttr> attrs, const char* name) {
  std::optional<T> found;
  for (const CreationAttr& a : attrs) {
    if (std::strcmp(a.attr, name) != 0) continue;
    if (found) throwCreation(typeName, std::string("creation attribute ") + name + " given twice");
    found = a.value.as<T>();
    if (!found)
      throwCreation(typeName, std::string("creation attribute ") + name + " of wrong type");
  }
  if (!found) throwCreation(typeName, std::string("creation attribute ") + name + " missing");
  return *std::move(found);
}

constexpr const char* kCreationAttrs[] = {"fullName", "parent", "parentAttrName", "entity"};

}  // namespace

Ptr<Entity> newEntityInDir(const char* typeName, std::span<const CreationAttr> attrs) {
  for (const CreationAttr& a : attrs) {
    if (std::none_of(std::begin(kCreationAttrs), std::end(kCreationAttrs),
                     [&](const char* n) { return std::strcmp(n, a.attr) == 0; }))
      throwCreation(typeName, std::string("unknown creation attribute ") + a.attr);
  }
  const String fullName = creationAttr<String>(typeName, attrs, "fullName");
  const Ptr<Dir> parent = creationAttr<Ptr<Dir>>(typeName, attrs, "parent");
  creationAttr<Name>(typeName, attrs, "parentAttrName");
  const Name name = creationAttr<Name>(typeName, attrs, "entity");
  if (!parent) throwCreation(typeName, "no parent directory");
  if (!(fullName == format("%s/%s", parent->fullName().charPtr(), name.charPtr())))
    throwCreation(typeName, "full name " + fullName.stdString() + " is not in its parent");

  const Value args[] = {name};
  Ptr<PtrInterface> object = newObject(typeName, args);
  Ptr<Entity> entity(dynamic_cast<Entity*>(object.get()));
  if (!entity) throwCreation(typeName, "not an entity type");
  parent->entities_[name.stringValue()] = entity;
  return entity;
}

}  // namespace Mox
