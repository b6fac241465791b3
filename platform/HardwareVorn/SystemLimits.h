// Hardware::Vorn::SystemLimits: the singleton entity of system limits. Of it
// the library reads the FRU configuration's linecard slot range.
//
//   auto limits = Mox::singletonIs<Hardware::Vorn::SystemLimits>();
//   limits->sysFruConfigIs(Fru::SlotId(3), Fru::SlotId(10));
#pragma once

#include "Fru/Fru.h"
#include "Mox/Ptr.h"

namespace Hardware::Vorn {

// The chassis's FRU configuration: its linecard slots run from
// minLinecardSlot to maxLinecardSlot.
struct SysFruConfig : public Mox::PtrInterface {
  SysFruConfig(Fru::SlotId min, Fru::SlotId max) : minLinecardSlot(min), maxLinecardSlot(max) {}
  const Fru::SlotId minLinecardSlot;
  const Fru::SlotId maxLinecardSlot;
};

class SystemLimits : public Mox::PtrInterface {
 public:
  static constexpr const char kTypeName[] = "Hardware::Vorn::SystemLimits";
  using Ptr = Mox::Ptr<SystemLimits>;
  using PtrConst = Mox::Ptr<SystemLimits const>;

  // The FRU configuration, or null before the platform has set it.
  Mox::Ptr<SysFruConfig const> sysFruConfig() const { return fru_; }
  void sysFruConfigIs(Fru::SlotId minLinecardSlot, Fru::SlotId maxLinecardSlot) {
    fru_ = Mox::Ptr<SysFruConfig const>(new SysFruConfig(minLinecardSlot, maxLinecardSlot));
  }
  void sysFruConfigDel() { fru_ = nullptr; }

 private:
  Mox::Ptr<SysFruConfig const> fru_;
};

}  // namespace Hardware::Vorn
