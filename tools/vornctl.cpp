// vornctl: runs the library's jobs by hand.
//
//   vornctl bringup    announce, name, parameterise and bring up the chips of
//                      an emulated fixed system, printing each driver command
//                      and its answer, then list the up devices.
#include <cstdio>
#include <cstring>
#include <string>

#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"

using namespace Hardware::Vorn;

namespace {

int bringup() {
  Emu::FabricDriver driver;
  std::printf("driver: emulated\n");
  const Fru::PciAddress pci[] = {{0, 3, 0, 0}, {0, 4, 0, 0}};
  for (const auto& a : pci) {
    char text[64];
    std::snprintf(text, sizeof text, "%04x:%02x:%02x.%1x", a.domain, a.bus, a.device, a.function);
    driver.pciDevicePresentIs(text);
  }
  unsigned fap = 0;
  for (const auto& a : pci) {
    Mox::String name = Mox::format("fap%u", fap);
    auto ham = Fru::PciHam::pciHamIs(a);
    vornDmaPresent(name, ham);
    vornDmaDeviceRename(name, ham);
    vornDmaDeviceParam(name, fapTypeJericho, FapId(static_cast<U16>(fap)), 0, 1, 2, 3, 4, 5);
    vornDmaDeviceUp(name);
    ++fap;
  }
  std::string up = vornDmaListUpDevices().stdString();
  auto commands = driver.commands();
  auto answers = driver.answers();
  for (std::size_t i = 0; i < commands.size(); ++i)
    std::printf("%-60s -> %d%s%s\n", commands[i].c_str(), answers[i], answers[i] ? " " : "",
                answers[i] ? std::strerror(answers[i]) : "");
  std::printf("up devices:\n%s", up.c_str());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc >= 2 && std::strcmp(argv[1], "bringup") == 0) return bringup();
  std::fprintf(stderr, "usage: vornctl bringup\n");
  return 2;
}
