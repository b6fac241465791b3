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
#include "HardwareVorn/Destination.h"
#include "HardwareVorn/Enums.h"
#include "HardwareVorn/FapRevMajorList.h"
#include "HardwareVorn/FapRevision.h"
#include "HardwareVorn/Ids.h"
#include "HardwareVorn/Status.h"
#include "HardwareVorn/SubIntfPortStatusDir.h"
#include "Interface/SubIntfStatusDir.h"
#include "Lag/InputConfig.h"
#include "Mlag/Status.h"
#include "Mox/String.h"
#include "Mox/Types.h"
#include "Qos/QueueThresholdUnit.h"
#include "Regpath/Fapmask.h"
#include "Vorn/Export.h"
#include "Wirl/IntfId.h"

// ---------------------------------------------------------------------------
// Interface names (global namespace)

// The VLAN number of its text ("100"), converted as strtoul does in base 0
// ("0x10" is 16, "010" is 8); text that is no number gives 0.
VORN_EXPORT U32 vlanNameToId(Mox::String name);

// The flood set of a VLAN: the VLAN id itself. Ids outside 1 to 4095 fail an
// assertion.
VORN_EXPORT U16 vlanIdToFloodSet(U32 vlanId);

// False for management and loopback interfaces, which the FAPs do not forward.
VORN_EXPORT bool isForwardingPlaneInterface(Wirl::IntfId intfId);

// The host device of an Ethernet or port-channel interface. Any other kind is
// a caller error: one line on standard error, then a failed assertion.
VORN_EXPORT Mox::String intfNameToDeviceName(Wirl::IntfId intfId);

// The short name of an Ethernet, port-channel or VXLAN tunnel interface; the
// full name of any other.
VORN_EXPORT Mox::String intfShortName(Wirl::IntfId intfId);

// Whether a name begins with "Port-Channel", "po" (any lower-case "po", on
// purpose) or "L3SecondHopLAG".
VORN_EXPORT bool isPortChannel(Mox::String name);

// Port-channels and names beginning with "Ethernet".
VORN_EXPORT bool isRoutedPort(Mox::String name);

// Whether a name begins with "L3SecondHopLAG".
VORN_EXPORT bool l3SecondHopPortChannel(Mox::String name);

// The number of a "Port-Channel<n>" or "po<n>" name as strtol reads it
// (Port-Channel10.5 is 10, a bare prefix 0); -1 for any other name, an
// L3SecondHopLAG name among them.
VORN_EXPORT int portChannelId(Mox::String name);

// Whether a port-channel is an MLAG interface: its MLAG state is 3. Other
// kinds are not, whatever the status holds.
VORN_EXPORT bool isIntfMlag(Mox::Ptr<Mlag::Status const> status, Wirl::IntfId intfId);

//@{
// The state-database directories of a cell's multicast transactions
// ("mrouteXactConfigDir-1" for cell 1).
VORN_EXPORT Mox::String cellNameToMrouteXactConfigDirName(Mox::String cellName);
VORN_EXPORT Mox::String cellNameToMrouteXactStatusDirName(Mox::String cellName);
VORN_EXPORT Mox::String cellNameToMcastXactConfigDirName(Mox::String cellName);
VORN_EXPORT Mox::String cellNameToMcastXactStatusDirName(Mox::String cellName);
//@}

