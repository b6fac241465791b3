// Hardware::Vorn::Status: the chip status that the platform publishes: how
// many FAPs the system holds and per slot, their families, revisions, names
// and base cores, the revisions supported, the FAP masks of the slices and
// the system port range of sub-interfaces. The library only reads it.
//
//   Status::Ptr status(new Status());
//   status->maxFapsInSystemIs(4);
//   status->fapType().is(FapId(1), fapTypeArad);
//   status->fapRevision().is(FapId(1), {fapRevMajor3, 0});
//   Status::PtrConst readOnly = status;
#pragma once

#include "HardwareVorn/Enums.h"
#include "HardwareVorn/FapRevision.h"
#include "HardwareVorn/Ids.h"
#include "Mox/Collection.h"
#include "Mox/Ptr.h"
#include "Mox/String.h"
#include "Mox/Types.h"
#include "Regpath/Fapmask.h"

namespace Hardware::Vorn {

class Status : public Mox::PtrInterface {
 public:
  static constexpr const char kTypeName[] = "Hardware::Vorn::Status";
  using Ptr = Mox::Ptr<Status>;
  using PtrConst = Mox::Ptr<Status const>;

  // FAPs in the whole system; FAP ids run from 0 below it.
  U32 maxFapsInSystem() const noexcept { return maxFapsInSystem_; }
  void maxFapsInSystemIs(U32 v) noexcept { maxFapsInSystem_ = v; }
  // FAPs and cores per linecard slot.
  U32 maxFapsPerSlot() const noexcept { return maxFapsPerSlot_; }
  void maxFapsPerSlotIs(U32 v) noexcept { maxFapsPerSlot_ = v; }
  U32 maxCoresPerSlot() const noexcept { return maxCoresPerSlot_; }
  void maxCoresPerSlotIs(U32 v) noexcept { maxCoresPerSlot_ = v; }
  // System TCAM ids run from 0 below this.
  U32 maxTcamsInSystem() const noexcept { return maxTcamsInSystem_; }
  void maxTcamsInSystemIs(U32 v) noexcept { maxTcamsInSystem_ = v; }
  // Sub-interfaces use the system ports subIntfSysPortMin to
  // subIntfSysPortMin + numSubIntfSysPorts - 1.
  U32 subIntfSysPortMin() const noexcept { return subIntfSysPortMin_; }
  void subIntfSysPortMinIs(U32 v) noexcept { subIntfSysPortMin_ = v; }
  U32 numSubIntfSysPorts() const noexcept { return numSubIntfSysPorts_; }
  void numSubIntfSysPortsIs(U32 v) noexcept { numSubIntfSysPorts_ = v; }

  // The family of each FAP present.
  const Mox::Collection<FapId, FapType>& fapType() const noexcept { return fapType_; }
  Mox::Collection<FapId, FapType>& fapType() noexcept { return fapType_; }
  // The revision of each FAP present.
  const Mox::Collection<FapId, FapRevision>& fapRevision() const noexcept { return fapRevision_; }
  Mox::Collection<FapId, FapRevision>& fapRevision() noexcept { return fapRevision_; }
  // The revisions the system supports, ascending, each with its family.
  const Mox::Collection<FapRevMajor, FapType>& supportedFapRevMajors() const noexcept {
    return supportedFapRevMajors_;
  }
  Mox::Collection<FapRevMajor, FapType>& supportedFapRevMajors() noexcept {
    return supportedFapRevMajors_;
  }
  // The first system core of each FAP.
  const Mox::Collection<FapId, SystemCoreId>& fapIdToBaseSystemCoreId() const noexcept {
    return fapIdToBaseSystemCoreId_;
  }
  Mox::Collection<FapId, SystemCoreId>& fapIdToBaseSystemCoreId() noexcept {
    return fapIdToBaseSystemCoreId_;
  }
  // The FAPs of each slice ("Linecard3", "FixedSystem").
  const Mox::Collection<Mox::String, Regpath::Fapmask>& fapmaskForSlice() const noexcept {
    return fapmaskForSlice_;
  }
  Mox::Collection<Mox::String, Regpath::Fapmask>& fapmaskForSlice() noexcept {
    return fapmaskForSlice_;
  }
  // The name of each FAP ("Jericho3/1", "Arad0").
  const Mox::Collection<FapId, Mox::String>& fapName() const noexcept { return fapName_; }
  Mox::Collection<FapId, Mox::String>& fapName() noexcept { return fapName_; }

 private:
  U32 maxFapsInSystem_ = 0;
  U32 maxFapsPerSlot_ = 0;
  U32 maxCoresPerSlot_ = 0;
  U32 maxTcamsInSystem_ = 0;
  U32 subIntfSysPortMin_ = 0;
  U32 numSubIntfSysPorts_ = 0;
  Mox::Collection<FapId, FapType> fapType_;
  Mox::Collection<FapId, FapRevision> fapRevision_;
  Mox::Collection<FapRevMajor, FapType> supportedFapRevMajors_;
  Mox::Collection<FapId, SystemCoreId> fapIdToBaseSystemCoreId_;
  Mox::Collection<Mox::String, Regpath::Fapmask> fapmaskForSlice_;
  Mox::Collection<FapId, Mox::String> fapName_;
};

}  // namespace Hardware::Vorn
