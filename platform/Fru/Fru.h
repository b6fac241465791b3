// Hardware-access objects of the FRU library: the handle of a PCI function
// (Fru::PciHam, whose implementation knows the PCI address) and slot numbers.
#pragma once

#include <compare>
#include <cstdint>

#include "Mox/Ptr.h"
#include "Mox/Types.h"

namespace Fru {

// Domain, bus, device and function of a PCI function.
struct PciAddress {
  std::uint16_t domain = 0;
  std::uint8_t bus = 0;
  std::uint8_t device = 0;
  std::uint8_t function = 0;
};

// The access implementation behind a handle.
class HamImpl : public Mox::PtrInterface {
 public:
  using PtrConst = Mox::Ptr<HamImpl const>;
};

class PciHamImpl : public HamImpl {
 public:
  using PtrConst = Mox::Ptr<PciHamImpl const>;
  explicit PciHamImpl(PciAddress address) : address_(address) {}
  PciAddress address() const noexcept { return address_; }

 private:
  PciAddress address_;
};

class Ham : public Mox::PtrInterface {
 public:
  using Ptr = Mox::Ptr<Ham>;
  using PtrConst = Mox::Ptr<Ham const>;
  // The implementation, or null when no device is behind the handle.
  HamImpl::PtrConst hamImpl() const noexcept { return impl_; }

 protected:
  explicit Ham(HamImpl::PtrConst impl) : impl_(impl) {}

 private:
  HamImpl::PtrConst impl_;
};

// The handle of one PCI function.
class PciHam : public Ham {
 public:
  using Ptr = Mox::Ptr<PciHam>;
  using PtrConst = Mox::Ptr<PciHam const>;

  // A handle with a PCI device at `address`.
  static PtrConst pciHamIs(PciAddress address) {
    return PtrConst(new PciHam(HamImpl::PtrConst(new PciHamImpl(address))));
  }
  // A handle with no PCI implementation behind it.
  static PtrConst pciHamWithoutDevice() { return PtrConst(new PciHam(nullptr)); }

  // The PCI implementation, or null.
  PciHamImpl::PtrConst pciHamImpl() const noexcept {
    return PciHamImpl::PtrConst(dynamic_cast<const PciHamImpl*>(hamImpl().get()));
  }

 private:
  explicit PciHam(HamImpl::PtrConst impl) : Ham(impl) {}
};

// A chassis slot number.
class SlotId {
 public:
  constexpr SlotId() noexcept = default;
  constexpr SlotId(U32 value) noexcept : value_(value) {}  // NOLINT(google-explicit-constructor)
  constexpr U32 value() const noexcept { return value_; }
  constexpr auto operator<=>(const SlotId&) const noexcept = default;

 private:
  U32 value_ = 0;
};

}  // namespace Fru
