// LagDevice::operator=: the one operation of the LAG agent's model that this
// library defines; it is exported from here.
#include "HardwareVorn/VornDmaLags.h"
#include "Vorn/Export.h"

namespace Hardware::Vorn {

VORN_EXPORT LagDevice& LagDevice::operator=(const LagDevice& other) {
  if (this != &other) {
    // Hold the source's name before ours is released: when the source's text
    // lives only through this record (a = a through aliases), dropping ours
    // first would free it.
    Mox::String name(other.name_);
    name_ = std::move(name);
    lagId_ = other.lagId_;
    members_ = other.members_;
    config_ = other.config_;
  }
  sysAggrPortId_ = other.sysAggrPortId_;
  lagMode_ = other.lagMode_;
  return *this;
}

}  // namespace Hardware::Vorn
