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

namespace Hardware::Vorn {

// ---------------------------------------------------------------------------
// Command channel

// Buffer capacities of the driver protocol; each is also the ioctl request
// number of the commands that use it.
inline constexpr unsigned kCommandSize = 256;
inline constexpr unsigned kDevStatsSize = 96;
inline constexpr unsigned kListingSize = 6240;
inline constexpr unsigned kSflowCounterSize = 128;

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

// True when "/proc/vorn-dma" (resp. "/dev/fabric") can be opened read-write.
// In simulation the first is true.
VORN_EXPORT bool vornDmaProcVornDmaPresent();
VORN_EXPORT bool vornDmaDevFabricPresent();

// ---------------------------------------------------------------------------
// Devices

// The driver's statistics record of a device. The library reads one word:
// `up`, non-zero when the device is up. The rest is the driver's.
struct fabdevstats {
  U32 header;
  U32 up;
  U32 driverData[22];
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
// Brings the device up or down; 19 (no such device) counts as done.
VORN_EXPORT int vornDmaDeviceUp(Mox::String name);
VORN_EXPORT int vornDmaDeviceDown(Mox::String name);
// Reads the device's statistics into `stats`. Simulation: the up word is 0.
VORN_EXPORT int vornDmaGetDevStats(Mox::String name, fabdevstats* stats);
// Sets `*up` from the statistics; on failure returns the error and leaves
// `*up` alone. Simulation: down.
VORN_EXPORT int vornDmaIsDeviceUp(Mox::String name, bool* up);
// Switches the driver's multi-processor mode. A refusal ends the process.
VORN_EXPORT int vornDmaMpcMode(bool on);
// The driver's listing of up devices / device parameters, as text. A refused
// listing ends the process. Simulation: empty.
VORN_EXPORT Mox::String vornDmaListUpDevices();
VORN_EXPORT Mox::String vornDmaListDeviceParams();

// ---------------------------------------------------------------------------
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
// Adds / removes config member `membername` of LAG `ifname`.
VORN_EXPORT int vornDmaLagMemberConfigAdd(const char* ifname, const char* membername);
VORN_EXPORT int vornDmaLagMemberConfigDel(const char* ifname, const char* membername);
// Removes all config members of LAG `lagname`.
VORN_EXPORT int vornDmaLagConfigMapDel(const char* lagname);
// The driver's LAG table as "/proc/vorn-dma" lists it; never null. Empty in
// simulation or when the file cannot be opened. A LAG or member id out of
// range throws Mox::RangeException with the id type's text; a malformed line
// inside a LAG section, or a config line before its LAG, ends the process.
VORN_EXPORT VornDmaLags::Ptr vornDmaListLags();

}  // namespace Hardware::Vorn