namespace Hardware::Vorn {

// ---------------------------------------------------------------------------
// LAG identifier encodings
//
// A system aggregate port id is a LAG id with bit 15 set. The 14-bit LAG field
// of a destination splits between LAG id and member id by LAG mode. FAP types
// 1 to 3 and LAG modes 0 to 5 are the valid ones; others fail assertions.

// The LAG id with the aggregate bit set.
VORN_EXPORT U32 lagIdToSysAggrPortId(FapType fapType, LagId lagId);

// The LAG id of a system aggregate port id; LagId::null when the aggregate bit
// is clear. A rest above 1024 throws the LagId range exception.
VORN_EXPORT LagId sysAggrPortIdToLagId(FapType fapType, U32 sysAggrPortId);

//@{
// Bits of the LAG id and of the member id in `lagMode`, and what follows from
// them: members per LAG and the LAG id mask.
VORN_EXPORT U8 lagIdBitsForMode(FapType fapType, LagMode lagMode);
VORN_EXPORT U8 memberIdBitsForMode(FapType fapType, LagMode lagMode);
VORN_EXPORT U32 maxMemberIdsForMode(FapType fapType, LagMode lagMode);
VORN_EXPORT U32 lagIdMaskForMode(FapType fapType, LagMode lagMode);
//@}

// The system aggregate port id of a LAG destination: its low LAG-id bits,
// the member bits dropped.
VORN_EXPORT U32 lagDestIdToSysAggrPortId(FapType fapType, LagMode lagMode, DestinationId dest);

// A LAG destination (type 2) or a plain one (type 3) from a LAG-or-destination
// choice; an unset source leaves destination 0xFFFF. A plain destination
// above DestinationId::destDrop throws its range exception.
VORN_EXPORT DestinationId lagToDestination(LagDestinationId lagDest);

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

//@{
// The maximum (from 0) and minimum (from 0xFFFFFFFF) of `fn` over the
// revisions of `list`, walked in ascending order; a null list gives the start
// value. `fn` may change the list: the walk goes on from the successor of the
// revision it last handed to `fn`.
VORN_EXPORT U32 fapRevMajorLoopMax(FapRevMajorList::PtrConst list, FapRevMajorFn fn);
VORN_EXPORT U32 fapRevMajorLoopMin(FapRevMajorList::PtrConst list, FapRevMajorFn fn);
//@}
// As fapRevMajorLoopMin over the revisions that use threshold profile
// `profile` only.
VORN_EXPORT U32 fapRevMajorLoopMinPerEgrThreshProf(EgressBufThresholdsProfile profile,
                                                   FapRevMajorList::PtrConst list,
                                                   FapRevMajorFn fn);

//@{
// The loops above over supportedFapRevMajors(vornStatus, fapType). The
// supported revisions must not be empty (assertion).
VORN_EXPORT U32 maxForFapRevMajors(Status::PtrConst vornStatus, FapType fapType, FapRevMajorFn fn);
VORN_EXPORT U32 minForFapRevMajors(Status::PtrConst vornStatus, FapType fapType, FapRevMajorFn fn);
VORN_EXPORT U32 minForFapRevMajorsPerEgrThreshProf(EgressBufThresholdsProfile profile,
                                                   Status::PtrConst vornStatus, FapType fapType,
                                                   FapRevMajorFn fn);
//@}

//@{
// FAP port ids and network-interface ports of a revision. Revision 0 (and
// anything above 9) ends the process after a "Failed(" line.
VORN_EXPORT U32 maxFapPortIdsByFapRevMajor(FapRevMajor fapRevMajor);
VORN_EXPORT U32 maxNifPortsByFapRevMajor(FapRevMajor fapRevMajor);
//@}

// ---------------------------------------------------------------------------
// Sub-interfaces and LAG members
//
// A sub-interface is an Ethernet or port-channel interface with a number
// after a point (Ethernet3.100, Port-Channel5.100). A LAG sub-interface
// corresponds to the sub-interface of the same number on a member port.
// Missing configuration objects count as empty.

// Whether `sppid` lies in the system ports of sub-interfaces. Their first port
// must be positive (assertion).
VORN_EXPORT bool isSubIntf(const Status::PtrConst& vornStatus, SystemPhyPortId sppid);

// Whether an id is a sub-interface of an Ethernet port; false for any other id.
VORN_EXPORT bool isEthSubIntf(Wirl::IntfId intfId);

// Whether a sub-interface is one of a port-channel. Anything that is no
// sub-interface fails an assertion.
VORN_EXPORT bool isLagSubIntf(Wirl::IntfId subIntfId);

// The LAG sub-interface of a member port's sub-interface `memberSubIntfId`,
// or the empty id. With `useConfig` the LAG comes from the LAG configuration
// and, with `mustExist`, the LAG sub-interface must be in `subIntfStatus`;
// without it the port status tells which LAG sub-interface the port carries.
// `memberSubIntfId` must be a sub-interface: with `useConfig`, a plain port
// would make "Port-Channel5.0", which is no interface name, and
// Wirl::InvalidIntfName is thrown.
VORN_EXPORT Wirl::IntfId obtainLagSubIntfIdFromMemberSubIntfId(
    Lag::Input::Config::PtrConst lagConfig, Interface::SubIntfStatusDir::PtrConst subIntfStatus,
    SubIntfPortStatusDir::PtrConst portStatus, Wirl::IntfId memberSubIntfId, bool mustExist,
    bool useConfig);

// A member port's sub-interface of a port-channel sub-interface, or the empty
// id: with `useConfig` of the first member of the LAG in the configuration's
// order, else of the port that the port status names. A non-port-channel id
// fails an assertion; a port-channel without a sub-interface number throws
// Wirl::InvalidIntfName when a member is found, as above.
VORN_EXPORT const Wirl::IntfId obtainMemberSubIntfIdFromLagSubIntfId(
    Lag::Input::Config::PtrConst lagConfig, SubIntfPortStatusDir::PtrConst portStatus,
    Wirl::IntfId lagSubIntfId, bool useConfig);

// Whether `memberIntfId` is configured as a member of the port-channel of
// `lagSubIntfId`. A non-port-channel id fails an assertion.
VORN_EXPORT bool isLagMemberPresent(Lag::Input::Config::PtrConst lagConfig,
                                    Wirl::IntfId lagSubIntfId, Wirl::IntfId memberIntfId);

// ---------------------------------------------------------------------------
// Cores, TCAMs, slots and CPU ports
//
// System TCAM ids are laid out TCAM-major: every FAP's TCAM 0 first, then
// every FAP's TCAM 1. Revisions 6 and 8 have one TCAM per core; the others one
// per FAP.

// The FAP's base system core plus `core`; an unknown FAP counts from 2048.
// Throws the SystemCoreId range exception above 2048.
VORN_EXPORT SystemCoreId systemCoreId(Status::PtrConst vornStatus, FapId fapId, LocalCoreId core);

// The FAP's TCAM that serves `core`: the core on revisions 6 and 8, else 0.
// A revision above 9 ends the process after a "Failed(" line.
VORN_EXPORT LocalTcamId fapLocalCoreIdToLocalTcamId(Status::PtrConst vornStatus, FapId fapId,
                                                    LocalCoreId core);

// localTcam * maxFapsInSystem + fapId; throws above 2048.
VORN_EXPORT SystemTcamId fapLocalTcamIdToSystemTcamId(Status::PtrConst vornStatus, FapId fapId,
                                                      LocalTcamId localTcam);
// The system TCAM id of the TCAM that serves `core`: the two conversions
// above one after the other.
VORN_EXPORT SystemTcamId fapLocalCoreIdToSystemTcamId(Status::PtrConst vornStatus, FapId fapId,
                                                      LocalCoreId core);

//@{
// The FAP and the local core (= local TCAM) of a system TCAM id; the all-TCAMs
// id 2046 gives FAP 2046 and core 3. An id at or above maxTcamsInSystem ends
// the process after a "Failed(" line.
VORN_EXPORT FapId systemTcamIdToFapId(const Status::PtrConst& vornStatus, SystemTcamId tcamId);
VORN_EXPORT LocalCoreId systemTcamIdToLocalCoreId(const Status::PtrConst& vornStatus,
                                                  SystemTcamId tcamId);
//@}

// The FAPs a TCAM id addresses: all of them for 2046, else its one FAP. The
// null id fails an assertion.
VORN_EXPORT Regpath::Fapmask tcamIdToFapmask(const Status::PtrConst& vornStatus,
                                             SystemTcamId tcamId);

// The slot counted from the system's first linecard slot, or -1 outside the
// linecard slots. Needs the SystemLimits singleton's FRU configuration
// (assertion); creates the singleton when it does not exist yet.
VORN_EXPORT int zeroBasedSlotId(const Status::PtrConst& vornStatus, Fru::SlotId slotId);

//@{
// The first FAP and first system core of a linecard slot; null outside the
// linecard slots. FAPs (cores) per slot must be positive (assertion).
VORN_EXPORT FapId firstFapId(const Status::PtrConst& vornStatus, Fru::SlotId slotId);
VORN_EXPORT SystemCoreId firstSystemCoreId(const Status::PtrConst& vornStatus, Fru::SlotId slotId);
//@}

// The slice ("Linecard3", "FixedSystem") of a FAP, from its name. A FAP
// without a name ends the process as fapNameToLinecardName does.
VORN_EXPORT Mox::String fapIdToSliceName(Status::PtrConst vornStatus, FapId fapId);

// The revision of the first FAP of a slice; the zero record when the slice has
// no FAP or its FAP no revision.
VORN_EXPORT FapRevision sliceFapRev(Status::PtrConst vornStatus, Mox::String sliceName);

//@{
// CPU traffic-manager ports: FAP port 0 is system port 2 and FAP ports 133 to
// 137 are system ports 3 to 7. n counts them from 0 to 5; a larger n, or a
// FAP port that is no CPU TM port, fails an assertion.
VORN_EXPORT SystemPhyPortId getCpuTmSystemPhyPortId(FapPortId fpid);
VORN_EXPORT FapPortId nthCpuTmFapPortId(U16 nthCpuTm);
VORN_EXPORT SystemPhyPortId nthCpuTmSystemPhyPortId(U16 nthCpuTm);
//@}

}  // namespace Hardware::Vorn
