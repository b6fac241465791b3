#include "Vorn/SubIntfShapeRateType.h"

#include <utility>

namespace Hardware::Vorn {
namespace {

using State = ShapeRateSmState;

constexpr U8 kGetSet = Mox::attrGet_ | Mox::attrSet_;
constexpr Mox::AttrInfo kAttrs[] = {
    {"isShapeRateSmReady", State::isShapeRateSmReadyAttrId, kGetSet},
    {"isAnchorIntfSmReady", State::isAnchorIntfSmReadyAttrId, kGetSet},
    {"isVornSubIntfSmReady", State::isVornSubIntfSmReadyAttrId, kGetSet},
    {"isVornTmSubIntfSmReady", State::isVornTmSubIntfSmReadyAttrId, kGetSet},
};
constexpr Mox::ArgInfo kCtorArgs[] = {{"name", "Mox::Name"}};

constinit const Mox::TypeRecord kType("Hardware::Vorn::ShapeRateSmState", kAttrs, kCtorArgs,
                                      &State::moxNewFromArgs);
const Mox::TypeRegistration kRegistration(kType);

}  // namespace

Mox::AllocTrackTypeInfo ShapeRateSmState::moxAllocTrackTypeInfo_{
    "Hardware::Vorn::ShapeRateSmState"};

ShapeRateSmState::ShapeRateSmState(Mox::Name name) : Entity(std::move(name)) {}

ShapeRateSmState::~ShapeRateSmState() = default;

bool ShapeRateSmState::isShapeRateSmReady() const {
  return flags_[0];
}
bool ShapeRateSmState::isAnchorIntfSmReady() const {
  return flags_[1];
}
bool ShapeRateSmState::isVornSubIntfSmReady() const {
  return flags_[2];
}
bool ShapeRateSmState::isVornTmSubIntfSmReady() const {
  return flags_[3];
}

void ShapeRateSmState::isShapeRateSmReadyIs(bool ready) {
  flagIs(isShapeRateSmReadyAttrId, ready);
}
void ShapeRateSmState::isAnchorIntfSmReadyIs(bool ready) {
  flagIs(isAnchorIntfSmReadyAttrId, ready);
}
void ShapeRateSmState::isVornSubIntfSmReadyIs(bool ready) {
  flagIs(isVornSubIntfSmReadyAttrId, ready);
}
void ShapeRateSmState::isVornTmSubIntfSmReadyIs(bool ready) {
  flagIs(isVornTmSubIntfSmReadyAttrId, ready);
}

const Mox::TypeRecord* ShapeRateSmState::fwkType() const noexcept {
  return &kType;
}

Mox::AttrResult ShapeRateSmState::attrGet(Mox::AttrId id, Mox::Value& out) const {
  if (!isFlag(id)) return Entity::attrGet(id, out);
  out = flags_[id - kFirstFlag];
  return Mox::AttrResult::done;
}

Mox::AttrResult ShapeRateSmState::attrSet(Mox::AttrId id, const Mox::Value& in) {
  if (!isFlag(id)) return Entity::attrSet(id, in);
  std::optional<bool> value = in.as<bool>();
  if (!value) return Mox::AttrResult::notAllowed;
  flagIs(id, *value);
  return Mox::AttrResult::done;
}

Mox::AttrResult ShapeRateSmState::attrCall(Mox::AttrId id, std::span<const Mox::Value> args,
                                           Mox::Value& out) {
  if (!isFlag(id)) return Entity::attrCall(id, args, out);
  return Mox::AttrResult::notAllowed;
}

Mox::Ptr<Mox::PtrInterface> ShapeRateSmState::moxNewFromArgs(const Mox::TypeRecord& type,
                                                             std::span<const Mox::Value> args) {
  return shapeRateSmStateFactory(Mox::ctorArg<Mox::Name>(type, args, 0));
}

Mox::Ptr<ShapeRateSmState> shapeRateSmStateFactory(Mox::Name name) {
  return Mox::allocTracked<ShapeRateSmState>(ShapeRateSmState::moxAllocTrackTypeInfo_,
                                             std::move(name));
}

}  // namespace Hardware::Vorn
