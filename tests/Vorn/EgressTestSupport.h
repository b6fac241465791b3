// What the egress buffering tests share: the four objects the state machine
// reads and writes, chip tables with chosen figures, and the assert-line
// pattern of the state machine's assertions.
#pragma once

#include <initializer_list>
#include <string>

#include "HardwareVorn/EgressBufferConstants.h"
#include "Vorn/CommonUtilsTestSupport.h"
#include "Vorn/EgressBufferSm.h"

namespace VornTest {

using namespace Hardware::Vorn;

inline constexpr EgressBufThresholdsProfile kP0 = egressBufThresholdsProfile0;
inline constexpr EgressBufThresholdsProfile kP1 = egressBufThresholdsProfile1;

// The four objects of a state machine over a chip status that supports
// exactly `revs` (1 and 2 Petra, 3 to 5 Arad, 6 to 9 Jericho); build()
// constructs one over them.
struct EgressSystem {
  explicit EgressSystem(std::initializer_list<FapRevMajor> revs,
                        Redundancy::RedundancyMode mode = Redundancy::redundancyModeActive)
      : status(new EgressBufferStatus()),
        redundancy(new Redundancy::RedundancyStatus()),
        chips(new Status()) {
    redundancy->modeIs(mode);
    for (FapRevMajor rev : revs)
      chips->supportedFapRevMajors().is(rev, rev <= fapRevMajor2   ? fapTypePetra
                                             : rev <= fapRevMajor5 ? fapTypeArad
                                                                   : fapTypeJericho);
  }
  EgressBufferingSm::Ptr build() const {
    return egressBufferingSmFactory(config, status, redundancy, chips);
  }
  EgressBufThresholds::Ptr thresholds(EgressBufThresholdsProfile p) const {
    return status->egressBufThresholds(p);
  }
  EgqThresholds egq(EgressBufThresholdsProfile p, U32 prof) const {
    const EgqThresholds* t = thresholds(p)->egressProfiles().find(EgqProfile(prof));
    return t ? *t : EgqThresholds();
  }

  CliConfig::Ptr config;  // null: the defaults
  EgressBufferStatus::Ptr status;
  Redundancy::RedundancyStatus::Ptr redundancy;
  Status::Ptr chips;
};

// Chip tables in which every revision has the same figures and every speed
// of both threshold profiles the same port counts.
inline EgressChipTables uniformTables(U32 totalBuffers, U32 totalDescriptors, U32 maxReserved,
                                      U32 maxPerQueue, U8 ucPorts, U8 mcPorts) {
  EgressChipTables t = defaultEgressChipTables();
  t.totalBuffers.fill(totalBuffers);
  t.totalDescriptors.fill(totalDescriptors);
  t.maxReservedDescriptors.fill(maxReserved);
  t.maxDescriptorsPerQueue.fill(maxPerQueue);
  for (auto& perSpeed : t.maxPortsWithoutUcHolb) perSpeed.fill(ucPorts);
  for (auto& perSpeed : t.maxPortsWithoutMcHolb) perSpeed.fill(mcPorts);
  return t;
}

// The assert line of a state-machine assertion at `line`.
inline std::string smAssertion(unsigned line, const std::string& cond) {
  return regexQuoted("Vorn/EgressBufferSm.cpp:" + std::to_string(line) + ": ") + ".*Assertion `" +
         regexQuoted(cond) + "' failed\\.";
}

}  // namespace VornTest
