// Cores, TCAMs, linecard slots, slices and CPU traffic-manager ports.
#include <iterator>

#include "HardwareVorn/SystemLimits.h"
#include "Mox/Assert.h"
#include "Mox/Singleton.h"
#include "Vorn/VornCommonUtils.h"
#include "Vorn/VornCommonUtilsPrivate.h"

namespace Hardware::Vorn {

namespace {

// Whether a revision has a TCAM per core (else one per FAP), by revision.
constexpr bool kTcamPerCore[] = {false, false, false, false, false,
                                 false, true,  false, true,  false};

// The system port of FAP port 0, and how far the extended CPU TM ports
// 133 to 137 lie above their system ports 3 to 7.
constexpr U16 kCpuTmSystemPortBase = 2;
constexpr U32 kCpuTmExtendedOffset = 130;

constexpr const char kTcamBound[] = "tcamId.value() < vornStatus->maxTcamsInSystem()";

// Ends the process unless `tcamId` is below maxTcamsInSystem.
void checkTcamBound(const Status::PtrConst& vornStatus, SystemTcamId tcamId,
                    const char* function) {
  if (tcamId.value() < vornStatus->maxTcamsInSystem()) return;
  Mox::failedLine(kTcamBound, "Invalid value ", tcamId);
  MOX_ASSERT_TEXT(false, "\"tcamId.value() < vornStatus->maxTcamsInSystem()\" == nullptr",
                  function);
}

// FAPs in the system; the TCAM layout divides by it.
U32 fapsInSystem(const Status::PtrConst& vornStatus, const char* function) {
  const U32 faps = vornStatus->maxFapsInSystem();
  MOX_ASSERT_TEXT(faps > 0, "vornStatus->maxFapsInSystem() > 0", function);
  return faps;
}

// The first id of a linecard slot's block of `perSlot` ids (in 16 bits), or
// -1 outside the linecard slots; `zeroBasedSlot` receives the slot's index.
int firstOfSlot(const Status::PtrConst& vornStatus, Fru::SlotId slotId, U32 perSlot,
                const char* perSlotText, const char* function, int& zeroBasedSlot) {
  zeroBasedSlot = zeroBasedSlotId(vornStatus, slotId);
  if (zeroBasedSlot < 0) return -1;
  MOX_ASSERT_TEXT(perSlot > 0, perSlotText, function);
  return static_cast<U16>(static_cast<U32>(zeroBasedSlot) * perSlot);
}

}  // namespace

SystemCoreId systemCoreId(Status::PtrConst vornStatus, FapId fapId, LocalCoreId core) {
  const SystemCoreId base = vornStatus->fapIdToBaseSystemCoreId().valueOr(fapId, SystemCoreId());
  return SystemCoreId(static_cast<U16>(base.value() + core.value()));
}

LocalTcamId fapLocalCoreIdToLocalTcamId(Status::PtrConst vornStatus, FapId fapId,
                                        LocalCoreId core) {
  const FapRevMajor rev = vornStatus->fapRevision().valueOr(fapId, FapRevision()).fapRevMajor;
  if (rev >= std::size(kTcamPerCore)) {
    Mox::failedLine("0", "Unhandled fapMajor ", rev, " ,fapId ", fapId, " ,fapType ",
                    vornStatus->fapType().valueOr(fapId, fapTypeUnknown_));
    MOX_ASSERT_TEXT(false, "\"0\" == nullptr",
                    "Hardware::Vorn::LocalTcamId Hardware::Vorn::fapLocalCoreIdToLocalTcamId("
                    "Hardware::Vorn::Status::PtrConst, Hardware::Vorn::FapId, "
                    "Hardware::Vorn::LocalCoreId)");
  }
  return kTcamPerCore[rev] ? LocalTcamId(core.value()) : LocalTcamId(0);
}

SystemTcamId fapLocalTcamIdToSystemTcamId(Status::PtrConst vornStatus, FapId fapId,
                                          LocalTcamId localTcam) {
  return SystemTcamId(
      static_cast<U16>(localTcam.value() * vornStatus->maxFapsInSystem() + fapId.value()));
}

SystemTcamId fapLocalCoreIdToSystemTcamId(Status::PtrConst vornStatus, FapId fapId,
                                          LocalCoreId core) {
  return fapLocalTcamIdToSystemTcamId(vornStatus, fapId,
                                      fapLocalCoreIdToLocalTcamId(vornStatus, fapId, core));
}

FapId systemTcamIdToFapId(const Status::PtrConst& vornStatus, SystemTcamId tcamId) {
  constexpr const char* kFunction =
      "Hardware::Vorn::FapId Hardware::Vorn::systemTcamIdToFapId("
      "const Hardware::Vorn::Status::PtrConst&, Hardware::Vorn::SystemTcamId)";
  if (tcamId.value() == SystemTcamId::allTcams()) return FapId(SystemTcamId::allTcams());
  checkTcamBound(vornStatus, tcamId, kFunction);
  return FapId(static_cast<U16>(tcamId.value() % fapsInSystem(vornStatus, kFunction)));
}

LocalCoreId systemTcamIdToLocalCoreId(const Status::PtrConst& vornStatus, SystemTcamId tcamId) {
  constexpr const char* kFunction =
      "Hardware::Vorn::LocalCoreId Hardware::Vorn::systemTcamIdToLocalCoreId("
      "const Hardware::Vorn::Status::PtrConst&, Hardware::Vorn::SystemTcamId)";
  // All TCAMs: the highest core.
  if (tcamId.value() == SystemTcamId::allTcams()) return LocalCoreId(3);
  checkTcamBound(vornStatus, tcamId, kFunction);
  return LocalCoreId(static_cast<U16>(tcamId.value() / fapsInSystem(vornStatus, kFunction)));
}

Regpath::Fapmask tcamIdToFapmask(const Status::PtrConst& vornStatus, SystemTcamId tcamId) {
  MOX_ASSERT_TEXT(tcamId != SystemTcamId(), "tcamId != Hardware::Vorn::SystemTcamId::null()",
                  "Regpath::Fapmask Hardware::Vorn::tcamIdToFapmask("
                  "const Hardware::Vorn::Status::PtrConst&, Hardware::Vorn::SystemTcamId)");
  if (tcamId.value() == SystemTcamId::allTcams()) return maxFapsInSystemMask(vornStatus);
  Regpath::Fapmask mask;
  mask.fapIdIs(Regpath::FapId(systemTcamIdToFapId(vornStatus, tcamId).value()), true);
  return mask;
}

int zeroBasedSlotId(const Status::PtrConst& vornStatus, Fru::SlotId slotId) {
  (void)vornStatus;
  constexpr const char* kFunction =
      "int Hardware::Vorn::zeroBasedSlotId(const Hardware::Vorn::Status::PtrConst&, Fru::SlotId)";
  SystemLimits::Ptr sysLimits = Mox::singletonExists<SystemLimits>();
  if (!sysLimits) sysLimits = Mox::singletonIs<SystemLimits>();
  MOX_ASSERT_TEXT(sysLimits->sysFruConfig(), "sysLimits->sysFruConfig()", kFunction);
  const U32 minSlot = sysLimits->sysFruConfig()->minLinecardSlot.value();
  const U32 maxSlot = sysLimits->sysFruConfig()->maxLinecardSlot.value();
  int zeroBasedSlot = -1;
  if (slotId.value() >= minSlot && slotId.value() <= maxSlot) {
    zeroBasedSlot = static_cast<int>(slotId.value() - minSlot);
    const U16 numSlots = static_cast<U16>(maxSlot + 1 - minSlot);
    MOX_ASSERT_TEXT(zeroBasedSlot < numSlots, "zeroBasedSlot < numSlots", kFunction);
  }
  VORN_COMMON_TRACE(8, "zeroBasedSlotId", " minLinecardSlot:", minSlot, " maxLinecardSlot:",
                    maxSlot, " slotId:", slotId.value(), " zeroBasedSlot:", zeroBasedSlot);
  return zeroBasedSlot;
}

FapId firstFapId(const Status::PtrConst& vornStatus, Fru::SlotId slotId) {
  int zeroBasedSlot;
  const int first = firstOfSlot(vornStatus, slotId, vornStatus->maxFapsPerSlot(),
                                "maxFapsPerSlot > 0",
                                "Hardware::Vorn::FapId Hardware::Vorn::firstFapId("
                                "const Hardware::Vorn::Status::PtrConst&, Fru::SlotId)",
                                zeroBasedSlot);
  const FapId fapId = first < 0 ? FapId() : FapId(static_cast<U16>(first));
  VORN_COMMON_TRACE(8, "firstFapId", " zeroBasedSlot: ", zeroBasedSlot, " fapId: ", fapId);
  return fapId;
}

SystemCoreId firstSystemCoreId(const Status::PtrConst& vornStatus, Fru::SlotId slotId) {
  int zeroBasedSlot;
  const int first = firstOfSlot(vornStatus, slotId, vornStatus->maxCoresPerSlot(),
                                "maxCoresPerSlot > 0",
                                "Hardware::Vorn::SystemCoreId Hardware::Vorn::firstSystemCoreId("
                                "const Hardware::Vorn::Status::PtrConst&, Fru::SlotId)",
                                zeroBasedSlot);
  const SystemCoreId core = first < 0 ? SystemCoreId() : SystemCoreId(static_cast<U16>(first));
  VORN_COMMON_TRACE(8, "firstSystemCoreId", " zeroBasedSlot: ", zeroBasedSlot,
                    " systemCoreId: ", core);
  return core;
}

Mox::String fapIdToSliceName(Status::PtrConst vornStatus, FapId fapId) {
  return fapNameToLinecardName(vornStatus->fapName().valueOr(fapId, Mox::String()));
}

FapRevision sliceFapRev(Status::PtrConst vornStatus, Mox::String sliceName) {
  const Regpath::FapId first =
      vornStatus->fapmaskForSlice().valueOr(sliceName, Regpath::Fapmask()).nextFapId();
  // A slice without FAPs has no revision.
  if (first.isNull()) return FapRevision();
  return vornStatus->fapRevision().valueOr(FapId(first.value()), FapRevision());
}

SystemPhyPortId getCpuTmSystemPhyPortId(FapPortId fpid) {
  MOX_ASSERT_TEXT(fpid.isCpuTmPort(), "fpid.isCpuTmPort()",
                  "Hardware::Vorn::SystemPhyPortId Hardware::Vorn::getCpuTmSystemPhyPortId("
                  "Hardware::Vorn::FapPortId)");
  if (fpid.value() == 0) return SystemPhyPortId(kCpuTmSystemPortBase);
  const U32 extendedMax = FapPortId::cpuTmExtendedMin() + FapPortId::numCpuTmExtendeds() - 1;
  if (fpid.value() >= FapPortId::cpuTmExtendedMin() && fpid.value() <= extendedMax)
    return SystemPhyPortId(static_cast<U16>(fpid.value() - kCpuTmExtendedOffset));
  return SystemPhyPortId();
}

FapPortId nthCpuTmFapPortId(U16 nthCpuTm) {
  constexpr const char* kFunction =
      "Hardware::Vorn::FapPortId Hardware::Vorn::nthCpuTmFapPortId(U16)";
  MOX_ASSERT_TEXT(nthCpuTm < Constants::numCpuTms(), "nthCpuTm < Constants::numCpuTms()",
                  kFunction);
  if (nthCpuTm == 0) return FapPortId(0);
  MOX_ASSERT_TEXT(nthCpuTm <= FapPortId::numCpuTmExtendeds(),
                  "nthCpuTm <= FapPortId::numCpuTmExtendeds()", kFunction);
  return FapPortId(FapPortId::cpuTmExtendedMin() - 1 + nthCpuTm);
}

SystemPhyPortId nthCpuTmSystemPhyPortId(U16 nthCpuTm) {
  constexpr const char* kFunction =
      "Hardware::Vorn::SystemPhyPortId Hardware::Vorn::nthCpuTmSystemPhyPortId(U16)";
  MOX_ASSERT_TEXT(nthCpuTm < Constants::numCpuTms(), "nthCpuTm < Constants::numCpuTms()",
                  kFunction);
  const SystemPhyPortId sppid(static_cast<U16>(nthCpuTm + kCpuTmSystemPortBase));
  MOX_ASSERT_TEXT(sppid.value() <= SystemPhyPortId::cpuTmMax(),
                  "sppid <= SystemPhyPortId::cpuTmMax()", kFunction);
  return sppid;
}

}  // namespace Hardware::Vorn
