// SubIntfShapeRateType: the readiness record that the state machines of
// sub-interface shaping share before shape rates are programmed.
//
//   auto state = shapeRateSmStateFactory("shapeRateSmState");
//   state->notifieeList().add(&watcher);   // told (state, 259) on a change
//   state->isAnchorIntfSmReadyIs(true);
#pragma once

#include "Mox/Entity.h"
#include "Mox/Name.h"
#include "Mox/Ptr.h"
#include "Mox/Type.h"
#include "Mox/Value.h"
#include "Vorn/Export.h"

namespace Hardware::Vorn {

// Four readiness flags, all false at first. Each setter that changes its
// flag tells the notifiees the flag's attribute id; setting a flag to the
// value it holds tells nobody.
class VORN_EXPORT ShapeRateSmState : public Mox::Entity {
 public:
  // Attribute ids of the four flags, in declaration order.
  enum AttrIds : Mox::AttrId {
    isShapeRateSmReadyAttrId = 258,
    isAnchorIntfSmReadyAttrId = 259,
    isVornSubIntfSmReadyAttrId = 260,
    isVornTmSubIntfSmReadyAttrId = 261,
  };

  // The allocation tracker's record of this type (shapeRateSmStateFactory).
  static Mox::AllocTrackTypeInfo moxAllocTrackTypeInfo_;

  // An entity named `name` with every flag false and no notifiees.
  explicit ShapeRateSmState(Mox::Name name);
  ~ShapeRateSmState() override;

  //@{
  // The flags: the shape-rate, anchor-interface, sub-interface and
  // traffic-manager sub-interface state machines are ready.
  bool isShapeRateSmReady() const;
  bool isAnchorIntfSmReady() const;
  bool isVornSubIntfSmReady() const;
  bool isVornTmSubIntfSmReady() const;
  //@}
  //@{
  // Setters: store and notify with the flag's id when the value changes.
  void isShapeRateSmReadyIs(bool ready);
  void isAnchorIntfSmReadyIs(bool ready);
  void isVornSubIntfSmReadyIs(bool ready);
  void isVornTmSubIntfSmReadyIs(bool ready);
  //@}

  //@{
  // Framework operations: the type record "Hardware::Vorn::ShapeRateSmState";
  // get and set (a bool) on the four flags; a call on a flag is not allowed;
  // any other id goes to the base.
  const Mox::TypeRecord* fwkType() const noexcept override;
  Mox::AttrResult attrGet(Mox::AttrId id, Mox::Value& out) const override;
  Mox::AttrResult attrSet(Mox::AttrId id, const Mox::Value& in) override;
  Mox::AttrResult attrCall(Mox::AttrId id, std::span<const Mox::Value> args,
                           Mox::Value& out) override;
  //@}
  // Construction from generic arguments: one "Mox::Name". Directories create
  // the type through it.
  static Mox::Ptr<Mox::PtrInterface> moxNewFromArgs(const Mox::TypeRecord& type,
                                                    std::span<const Mox::Value> args);

 private:
  static constexpr Mox::AttrId kFirstFlag = isShapeRateSmReadyAttrId;
  static constexpr int kFlags = 4;
  static bool isFlag(Mox::AttrId id) noexcept { return id - kFirstFlag < kFlags; }
  void flagIs(Mox::AttrId id, bool value) {
    bool& flag = flags_[id - kFirstFlag];
    if (flag == value) return;
    flag = value;
    notify(id);
  }

  bool flags_[kFlags] = {};  // indexed by attribute id - 258
};

// Allocates a ShapeRateSmState named `name` through the allocation tracker.
VORN_EXPORT Mox::Ptr<ShapeRateSmState> shapeRateSmStateFactory(Mox::Name name);

}  // namespace Hardware::Vorn
