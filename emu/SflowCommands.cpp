// The sFlow commands of the driver: rxsflow, rxsflow_drop and
// sflow_drop_threshold.
#include <cerrno>
#include <cinttypes>
#include <cstdio>

#include "emu/FabricDriver.h"
#include "emu/Handler.h"

namespace Emu {
namespace {

// Writes the counter, or the reply a test scripted, over the request.
int counterReply(const std::optional<std::string>& reply, std::uint64_t count, char* buf,
                 unsigned size) {
  if (reply)
    std::snprintf(buf, size, "%s", reply->c_str());
  else
    std::snprintf(buf, size, "%" PRIu64, count);
  return 0;
}

int rxsflow(FabricDriver& d, const Command& c, char* buf, unsigned size) {
  if (c.argc != 0) return EINVAL;
  return counterReply(d.sflow().samplesReply, d.sflow().samples, buf, size);
}

int rxsflowDrop(FabricDriver& d, const Command& c, char* buf, unsigned size) {
  if (c.argc != 0) return EINVAL;
  return counterReply(d.sflow().dropsReply, d.sflow().drops, buf, size);
}

int sflowDropThreshold(FabricDriver& d, const Command& c, char*, unsigned) {
  unsigned long long threshold, fapType;
  if (c.argc != 2 || !parseUnsigned(c.args[0], threshold) || threshold > 0xFFFFFFFFull ||
      !parseUnsigned(c.args[1], fapType) || fapType > 0xFFFFFFFFull)
    return EINVAL;
  SflowState& s = d.sflow();
  s.thresholdSet = true;
  s.dropThreshold = static_cast<std::uint32_t>(threshold);
  s.fapType = static_cast<std::uint32_t>(fapType);
  return 0;
}

constexpr Handler kHandlers[] = {
    {"rxsflow", 128, rxsflow},
    {"rxsflow_drop", 128, rxsflowDrop},
    {"sflow_drop_threshold", 256, sflowDropThreshold},
};

}  // namespace

std::span<const Handler> sflowHandlers() {
  return kHandlers;
}

}  // namespace Emu
