// What the egress buffering tests share.
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
// exactly `revs`.
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

// Chip tables with the same figures for every revision and speed.
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

inline std::string smAssertion(unsigned line, const std::string& cond) {
  return regexQuoted("Vorn/EgressBufferSm.cpp:" + std::to_string(line) + ": ") + ".*Assertion `" +
         regexQuoted(cond) + "' failed\\.";
}

}  // namespace VornTest
