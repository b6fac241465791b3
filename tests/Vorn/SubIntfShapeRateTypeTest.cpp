// The shape-rate readiness record: flags, change notifications, generic
// access and construction.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Vorn/SubIntfShapeRateType.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Recorder : Mox::Notifiee {
  void onAttrChange(Mox::Entity& e, Mox::AttrId a) override {
    entities.push_back(&e);
    ids.push_back(a);
  }
  std::vector<Mox::Entity*> entities;
  std::vector<Mox::AttrId> ids;
};

struct Flag {
  const char* name;
  Mox::AttrId id;
  bool (ShapeRateSmState::*get)() const;
  void (ShapeRateSmState::*set)(bool);
};

const Flag kFlags[] = {
    {"isShapeRateSmReady", 258, &ShapeRateSmState::isShapeRateSmReady,
     &ShapeRateSmState::isShapeRateSmReadyIs},
    {"isAnchorIntfSmReady", 259, &ShapeRateSmState::isAnchorIntfSmReady,
     &ShapeRateSmState::isAnchorIntfSmReadyIs},
    {"isVornSubIntfSmReady", 260, &ShapeRateSmState::isVornSubIntfSmReady,
     &ShapeRateSmState::isVornSubIntfSmReadyIs},
    {"isVornTmSubIntfSmReady", 261, &ShapeRateSmState::isVornTmSubIntfSmReady,
     &ShapeRateSmState::isVornTmSubIntfSmReadyIs},
};

std::vector<bool> flagsOf(const ShapeRateSmState& s) {
  std::vector<bool> out;
  for (const Flag& f : kFlags) out.push_back((s.*f.get)());
  return out;
}

TEST(ShapeRateSmState, StartsWithItsNameAndEveryFlagFalse) {
  auto state = shapeRateSmStateFactory("shapeRate");
  EXPECT_EQ(state->name(), Mox::Name("shapeRate"));
  EXPECT_THAT(flagsOf(*state), ElementsAre(false, false, false, false));
  EXPECT_EQ(state->notifieeList().size(), 0u);
}

TEST(ShapeRateSmState, EachSetterChangesOnlyItsFlagAndNotifiesOnlyOnChange) {
  for (std::size_t i = 0; i < std::size(kFlags); ++i) {
    SCOPED_TRACE(kFlags[i].name);
    auto state = shapeRateSmStateFactory("s");
    Recorder r;
    state->notifieeList().add(&r);
    (state.get()->*kFlags[i].set)(false);
    EXPECT_THAT(r.ids, IsEmpty());
    (state.get()->*kFlags[i].set)(true);
    (state.get()->*kFlags[i].set)(true);
    std::vector<bool> expected(4, false);
    expected[i] = true;
    EXPECT_EQ(flagsOf(*state), expected);
    (state.get()->*kFlags[i].set)(false);
    EXPECT_THAT(r.ids, ElementsAre(kFlags[i].id, kFlags[i].id));
    EXPECT_THAT(r.entities, ElementsAre(state.get(), state.get()));
    EXPECT_THAT(flagsOf(*state), ElementsAre(false, false, false, false));
  }
}

TEST(ShapeRateSmState, AnchorReadyNotifiesOnceWith259) {
  auto state = shapeRateSmStateFactory("s");
  Recorder r;
  state->notifieeList().add(&r);
  state->isAnchorIntfSmReadyIs(true);
  EXPECT_THAT(r.ids, ElementsAre(259u));
}

