// Hardware::Vorn::SubIntfPortStatusDir: for each sub-interface of a LAG, the
// member port that carries it.
//
//   SubIntfPortStatusDir::Ptr dir(new SubIntfPortStatusDir());
//   dir->lagSubIntfToPhyIntfStatus().is(Wirl::IntfId("Port-Channel5.100"),
//                                       Wirl::IntfId("Ethernet3"));
#pragma once

#include "Mox/Collection.h"
#include "Mox/Ptr.h"
#include "Wirl/IntfId.h"

namespace Hardware::Vorn {

class SubIntfPortStatusDir : public Mox::PtrInterface {
 public:
  using Ptr = Mox::Ptr<SubIntfPortStatusDir>;
  using PtrConst = Mox::Ptr<SubIntfPortStatusDir const>;

  // LAG sub-interface -> the physical interface that carries it.
  const Mox::Collection<Wirl::IntfId, Wirl::IntfId>& lagSubIntfToPhyIntfStatus() const noexcept {
    return lagSubIntfToPhyIntfStatus_;
  }
  Mox::Collection<Wirl::IntfId, Wirl::IntfId>& lagSubIntfToPhyIntfStatus() noexcept {
    return lagSubIntfToPhyIntfStatus_;
  }

 private:
  Mox::Collection<Wirl::IntfId, Wirl::IntfId> lagSubIntfToPhyIntfStatus_;
};

}  // namespace Hardware::Vorn
