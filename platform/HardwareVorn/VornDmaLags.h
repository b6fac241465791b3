// The LAG model of the LAG agent: the driver's LAG table as the library reads
// it from "/proc/vorn-dma" (VornDmaLags of LagDevice of LagMemberDevice).
//
//   VornDmaLags::Ptr lags = vornDmaLagsFactory("vornDmaLags");
//   LagDevice po3("po3", LagId(5));
//   po3.lagMemberDeviceIs(LagMemberDevice("et1", LagMemberId(0)));
//   po3.lagMemberConfigIs("et7", true);
//   lags->lagDeviceIs(po3);
//
// Collections iterate in key order, so listings and comparisons are
// deterministic.
#pragma once

#include <cstddef>
#include <map>
#include <utility>

#include "HardwareVorn/Ids.h"
#include "Mox/FlatMap.h"
#include "Mox/Name.h"
#include "Mox/Ptr.h"
#include "Mox/String.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

// One member netdevice of a LAG: its driver name and its member id.
class LagMemberDevice {
 public:
  // The empty member: no name, member id null.
  LagMemberDevice() = default;
  LagMemberDevice(Mox::String name, LagMemberId memberId, bool active = false)
      : name_(std::move(name)), memberId_(memberId), active_(active) {}

  const Mox::String& name() const noexcept { return name_; }
  LagMemberId memberId() const noexcept { return memberId_; }
  // True when the LAG agent has the member forwarding; the driver's listing
  // does not say, so what is read from it is false.
  bool active() const noexcept { return active_; }
  void activeIs(bool active) noexcept { active_ = active; }

  bool operator==(const LagMemberDevice&) const = default;

 private:
  Mox::String name_;
  LagMemberId memberId_;
  bool active_ = false;
};

// One LAG as the driver lists it: "po" and the port-channel number, its LAG
// id (null when the driver has none for it), its member netdevices by name and
// its config members by interface name.
class LagDevice {
 public:
  // A LAG has tens of members at most: sorted vectors, not a node per entry.
  using LagMemberDeviceMap = Mox::FlatMap<Mox::String, LagMemberDevice>;
  using LagMemberConfigMap = Mox::FlatMap<Mox::String, bool>;

  // The empty record (no name, LAG id null): it stands for "no LAG".
  LagDevice() = default;
  LagDevice(Mox::String name, LagId lagId) : name_(std::move(name)), lagId_(lagId) {}
  // A LAG with its member netdevices, built in one go (FlatMap::assign) by
  // whoever has them all at hand, such as the reader of the listing.
  LagDevice(Mox::String name, LagId lagId, LagMemberDeviceMap members)
      : name_(std::move(name)), lagId_(lagId), members_(std::move(members)) {}
  LagDevice(const LagDevice&) = default;
  LagDevice(LagDevice&&) = default;
  ~LagDevice() = default;
  // Whole-record assignment. It is the one operation of these types that
  // libvorn.so defines (and exports); this layer never assigns a LagDevice,
  // so it links without the library. A move assigns through it too.
  __attribute__((visibility("default"))) LagDevice& operator=(const LagDevice& other);

  const Mox::String& name() const noexcept { return name_; }
  LagId lagId() const noexcept { return lagId_; }
  bool isEmpty() const noexcept { return *this == LagDevice(); }

  // Member netdevices, keyed by member name.
  const LagMemberDeviceMap& lagMemberDevices() const noexcept { return members_; }
  // The member named `name`, or null.
  const LagMemberDevice* lagMemberDevice(const Mox::String& name) const;
  // Inserts `member`, replacing one of the same name.
  void lagMemberDeviceIs(const LagMemberDevice& member);
  void lagMemberDeviceIs(LagMemberDevice&& member);
  void lagMemberDeviceDel(const Mox::String& name);

  // Config members, keyed by interface name.
  const LagMemberConfigMap& lagMemberConfigs() const noexcept { return config_; }
  // The value stored for `intfName`; false when there is none.
  bool lagMemberConfig(const Mox::String& intfName) const;
  void lagMemberConfigIs(Mox::String intfName, bool value) {
    // Inline: the reader of the listing adds one per config line. The first
    // block holds as many as a LAG has members in the usual LAG modes. The
    // driver lists config members in order: adding past the last one costs
    // no search.
    if (config_.empty()) config_.reserve(kUsualMembers);
    config_.insert_or_assign(std::move(intfName), value);
  }
  // Adds config member `intfName` whose name is past every config member's
  // there is, without comparing it: for a builder that has put them in order
  // itself (checked in debug builds only), such as the reader of the listing.
  // The name is built in place from `intfName` (a Mox::String, or what one
  // is built from).
  template <typename Name>
  void lagMemberConfigAppend(Name&& intfName, bool value) {
    if (config_.empty()) config_.reserve(kUsualMembers);
    config_.emplace_back(std::forward<Name>(intfName), value);
  }
  void lagMemberConfigDel(const Mox::String& intfName);

  // The two trailing fields belong to the LAG agent: the system aggregate port
  // and the LAG mode it last programmed for this LAG. The driver's listing
  // does not carry them; assignment copies them.
  U16 sysAggrPortId() const noexcept { return sysAggrPortId_; }
  void sysAggrPortIdIs(U16 id) noexcept { sysAggrPortId_ = id; }
  U8 lagMode() const noexcept { return lagMode_; }
  void lagModeIs(U8 mode) noexcept { lagMode_ = mode; }

  bool operator==(const LagDevice&) const = default;

 private:
  // Members per LAG in LAG modes 0 and 1.
  static constexpr std::size_t kUsualMembers = 16;

  Mox::String name_;
  LagId lagId_;
  LagMemberDeviceMap members_;
  LagMemberConfigMap config_;
  U16 sysAggrPortId_ = 0;
  U8 lagMode_ = 0;
};

// The LAG table, keyed by LAG name.
class VornDmaLags : public Mox::PtrInterface {
 public:
  using Ptr = Mox::Ptr<VornDmaLags>;
  using PtrConst = Mox::Ptr<VornDmaLags const>;
  using LagDeviceMap = std::map<Mox::String, LagDevice>;

  explicit VornDmaLags(Mox::Name name) : name_(std::move(name)) {}

  const Mox::Name& name() const noexcept { return name_; }

  const LagDeviceMap& lagDevices() const noexcept { return lags_; }
  std::size_t lagDeviceSize() const noexcept { return lags_.size(); }
  // The LAG named `name`, or null.
  const LagDevice* lagDevice(const Mox::String& name) const;
  // Inserts `lag`, or replaces the entry of the same name whole. Returns the
  // stored entry, valid until that entry is replaced or removed.
  LagDevice& lagDeviceIs(const LagDevice& lag);
  LagDevice& lagDeviceIs(LagDevice&& lag);
  void lagDeviceDel(const Mox::String& name);
  // The stored LAG named `name`, to change in place, or null. The pointer
  // stays valid until that entry is replaced or removed.
  LagDevice* lagDeviceInPlace(const Mox::String& name);
  // Adds a config member to the stored LAG `lagName` in place; the same result
  // as copying the entry, adding to the copy and storing it back, without the
  // copy. False (nothing changed) when there is no such LAG.
  bool lagDeviceMemberConfigIs(const Mox::String& lagName, Mox::String intfName, bool value);

 private:
  Mox::Name name_;
  LagDeviceMap lags_;
};

// Creates an empty LAG table named `name` ("vornDmaLags").
VornDmaLags::Ptr vornDmaLagsFactory(Mox::Name name);

}  // namespace Hardware::Vorn
