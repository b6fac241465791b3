// VornCommonUtils: conversions and bounds over the platform's identifier
// spaces: interface names, LAG encodings, chip types and linecard names, the
// bounds of per-revision quantities over the FAP revisions present,
// sub-interfaces of LAGs, and the numbering of cores, TCAMs, slots and CPU
// ports.
//
// Everything here is a pure function of its arguments and of the read-only
// state objects passed in. "Not found" is a value (the empty interface id,
// -1, a type's null); an identifier out of its range throws its range
// exception; a caller error (a value outside its table) ends the process
// through a failed assertion.
#pragma once

#include <functional>

#include "Fru/Fru.h"
#include "Hardware/ChipType.h"
#include "HardwareVorn/Enums.h"
#include "HardwareVorn/FapRevMajorList.h"
#include "HardwareVorn/Ids.h"
#include "HardwareVorn/Status.h"
#include "Mox/String.h"
#include "Mox/Types.h"
#include "Qos/QueueThresholdUnit.h"
#include "Regpath/Fapmask.h"
#include "Vorn/Export.h"
#include "Wirl/IntfId.h"

namespace Hardware::Vorn {

// ---------------------------------------------------------------------------
// Chip types, linecard names and FAP-revision bounds

// "Linecard<module>" for an Ethernet interface of a modular system,
// "FixedSystem" when its module is 0.
VORN_EXPORT Mox::String intfIdToLinecardName(Wirl::IntfId intfId);

// "FixedSystem" for slot 1, "Linecard<slot>" for any other.
VORN_EXPORT Mox::String slotIdToLinecardName(Fru::SlotId slotId);

// The linecard of a FAP name: after its family word ("Fap", "Jericho" or
// "Arad", looked for in that order), the number before a "/" names the
// linecard ("Jericho3/1" -> "Linecard3"); without a "/" it is "FixedSystem".
// A name with none of the words ends the process after a "Failed(" line.
VORN_EXPORT Mox::String fapNameToLinecardName(Mox::String fapName);

// The set of all FAP ids of the system, 0 to maxFapsInSystem - 1. A count
// above 129 throws the FapId range exception.
VORN_EXPORT Regpath::Fapmask maxFapsInSystemMask(Status::PtrConst vornStatus);

// The chip variant of a FAP from its family and revision; 0 when the FAP has
// no family. A family outside 0 to 3 fails an assertion.
VORN_EXPORT FapMaskType getFapMaskType(Status::PtrConst vornStatus, FapId fapId);

// The platform chip type of a variant; 0, 8, 9 and above 10 fail the
// assertion "0 && \"Invalid FapMaskType\"".
VORN_EXPORT Hardware::ChipType getChipTypeFromFapMaskType(FapMaskType fapMaskType);

// Cores of a chip type (1 or 2); 0 and above 13 fail "0 && \"Invalid ChipType\"".
VORN_EXPORT U8 chipTypeToNumCores(Hardware::ChipType chipType);

// Converts a pair of thresholds given in `unit` to bytes, crosswise on
// purpose: firstOut comes from `second` and secondOut from `first`. Kbytes
// and Mbytes scale (32-bit, wrapping); bytes and packets do not. Any other
// unit fails the assertion "false".
VORN_EXPORT void getThresholdsInBytes(U32 first, U32 second, U32& firstOut, U32& secondOut,
                                      Qos::QueueThresholdUnit unit);

// A per-revision quantity, as the bounds below take it.
using FapRevMajorFn = std::function<U32(FapRevMajor)>;

// A new list of the supported revisions of family `fapType`, or of all
// families when `fapType` is 0.
VORN_EXPORT FapRevMajorList::Ptr supportedFapRevMajors(Status::PtrConst vornStatus,
                                                       FapType fapType);

// The one supported revision of family `fapType`, or 0 when it has none or
// several. The supported revisions must not be empty (assertion).
VORN_EXPORT FapRevMajor maybeGetFapRevMajorFromFapType(Status::PtrConst vornStatus,
                                                       FapType fapType);

// The maximum (from 0) and minimum (from 0xFFFFFFFF) of `fn` over the
// revisions of `list`, walked in ascending order; a null list gives the start
// value. `fn` may change the list: the walk goes on from the successor of the
// revision it last handed to `fn`.
VORN_EXPORT U32 fapRevMajorLoopMax(FapRevMajorList::PtrConst list, FapRevMajorFn fn);
VORN_EXPORT U32 fapRevMajorLoopMin(FapRevMajorList::PtrConst list, FapRevMajorFn fn);
// As fapRevMajorLoopMin over the revisions that use threshold profile
// `profile` only.
VORN_EXPORT U32 fapRevMajorLoopMinPerEgrThreshProf(EgressBufThresholdsProfile profile,
                                                   FapRevMajorList::PtrConst list,
                                                   FapRevMajorFn fn);

// The loops above over supportedFapRevMajors(vornStatus, fapType). The
// supported revisions must not be empty (assertion).
VORN_EXPORT U32 maxForFapRevMajors(Status::PtrConst vornStatus, FapType fapType,
                                   FapRevMajorFn fn);
VORN_EXPORT U32 minForFapRevMajors(Status::PtrConst vornStatus, FapType fapType,
                                   FapRevMajorFn fn);
VORN_EXPORT U32 minForFapRevMajorsPerEgrThreshProf(EgressBufThresholdsProfile profile,
                                                   Status::PtrConst vornStatus,
                                                   FapType fapType, FapRevMajorFn fn);

// FAP port ids and network-interface ports of a revision. Revision 0 (and
// anything above 9) ends the process after a "Failed(" line.
VORN_EXPORT U32 maxFapPortIdsByFapRevMajor(FapRevMajor fapRevMajor);
VORN_EXPORT U32 maxNifPortsByFapRevMajor(FapRevMajor fapRevMajor);

}  // namespace Hardware::Vorn
