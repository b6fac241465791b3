// Lag::Input::Config: the LAG agent's input configuration: which LAG each
// member port belongs to, and the members of each LAG. Both are ordered by
// interface name, so walks meet members in a repeatable order.
//
//   Lag::Input::Config::Ptr config(new Lag::Input::Config());
//   config->memberIs(Wirl::IntfId("Ethernet3"), Wirl::IntfId("Port-Channel5"));
#pragma once

#include <set>

#include "Mox/Collection.h"
#include "Mox/Ptr.h"
#include "Wirl/IntfId.h"

namespace Lag::Input {

class Config : public Mox::PtrInterface {
 public:
  using Ptr = Mox::Ptr<Config>;
  using PtrConst = Mox::Ptr<Config const>;
  using Members = std::set<Wirl::IntfId>;

  // Member port -> its LAG interface.
  const Mox::Collection<Wirl::IntfId, Wirl::IntfId>& membership() const noexcept {
    return membership_;
  }
  // LAG interface -> its member ports.
  const Mox::Collection<Wirl::IntfId, Members>& members() const noexcept { return members_; }

  // Makes `member` a port of `lag`, taking it out of the LAG it was in.
  void memberIs(const Wirl::IntfId& member, const Wirl::IntfId& lag) {
    memberDel(member);
    membership_.is(member, lag);
    Members ports = members_.valueOr(lag, Members());
    ports.insert(member);
    members_.is(lag, std::move(ports));
  }
  // Takes `member` out of its LAG; a LAG left without members is dropped.
  void memberDel(const Wirl::IntfId& member) {
    const Wirl::IntfId* lag = membership_.find(member);
    if (!lag) return;
    const Wirl::IntfId old = *lag;
    Members ports = members_.valueOr(old, Members());
    ports.erase(member);
    if (ports.empty())
      members_.del(old);
    else
      members_.is(old, std::move(ports));
    membership_.del(member);
  }

 private:
  Mox::Collection<Wirl::IntfId, Wirl::IntfId> membership_;
  Mox::Collection<Wirl::IntfId, Members> members_;
};

}  // namespace Lag::Input
