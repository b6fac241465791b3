// Hardware::Vorn::FapRevMajorList: the FAP major revisions present in a
// system, each with the chip family it belongs to, walked in ascending
// revision order. Every change moves the version counter, so that a walk can
// tell whether the list changed under it.
//
//   FapRevMajorList::Ptr list = fapRevMajorListFactory();
//   list->fapRevMajorIs(fapRevMajor3, fapTypeArad);
//   for (const auto& [rev, type] : *list) ...
#pragma once

#include "HardwareVorn/Enums.h"
#include "Mox/Collection.h"
#include "Mox/Ptr.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

class FapRevMajorList : public Mox::PtrInterface {
 public:
  using Ptr = Mox::Ptr<FapRevMajorList>;
  using PtrConst = Mox::Ptr<FapRevMajorList const>;
  using Entries = Mox::Collection<FapRevMajor, FapType>;
  using const_iterator = Entries::const_iterator;

  // Adds `rev` of family `type`, or changes the family of a present one.
  void fapRevMajorIs(FapRevMajor rev, FapType type) {
    entries_.is(rev, type);
    ++version_;
  }
  void fapRevMajorDel(FapRevMajor rev) {
    entries_.del(rev);
    ++version_;
  }
  // The family of `rev`, or null when the list does not hold it.
  const FapType* fapRevMajor(FapRevMajor rev) const { return entries_.find(rev); }

  std::size_t size() const noexcept { return entries_.size(); }
  const_iterator begin() const noexcept { return entries_.begin(); }
  const_iterator end() const noexcept { return entries_.end(); }
  // The first entry above `rev`.
  const_iterator after(FapRevMajor rev) const { return entries_.after(rev); }
  // Moves on at every change.
  U32 version() const noexcept { return version_; }

 private:
  Entries entries_;
  U32 version_ = 0;
};

// A new, empty list.
inline FapRevMajorList::Ptr fapRevMajorListFactory() {
  return FapRevMajorList::Ptr(new FapRevMajorList());
}

}  // namespace Hardware::Vorn
