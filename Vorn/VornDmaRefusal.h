// How the QoS, L3 and MLAG commands answer a refusal of the driver. Their
// rules differ deliberately from command to command; each command names its
// rule in one table of its unit.
#pragma once

#include <cstdint>

#include "Vorn/VornDma.h"
#include "Vorn/VornDmaPrivate.h"

namespace Hardware::Vorn::dma {

struct RefusalRule {
  // Which refusals end the process (through syserr with the command text).
  enum class End : std::uint8_t {
    never,         // every refusal is returned
    unlessListed,  // all but the listed answers end it; the listed are returned
    onlyListed,    // only the listed answers end it; the others are returned
  };
  bool traced;  // a refusal is traced (before syserr, when it ends the process)
  End end;
  int listed[2];                       // answers the rule names; 0 marks an unused place
  const char* errorLabel = " error ";  // the word before the error text in the trace
};

// True when `rule` lists the answer `rc`.
constexpr bool isListed(const RefusalRule& rule, int rc) {
  return rule.listed[0] == rc || rule.listed[1] == rc;
}

// True when the refusal `rc` ends the process under `rule`.
constexpr bool endsProcess(const RefusalRule& rule, int rc) {
  switch (rule.end) {
    case RefusalRule::End::never:
      return false;
    case RefusalRule::End::unlessListed:
      return !isListed(rule, rc);
    case RefusalRule::End::onlyListed:
      return isListed(rule, rc);
  }
  return false;
}

// Applies `rule` to the refusal `rc` of the command in `buf`: the error trace
// "fn cmd: <buf><errorLabel><strerror>" at `line`, then syserr(buf) where the
// rule ends the process. Returns `rc`.
int refused(const char* fn, char* buf, const RefusalRule& rule, unsigned line, int rc);

// Sends the command in `buf` and applies `rule` to a refusal.
// Returns the driver's answer.
// A refusal that is neither traced nor fatal is returned without a call: the
// rules are constants, so most of this test folds away.
[[gnu::always_inline]] inline int sendCommand(const char* fn, CommandBuffer& buf,
                                              const RefusalRule& rule, unsigned line) {
  int rc = fabIoctl(buf);
  if (rc == 0) return 0;
  if (endsProcess(rule, rc) || (rule.traced && trace().enabled(0))) [[unlikely]]
    return refused(fn, buf, rule, line, rc);
  return rc;
}

// Sends "<keyword> a b", both numbers in decimal, under `rule` as above.
int sendPair(const char* fn, const char* keyword, unsigned a, unsigned b, const RefusalRule& rule);

}  // namespace Hardware::Vorn::dma

#define VORN_DMA_SEND(fn, buf, rule) ::Hardware::Vorn::dma::sendCommand(fn, buf, rule, __LINE__)
