// Mlag::Status: the MLAG agent's status, of which the library reads the MLAG
// state of each interface.
//
//   Mlag::Status::Ptr mlag(new Mlag::Status());
//   mlag->intfStatusIs(Wirl::IntfId("Port-Channel5"), Mlag::mlagStateActive);
#pragma once

#include "Mox/Collection.h"
#include "Mox/Ptr.h"
#include "Mox/Types.h"
#include "Wirl/IntfId.h"

namespace Mlag {

// The MLAG state of an interface. The MLAG agent owns the meaning of the
// values; what the library relies on is that 3, and only 3, marks a
// port-channel that is an MLAG interface.
enum MlagState : U32 {
  mlagStateUnknown_ = 0,
  mlagStateInactive = 1,
  mlagStateLocal = 2,
  mlagStateActive = 3,
};

struct IntfStatus {
  Wirl::IntfId intfId;
  MlagState mlagState = mlagStateUnknown_;
};

class Status : public Mox::PtrInterface {
 public:
  using Ptr = Mox::Ptr<Status>;
  using PtrConst = Mox::Ptr<Status const>;

  // The record of each interface the agent knows.
  const Mox::Collection<Wirl::IntfId, IntfStatus>& intfStatus() const noexcept {
    return intfStatus_;
  }
  void intfStatusIs(const Wirl::IntfId& id, MlagState state) { intfStatus_.is(id, {id, state}); }
  void intfStatusDel(const Wirl::IntfId& id) { intfStatus_.del(id); }

 private:
  Mox::Collection<Wirl::IntfId, IntfStatus> intfStatus_;
};

}  // namespace Mlag
