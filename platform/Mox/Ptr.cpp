#include "Mox/Ptr.h"

#include "Mox/Type.h"
#include "Mox/Value.h"

namespace Mox {

PtrInterface::~PtrInterface() {
  if (allocTrack_) allocTrack_->live.fetch_sub(1, std::memory_order_relaxed);
}

const TypeRecord* PtrInterface::fwkType() const noexcept {
  return nullptr;
}

Activity* PtrInterface::moxFwkActivity() const noexcept {
  return nullptr;
}

void PtrInterface::moxDoZombieReactors(bool zombie) noexcept {
  moxMarkedForDeletionIs(zombie);
}

void PtrInterface::hasNotificationActiveIs(bool active) noexcept {
  notificationActive_ = active;
}

AttrResult PtrInterface::attrGet(AttrId, Value&) const {
  return AttrResult::notAnAttribute;
}

AttrResult PtrInterface::attrSet(AttrId, const Value&) {
  return AttrResult::notAnAttribute;
}

AttrResult PtrInterface::attrCall(AttrId, std::span<const Value>, Value&) {
  return AttrResult::notAnAttribute;
}

void PtrInterface::moxAllocTrackIs(AllocTrackTypeInfo* info) noexcept {
  if (allocTrack_) allocTrack_->live.fetch_sub(1, std::memory_order_relaxed);
  allocTrack_ = info;
  if (info) {
    info->live.fetch_add(1, std::memory_order_relaxed);
    info->allocated.fetch_add(1, std::memory_order_relaxed);
  }
}

}  // namespace Mox
