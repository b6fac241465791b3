// Bad input to raw transmit, the sFlow commands and interrupt affinity:
// vornDmaTxRaw, vornDmaRxSflowCount and vornDmaRxSflowDropCount (whose
// outside input is the driver's reply text), vornDmaSflowSampleRateSet,
// vornDmaDisableSflowDrops, getIrqAffinityMask (with the topology file's
// text) and vornDmaSetIrqAffinity.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <stdexcept>
#include <string>
#include <vector>

#include "HardwareVorn/SystemLimits.h"
#include "Kernel/Kernel.h"
#include "Mox/Singleton.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"
#include "support/SysRoot.h"

using namespace Hardware::Vorn;

namespace {

// A packet socket that keeps the size of the frame written to it.
struct SentFrames {
  static inline std::vector<std::size_t> sizes;
  static int socket(int, int, int) { return 4343; }
  static int ioctl(int, unsigned long, void*) { return 0; }
  static int bind(int, const sockaddr*, socklen_t) { return 0; }
  static ssize_t write(int, const void*, std::size_t n) {
    sizes.push_back(n);
    return static_cast<ssize_t>(n);
  }
  static int close(int) { return 0; }
};

class BadInputTxRaw : public testing::Test {
 protected:
  BadInputTxRaw() {
    SentFrames::sizes.clear();
    ops.socket = SentFrames::socket;
    ops.ioctl = SentFrames::ioctl;
    ops.bind = SentFrames::bind;
    ops.write = SentFrames::write;
    ops.close = SentFrames::close;
  }
  // Lengths beyond the buffer are refused before the payload is read.
  void send(const std::string& name, unsigned len, U32 destId = 0) {
    unsigned char data[kCommandSize];
    std::fill(std::begin(data), std::end(data), 0xA5);
    vornDmaTxRaw(Mox::String(name.c_str()), destId, len, data);
  }
  VornTest::ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Kernel::Ops ops = Kernel::linuxOps();
  Kernel::ScopedOps scoped{&ops};
};

// The payload is at most 183 bytes and the name at most 63 characters; one
// more of either ends the process on its assertion.
CATALOGUE_TEST_F(BadInputTxRaw, PayloadAndNameAtTheirLimits, "vornDmaTxRaw") {
  send("", 0);
  send(std::string(63, 'n'), 183, UINT_MAX);
  EXPECT_EQ(SentFrames::sizes, (std::vector<std::size_t>{132, 255}));
  EXPECT_DEATH(send("fap3", 184),
               "Assertion `len < \\( CMDSZ - \\( sizeof \\( struct txrawhdr \\) \\+ 4 \\+ 2 \\) "
               "\\)' failed");
  EXPECT_DEATH(send("fap3", UINT_MAX - 1), "Assertion `len < \\( CMDSZ");
  EXPECT_DEATH(send(std::string(64, 'n'), 1), "Assertion `name.bytes\\(\\) < 64' failed");
}

class BadInputSflow : public testing::Test {
 protected:
  VornTest::ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
};

// The reply is read as strtoull reads it, and never past the 128 bytes it
// came in.
CATALOGUE_TEST_F(BadInputSflow, CounterReplies, "vornDmaRxSflowCount", "vornDmaRxSflowDropCount") {
  const std::pair<std::string, U64> rows[] = {
      {"12345", 12345},
      {"", 0},
      {"busy", 0},
      {"-1", ULLONG_MAX},  // strtoull negates
      {"18446744073709551615", ULLONG_MAX},
      {"18446744073709551616", ULLONG_MAX},  // saturates
      {std::string(200, '9'), ULLONG_MAX},   // cut at the buffer
      {"0x10", 0},                           // base 10
  };
  for (const auto& [reply, want] : rows) {
    driver.sflow().samplesReply = reply;
    driver.sflow().dropsReply = reply;
    EXPECT_EQ(vornDmaRxSflowCount(), want) << reply;
    EXPECT_EQ(vornDmaRxSflowDropCount(), want) << reply;
  }
}

// The threshold is computed in 64 bits: the largest rates neither overflow
// nor divide by zero.
CATALOGUE_TEST_F(BadInputSflow, SampleRatesAtTheirEnds, "vornDmaSflowSampleRateSet",
                 "vornDmaDisableSflowDrops") {
  const struct {
    U32 rate, hw;
    bool drop;
    U32 threshold;
  } rows[] = {
      {0, 0, true, 0},
      {1, 0, true, UINT_MAX},
      {UINT_MAX, 0, true, UINT_MAX},
      {UINT_MAX, 1, true, UINT_MAX - 1},
      {UINT_MAX, UINT_MAX, true, 0},
      {UINT_MAX, 1, false, 0},
  };
  for (const auto& r : rows) {
    vornDmaSflowSampleRateSet(r.rate, r.hw, r.drop, fapTypeJericho);
    EXPECT_EQ(driver.commands().back(),
              "sflow_drop_threshold " + std::to_string(r.threshold) + " 3")
        << r.rate << "/" << r.hw;
  }
  vornDmaDisableSflowDrops(static_cast<FapType>(UINT_MAX));
  EXPECT_EQ(driver.commands().back(), "sflow_drop_threshold 0 4294967295");
  EXPECT_DEATH(vornDmaSflowSampleRateSet(0, 1, false, fapTypeArad),
               "Assertion `sampleRate >= HwSampleRate' failed");
  EXPECT_DEATH(vornDmaSflowSampleRateSet(UINT_MAX - 1, UINT_MAX, true, fapTypeArad),
               "Assertion `sampleRate >= HwSampleRate' failed");
}

constexpr const char kSiblings[] = "/sys/devices/system/cpu/cpu1/topology/thread_siblings";
constexpr const char kMsi[] = "/sys/bus/pci/drivers/kelvra-bde/0000:03:00.0/msi_irqs";

class BadInputIrq : public testing::Test {
 protected:
  void SetUp() override { Mox::singletonDel<SystemLimits>(); }
  void TearDown() override { Mox::singletonDel<SystemLimits>(); }
  VornTest::ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  VornTest::SysRoot sys;
};

// Eight CPUs in a chassis of linecard slots 1 to 16: slots at the ends of
// U32, and sibling texts that are short, prefixed, longer than the 16 bytes
// read, or not hexadecimal.
CATALOGUE_TEST_F(BadInputIrq, SlotsAndSiblingTexts, "getIrqAffinityMask") {
  sys.onlineCpusIs(8);
  Mox::singletonIs<SystemLimits>()->sysFruConfigIs(Fru::SlotId(1), Fru::SlotId(16));
  const struct {
    const char* siblings;
    U32 slot, mask;
  } rows[] = {
      {"00000006\n", 0, 2}, {"00000006\n", 9, 8}, {"00000006\n", UINT_MAX, 8},    {"6", 9, 8},
      {"0x6\n", 9, 8},      {"00000002\n", 9, 4}, {"000000000000000006\n", 9, 4},  // only 16 bytes
                                                                                   // are read: 0
  };
  for (const auto& r : rows) {
    sys.fileIs(kSiblings, r.siblings);
    EXPECT_EQ(getIrqAffinityMask(r.slot), r.mask) << r.siblings << " slot " << r.slot;
  }
  for (const char* garbage : {"zz\n", "\n", " "}) {
    sys.fileIs(kSiblings, garbage);
    EXPECT_DEATH(getIrqAffinityMask(9), "getIrqAffinityMask\\(U32\\): Assertion `rc == 1' failed")
        << garbage;
  }
}

CATALOGUE_TEST_F(BadInputIrq, MasksHandlesAndVectorNames, "vornDmaSetIrqAffinity") {
  const Fru::PciHam::PtrConst ham = Fru::PciHam::pciHamIs({0, 3, 0, 0});
  sys.dirIs(kMsi);
  sys.fileIs(std::string(kMsi) + "/40", "");
  sys.fileIs("/proc/irq/40/smp_affinity", "");
  EXPECT_EQ(vornDmaSetIrqAffinity(ham, 0), 0);
  EXPECT_EQ(sys.file("/proc/irq/40/smp_affinity"), "0");
  EXPECT_EQ(vornDmaSetIrqAffinity(ham, 255), 0);
  EXPECT_EQ(sys.file("/proc/irq/40/smp_affinity"), "ff");
  EXPECT_EQ(vornDmaSetIrqAffinity(ham, 256), -EINVAL);
  EXPECT_EQ(vornDmaSetIrqAffinity(ham, UINT_MAX), -EINVAL);
  EXPECT_EQ(sys.file("/proc/irq/40/smp_affinity"), "ff");
  // A handle with no PCI function has no vectors to reach.
  EXPECT_EQ(vornDmaSetIrqAffinity(Fru::PciHam::pciHamWithoutDevice(), 1), -1);
  EXPECT_DEATH(vornDmaSetIrqAffinity(nullptr, 1), "Assertion `ham' failed");
  // Vector names that are not interrupt numbers.
  sys.fileIs(std::string(kMsi) + "/msi", "");
  EXPECT_THROW(vornDmaSetIrqAffinity(ham, 1), std::invalid_argument);
}

}  // namespace
