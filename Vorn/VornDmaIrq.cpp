// Interrupt affinity: which CPU serves a chip's MSI vectors, and writing that
// choice into the kernel's affinity file of each vector. Packet interrupts
// stay off CPU 0, which runs the rest of the system.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "HardwareVorn/SystemLimits.h"
#include "Mox/Assert.h"
#include "Mox/Singleton.h"
#include "Vorn/VornDma.h"
#include "Vorn/VornDmaPrivate.h"

namespace Hardware::Vorn {

namespace {

// Reads CPU 1's hyper-thread sibling mask into `siblings`. Returns false,
// having said why on standard error, when the topology cannot be read; an
// unparsable mask ends the process.
bool readCpu1Siblings(unsigned& siblings) {
  char path[96];
  std::snprintf(path, sizeof path, "/sys/devices/system/cpu/cpu%u/topology/thread_siblings", 1u);
  int fd = Kernel::open(path, O_RDONLY);
  if (fd < 0) {
    // Prints what open returned, not errno, as it always has.
    std::fprintf(stderr, "%s: failed to open %s errno %d\n", "getIrqAffinityMask", path, fd);
    return false;
  }
  char text[17] = {};
  ssize_t got = Kernel::read(fd, text, sizeof text - 1);
  Kernel::close(fd);
  if (got <= 0) {
    std::fprintf(stderr, "%s: failed to read %s rc %d\n", "getIrqAffinityMask", path,
                 static_cast<int>(got));
    return false;
  }
  int rc = std::sscanf(text, "%x", &siblings);
  MOX_ASSERT_TEXT(rc == 1, "rc == 1", "U32 Hardware::Vorn::getIrqAffinityMask(U32)");
  return true;
}

}  // namespace

U32 getIrqAffinityMask(U32 slot) {
  const long cpus = Kernel::sysconf(_SC_NPROCESSORS_ONLN);
  if (cpus == 1) return 1;
  // The CPU for the upper half of the chassis; CPU 1 serves the lower half.
  U32 cpu = cpus > 2 ? 2 : 1;
  unsigned siblings = 0;
  if (!readCpu1Siblings(siblings)) return 1;
  if (cpus <= 32 && siblings == ((1u << cpu) | 2u)) cpu = cpus >= 4 ? 3 : 1;

  SystemLimits::Ptr limits = Mox::singletonExists<SystemLimits>();
  if (!limits) limits = Mox::singletonIs<SystemLimits>();
  Mox::Ptr<SysFruConfig const> fru = limits->sysFruConfig();
  // Until the platform has published its FRU configuration the chassis has no
  // known linecard slots: it is served as a small system, by CPU 1.
  if (!fru) return 2;
  const U32 minSlot = fru->minLinecardSlot.value();
  const U32 count = fru->maxLinecardSlot.value() + 1 - minSlot;
  if (count > 4 && minSlot + count / 2 <= slot) return 1u << cpu;
  return 2;
}

namespace {

constexpr const char kSetFn[] = "vornDmaSetIrqAffinity";

// The interrupt numbers of the regular files in `dir`, in directory order.
// Closes `dir` before a name that is not a number throws out of here.
std::vector<int> msiIrqs(DIR* dir) {
  std::vector<int> irqs;
  while (dirent* e = Kernel::readdir(dir)) {
    if (e->d_type != DT_REG) continue;
    try {
      irqs.push_back(std::stoi(e->d_name));
    } catch (...) {
      Kernel::closedir(dir);
      throw;
    }
  }
  return irqs;
}

// Writes `cpumask` into "/proc/irq/<irq>/smp_affinity"; false, traced, when
// the file cannot be opened, written or closed.
bool setIrqAffinity(int irq, U32 cpumask) {
  char path[64];
  std::snprintf(path, sizeof path, "/proc/irq/%d/smp_affinity", irq);
  int fd = Kernel::open(path, O_RDWR);
  if (fd < 0) {
    VORN_DMA_TRACE(0, kSetFn, " failed to open ", path, " error ", std::strerror(errno));
    return false;
  }
  char mask[16];
  int len = std::snprintf(mask, sizeof mask, "%x", cpumask);
  ssize_t rc = Kernel::write(fd, mask, static_cast<std::size_t>(len));
  if (rc < 0) {
    VORN_DMA_TRACE(0, kSetFn, " failed to write cpumask to", path, " error ", std::strerror(errno));
    Kernel::close(fd);
    return false;
  }
  VORN_DMA_TRACE(8, kSetFn, " irq affinity cpumask set to  ", cpumask, " for ", path, " rc ", rc);
  if (Kernel::close(fd) != 0) {
    VORN_DMA_TRACE(0, kSetFn, " close ", path, " error ", std::strerror(errno));
    return false;
  }
  return true;
}

}  // namespace

int vornDmaSetIrqAffinity(Fru::PciHam::PtrConst ham, U32 cpumask) {
  if (dma::simulation()) return 0;
  if (cpumask > 255) {
    // The mask follows the name without a blank, as the trace always read.
    VORN_DMA_TRACE(0, kSetFn, cpumask, " not a valid cpumask");
    return -EINVAL;
  }
  VORN_DMA_TRACE(8, kSetFn, " cpumask ", cpumask);
  MOX_ASSERT_TEXT(ham, "ham",
                  "int Hardware::Vorn::vornDmaSetIrqAffinity(Fru::PciHam::PtrConst, U32)");
  Fru::PciHamImpl::PtrConst impl = ham->pciHamImpl();
  // A handle with no PCI function behind it has no vectors to reach: the
  // request cannot be carried out, so it fails like a missing directory.
  if (!impl) {
    VORN_DMA_TRACE(0, kSetFn, " no PCI device behind the handle");
    return -1;
  }
  const Fru::PciAddress a = impl->address();
  char dirPath[96];
  std::snprintf(dirPath, sizeof dirPath,
                "/sys/bus/pci/drivers/kelvra-bde/%04x:%02x:%02x.%01x/msi_irqs", a.domain, a.bus,
                a.device, a.function);
  DIR* dir = Kernel::opendir(dirPath);
  if (!dir) {
    VORN_DMA_TRACE(0, kSetFn, " failed to open ", dirPath, " error ", std::strerror(errno));
    return -1;
  }
  const std::vector<int> irqs = msiIrqs(dir);
  if (Kernel::closedir(dir) != 0) {
    VORN_DMA_TRACE(0, kSetFn, " closedir  ", dirPath, " error ", std::strerror(errno));
    return -1;
  }
  // Vectors set before a failure keep their new mask.
  for (int irq : irqs)
    if (!setIrqAffinity(irq, cpumask)) return -1;
  return 0;
}

}  // namespace Hardware::Vorn
