// sFlow: the driver's sample counters and its drop threshold, which thins out
// hardware samples when software samples at a lower rate than the hardware.
#include <cstdlib>
#include <cstring>

#include "Mox/Assert.h"
#include "Ringlog/Ringlog.h"
#include "Vorn/VornDma.h"
#include "Vorn/VornDmaPrivate.h"

namespace Hardware::Vorn {

using dma::command;
using dma::simulation;

namespace {

// Asks the driver for one counter; it answers with the count in decimal text
// over the request. A refusal means the driver is broken: the process ends.
U64 sflowCounter(const char* keyword, const char* fn) {
  if (simulation()) return 0;
  char buf[kSflowCounterSize];
  command<"%s">(buf, keyword);
  int rc = dma::fabIoctl(buf, kSflowCounterSize);
  if (rc != 0) {
    VORN_DMA_TRACE(0, fn, " read returned ", std::strerror(rc));
    std::abort();
  }
  buf[sizeof buf - 1] = '\0';  // never parse past the buffer
  return std::strtoull(buf, nullptr, 10);
}

// The share of hardware samples to drop, over the full 32-bit range:
// 4294967295 * (sampleRate - hwSampleRate) / sampleRate, in 64 bits. It fits
// in 32 bits because hwSampleRate < sampleRate.
U32 sflowDropThreshold(U32 sampleRate, U32 hwSampleRate, bool dropEnabled) {
  if (!dropEnabled || hwSampleRate >= sampleRate) return 0;
  return static_cast<U32>(U64{0xFFFFFFFFu} * (sampleRate - hwSampleRate) / sampleRate);
}

}  // namespace

U64 vornDmaRxSflowCount() {
  return sflowCounter("rxsflow", "vornDmaRxSflowCount");
}

U64 vornDmaRxSflowDropCount() {
  return sflowCounter("rxsflow_drop", "vornDmaRxSflowDropCount");
}

void vornDmaSflowSampleRateSet(U32 sampleRate, U32 HwSampleRate, bool dropEnabled,
                               FapType fapType) {
  RINGLOG("vornDmaSflowSampleRateSet sampleRate=%u, HwSampleRate %u", sampleRate, HwSampleRate);
  if (simulation()) return;
  MOX_ASSERT_TEXT(sampleRate >= HwSampleRate, "sampleRate >= HwSampleRate",
                  "void Hardware::Vorn::vornDmaSflowSampleRateSet(U32, U32, bool, "
                  "Hardware::Vorn::FapType)");
  dma::CommandBuffer buf;
  command<"sflow_drop_threshold %u %u">(buf,
                                        sflowDropThreshold(sampleRate, HwSampleRate, dropEnabled),
                                        static_cast<unsigned>(fapType));
  int rc = dma::fabIoctl(buf);
  VORN_DMA_TRACE(8, "vornDmaSflowSampleRateSet: ", "sampleRate ", sampleRate, " ", "HwSampleRate ",
                 HwSampleRate, " ", buf.text);
  // This command's refusal reads " returned " where the others read " error ".
  if (rc != 0)
    VORN_DMA_TRACE(0, "vornDmaSflowSampleRateSet", " cmd: ", buf.text, " returned ",
                   std::strerror(rc));
}

void vornDmaDisableSflowDrops(FapType fapType) {
  if (simulation()) return;
  dma::CommandBuffer buf;
  command<"sflow_drop_threshold %u %u">(buf, 0u, static_cast<unsigned>(fapType));
  int rc = dma::fabIoctl(buf);
  VORN_DMA_TRACE(8, "vornDmaDisableSflowDrops: ", buf.text);
  if (rc != 0) VORN_DMA_ERROR("vornDmaDisableSflowDrops", buf, rc);
}

}  // namespace Hardware::Vorn
