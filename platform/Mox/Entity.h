// Named entities of the framework, their notifiee lists, and directories that
// create entities in themselves.
//
//   class Foo : public Mox::Entity { ... void barIs(bool b) { ...; notify(kBarId); } };
//   struct Watcher : Mox::Notifiee { void onAttrChange(Mox::Entity&, Mox::AttrId) override; };
//   foo->notifieeList().add(&watcher);
//
//   Mox::Ptr<Mox::Dir> dir(new Mox::Dir("sys"));
//   auto e = dir->newEntity("Hardware::Vorn::ShapeRateSmState", "shapeRate");
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <vector>

#include "Mox/Name.h"
#include "Mox/Ptr.h"
#include "Mox/String.h"
#include "Mox/Type.h"
#include "Mox/Value.h"

namespace Mox {

class Entity;

// An observer of entities: told which attribute of which entity changed.
class Notifiee {
 public:
  virtual ~Notifiee() = default;
  virtual void onAttrChange(Entity& entity, AttrId attr) = 0;
};

// The observers of one entity. It does not own them: an observer removes
// itself before it goes away.
class NotifieeList {
 public:
  // Adds `n` once (adding it again changes nothing).
  void add(Notifiee* n);
  void del(Notifiee* n) noexcept;
  std::size_t size() const noexcept { return notifiees_.size(); }
  // Tells every observer that `attr` of `entity` changed. An observer may add
  // or remove observers while it is told; the visit goes over the list as it
  // was when it began, skipping those removed meanwhile.
  void visit(Entity& entity, AttrId attr);

 private:
  std::vector<Notifiee*> notifiees_;
};

// A named entity with a notifiee list.
class Entity : public PtrInterface {
 public:
  explicit Entity(Name name) : name_(std::move(name)) {}

  // The entity's name (a new reference on it).
  Name name() const { return name_; }
  // The observers of this entity.
  NotifieeList& notifieeList() noexcept { return notifiees_; }
  // An entity has no reactors of its own: it only records the mark.
  void moxDoZombieReactors(bool zombie) noexcept override { moxMarkedForDeletionIs(zombie); }

 protected:
  // Visits the notifiee list with `attr`.
  void notify(AttrId attr) { notifiees_.visit(*this, attr); }

 private:
  Name name_;
  NotifieeList notifiees_;
};

// One of the standard creation attributes that a directory hands the
// framework when it creates an entity in itself.
struct CreationAttr {
  const char* attr;  // "fullName", "parent", "parentAttrName" or "entity"
  Value value;
};

// A directory: an entity that holds named entities.
class Dir : public Entity {
 public:
  // A top-level directory has the full name "/" + name; a child's is its
  // parent's full name, "/", its name.
  explicit Dir(Name name, String fullName = String());

  // The path of the directory from the root ("/sys").
  String fullName() const { return fullName_; }
  // The entity named `name` in this directory, or null.
  Ptr<Entity> entity(const Name& name) const;
  // How many entities the directory holds.
  std::size_t entities() const noexcept { return entities_.size(); }

  // Creates an entity of the registered type `typeName` (one whose generic
  // constructor takes one Mox::Name) named `name` in this directory, through
  // the standard creation attributes; an existing entity of that name is
  // returned as it is.
  Ptr<Entity> newEntity(const char* typeName, const Name& name);

 private:
  friend Ptr<Entity> newEntityInDir(const char* typeName, std::span<const CreationAttr> attrs);
  String fullName_;
  std::map<String, Ptr<Entity>> entities_;
};

// Creates an entity of type `typeName` from the standard creation
// attributes: exactly "fullName" (String), "parent" (the Dir), "parentAttrName"
// (Name), "entity" (the new entity's Name), in any order. Anything else raises
// NewEntityArgumentsException, as do constructor arguments the type refuses.
Ptr<Entity> newEntityInDir(const char* typeName, std::span<const CreationAttr> attrs);

}  // namespace Mox
