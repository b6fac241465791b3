// What every vornctl command shares: the driver in use, the output mode, and
// the two ways a command fails (a caller error, exit 2; a driver refusal,
// exit 1).
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "emu/FabricDriver.h"

namespace vornctl {

// Exit statuses.
inline constexpr int kOk = 0;
inline constexpr int kRefused = 1;
inline constexpr int kBadInput = 2;

// A value the library would treat as a caller error: caught before the call.
struct BadInput : std::runtime_error {
  BadInput(const std::string& argument, const std::string& allowed)
      : std::runtime_error(argument + ": " + allowed) {}
};

// The driver refused a request: names the call, the errno and its text.
struct Refusal : std::runtime_error {
  Refusal(const std::string& call, int error);
  int error;
};

enum class DriverChoice { kAuto, kKernel, kEmulated, kRemote };

// The --driver value as a choice. For remote (and for auto when VORN_FABRIC
// is set) it also sets VORN_FABRIC to the daemon's path, so that the kernel
// seam sends the driver's requests there from its first use on: call it
// before anything reaches the library.
DriverChoice driverChoiceOf(const std::string& value);

class Context {
 public:
  Context(DriverChoice choice, bool json) : choice_(choice), json_(json) {}

  // Scripted answers for the embedded emulator, "keyword=errno[:count]"
  // (tests and demonstrations: "lagmember_add=0:1" loses one member).
  void emulatorScriptIs(std::vector<std::string> script) { script_ = std::move(script); }

  // Chooses the driver at the first call: the fabric daemon (remote), the
  // kernel's when "/dev/fabric" is there (auto), or the embedded emulator.
  // Says which on standard error.
  void useDriver();

  bool json() const { return json_; }
  bool emulated() const { return emulator_ != nullptr; }
  bool remote() const { return choice_ == DriverChoice::kRemote; }
  const char* driverName() const {
    return emulated() ? "emulated" : remote() ? "remote" : "kernel";
  }
  // The emulator, when it is the driver in use (null otherwise).
  Emu::FabricDriver* emulator() { return emulator_.get(); }

  // Turns a non-zero answer of `call` into a Refusal.
  void check(const std::string& call, int rc) const;

  // Prints a JSON document (JSON mode) on standard output.
  void printJson(nlohmann::json doc) const;

 private:
  DriverChoice choice_;
  bool json_;
  bool chosen_ = false;
  std::vector<std::string> script_;
  std::unique_ptr<Emu::FabricDriver> emulator_;
};

}  // namespace vornctl
