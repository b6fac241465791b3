// VornDma: the library's side of the kernel driver that owns the FAPs' CPU
// packet path.
//
// Every command is one line of text ("devstate fap0 up") written into a local
// buffer and handed to the driver with one ioctl on "/dev/fabric"; the request
// number is the buffer's capacity. A command function returns the driver's
// error number (0 on success). When the environment variable SIMULATION_VMID
// is set, to anything including the empty string, the command functions touch
// no driver and return their simulation result. Refusals that mean library and
// driver disagree end the process through syserr(); each function says which.
#pragma once

#include <cstddef>

#include "HardwareVorn/Enums.h"
#include "HardwareVorn/Ids.h"
#include "HardwareVorn/VornDmaLags.h"
#include "Fru/Fru.h"
#include "Mox/String.h"
#include "Mox/Types.h"
#include "Vorn/Export.h"
#include "Wirl/EthAddr.h"

namespace Hardware::Vorn {

// ---------------------------------------------------------------------------
// Command channel

//@{
// Buffer capacities of the driver protocol; each is also the ioctl request
// number of the commands that use it.
inline constexpr unsigned kCommandSize = 256;
inline constexpr unsigned kDevStatsSize = 96;
inline constexpr unsigned kListingSize = 6240;
inline constexpr unsigned kSflowCounterSize = 128;
//@}

// Sends the NUL-terminated command in `buf` (capacity `size`) to the driver
// and returns 0, or the positive errno of the failed ioctl. On return `buf`
// holds what the driver wrote back. Opens "/dev/fabric" at the first call and
// keeps it open; if it cannot be opened the process ends through syserr().
// Every command except the statistics poll is written to the default ring
// trace file.
VORN_EXPORT int fab_ioctl(char* buf, unsigned int size);

// Prints `what`, a colon, a blank and the text of errno (as perror does) and
// aborts the process. Never returns.
[[noreturn]] VORN_EXPORT void syserr(const char* what);

// True when the environment variable KRIX_MODE is exactly "sai". Read once per
// process, at the first call.
VORN_EXPORT bool saimode();

//@{
// True when "/proc/vorn-dma" (resp. "/dev/fabric") can be opened read-write.
// In simulation the first is true.
VORN_EXPORT bool vornDmaProcVornDmaPresent();
VORN_EXPORT bool vornDmaDevFabricPresent();
//@}

// ---------------------------------------------------------------------------
// Devices

// The driver's statistics record of a device. The library reads one word:
// `up`, non-zero when the device is up. The rest is the driver's.
struct fabdevstats {
  U32 header;          // the driver's record header
  U32 up;              // non-zero when the device is up
  U32 driverData[22];  // the driver's own counters
};
static_assert(sizeof(fabdevstats) == kDevStatsSize, "the driver's record is 96 bytes");
static_assert(offsetof(fabdevstats, up) == 4, "the up word is at byte 4");

// Asks the driver whether the PCI device behind `ham` is present ("devpresent"
// with its PCI address; the name is not sent). False when `ham` has no PCI
// device. Simulation: true.
VORN_EXPORT bool vornDmaPresent(Mox::String name, Mox::Ptr<Fru::PciHam const> ham);
// Names the device at `ham`'s PCI address ("nopcidev" when `ham` is null).
// Returns 0 or 17 (already named). A vanished device (19) raises SIGBUS in the
// caller and returns 19 if the signal returns; other refusals end the process.
VORN_EXPORT int vornDmaDeviceRename(Mox::String name, Mox::Ptr<Fru::PciHam const> ham);
// Hands the device its chip type, FAP id and six parameters. Returns 0 or 16
// (already set); other refusals end the process.
VORN_EXPORT int vornDmaDeviceParam(Mox::String name, FapType type, FapId id, unsigned int p1,
                                   unsigned int p2, unsigned int p3, unsigned int p4,
                                   unsigned int p5, unsigned int p6);
// Cleans the device up; returns the driver's answer.
VORN_EXPORT int vornDmaDevcleanup(Mox::String name);
//@{
// Brings the device up or down; 19 (no such device) counts as done.
VORN_EXPORT int vornDmaDeviceUp(Mox::String name);
VORN_EXPORT int vornDmaDeviceDown(Mox::String name);
//@}
// Reads the device's statistics into `stats`. Simulation: the up word is 0.
VORN_EXPORT int vornDmaGetDevStats(Mox::String name, fabdevstats* stats);
// Sets `*up` from the statistics; on failure returns the error and leaves
// `*up` alone. Simulation: down.
VORN_EXPORT int vornDmaIsDeviceUp(Mox::String name, bool* up);
// Switches the driver's multi-processor mode. A refusal ends the process.
VORN_EXPORT int vornDmaMpcMode(bool on);
//@{
// The driver's listing of up devices / device parameters, as text. A refused
// listing ends the process. Simulation: empty.
VORN_EXPORT Mox::String vornDmaListUpDevices();
VORN_EXPORT Mox::String vornDmaListDeviceParams();
//@}

// ---------------------------------------------------------------------------
// Ports, VLANs and host devices
//
// The driver represents ports, port-channels and control ports as host network
// devices. `ifname` is the host device name (at most 15 characters). Every
// function returns 0 in simulation and otherwise the driver's answer, traced
// when it is a refusal, unless it says otherwise. None ends the process.

// Creates the host device `ifname` for system port `sysPort` in the driver
// and, when the driver has created it, sets its MAC address (`macAddr`, text
// "02:00:00:aa:bb:cc"), its up flag and a prio queueing discipline. `ctrl`
// marks a control port, `hwLag` a hardware LAG, whose system port is first
// mapped by vornDmaInternalSysPortIdIs(); both together are refused with 22
// and nothing is sent. `devName` (may be empty) and `portArg` are passed to the
// driver as they are. An existing device (17) is success and is left alone.
// In SAI mode a hardware LAG is not announced to the driver at all, and a
// device with a `devName` also carries its MAC address, which must not be null.
VORN_EXPORT int vornDmaIfadd(const char* ifname, int sysPort, int portArg, Mox::String devName,
                             bool ctrl, bool hwLag, const char* macAddr);
// Deletes the host device. In SAI mode port-channels ("PortChannel...") stay
// in the host namespace: nothing is sent and 0 is returned.
VORN_EXPORT int vornDmaIfdel(const char* ifname);
// Moves the host device to another system port.
VORN_EXPORT int vornDmaIfPortUpdate(const char* ifname, int sysPort);
// Sets the device's state in the driver; only in SAI mode (otherwise 0, nothing
// sent). A missing device (19) is returned without a trace.
VORN_EXPORT int vornDmaSetIntfState(Mox::String ifname, bool up);
// Sets or clears the native VLAN of the device. Sub-interfaces (a name with
// ".") have none: nothing is sent and 0 is returned.
VORN_EXPORT int vornDmaNativeVlan(const char* ifname, bool flag, unsigned short vlanId);
//@{
// Maps the VLAN range [startVlanId, endVlanId] with `innerVlanId` of the
// device to `vsi`, or removes that mapping.
VORN_EXPORT int vornDmaVlanVsiAdd(const char* ifname, unsigned short startVlanId,
                                  unsigned short endVlanId, unsigned short innerVlanId,
                                  unsigned short vsi);
VORN_EXPORT int vornDmaVlanVsiDel(const char* ifname, unsigned short startVlanId,
                                  unsigned short endVlanId, unsigned short innerVlanId);
//@}
// Gives a routed port its internal VLAN. A sub-interface name is cut at its
// first "." (et1.10 sets et1). A missing device (19) counts as success.
VORN_EXPORT int vornDmaRoutedPortSet(const char* ifname, unsigned int vlanId);
// Sets the encapsulation VLAN tag of a routed port.
VORN_EXPORT int vornDmaRoutedPortEncapVlanMapSet(const char* ifname, unsigned int vlanTag);
// Reads the host device's interface flags (sign-extended from 16 bits) into
// `*flags`; returns 0 or the errno of the failed request. Simulation: 0 and
// `*flags` untouched.
VORN_EXPORT int vornDmaIfFlags(const char* ifname, unsigned int* flags);

// ---------------------------------------------------------------------------
// QoS maps, PTP and VXLAN
//
// A refused QoS map means a broken driver: the process ends through syserr()
// with the command text. The per-device traffic-class tables tolerate a
// missing device (19) and, for add and update, an invalid argument (22),
// which are returned. Simulation: 0 and nothing sent, except for the two
// VXLAN setters, which always send.

//@{
// Maps VLAN priority `cos` to traffic class `tc` ("vprimap"), and back
// ("tcmap"); maps DSCP `dscp` to traffic class `tc` ("dscpmap").
VORN_EXPORT unsigned int vornDmaSetCosToTc(unsigned int cos, unsigned int tc);
VORN_EXPORT unsigned int vornDmaSetTcToCos(unsigned int tc, unsigned int cos);
VORN_EXPORT unsigned int vornDmaSetDscpToTc(unsigned int dscp, unsigned int tc);
//@}
// Installs the device's traffic-class-to-priority table: `map[i]` (8 entries)
// is the VLAN priority of class i. Sent as one octal word, class 0 in the
// last digit; entries are not masked, so 8 or more spills into the next class.
VORN_EXPORT unsigned int vornDmaTcToVpriMapAdd(const char* ifname, unsigned int* map);
// Removes the device's table.
VORN_EXPORT unsigned int vornDmaTcToVpriMapDel(const char* ifname);
// Changes one entry of the device's table.
VORN_EXPORT unsigned int vornDmaTcToVpriMapUpdate(const char* ifname, unsigned int tc,
                                                  unsigned int cos);
// Makes the driver drop (or pass) the PTP event packets the CPU sends.
// Refusals are returned.
VORN_EXPORT unsigned int vornDmaSetPtpDropEventTxPkts(bool drop);
//@{
// Maps VXLAN `vni` to `vlanId`; sets the VTEP learn mode. Always sent, also in
// simulation; a refusal is traced only.
VORN_EXPORT void vornDmaVniToVlanIs(unsigned int vni, unsigned int vlanId);
VORN_EXPORT void vornDmaVtepLearnModeIs(unsigned int mode);
//@}
// The driver's internal form of a hardware-LAG system port id: bits 0-13
// kept, bit 15 moved to bit 14, bit 14 dropped.
VORN_EXPORT unsigned short vornDmaInternalSysPortIdIs(unsigned short sysPortId);

// ---------------------------------------------------------------------------
// L3, MLAG and virtual cable
//
// An invalid-argument answer (22) means the library sent what the driver
// cannot accept: the process ends through syserr() with the command text.
// Other refusals are returned. The two virtual-cable commands return every
// refusal. Simulation: 0 and nothing sent.

// The virtual (anycast) router MAC and its mask.
VORN_EXPORT unsigned int vornDmaVirtualMacSet(Wirl::EthAddrWithMask mac);
//@{
// Enables the virtual IPv4 / IPv6 addresses of `vlanId`.
VORN_EXPORT unsigned int vornDmaIpAddrVirtualSet(unsigned int vlanId, bool enable);
VORN_EXPORT unsigned int vornDmaIp6AddrVirtualSet(unsigned int vlanId, bool enable);
//@}
//@{
// The MLAG peer's router MAC; the MLAG shared router MAC.
VORN_EXPORT unsigned int vornDmaPeerRouterMacSet(Wirl::EthAddr mac);
VORN_EXPORT unsigned int vornDmaMlagSharedRouterMacIs(Wirl::EthAddr mac);
//@}
// ARP snooping on `vlanId`.
VORN_EXPORT unsigned int vornDmaArpSnoopingVlan(unsigned short vlanId, bool on);
// Maps private VLAN `secondary` to its `primary`.
VORN_EXPORT unsigned int vornDmaPvlanMap(unsigned short primary, unsigned short secondary);
// Whether `vlanId` is routed.
VORN_EXPORT unsigned int vornDmaVlanRoutingStatus(unsigned short vlanId, unsigned short enabled);
//@{
// The EtherType of the virtual-cable encapsulation; a device's mux id.
VORN_EXPORT unsigned int vornDmaVcableSetProto(unsigned short proto);
VORN_EXPORT unsigned int vornDmaVcableSetMuxid(const char* ifname, unsigned short muxid);
//@}
// LAGs
//
// The driver keeps its own copy of the LAGs (port-channels) that the chip
// forwards to and from the CPU. The commands return the driver's answer (0 on
// success). In simulation they do nothing and return 0; in SAI mode the member
// and config commands do nothing and return 0 as well.

// Hands the driver its LAG parameters ("drvparams"): the two numbers and the
// chip family, passed through unchanged, each printed as signed decimal. Not
// subject to SAI mode.
VORN_EXPORT int vornDmaSetLagMode(unsigned lagMode, unsigned lagParam, FapType fapType);
// Adds member netdevice `membername` with `memberId` to LAG `ifname`. While
// the driver answers 19 (the member netdevice is not there yet) it waits
// 10 ms and asks again, at most 10 times.
VORN_EXPORT int vornDmaLagMemberAdd(const char* ifname, const char* membername, int memberId);
// Removes the member with `memberId` from LAG `ifname`.
VORN_EXPORT int vornDmaLagMemberDel(const char* ifname, int memberId);
//@{
// Adds / removes config member `membername` of LAG `ifname`.
VORN_EXPORT int vornDmaLagMemberConfigAdd(const char* ifname, const char* membername);
VORN_EXPORT int vornDmaLagMemberConfigDel(const char* ifname, const char* membername);
//@}
// Removes all config members of LAG `lagname`.
VORN_EXPORT int vornDmaLagConfigMapDel(const char* lagname);
// The driver's LAG table as "/proc/vorn-dma" lists it; never null. Empty in
// simulation or when the file cannot be opened. A LAG or member id out of
// range throws Mox::RangeException with the id type's text; a malformed line
// inside a LAG section, or a config line before its LAG, ends the process.
VORN_EXPORT VornDmaLags::Ptr vornDmaListLags();
// Raw transmit and sFlow

// Sends one raw frame of `len` payload bytes at `data` to destination
// `destId` of the chip through the driver's "txraw" netdevice; `name` is the
// target netdevice the driver hands the frame to. The payload is at most 183
// bytes and the name at most 63 characters; more ends the process. Socket,
// index, bind and write failures are traced, not returned. Simulation: nothing.
VORN_EXPORT void vornDmaTxRaw(Mox::String name, U32 destId, unsigned len, unsigned char* data);

//@{
// The driver's counts of sFlow samples received (resp. dropped). A refused
// read ends the process; a reply that is not a number counts 0.
// Simulation: 0.
VORN_EXPORT U64 vornDmaRxSflowCount();
VORN_EXPORT U64 vornDmaRxSflowDropCount();
//@}

// Tells the driver which share of the hardware's sFlow samples to drop when
// software samples 1 in `sampleRate` and the hardware 1 in `HwSampleRate`:
// (sampleRate - HwSampleRate) / sampleRate of them, stretched over 32 bits,
// or none unless `dropEnabled`. `sampleRate` below `HwSampleRate` ends the
// process. Refusals are traced. Simulation: nothing.
VORN_EXPORT void vornDmaSflowSampleRateSet(U32 sampleRate, U32 HwSampleRate, bool dropEnabled,
                                           FapType fapType);
// Sets the drop threshold of `fapType` chips to 0. Simulation: nothing.
VORN_EXPORT void vornDmaDisableSflowDrops(FapType fapType);

// Copies the driver's listing "/proc/vorn-dma" to standard error (debugging;
// no simulation guard). Failures are reported with perror.
VORN_EXPORT void vornDmaDump();

// ---------------------------------------------------------------------------
// Interrupt affinity

// The CPU mask (bit n = CPU n) for the interrupts of a chip on linecard slot
// `slot`: CPU 1 in small systems and for the lower half of the linecard slots
// of a chassis of five or more, another CPU (2, or 3 when 2 is CPU 1's
// hyper-thread sibling) for the upper half; CPU 0 on a one-CPU machine or when
// CPU 1's topology cannot be read. Needs the SystemLimits singleton's FRU
// configuration for chassis; an unparsable sibling mask ends the process.
VORN_EXPORT U32 getIrqAffinityMask(U32 slot);

// Writes `cpumask` (CPUs 0-7) into the affinity file of every MSI vector of
// the PCI function behind `ham`. Returns 0 (also when it has no vectors),
// -22 for a mask above 255, -1 when a file or directory fails; vectors set
// before a failure keep their new mask. A null `ham` ends the process; an
// MSI entry whose name is not a number throws std::invalid_argument or
// std::out_of_range. Simulation: 0.
VORN_EXPORT int vornDmaSetIrqAffinity(Fru::PciHam::PtrConst ham, U32 cpumask);

}  // namespace Hardware::Vorn
