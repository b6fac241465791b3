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
// Raw transmit and sFlow

// Sends one raw frame of `len` payload bytes at `data` to destination
// `destId` of the chip through the driver's "txraw" netdevice; `name` is the
// target netdevice the driver hands the frame to. The payload is at most 183
// bytes and the name at most 63 characters; more ends the process. Socket,
// index, bind and write failures are traced, not returned. Simulation: nothing.
VORN_EXPORT void vornDmaTxRaw(Mox::String name, U32 destId, unsigned len, unsigned char* data);

// The driver's counts of sFlow samples received (resp. dropped). A refused
// read ends the process; a reply that is not a number counts 0.
// Simulation: 0.
VORN_EXPORT U64 vornDmaRxSflowCount();
VORN_EXPORT U64 vornDmaRxSflowDropCount();

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
