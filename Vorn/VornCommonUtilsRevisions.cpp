// The FAP revisions present and the bounds of per-revision quantities over
// them.
#include <algorithm>
#include <iterator>
#include <optional>

#include "HardwareVorn/EgqProfile.h"
#include "Mox/Assert.h"
#include "Vorn/VornCommonUtils.h"
#include "Vorn/VornCommonUtilsPrivate.h"

namespace Hardware::Vorn {

namespace {

constexpr U32 kLoopMinStart = 0xFFFFFFFF;
constexpr const char kRevisionsPresent[] = "vornStatus->supportedFapRevMajors() > 0";

// Port maxima of each revision; revision 0 has none.
struct PortMaxima {
  U32 fapPortIds;
  U32 nifPorts;
};
constexpr PortMaxima kPortMaxima[] = {
    {0, 0},  {64, 32}, {64, 32}, {64, 36}, {64, 36},
    {64, 54}, {64, 48}, {128, 128}, {128, 128}, {128, 128},
};

const PortMaxima& portMaxima(FapRevMajor rev, const char* function) {
  if (rev == fapRevMajorUnknown_ || rev >= std::size(kPortMaxima)) {
    Mox::failedLine("false", "Incorrect fapRevMajor ", rev);
    MOX_ASSERT_TEXT(false, "\"false\" == nullptr", function);
  }
  return kPortMaxima[rev];
}

// Walks `list` in ascending order, folding fn(rev) into `start` with `pick`
// for the revisions that `takesPart` admits. fn may change the list: when the
// version moved during a call, the walk finds the successor of the revision
// it called fn with afresh instead of trusting its iterator.
template <typename Pick>
U32 fold(const FapRevMajorList::PtrConst& list, U32 start, const FapRevMajorFn& fn, Pick pick,
         std::optional<EgressBufThresholdsProfile> profile) {
  U32 result = start;
  if (!list) return result;
  // The list lives for the walk even if fn drops the caller's last reference.
  const FapRevMajorList::PtrConst hold = list;
  for (auto it = hold->begin(); it != hold->end();) {
    const FapRevMajor rev = it->first;
    const U32 version = hold->version();
    if (!profile || EgqProfile::egrBufThresholdProfileForFapRevMajor(rev) == *profile)
      result = pick(result, fn(rev));
    it = hold->version() == version ? std::next(it) : hold->after(rev);
  }
  return result;
}

U32 pickMax(U32 a, U32 b) { return std::max(a, b); }
U32 pickMin(U32 a, U32 b) { return std::min(a, b); }

void assertRevisionsPresent(const Status::PtrConst& vornStatus, const char* function) {
  MOX_ASSERT_TEXT(!vornStatus->supportedFapRevMajors().empty(), kRevisionsPresent, function);
}

}  // namespace

FapRevMajorList::Ptr supportedFapRevMajors(Status::PtrConst vornStatus, FapType fapType) {
  FapRevMajorList::Ptr list = fapRevMajorListFactory();
  for (const auto& [rev, type] : vornStatus->supportedFapRevMajors()) {
    if (fapType == fapTypeUnknown_ || type == fapType) list->fapRevMajorIs(rev, type);
  }
  VORN_COMMON_TRACE(8, "Returning FapRevMajorList of type", fapType);
  return list;
}

FapRevMajor maybeGetFapRevMajorFromFapType(Status::PtrConst vornStatus, FapType fapType) {
  assertRevisionsPresent(vornStatus,
                         "Hardware::Vorn::FapRevMajor Hardware::Vorn::maybeGetFapRevMajorFromFapType("
                         "Hardware::Vorn::Status::PtrConst, Hardware::Vorn::FapType)");
  FapRevMajor found = fapRevMajorUnknown_;
  unsigned matches = 0;
  for (const auto& [rev, type] : vornStatus->supportedFapRevMajors()) {
    if (type != fapType) continue;
    found = rev;
    ++matches;
  }
  return matches == 1 ? found : fapRevMajorUnknown_;
}

U32 fapRevMajorLoopMax(FapRevMajorList::PtrConst list, FapRevMajorFn fn) {
  return fold(list, 0, fn, pickMax, std::nullopt);
}

U32 fapRevMajorLoopMin(FapRevMajorList::PtrConst list, FapRevMajorFn fn) {
  return fold(list, kLoopMinStart, fn, pickMin, std::nullopt);
}

U32 fapRevMajorLoopMinPerEgrThreshProf(EgressBufThresholdsProfile profile,
                                       FapRevMajorList::PtrConst list, FapRevMajorFn fn) {
  return fold(list, kLoopMinStart, fn, pickMin, profile);
}

U32 maxForFapRevMajors(Status::PtrConst vornStatus, FapType fapType, FapRevMajorFn fn) {
  assertRevisionsPresent(vornStatus,
                         "U32 Hardware::Vorn::maxForFapRevMajors(Hardware::Vorn::Status::PtrConst, "
                         "Hardware::Vorn::FapType, Hardware::Vorn::FapRevMajorFn)");
  return fapRevMajorLoopMax(supportedFapRevMajors(vornStatus, fapType), fn);
}

U32 minForFapRevMajors(Status::PtrConst vornStatus, FapType fapType, FapRevMajorFn fn) {
  assertRevisionsPresent(vornStatus,
                         "U32 Hardware::Vorn::minForFapRevMajors(Hardware::Vorn::Status::PtrConst, "
                         "Hardware::Vorn::FapType, Hardware::Vorn::FapRevMajorFn)");
  return fapRevMajorLoopMin(supportedFapRevMajors(vornStatus, fapType), fn);
}

U32 minForFapRevMajorsPerEgrThreshProf(EgressBufThresholdsProfile profile,
                                       Status::PtrConst vornStatus, FapType fapType,
                                       FapRevMajorFn fn) {
  assertRevisionsPresent(vornStatus,
                         "U32 Hardware::Vorn::minForFapRevMajorsPerEgrThreshProf("
                         "Hardware::Vorn::EgressBufThresholdsProfile, "
                         "Hardware::Vorn::Status::PtrConst, Hardware::Vorn::FapType, "
                         "Hardware::Vorn::FapRevMajorFn)");
  return fapRevMajorLoopMinPerEgrThreshProf(profile, supportedFapRevMajors(vornStatus, fapType),
                                            fn);
}

U32 maxFapPortIdsByFapRevMajor(FapRevMajor fapRevMajor) {
  return portMaxima(fapRevMajor,
                    "U32 Hardware::Vorn::maxFapPortIdsByFapRevMajor(Hardware::Vorn::FapRevMajor)")
      .fapPortIds;
}

U32 maxNifPortsByFapRevMajor(FapRevMajor fapRevMajor) {
  return portMaxima(fapRevMajor,
                    "U32 Hardware::Vorn::maxNifPortsByFapRevMajor(Hardware::Vorn::FapRevMajor)")
      .nifPorts;
}

}  // namespace Hardware::Vorn
