#include "HardwareVorn/SystemPhyPortId.h"

#include <atomic>

namespace Hardware::Vorn {
namespace {

std::atomic<U64> specialPorts{SystemPhyPortId::kDefaultSpecialCpuPorts};

}  // namespace

bool SystemPhyPortId::isSpecialCpuPort() const noexcept {
  return value() < 64 && ((specialCpuPorts() >> value()) & 1u);
}

U64 SystemPhyPortId::specialCpuPorts() noexcept {
  return specialPorts.load(std::memory_order_relaxed);
}

void SystemPhyPortId::specialCpuPortsIs(U64 mask) noexcept {
  specialPorts.store(mask, std::memory_order_relaxed);
}

}  // namespace Hardware::Vorn
