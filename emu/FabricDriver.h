// Emu::FabricDriver: an in-process model of the kernel driver behind
// "/dev/fabric" and "/proc/vorn-dma".
//
// Installed, it takes the library's kernel seam: opens of "/dev/fabric" and
// "/proc/vorn-dma" reach the model, and everything else goes to the table that
// was in force before (Linux by default). It parses each command as the
// driver does, keeps the driver's state and answers with the driver's error
// numbers. A command it cannot parse, or one sent with a buffer size that does
// not match it, is answered 22. Tests script answers and faults:
//
//   Emu::FabricDriver driver;          // installed until it is destroyed
//   driver.pciDevicePresentIs("0000:03:00.0");
//   driver.answerNext("devname", 19, 3);  // the next three "devname" get 19
//   driver.answerNext("devstate fap1", 5);  // the next "devstate fap1 ..." gets 5
//
// It also models the host side of the devices it creates: AF_INET datagram
// sockets are handed out as emulated descriptors whose SIOCSIFHWADDR,
// SIOCGIFHWADDR, SIOCGIFFLAGS and SIOCSIFFLAGS requests act on the emulated
// netdevices (an unknown name answers ENODEV), so that tests need no root. In
// "real host devices" mode it creates a TAP device for each "ifadd" instead
// and lets sockets and their requests go to Linux.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Kernel/Kernel.h"
#include "emu/DeviceState.h"
#include "emu/HostState.h"
#include "emu/LagState.h"
#include "emu/SflowState.h"

namespace Emu {

class FabricDriver {
 public:
  // The descriptor number that stands for "/dev/fabric" while a driver is
  // installed. It is far above any real descriptor and stays the same across
  // drivers, so the library's cached descriptor keeps working when a test
  // replaces the driver.
  static constexpr int kFabricFd = 1 << 24;

  // Creates the driver and installs it (see install()).
  FabricDriver();
  // Uninstalls it if it is installed.
  ~FabricDriver();
  FabricDriver(const FabricDriver&) = delete;
  FabricDriver& operator=(const FabricDriver&) = delete;

  // Makes this driver the one behind the kernel seam; calls it does not model
  // go to the table in force before.
  void install();
  void uninstall();
  // The installed driver, or null.
  static FabricDriver* installed() noexcept;

  // The ioctl: carries out the command in `buf` sent with capacity `size`;
  // returns 0 or an errno and may write an answer into `buf`.
  int command(char* buf, unsigned size);

  // The next `count` commands that start with `prefix` are answered `error`
  // without being carried out (0 makes them succeed without effect). A prefix
  // matches at a token boundary: the command's text equals it or continues
  // with a blank after it, so a keyword alone matches every command of that
  // keyword. When several prefixes match, the longest one answers.
  void answerNext(std::string_view prefix, int error, unsigned count = 1);

  // A scripted answer still pending.
  struct ScriptedAnswer {
    std::string prefix;
    int error;
    unsigned remaining;
  };
  // The pending scripted answers, by prefix.
  std::vector<ScriptedAnswer> scriptedAnswers() const;
  // Drops every pending scripted answer.
  void clearScriptedAnswers();

  // Every command text received, in order, including answered ones.
  std::vector<std::string> commands() const;
  // The errno answered to each received command, in order.
  std::vector<int> answers() const;
  // Forgets the commands, answers and tc command lines received so far (a
  // long-running user keeps the logs from growing without bound).
  void clearLog();

  // The text of "/proc/vorn-dma" as the driver renders it now.
  std::string procListing() const;

  // Devices.
  void pciDevicePresentIs(const std::string& pci, bool present = true);
  DeviceState& devices() { return devices_; }
  const DeviceState& devices() const { return devices_; }

  // Host devices, VLANs, QoS, VXLAN, L3, MLAG and virtual-cable state, and the
  // emulated host netdevices.
  HostState& host() { return host_; }
  const HostState& host() const { return host_; }
  // Creates an emulated host netdevice that the driver does not own (one that
  // another part of the system made, as a port-channel in SAI mode).
  void hostNetdevIs(const std::string& name);
  // Real host devices on (see above) or off (emulated; the default). Switch it
  // before the first host device is made.
  void realHostDevicesIs(bool on);
  bool realHostDevices() const;
  // The next `count` requests `request` (SIOCSIFHWADDR, ...) on emulated
  // sockets fail with `error`.
  void hostRequestFailsNext(unsigned long request, int error, unsigned count = 1);
  // The next emulated datagram socket cannot be opened: `error`.
  void socketFailsNext(int error);
  // Opens an emulated datagram socket; the descriptor, or -1 with errno set.
  int hostSocket();
  // One request on an emulated socket; 0 or an errno.
  int hostRequest(unsigned long request, void* arg);
  // Makes / removes the host side of a device the driver creates or deletes:
  // an emulated netdevice, or a TAP device in real mode. 0 or an errno.
  int hostNetdevCreate(const std::string& name);
  // Answers "/sbin/tc qdisc add dev NAME ..." for the emulated netdevices
  // (0 when NAME exists, 1 as tc does when it cannot find the device) while
  // on, instead of running the host's tc; off restores the real shell.
  void tcEmulatedIs(bool on);
  // The tc command lines answered so far.
  std::vector<std::string> tcCommands() const;
  int runTc(const char* command);
  int hostNetdevRemove(const std::string& name);
  // LAGs (see LagState.h for how the driver names and numbers them).
  LagState& lags() { return lags_; }
  const LagState& lags() const { return lags_; }
  // sFlow counters and drop threshold.
  SflowState& sflow() { return sflow_; }
  const SflowState& sflow() const { return sflow_; }

  // The table the driver forwards everything else to.
  const Kernel::Ops& next() const noexcept { return *next_; }

 private:
  friend struct DriverAccess;

  // Scripted answers by prefix: the error and how many commands it answers.
  using Scripts = std::map<std::string, std::pair<int, unsigned>, std::less<>>;

  int dispatch(char* buf, unsigned size, std::string& text);
  // The scripted answer for a command's text: the longest matching prefix.
  Scripts::iterator scriptFor(std::string_view text);

  mutable std::recursive_mutex mutex_;
  DeviceState devices_;
  HostState host_;
  bool realHost_ = false;
  std::map<unsigned long, std::pair<int, unsigned>> hostFaults_;
  int socketFault_ = 0;
  bool tcEmulated_ = false;
  std::vector<std::string> tcCommands_;
  LagState lags_;
  SflowState sflow_;
  Scripts scripted_;
  std::vector<std::string> log_;
  std::vector<int> answers_;
  const Kernel::Ops* next_ = &Kernel::linuxOps();
  const Kernel::Ops* replaced_ = nullptr;
  bool isInstalled_ = false;
};

}  // namespace Emu
