// Qos::ClassAction: the actions of one class of a QoS policy, keyed by action
// type. A shape or bandwidth action carries its rate as a rate object.
//
//   Qos::ClassAction::Ptr action(new Qos::ClassAction());
//   action->policyActionIs(Qos::actionSetShape, 5000);
//   action->policyActionWithoutRateIs(Qos::actionSetBandwidth);  // a broken model
#pragma once

#include <map>
#include <utility>

#include "Mox/Ptr.h"
#include "Mox/Types.h"

namespace Qos {

// A policy rate in the QoS model's rate unit. 10000001 means not set and
// 10000002 unlimited.
using ActionRateType = U32;

// The action types of a class action.
enum PolicyActionType : U32 {
  actionSetShape = 0,
  actionSetBandwidth = 1,
};

// The rate object of an action.
class ActionRate : public Mox::PtrInterface {
 public:
  explicit ActionRate(ActionRateType value) : value_(value) {}
  ActionRateType value() const noexcept { return value_; }

 private:
  ActionRateType value_;
};

class PolicyAction : public Mox::PtrInterface {
 public:
  explicit PolicyAction(Mox::Ptr<ActionRate const> rate) : rate_(std::move(rate)) {}
  // The action's rate object; null when the action carries none.
  Mox::Ptr<ActionRate const> rate() const { return rate_; }

 private:
  Mox::Ptr<ActionRate const> rate_;
};

class ClassAction : public Mox::PtrInterface {
 public:
  using Ptr = Mox::Ptr<ClassAction>;
  using PtrConst = Mox::Ptr<ClassAction const>;

  // The action of `type`, or null when the class has none.
  Mox::Ptr<PolicyAction const> policyAction(PolicyActionType type) const {
    auto it = actions_.find(type);
    return it == actions_.end() ? nullptr : it->second;
  }
  // Sets the action of `type` with a rate of `rate`.
  void policyActionIs(PolicyActionType type, ActionRateType rate) {
    actions_[type] = Mox::Ptr<PolicyAction const>(new PolicyAction(new ActionRate(rate)));
  }
  // Sets the action of `type` without a rate object.
  void policyActionWithoutRateIs(PolicyActionType type) {
    actions_[type] = Mox::Ptr<PolicyAction const>(new PolicyAction(nullptr));
  }
  void policyActionDel(PolicyActionType type) { actions_.erase(type); }

 private:
  std::map<PolicyActionType, Mox::Ptr<PolicyAction const>> actions_;
};

}  // namespace Qos
