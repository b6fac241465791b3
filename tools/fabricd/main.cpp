// vorn-fabricd: owns one emulated fabric driver and serves it to every
// process that sets VORN_FABRIC to its socket.
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "emu/FabricDriver.h"
#include "fabricd/FabricServer.h"
#include "fabricd/SocketPath.h"

namespace {

constexpr char kUsage[] =
    "Usage: vorn-fabricd [--socket PATH] [--host emulated|real] [--pci ADDR]...\n"
    "Owns one emulated fabric driver and serves it to the processes that set\n"
    "VORN_FABRIC=PATH: their /dev/fabric, /proc/vorn-dma, host netdevice requests\n"
    "and tc command lines reach it, and vornctl fault adds scripted answers.\n"
    "\n"
    "Options:\n"
    "  --socket PATH  the socket to listen on, made owner-only (default\n"
    "                 $XDG_RUNTIME_DIR/vorn/fabric.sock, /run/vorn/fabric.sock for\n"
    "                 root; the vorn directory is made 0700 when missing)\n"
    "  --host MODE    emulated (default): the driver's host netdevices, their\n"
    "                 requests and tc are emulated; real: each device gets a TAP\n"
    "                 device on this host (needs root)\n"
    "  --pci ADDR     a PCI device present, as 0000:03:00.0 (repeatable); without\n"
    "                 it, every address is (chips are whatever is brought up)\n"
    "  --help         this text\n"
    "  --version      the version\n"
    "\n"
    "Exit status: 0 when stopped by SIGINT or SIGTERM, 1 when it cannot listen,\n"
    "2 for a bad argument or socket path, or a daemon already serving there.\n";

struct Options {
  std::string socket;
  bool realHost = false;
  std::vector<std::string> pci;
};

// "0000:03:00.0" in lower case, as the library names devices; false when
// `text` is no PCI address.
bool pciAddress(std::string text, std::string& out) {
  unsigned domain, bus, device, function;
  char extra;
  if (text.size() != 12 || std::sscanf(text.c_str(), "%4x:%2x:%2x.%1x%c", &domain, &bus, &device,
                                       &function, &extra) != 4)
    return false;
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
  out = text;
  return true;
}

// Parses the arguments into `o`; the message of the first bad one, or empty.
std::string parse(int argc, char** argv, Options& o) {
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg != "--socket" && arg != "--host" && arg != "--pci") return arg + ": unknown option";
    if (i + 1 == argc) return arg + ": needs a value";
    const std::string value = argv[++i];
    if (arg == "--socket") {
      if (value.empty()) return "--socket: an empty path";
      o.socket = value;
    } else if (arg == "--host") {
      if (value != "emulated" && value != "real") return "--host: emulated or real";
      o.realHost = value == "real";
    } else if (!pciAddress(value, o.pci.emplace_back())) {
      return "--pci: " + value + " is not a PCI address (0000:03:00.0)";
    }
  }
  return {};
}

int fail(const std::string& why, int status) {
  std::fprintf(stderr, "vorn-fabricd: %s\n", why.c_str());
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  // The daemon is the driver: its own host requests (TAP devices, sockets)
  // must not be sent to a daemon, least of all to itself.
  ::unsetenv("VORN_FABRIC");
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--help") == 0) return std::fputs(kUsage, stdout), 0;
    if (std::strcmp(argv[i], "--version") == 0) return std::puts("vorn-fabricd " VORN_VERSION), 0;
  }
  Options o;
  std::string error = parse(argc, argv, o);
  if (o.socket.empty() && error.empty()) o.socket = fabricd::defaultSocketPath(error);
  if (error.empty()) error = fabricd::socketPathProblem(o.socket);
  if (!error.empty()) return fail(error, 2);

  // The socket file is the owner's alone (0600) from the moment it exists.
  ::umask(0177);
  // A client gone before its answer is written is an error on that
  // connection, not the end of the daemon.
  std::signal(SIGPIPE, SIG_IGN);
  Emu::FabricDriver driver;
  driver.realHostDevicesIs(o.realHost);
  for (const std::string& pci : o.pci) driver.pciDevicePresentIs(pci);
  driver.devices().anyPciPresent = o.pci.empty();
  try {
    fabricd::serve(driver, o.socket);
  } catch (const std::exception& e) {
    return fail(o.socket + ": " + e.what(), 1);
  }
  return 0;
}
