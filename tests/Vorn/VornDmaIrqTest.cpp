// Interrupt affinity against a "/sys" and "/proc/irq" tree the tests build.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "HardwareVorn/SystemLimits.h"
#include "Mox/Singleton.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornDma.h"
#include "support/Support.h"
#include "support/SysRoot.h"

using namespace Hardware::Vorn;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using VornTest::ScopedEnv;
using VornTest::SysRoot;
using VornTest::TraceCapture;

namespace {

constexpr const char kSiblings[] = "/sys/devices/system/cpu/cpu1/topology/thread_siblings";
constexpr const char kMsi[] = "/sys/bus/pci/drivers/kelvra-bde/0000:03:00.0/msi_irqs";

std::string affinityFile(int irq) {
  return "/proc/irq/" + std::to_string(irq) + "/smp_affinity";
}

class IrqAffinityMask : public testing::Test {
 protected:
  void SetUp() override { Mox::singletonDel<SystemLimits>(); }
  void TearDown() override { Mox::singletonDel<SystemLimits>(); }
  // CPU 1 has the sibling list `siblings`; linecard slots are min..max.
  void machineIs(long cpus, const char* siblings, U32 min, U32 max) {
    sys.onlineCpusIs(cpus);
    sys.fileIs(kSiblings, siblings);
    Mox::singletonIs<SystemLimits>()->sysFruConfigIs(Fru::SlotId(min), Fru::SlotId(max));
  }
  SysRoot sys;
};

// A chassis of more than four slots serves its upper half (from min + count
// / 2) from a CPU that does not share CPU 1's core; above 32 CPUs the siblings
// are not looked at; 16 bytes of their text are read, as hexadecimal.
CATALOGUE_TEST_F(IrqAffinityMask, MaskOfEachSlot, "getIrqAffinityMask") {
  const struct {
    long cpus;
    const char* siblings;
    U32 min, max, slot, mask;
  } rows[] = {
      // clang-format off
      {2, "00000003\n", 1, 16, 16, 2},  {8, "00000006\n", 1, 16, 8, 2},
      {8, "00000006\n", 1, 16, 9, 8},   {8, "00000006\n", 1, 16, UINT_MAX, 8},
      {8, "00000022\n", 1, 16, 9, 4},   {8, "00000022\n", 3, 7, 4, 2},
      {8, "00000022\n", 3, 7, 5, 4},    {3, "00000006\n", 1, 16, 16, 2},
      {4, "00000006\n", 1, 16, 16, 8},  {40, "00000006\n", 1, 16, 16, 4},
      {8, "00000006\n", 1, 4, 5, 2},    {8, "00000006\n", 1, 5, 3, 8},
      {8, "000000000000000006\n", 1, 16, 9, 4}, {8, "00000006\n", 1, 16, 0, 2},
      // clang-format on
  };
  sys.onlineCpusIs(1);
  EXPECT_EQ(getIrqAffinityMask(9), 1u);
  EXPECT_THAT(sys.opened(), IsEmpty());
  sys.onlineCpusIs(8);  // no system limits yet: they are made, and small
  sys.fileIs(kSiblings, "00000006\n");
  EXPECT_EQ(getIrqAffinityMask(16), 2u);
  EXPECT_TRUE(Mox::singletonExists<SystemLimits>());
  for (const auto& r : rows) {
    machineIs(r.cpus, r.siblings, r.min, r.max);
    EXPECT_EQ(getIrqAffinityMask(r.slot), r.mask)
        << r.cpus << " CPUs, siblings " << r.siblings << " slots " << r.min << ".." << r.max
        << " slot " << r.slot;
  }
  // A sibling list that is no number ends the process.
  for (const char* garbage : {"zz\n", "\n"}) {
    machineIs(8, garbage, 1, 16);
    EXPECT_DEATH(getIrqAffinityMask(16), "getIrqAffinityMask\\(U32\\): Assertion `rc == 1' failed")
        << garbage;
  }
}

TEST_F(IrqAffinityMask, UnreadableTopologyFallsBackToCpu0) {
  machineIs(8, "00000006\n", 1, 16);
  std::filesystem::remove(sys.path(kSiblings));
  testing::internal::CaptureStderr();
  EXPECT_EQ(getIrqAffinityMask(16), 1u);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            std::string("getIrqAffinityMask: failed to open ") + kSiblings + " errno -1\n");

  sys.fileIs(kSiblings, "");
  testing::internal::CaptureStderr();
  EXPECT_EQ(getIrqAffinityMask(16), 1u);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            std::string("getIrqAffinityMask: failed to read ") + kSiblings + " rc 0\n");
}

