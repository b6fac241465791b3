// The shape-rate readiness record.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "Vorn/BadInputCatalogue.h"
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

CATALOGUE_TEST(ShapeRateSmState, EachSetterChangesOnlyItsFlagAndNotifiesOnlyOnChange,
               "shapeRateSmStateFactory", "ShapeRateSmState::ShapeRateSmState") {
  for (std::size_t i = 0; i < std::size(kFlags); ++i) {
    SCOPED_TRACE(kFlags[i].name);
    auto state = shapeRateSmStateFactory("s");
    Recorder r;
    state->notifieeList().add(&r);
    (state.get()->*kFlags[i].set)(false);
    EXPECT_THAT(r.ids, IsEmpty());
    (state.get()->*kFlags[i].set)(true);
    (state.get()->*kFlags[i].set)(true);
    for (std::size_t j = 0; j < std::size(kFlags); ++j)
      EXPECT_EQ((state.get()->*kFlags[j].get)(), i == j) << kFlags[j].name;
    (state.get()->*kFlags[i].set)(false);
    EXPECT_THAT(r.ids, ElementsAre(kFlags[i].id, kFlags[i].id));
    EXPECT_THAT(r.entities, ElementsAre(state.get(), state.get()));
  }
}

CATALOGUE_TEST(ShapeRateSmState, GenericAccessCoversTheFourFlags, "ShapeRateSmState::attrGet",
               "ShapeRateSmState::attrSet", "ShapeRateSmState::attrCall") {
  auto state = shapeRateSmStateFactory("s");
  Recorder r;
  state->notifieeList().add(&r);
  Mox::Value out;
  for (const Flag& f : kFlags) {
    EXPECT_EQ(state->attrSet(f.id, true), Mox::AttrResult::done) << f.name;
    EXPECT_EQ(state->attrGet(f.id, out), Mox::AttrResult::done) << f.name;
    EXPECT_TRUE((state.get()->*f.get)() && out.as<bool>() == true) << f.name;
    EXPECT_EQ(state->attrSet(f.id, Mox::Value(0)), Mox::AttrResult::notAllowed) << f.name;
    EXPECT_EQ(state->attrCall(f.id, {}, out), Mox::AttrResult::notAllowed) << f.name;
  }
  EXPECT_THAT(r.ids, ElementsAre(258u, 259u, 260u, 261u));
  for (Mox::AttrId other : {257u, 262u}) {
    EXPECT_EQ(state->attrGet(other, out), Mox::AttrResult::notAnAttribute) << other;
    EXPECT_EQ(state->attrSet(other, true), Mox::AttrResult::notAnAttribute) << other;
    EXPECT_EQ(state->attrCall(other, {}, out), Mox::AttrResult::notAnAttribute) << other;
  }
}

CATALOGUE_TEST(ShapeRateSmState, BuildsFromOneName, "ShapeRateSmState::moxNewFromArgs") {
  const Mox::TypeRecord* type = Mox::typeLookup("Hardware::Vorn::ShapeRateSmState");
  ASSERT_NE(type, nullptr);
  const Mox::Value args[] = {Mox::Name("generic")};
  auto state = Mox::Value(type->newObject(args)).as<Mox::Ptr<ShapeRateSmState>>();
  ASSERT_TRUE(state && *state);
  EXPECT_EQ((*state)->name(), Mox::Name("generic"));
  const Mox::Value text[] = {Mox::String("generic")};
  EXPECT_THROW(ShapeRateSmState::moxNewFromArgs(*type, text), Mox::NewEntityArgumentsException);
  EXPECT_THROW(ShapeRateSmState::moxNewFromArgs(*type, {}), Mox::NewEntityArgumentsException);
}

}  // namespace
