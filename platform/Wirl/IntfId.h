// Wirl::IntfId: an interface identifier built from an interface name.
//
//   Wirl::IntfId eth("Ethernet3/1");        // or Wirl::IntfId(Mox::String(...))
//   Wirl::IntfId sub("Port-Channel5.100");
//   Wirl::IntfId none;                      // the empty id ("not found")
//
// Names it accepts, each number decimal without leading zeros:
//   `Ethernet<n>`, `Ethernet<n>/<n>`, `Ethernet<n>/<n>/<n>` (an optional `.<sub>`)
//   `Port-Channel<n>`                                       (an optional `.<sub>`)
//   `Vlan<1-4094>`, `Loopback<n>`, `Management<n>[/<n>]`, `Vxlan<n>`
// Numbers are 0 to 65535, a sub-interface number 1 to 65535. Any other
// non-empty name throws Wirl::InvalidIntfName; the empty name gives the empty
// id. The kind tests, the Ethernet module and the sub-interface numbers are
// the static functions of EthIntfId, PortChannelIntfId, SubIntfId and the
// other kind classes below.
#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <stdexcept>

#include "Mox/String.h"
#include "Mox/Types.h"

namespace Wirl {

// A name that is not an interface name.
class InvalidIntfName : public std::invalid_argument {
 public:
  explicit InvalidIntfName(const std::string& name)
      : std::invalid_argument("invalid interface name: \"" + name + "\"") {}
};

class IntfId {
 public:
  enum class Kind : U8 {
    none,  // the empty id
    ethernet,
    portChannel,
    vlan,
    loopback,
    management,
    vxlanTunnel,
  };

  // The empty id.
  IntfId() noexcept = default;
  // The id of `name`; throws InvalidIntfName when it is not an interface name.
  explicit IntfId(const Mox::String& name);
  explicit IntfId(const char* name) : IntfId(Mox::String(name)) {}

  Kind kind() const noexcept { return kind_; }
  bool empty() const noexcept { return kind_ == Kind::none; }
  // The full name ("Ethernet3/1.100"); empty for the empty id.
  const Mox::String& stringValue() const noexcept { return name_; }
  // The abbreviated name ("Et3/1.100", "Po5", "Vx1").
  Mox::String shortName() const;
  // With a sub-interface number: the part before the point; else the id.
  IntfId parent() const;
  // The sub-interface number, 0 when there is none.
  U16 subIntf() const noexcept { return subIntf_; }
  // The linecard of a modular Ethernet name (the first of three numbers); 0
  // for names of a fixed system (one or two numbers) and for other kinds.
  U16 module() const noexcept { return module_; }
  U32 hash() const noexcept;

  bool operator==(const IntfId& o) const noexcept { return name_ == o.name_; }
  // Ordered by name, which is what makes walks of keyed collections repeatable.
  auto operator<=>(const IntfId& o) const noexcept { return name_ <=> o.name_; }

 private:
  Mox::String name_;
  Kind kind_ = Kind::none;
  U16 module_ = 0;
  U16 subIntf_ = 0;
  U16 parentLength_ = 0;  // characters before the sub-interface point
};

// The name; the empty id renders as nothing.
std::ostream& operator<<(std::ostream& os, const IntfId& id);

// Kind tests. Ethernet and port-channel tests hold for their sub-interfaces too.
struct EthIntfId {
  static bool isEthIntfId(const IntfId& id) noexcept { return id.kind() == IntfId::Kind::ethernet; }
  static U16 module(const IntfId& id) noexcept { return id.module(); }
  static U16 subIntf(const IntfId& id) noexcept { return id.subIntf(); }
};
struct PortChannelIntfId {
  static bool isPortChannelIntfId(const IntfId& id) noexcept {
    return id.kind() == IntfId::Kind::portChannel;
  }
  static U16 subIntf(const IntfId& id) noexcept { return id.subIntf(); }
};
struct SubIntfId {
  static bool isSubIntfId(const IntfId& id) noexcept { return id.subIntf() != 0; }
  static IntfId parentIntfId(const IntfId& id) { return id.parent(); }
};
struct VlanIntfId {
  static bool isVlanIntfId(const IntfId& id) noexcept { return id.kind() == IntfId::Kind::vlan; }
};
struct LoopbackIntfId {
  static bool isLoopbackIntfId(const IntfId& id) noexcept {
    return id.kind() == IntfId::Kind::loopback;
  }
};
struct MgmtIntfId {
  static bool isMgmtIntfId(const IntfId& id) noexcept {
    return id.kind() == IntfId::Kind::management;
  }
};
struct VxlanTunnelIntfId {
  static bool isVxlanTunnelIntfId(const IntfId& id) noexcept {
    return id.kind() == IntfId::Kind::vxlanTunnel;
  }
};

// The host network device of an Ethernet or port-channel interface: "et"
// and the numbers joined by `_` (Ethernet3/1 -> `et3_1`), or "po" and the
// number as the driver names LAGs (Port-Channel5 -> po5); a sub-interface
// keeps its suffix (`et3_1.100`). Other kinds have no device: the empty name.
Mox::String intfDeviceName(const IntfId& id);

}  // namespace Wirl

template <>
struct std::hash<Wirl::IntfId> {
  std::size_t operator()(const Wirl::IntfId& id) const noexcept { return id.hash(); }
};