TEST(ShapeRateSmState, GenericAccessCoversTheFourFlags) {
  auto state = shapeRateSmStateFactory("s");
  Recorder r;
  state->notifieeList().add(&r);
  const Mox::TypeRecord* type = state->fwkType();
  ASSERT_NE(type, nullptr);
  for (const Flag& f : kFlags) {
    SCOPED_TRACE(f.name);
    ASSERT_NE(type->attr(f.name), nullptr);
    EXPECT_EQ(type->attr(f.name)->id, f.id);
    EXPECT_EQ(state->attrSet(f.id, true), Mox::AttrResult::done);
    EXPECT_TRUE((state.get()->*f.get)());
    Mox::Value out;
    EXPECT_EQ(state->attrGet(f.id, out), Mox::AttrResult::done);
    EXPECT_EQ(out.as<bool>(), true);
    // Only a bool sets a flag; a flag is not callable.
    EXPECT_EQ(state->attrSet(f.id, 0), Mox::AttrResult::notAllowed);
    EXPECT_EQ(state->attrCall(f.id, {}, out), Mox::AttrResult::notAllowed);
    EXPECT_TRUE((state.get()->*f.get)());
  }
  EXPECT_THAT(r.ids, ElementsAre(258u, 259u, 260u, 261u));
  for (Mox::AttrId other : {0u, 1u, 257u, 262u, 0xFFFFFFFFu}) {
    Mox::Value out;
    EXPECT_EQ(state->attrGet(other, out), Mox::AttrResult::notAnAttribute) << other;
    EXPECT_EQ(state->attrSet(other, true), Mox::AttrResult::notAnAttribute) << other;
    EXPECT_EQ(state->attrCall(other, {}, out), Mox::AttrResult::notAnAttribute) << other;
  }
}

TEST(ShapeRateSmState, TypeIsRegisteredAtLoadAndBuildsFromOneName) {
  const Mox::TypeRecord* type = Mox::typeLookup("Hardware::Vorn::ShapeRateSmState");
  ASSERT_NE(type, nullptr);
  EXPECT_STREQ(type->name(), "Hardware::Vorn::ShapeRateSmState");
  ASSERT_EQ(type->ctorArgs().size(), 1u);
  EXPECT_STREQ(type->ctorArgs()[0].typeName, "Mox::Name");

  const long live = ShapeRateSmState::moxAllocTrackTypeInfo_.live;
  const Mox::Value args[] = {Mox::Name("generic")};
  Mox::Ptr<Mox::PtrInterface> p = type->newObject(args);
  auto state = Mox::Value(p).as<Mox::Ptr<ShapeRateSmState>>();
  ASSERT_TRUE(state && *state);
  EXPECT_EQ((*state)->fwkType(), type);
  EXPECT_EQ((*state)->name(), Mox::Name("generic"));
  EXPECT_EQ(ShapeRateSmState::moxAllocTrackTypeInfo_.live, live + 1);
  p = nullptr;
  state.reset();
  EXPECT_EQ(ShapeRateSmState::moxAllocTrackTypeInfo_.live, live);

  const Mox::Value text[] = {Mox::String("generic")};
  EXPECT_THROW(type->newObject(text), Mox::NewEntityArgumentsException);
  EXPECT_THROW(type->newObject({}), Mox::NewEntityArgumentsException);
}

TEST(ShapeRateSmState, IsCreatedInsideADirectory) {
  Mox::Ptr<Mox::Dir> dir(new Mox::Dir("subIntf"));
  Mox::Ptr<Mox::Entity> e = dir->newEntity("Hardware::Vorn::ShapeRateSmState", "shapeRate");
  ASSERT_TRUE(e);
  auto* state = dynamic_cast<ShapeRateSmState*>(e.get());
  ASSERT_NE(state, nullptr);
  EXPECT_EQ(state->name(), Mox::Name("shapeRate"));
  EXPECT_EQ(dir->entity("shapeRate"), e);
  const Mox::CreationAttr wrong[] = {{"fullName", "/subIntf/x"},
                                     {"parent", Mox::Value(dir)},
                                     {"parentAttrName", Mox::Name("entity")},
                                     {"entity", 7}};
  EXPECT_THROW(Mox::newEntityInDir("Hardware::Vorn::ShapeRateSmState", wrong),
               Mox::NewEntityArgumentsException);
}

}  // namespace