class IrqAffinitySet : public testing::Test {
 protected:
  // MSI entries `irqs`, each with an empty affinity file.
  void vectorsIs(const std::vector<int>& irqs) {
    sys.dirIs(kMsi);
    for (int irq : irqs) {
      sys.fileIs(std::string(kMsi) + "/" + std::to_string(irq), "");
      sys.fileIs(affinityFile(irq), "");
    }
  }
  // The MSI entries as the directory lists them.
  std::vector<int> listed() const {
    std::vector<int> out;
    for (const auto& e : std::filesystem::directory_iterator(sys.path(kMsi)))
      if (e.is_regular_file()) out.push_back(std::stoi(e.path().filename().string()));
    return out;
  }
  Fru::PciHam::PtrConst ham = Fru::PciHam::pciHamIs({0, 3, 0, 0});
  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  SysRoot sys;
};

TEST_F(IrqAffinitySet, WritesTheMaskInHexToEveryRegularEntry) {
  vectorsIs({33, 34});
  sys.dirIs(std::string(kMsi) + "/power");
  sys.symlinkIs(std::string(kMsi) + "/35", "33");
  sys.fileIs(affinityFile(35), "");
  TraceCapture trace;
  EXPECT_EQ(vornDmaSetIrqAffinity(ham, 255), 0);
  EXPECT_EQ(sys.file(affinityFile(33)), "ff");
  EXPECT_EQ(sys.file(affinityFile(34)), "ff");
  EXPECT_EQ(sys.file(affinityFile(35)), "");
  EXPECT_THAT(trace.texts(), Contains("vornDmaSetIrqAffinity irq affinity cpumask set to  255 for "
                                      "/proc/irq/33/smp_affinity rc 2"));
}

CATALOGUE_TEST_F(IrqAffinitySet, BadMasksEntriesAndHandles, "vornDmaSetIrqAffinity") {
  vectorsIs({33});
  TraceCapture trace;
  EXPECT_EQ(vornDmaSetIrqAffinity(ham, 256), -22);
  EXPECT_THAT(sys.opened(), IsEmpty());
  EXPECT_THAT(trace.texts(), ElementsAre("vornDmaSetIrqAffinity256 not a valid cpumask"));
  EXPECT_EQ(vornDmaSetIrqAffinity(ham, 0), 0);
  EXPECT_EQ(sys.file(affinityFile(33)), "0");
  sys.fileIs(std::string(kMsi) + "/msi", "");
  EXPECT_THROW(vornDmaSetIrqAffinity(ham, 2), std::invalid_argument);
  EXPECT_DEATH(vornDmaSetIrqAffinity(nullptr, 2),
               "vornDmaSetIrqAffinity\\(Fru::PciHam::PtrConst, U32\\): Assertion `ham' failed");
}

TEST_F(IrqAffinitySet, MissingDirectoryOrAffinityFileFails) {
  TraceCapture trace;
  EXPECT_EQ(vornDmaSetIrqAffinity(ham, 2), -1);
  EXPECT_THAT(trace.texts(), Contains(std::string("vornDmaSetIrqAffinity failed to open ") + kMsi +
                                      " error No such file or directory"));
  vectorsIs({40});
  std::filesystem::remove(sys.path(affinityFile(40)));
  EXPECT_EQ(vornDmaSetIrqAffinity(ham, 2), -1);
  EXPECT_THAT(trace.texts(),
              Contains("vornDmaSetIrqAffinity failed to open /proc/irq/40/smp_affinity"
                       " error No such file or directory"));
  EXPECT_EQ(vornDmaSetIrqAffinity(Fru::PciHam::pciHamWithoutDevice(), 2), -1);
}

TEST_F(IrqAffinitySet, FailedWriteKeepsTheVectorsSetBeforeIt) {
  vectorsIs({33, 34, 35});
  const std::vector<int> order = listed();
  ASSERT_EQ(order.size(), 3u);
  std::filesystem::remove(sys.path(affinityFile(order[1])));
  sys.symlinkIs(affinityFile(order[1]), "/dev/full");
  TraceCapture trace;
  EXPECT_EQ(vornDmaSetIrqAffinity(ham, 4), -1);
  EXPECT_EQ(sys.file(affinityFile(order[0])), "4");
  EXPECT_EQ(sys.file(affinityFile(order[2])), "");
  EXPECT_THAT(trace.texts(), Contains("vornDmaSetIrqAffinity failed to write cpumask to" +
                                      affinityFile(order[1]) + " error No space left on device"));
}

}  // namespace
