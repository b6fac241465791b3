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
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Kernel/Kernel.h"
#include "emu/DeviceState.h"
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

  // The next `count` commands with `keyword` are answered `error` without
  // being carried out (0 makes them succeed without effect).
  void answerNext(std::string_view keyword, int error, unsigned count = 1);

  // Every command text received, in order, including answered ones.
  std::vector<std::string> commands() const;
  // The errno answered to each received command, in order.
  std::vector<int> answers() const;
  void clearLog();

  // The text of "/proc/vorn-dma" as the driver renders it now.
  std::string procListing() const;

  // Devices.
  void pciDevicePresentIs(const std::string& pci, bool present = true);
  DeviceState& devices() { return devices_; }
  const DeviceState& devices() const { return devices_; }

  // sFlow counters and drop threshold.
  SflowState& sflow() { return sflow_; }
  const SflowState& sflow() const { return sflow_; }

  // The table the driver forwards everything else to.
  const Kernel::Ops& next() const noexcept { return *next_; }

 private:
  friend struct DriverAccess;

  int dispatch(char* buf, unsigned size, std::string& text);

  mutable std::recursive_mutex mutex_;
  DeviceState devices_;
  SflowState sflow_;
  std::map<std::string, std::pair<int, unsigned>, std::less<>> scripted_;
  std::vector<std::string> log_;
  std::vector<int> answers_;
  const Kernel::Ops* next_ = &Kernel::linuxOps();
  const Kernel::Ops* replaced_ = nullptr;
  bool isInstalled_ = false;
};

}  // namespace Emu
