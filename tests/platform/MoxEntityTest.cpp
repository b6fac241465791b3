// The framework's entity layer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "Mox/Entity.h"
#include "Mox/Type.h"
#include "Mox/Value.h"

using testing::ElementsAre;

namespace {

class Lamp : public Mox::Entity {
 public:
  static constexpr Mox::AttrId kOn = 258;
  static Mox::AllocTrackTypeInfo moxAllocTrackTypeInfo_;
  explicit Lamp(Mox::Name name) : Entity(std::move(name)) {}
  const Mox::TypeRecord* fwkType() const noexcept override;
  void onIs(bool on) {
    if (on == on_) return;
    on_ = on;
    notify(kOn);
  }

 private:
  bool on_ = false;
};

Mox::Ptr<Mox::PtrInterface> newLamp(const Mox::TypeRecord& type, std::span<const Mox::Value> args) {
  return Mox::allocTracked<Lamp>(Lamp::moxAllocTrackTypeInfo_,
                                 Mox::ctorArg<Mox::Name>(type, args, 0));
}

constexpr Mox::AttrInfo kLampAttrs[] = {{"on", Lamp::kOn, Mox::attrGet_ | Mox::attrSet_}};
constexpr Mox::ArgInfo kLampArgs[] = {{"name", "Mox::Name"}};
constinit const Mox::TypeRecord kLampType("MoxTest::Lamp", kLampAttrs, kLampArgs, &newLamp);
const Mox::TypeRegistration kLampRegistration(kLampType);
Mox::AllocTrackTypeInfo Lamp::moxAllocTrackTypeInfo_{"MoxTest::Lamp"};
const Mox::TypeRecord* Lamp::fwkType() const noexcept {
  return &kLampType;
}

struct Recorder : Mox::Notifiee {
  void onAttrChange(Mox::Entity& e, Mox::AttrId a) override {
    seen.push_back(e.name().stringValue().stdString() + ":" + std::to_string(a));
  }
  std::vector<std::string> seen;
};

enum class Speed : U8 { speed10g = 4 };

// No conversions; a pointer reads back as any class its object is.
TEST(MoxValue, AnswersOnlyForItsOwnKind) {
  EXPECT_EQ(Mox::Value(Speed::speed10g).as<Speed>(), Speed::speed10g);
  EXPECT_FALSE(Mox::Value(1).as<bool>());
  EXPECT_FALSE(Mox::Value("n").as<Mox::Name>());

  Mox::Ptr<Lamp const> lamp(new Lamp("l"));
  Mox::Value v(lamp);
  EXPECT_EQ(v.as<Mox::Ptr<Mox::Entity>>()->get(), lamp.get());
  EXPECT_FALSE(v.as<Mox::Ptr<Mox::Dir>>());
  const auto null = Mox::Value(Mox::Ptr<Lamp>{}).as<Mox::Ptr<Mox::Dir>>();
  ASSERT_TRUE(null);
  EXPECT_FALSE(*null);
  EXPECT_EQ(lamp->references(), 2);
}

TEST(MoxType, RefusalsNameTheTypeAndTheArgument) {
  EXPECT_EQ(Mox::typeLookup("MoxTest::Lam"), nullptr);
  EXPECT_EQ(kLampType.attr("off"), nullptr);
  auto message = [](const char* type, std::span<const Mox::Value> args) -> std::string {
    try {
      Mox::newObject(type, args);
    } catch (const Mox::NewEntityArgumentsException& e) {
      return e.what();
    }
    return "no exception";
  };
  const Mox::Value good[] = {Mox::Name("kitchen")};
  const Mox::Value text[] = {Mox::String("kitchen")};
  const Mox::Value two[] = {Mox::Name("a"), Mox::Name("b")};
  EXPECT_EQ(message("MoxTest::Lamp", text), "MoxTest::Lamp: argument name must be Mox::Name");
  EXPECT_EQ(message("MoxTest::Lamp", two), "MoxTest::Lamp: 1 arguments expected, 2 given");
  EXPECT_EQ(message("MoxTest::Nothing", good), "unknown type MoxTest::Nothing");
}

TEST(MoxType, AllocationTrackerCountsLiveObjects) {
  const long live = Lamp::moxAllocTrackTypeInfo_.live;
  const long allocated = Lamp::moxAllocTrackTypeInfo_.allocated;
  {
    const Mox::Value args[] = {Mox::Name("a")};
    Mox::Ptr<Mox::PtrInterface> a = Mox::newObject("MoxTest::Lamp", args);
    Mox::Ptr<Mox::PtrInterface> b = a;
    a = nullptr;
    EXPECT_EQ(Lamp::moxAllocTrackTypeInfo_.live, live + 1);
    Mox::Ptr<Lamp> plain(new Lamp("p"));  // made without the tracker: not counted
    EXPECT_EQ(Lamp::moxAllocTrackTypeInfo_.live, live + 1);
  }
  EXPECT_EQ(Lamp::moxAllocTrackTypeInfo_.live, live);
  EXPECT_EQ(Lamp::moxAllocTrackTypeInfo_.allocated, allocated + 1);
}

// An observer added twice is told once; one removed during a visit is not.
TEST(MoxNotifiee, EveryObserverIsToldOnceOnChange) {
  Mox::Ptr<Lamp> lamp(new Lamp("hall"));
  Recorder r1, r2;
  struct Remover : Mox::Notifiee {
    Recorder* victim;
    void onAttrChange(Mox::Entity& e, Mox::AttrId) override { e.notifieeList().del(victim); }
  } remover;
  remover.victim = &r2;
  lamp->notifieeList().add(&r1);
  lamp->notifieeList().add(&r1);
  lamp->notifieeList().add(&remover);
  lamp->notifieeList().add(&r2);
  EXPECT_EQ(lamp->notifieeList().size(), 3u);
  lamp->onIs(true);
  lamp->onIs(true);
  lamp->notifieeList().del(&r1);
  lamp->onIs(false);
  EXPECT_THAT(r1.seen, ElementsAre("hall:258"));
  EXPECT_TRUE(r2.seen.empty());
  EXPECT_EQ(lamp->notifieeList().size(), 1u);
}

TEST(MoxDir, CreatesRegisteredEntitiesByNameOrRaises) {
  Mox::Ptr<Mox::Dir> dir(new Mox::Dir("sys"));
  Mox::Ptr<Mox::Entity> e = dir->newEntity("MoxTest::Lamp", "hall");
  ASSERT_TRUE(e);
  EXPECT_EQ(e->fwkType(), &kLampType);
  EXPECT_EQ(dir->entity("hall"), e);
  EXPECT_EQ(dir->newEntity("MoxTest::Lamp", "hall"), e);  // the one there already
  EXPECT_EQ(dir->entity("cellar"), nullptr);

  const Mox::Value parent(dir);
  const std::vector<Mox::CreationAttr> good = {{"fullName", "/sys/a"},
                                               {"parent", parent},
                                               {"parentAttrName", Mox::Name("x")},
                                               {"entity", Mox::Name("a")}};
  auto message = [&](std::size_t index, Mox::CreationAttr attr) -> std::string {
    std::vector<Mox::CreationAttr> attrs = good;
    if (index < attrs.size())
      attrs[index] = attr;
    else
      attrs.push_back(attr);
    try {
      Mox::newEntityInDir("MoxTest::Lamp", attrs);
    } catch (const Mox::NewEntityArgumentsException& e) {
      return e.what();
    }
    return "no exception";
  };
  EXPECT_EQ(message(4, {"colour", 3}), "MoxTest::Lamp: unknown creation attribute colour");
  EXPECT_EQ(message(2, {"entity", Mox::Name("a")}),
            "MoxTest::Lamp: creation attribute parentAttrName missing");
  EXPECT_EQ(message(1, {"parent", Mox::Value(Mox::Name("sys"))}),
            "MoxTest::Lamp: creation attribute parent of wrong type");
  EXPECT_EQ(message(0, {"fullName", "/other/a"}),
            "MoxTest::Lamp: full name /other/a is not in its parent");
  EXPECT_EQ(dir->entities(), 1u);
  EXPECT_EQ(message(0, good[0]), "no exception");
  EXPECT_EQ(dir->entities(), 2u);
}

}  // namespace
