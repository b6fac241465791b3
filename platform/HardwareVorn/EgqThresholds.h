// Hardware::Vorn::EgqThresholds: the egress queuing thresholds of one egress
// queuing profile: per port, per queue, and per drop precedence of a
// multicast queue. A value type; default-constructed every member is 0.
//
//   EgqThresholds t;
//   t.portUnicastBufferIs(250);
//   t.queueMulticastDpBufferIs(DropPrecedence(1), 95);
#pragma once

#include <array>
#include <ostream>

#include "HardwareVorn/QueueIds.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

class EgqThresholds {
 public:
  static constexpr std::size_t kDropPrecedences = 4;
  using PerDp = std::array<U32, kDropPrecedences>;

#define VORN_EGQ_FIELD(name)      \
  U32 name() const noexcept {     \
    return name##_;               \
  }                               \
  void name##Is(U32 v) noexcept { \
    name##_ = v;                  \
  }
  VORN_EGQ_FIELD(portUnicastDescriptor)
  VORN_EGQ_FIELD(portMulticastDescriptor)
  VORN_EGQ_FIELD(portUnicastDescriptorFlowControl)
  VORN_EGQ_FIELD(portUnicastBuffer)
  VORN_EGQ_FIELD(portMulticastBuffer)
  VORN_EGQ_FIELD(portUnicastBufferFlowControl)
  VORN_EGQ_FIELD(queueUnicastDescriptor)
  VORN_EGQ_FIELD(queueUnicastDescriptorFlowControl)
  VORN_EGQ_FIELD(queueMulticastReservedDescriptor)
  // Set by the agents that program multicast buffer reservation, not by the
  // threshold generator.
  VORN_EGQ_FIELD(queueMulticastReservedBuffer)
  VORN_EGQ_FIELD(queueUnicastBuffer)
  VORN_EGQ_FIELD(queueUnicastBufferFlowControl)
#undef VORN_EGQ_FIELD

  // The shared multicast descriptors and buffers of a queue per drop
  // precedence.
  U32 queueMulticastDpSharedDescriptor(DropPrecedence dp) const {
    return queueMulticastDpSharedDescriptor_.at(dp.value());
  }
  void queueMulticastDpSharedDescriptorIs(DropPrecedence dp, U32 v) {
    queueMulticastDpSharedDescriptor_.at(dp.value()) = v;
  }
  U32 queueMulticastDpBuffer(DropPrecedence dp) const {
    return queueMulticastDpBuffer_.at(dp.value());
  }
  void queueMulticastDpBufferIs(DropPrecedence dp, U32 v) {
    queueMulticastDpBuffer_.at(dp.value()) = v;
  }

  bool operator==(const EgqThresholds&) const noexcept = default;

 private:
  U32 portUnicastDescriptor_ = 0;
  U32 portMulticastDescriptor_ = 0;
  U32 portUnicastDescriptorFlowControl_ = 0;
  U32 portUnicastBuffer_ = 0;
  U32 portMulticastBuffer_ = 0;
  U32 portUnicastBufferFlowControl_ = 0;
  U32 queueUnicastDescriptor_ = 0;
  U32 queueUnicastDescriptorFlowControl_ = 0;
  U32 queueMulticastReservedDescriptor_ = 0;
  U32 queueMulticastReservedBuffer_ = 0;
  U32 queueUnicastBuffer_ = 0;
  U32 queueUnicastBufferFlowControl_ = 0;
  PerDp queueMulticastDpSharedDescriptor_{};
  PerDp queueMulticastDpBuffer_{};
};

}  // namespace Hardware::Vorn
