#include "Vorn/VornDmaRefusal.h"

#include <cstring>

#include "Vorn/VornDma.h"
#include "Vorn/VornDmaPrivate.h"

namespace Hardware::Vorn::dma {
int refused(const char* fn, char* buf, const RefusalRule& rule, unsigned line, int rc) {
  if (rule.traced && trace().enabled(0))
    Mox::traceLine(trace(), 0, kTraceFile, line, fn, " cmd: ", buf, rule.errorLabel,
                   std::strerror(rc));
  if (endsProcess(rule, rc)) refusalEndsProcess(buf, rc);
  return rc;
}

int sendPair(const char* fn, const char* keyword, unsigned a, unsigned b, const RefusalRule& rule) {
  CommandBuffer buf;
  command<"%s %u %u">(buf, keyword, a, b);
  return VORN_DMA_SEND(fn, buf, rule);
}

}  // namespace Hardware::Vorn::dma
