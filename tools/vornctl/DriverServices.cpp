// vornctl irq-mask, sflow and tx: the driver services that are not settings.
#include <cctype>
#include <cstdio>
#include <string>
#include <vector>

#include "HardwareVorn/SystemLimits.h"
#include "Mox/Singleton.h"
#include "Mox/Trace.h"
#include "Vorn/VornDma.h"
#include "vornctl/Commands.h"

using namespace Hardware::Vorn;

namespace vornctl {
namespace {

int runIrqMask(Context& ctx, unsigned slot, unsigned minSlot, unsigned maxSlot) {
  if (minSlot > maxSlot) throw BadInput("--min-slot", "at most --max-slot");
  auto limits = Mox::singletonIs<SystemLimits>();
  limits->sysFruConfigIs(Fru::SlotId(minSlot), Fru::SlotId(maxSlot));
  U32 mask = getIrqAffinityMask(slot);
  if (ctx.json())
    ctx.printJson({{"slot", slot}, {"minLinecardSlot", minSlot}, {"maxLinecardSlot", maxSlot}, {"cpumask", mask}});
  else
    std::printf("slot %u: cpumask 0x%x\n", slot, mask);
  return kOk;
}

int runSflow(Context& ctx, unsigned rate, unsigned hwRate, unsigned family) {
  ctx.useDriver();
  bool set = rate || hwRate;
  if (set) {
    // The library asserts these; a typing mistake must not end the process.
    if (!rate || !hwRate) throw BadInput("--rate", "both --rate and --hw-rate, each at least 1");
    if (rate < hwRate) throw BadInput("--rate", "a sample rate at least --hw-rate (1 in rate)");
    if (family < 1 || family > 3) throw BadInput("--family", "a chip family from 1 to 3");
    vornDmaSflowSampleRateSet(rate, hwRate, true, static_cast<FapType>(family));
  }
  U64 samples = vornDmaRxSflowCount();
  U64 drops = vornDmaRxSflowDropCount();
  if (ctx.json()) {
    nlohmann::json doc{{"samples", samples}, {"drops", drops}};
    if (set) doc["thresholdSet"] = {{"rate", rate}, {"hwRate", hwRate}};
    ctx.printJson(doc);
  } else {
    if (set) std::printf("drop threshold set for 1 in %u sampled at 1 in %u\n", rate, hwRate);
    std::printf("sFlow samples received: %llu\nsFlow samples dropped: %llu\n",
                static_cast<unsigned long long>(samples), static_cast<unsigned long long>(drops));
  }
  return kOk;
}

std::vector<unsigned char> parseHex(const std::string& text) {
  std::vector<unsigned char> out;
  std::string digits;
  for (char c : text)
    if (c != ':' && c != ' ') digits += c;
  if (digits.size() % 2) throw BadInput("--payload", "hexadecimal bytes (\"0a0b0c\" or \"0a:0b:0c\")");
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    if (!std::isxdigit(static_cast<unsigned char>(digits[i])) ||
        !std::isxdigit(static_cast<unsigned char>(digits[i + 1])))
      throw BadInput("--payload", "hexadecimal bytes (\"0a0b0c\" or \"0a:0b:0c\")");
    out.push_back(static_cast<unsigned char>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  }
  return out;
}

int runTx(Context& ctx, U32 dest, const std::string& payload, const std::string& name) {
  std::vector<unsigned char> data = parseHex(payload);
  if (data.size() > 183) throw BadInput("--payload", "at most 183 bytes");
  if (name.size() >= 64) throw BadInput("--name", "a netdevice name shorter than 64 characters");
  ctx.useDriver();
  // The library traces a failed send; show those lines.
  Mox::traceHandle("VornDma").levelIs(0, true);
  vornDmaTxRaw(Mox::String(name.c_str()), dest, static_cast<unsigned>(data.size()), data.data());
  if (ctx.json())
    ctx.printJson({{"name", name}, {"destId", dest}, {"bytes", data.size()}, {"frameBytes", 72 + std::max<std::size_t>(data.size(), 60)}});
  else
    std::printf("frame of %zu bytes for %s to destination 0x%08x handed to txraw\n",
                72 + std::max<std::size_t>(data.size(), 60), name.c_str(), dest);
  return kOk;
}

}  // namespace

void addDriverServices(CLI::App& app, Action& action) {
  auto* irq = app.add_subcommand("irq-mask", "the CPU mask for a chip's interrupts on a linecard slot");
  static unsigned slot = 1, minSlot = 1, maxSlot = 1;
  irq->add_option("--slot", slot, "the chip's linecard slot")->required();
  irq->add_option("--min-slot", minSlot, "the chassis's first linecard slot")->capture_default_str();
  irq->add_option("--max-slot", maxSlot, "the chassis's last linecard slot")->capture_default_str();
  irq->callback([&action] { action = [](Context& c) { return runIrqMask(c, slot, minSlot, maxSlot); }; });

  auto* sflow = app.add_subcommand("sflow", "the driver's sFlow counters; --rate and --hw-rate set the drop threshold");
  static unsigned rate = 0, hwRate = 0, family = 3;
  sflow->add_option("--rate", rate, "software sample rate (1 in rate)");
  sflow->add_option("--hw-rate", hwRate, "hardware sample rate (1 in rate)");
  sflow->add_option("--family", family, "chip family 1 to 3")->capture_default_str();
  sflow->callback([&action] { action = [](Context& c) { return runSflow(c, rate, hwRate, family); }; });

  auto* tx = app.add_subcommand("tx", "send one raw frame through the driver's txraw device");
  static U32 dest = 0;
  static std::string payload, name = "et1";
  tx->add_option("--dest", dest, "destination id (0x01020304)")->required();
  tx->add_option("--payload", payload, "payload bytes in hexadecimal")->required();
  tx->add_option("--name", name, "target netdevice name in the frame")->capture_default_str();
  tx->callback([&action] { action = [](Context& c) { return runTx(c, dest, payload, name); }; });
}

}  // namespace vornctl
