// Interface::SubIntfStatusDir: the status of the sub-interfaces that exist.
//
//   Interface::SubIntfStatusDir::Ptr dir(new Interface::SubIntfStatusDir());
//   dir->intfStatusIs(Wirl::IntfId("Port-Channel5.100"));
#pragma once

#include "Mox/Collection.h"
#include "Mox/Ptr.h"
#include "Wirl/IntfId.h"

namespace Interface {

struct SubIntfStatus {
  Wirl::IntfId intfId;
};

class SubIntfStatusDir : public Mox::PtrInterface {
 public:
  using Ptr = Mox::Ptr<SubIntfStatusDir>;
  using PtrConst = Mox::Ptr<SubIntfStatusDir const>;

  // The status of each sub-interface present.
  const Mox::Collection<Wirl::IntfId, SubIntfStatus>& intfStatus() const noexcept {
    return intfStatus_;
  }
  void intfStatusIs(const Wirl::IntfId& id) { intfStatus_.is(id, {id}); }
  void intfStatusDel(const Wirl::IntfId& id) { intfStatus_.del(id); }

 private:
  Mox::Collection<Wirl::IntfId, SubIntfStatus> intfStatus_;
};

}  // namespace Interface
