// The egress buffering state machine's body: the one-time work and the two
// threshold generators.
//
// The generators compute in single-precision floating point and truncate
// toward zero when they turn a share into a count, as the chips' tables were
// laid out with. On 32-bit x86 the x87 unit would keep excess precision
// (1000 x 0.7f is 699.99998..., which single precision rounds to 700), so
// every conversion and product is rounded to float explicitly.
#include <algorithm>
#include <array>

#include "HardwareVorn/EgressBufferConstants.h"
#include "Mox/Assert.h"
#include "Vorn/EgressBufferSm.h"
#include "Vorn/EgressBufferSmPrivate.h"
#include "Vorn/VornCommonUtils.h"

namespace Hardware::Vorn {

float tcMaxRatioSp[8] = {0.76f, 0.79f, 0.82f, 0.85f, 0.88f, 0.91f, 0.95f, 1.0f};
float lowerDpMultiple[4] = {0.70f, 0.95f, 0.60f, 0.20f};

namespace {

using EgressBufferSmPrivate::kSourceFile;
using EgressBufferSmPrivate::trace;

constexpr EgressBufThresholdsProfile kThresholdProfiles[] = {egressBufThresholdsProfile0,
                                                             egressBufThresholdsProfile1};

// The SP0 reserved descriptors may not exceed this, per threshold profile.
constexpr std::array<U32, kEgressBufThresholdsProfiles> kSp0MaxReservedPdCap = {6144, 12288};

// Reserved multicast descriptors per port, in speed units, by speed ordinal;
// 0 where no port of the speed takes reserved descriptors (a caller error).
// The two largest speeds share 20 on purpose.
constexpr std::array<U8, Interface::ethSpeedOrdinals> kMcPdFactorBySpeed = {0, 0, 1, 0,  0,  0, 1,
                                                                            2, 4, 5, 10, 20, 20};

// Speed ordinals of front-panel ports, walked in ascending order; ordinal 3
// has no reserved-descriptor factor and is left out.
constexpr U32 kFirstFrontPanelSpeed = 2;
constexpr U32 kLastFrontPanelSpeed = 12;
constexpr Interface::EthSpeed kSkippedSpeed = Interface::speed1Gbps;

// The special profiles: 5 shares no multicast and reserves none; 8 gets no
// thresholds at all; 5, 6 and 9 take their port counts from fixed speeds.
constexpr EgqProfile kNoMcProfile(5);
constexpr EgqProfile kFixed10gProfile(6);
constexpr EgqProfile kZeroProfile(8);
constexpr EgqProfile kFixed40gProfile(9);

// A port's budget is divided among this many queues.
constexpr U32 kQueuesPerPort = 3;

// `v` scaled by `ratio` in single precision, truncated toward zero.
U32 scaled(U32 v, float ratio) {
  volatile float value = static_cast<float>(v);
  volatile float product = value * ratio;
  return static_cast<U32>(product);
}

// A resource from counts; the buffer count keeps its low 16 bits.
EgressResource resource(U32 db, U32 pd) {
  return EgressResource{static_cast<U16>(db), pd};
}

std::size_t slot(EgqProfile prof) {
  return prof.value() - EgqProfile::kFirst;
}

}  // namespace

void EgressBufferingSm::handleInitialized() {
  MOX_TRACE(trace(), 8, "EgressBufferingSm::", "handleInitialized");
  MOX_ASSERT_AT(!initialized(), "!initialized()", kSourceFile, 62,
                "void Hardware::Vorn::EgressBufferingSm::handleInitialized()");
  if (redundancyStatus_->mode() == Redundancy::redundancyModeActive) {
    generateCgmConfigurations();
    generateEgqConfigurations();
    // One increment for both generations: readers see one change.
    ebStatus_->versionInc(1);
  }
  initializedIs(true);
}

U32 EgressBufferingSm::reservedMcPdFromSpeed(Interface::EthSpeed speed) const {
  const U8 factor = speed < kMcPdFactorBySpeed.size() ? kMcPdFactorBySpeed[speed] : 0;
  MOX_ASSERT_AT(factor != 0, "false && \"Invalid Speed\"", kSourceFile, 189,
                "U32 Hardware::Vorn::EgressBufferingSm::reservedMcPdFromSpeed("
                "Interface::EthSpeed) const");
  return U32{ebParams().reservedMcPdPerSpeedUnit} * factor;
}

void EgressBufferingSm::generateCgmConfigurations() {
  MOX_TRACE(trace(), 8, "EgressBufferingSm::", "generateCgmConfigurations");
  const EgressBufferParameters params = ebParams();
  for (EgressBufThresholdsProfile p : kThresholdProfiles) {
    const auto minOverRevisions = [&](FapRevMajorFn perRevision) {
      return minForFapRevMajorsPerEgrThreshProf(p, sysStatus_, fapTypeUnknown_, perRevision);
    };
    EgressBufThresholds::Ptr thr = ebStatus_->egressBufThresholdsIs(p);
    const U32 totalBuffers =
        minOverRevisions(&EgressBufferConstantsByFapRev::totalBuffersByFapRevMajor);
    const U32 totalDescriptors =
        minOverRevisions(&EgressBufferConstantsByFapRev::totalDescriptorsByFapRevMajor);

    // Unicast takes half the buffers, and as many descriptors (from the buffer
    // total, on purpose); multicast gets the rest of both.
    const U32 half = totalBuffers / 2;
    const U32 ucBuffers = half;
    const U32 ucDescriptors = half;
    const U32 mcBuffers = totalBuffers - half;
    const U32 mcDescriptors = totalDescriptors - half;
    MOX_TRACE(trace(), 8, "EgressBufferingSm:", "generateCgmConfigurations",
              " EgressBufThresholdsProfile:", p, " totalUcBuffers:", ucBuffers,
              " totalUcDescriptors:", ucDescriptors, " totalMcBuffers:", mcBuffers,
              " totalMcDescriptors:", mcDescriptors);
    thr->globalUcThresholdsIs(resource(ucBuffers, ucDescriptors));
    thr->globalMcThresholdsIs(resource(mcBuffers, mcDescriptors));

    const U32 maxReserved =
        minOverRevisions(&EgressBufferConstantsByFapRev::maxReservedDescriptorsByFapRevMajor);
    thr->sp0MaxReservedThresholdsIs(resource(U32{params.reservedMcBuffersPerTc} * 8,
                                             std::min(kSp0MaxReservedPdCap[p], maxReserved)));
    MOX_TRACE(trace(), 8, "Reserved SP0 max values DB : ", thr->sp0MaxReservedThresholds().db,
              " PD : ", thr->sp0MaxReservedThresholds().pd);

    for (U8 tc = 0; tc < std::size(tcMaxRatioSp); ++tc) {
      const float ratio = tcMaxRatioSp[tc];
      const EgressResource mc = thr->globalMcThresholds();
      thr->sp0McPerTcThresholdsIs(TrafficClassId(tc),
                                  resource(scaled(mc.db, ratio), scaled(mc.pd, ratio)));
      thr->sp0McReservedBuffersPerTcIs(TrafficClassId(tc), params.reservedMcBuffersPerTc);
    }
  }
}

void EgressBufferingSm::fillFrontPanelPortThresholds(EgressBufThresholdsProfile egrBufThreshProf,
                                                     U32* mcHolbPorts, U32* ucHolbPorts,
                                                     U32* reservedMcPd) {
  for (U32 ordinal = kFirstFrontPanelSpeed; ordinal <= kLastFrontPanelSpeed; ++ordinal) {
    const auto speed = static_cast<Interface::EthSpeed>(ordinal);
    const EgqProfile prof = EgqProfile::egqProfileForSpeed(egrBufThreshProf, speed);
    if (speed == kSkippedSpeed || prof == EgqProfile::none()) continue;
    MOX_ASSERT_AT(prof >= EgqProfile::frontPanelMin(egrBufThreshProf) &&
                      prof <= EgqProfile::frontPanelMax(egrBufThreshProf),
                  "prof >= EgqProfile::frontPanelMin( egrBufThreshProf ) && "
                  "prof <= EgqProfile::frontPanelMax( egrBufThreshProf )",
                  kSourceFile, 210,
                  "void Hardware::Vorn::EgressBufferingSm::fillFrontPanelPortThresholds("
                  "Hardware::Vorn::EgressBufThresholdsProfile, U32*, U32*, U32*)");
    // The chip tables promise a front-panel range inside 5 to 15; the arrays
    // hold no more.
    MOX_ASSERT(prof.value() >= EgqProfile::kFirst && prof.value() <= EgqProfile::kLast);
    const std::size_t i = slot(prof);
    ucHolbPorts[i] = EgressBufferConstants::maxPortsWithoutUcHolb(speed, egrBufThreshProf);
    mcHolbPorts[i] = EgressBufferParameters::maxPortsWithoutMcHolb(speed, egrBufThreshProf);
    reservedMcPd[i] = reservedMcPdFromSpeed(speed);
  }
}

void EgressBufferingSm::generateEgqConfigurations() {
  MOX_TRACE(trace(), 8, "EgressBufferingSm::", "generateEgqConfigurations");
  const EgressBufferParameters params = ebParams();
  const U32 reservedMcPerPort = params.reservedMcPerPort;
  const U32 reservedMcPerQueue = params.reservedMcPerQueue;
  const U32 maxQueuesFull = params.maxQueuesFullPerPortMc;
  for (EgressBufThresholdsProfile p : kThresholdProfiles) {
    std::array<U32, kEgqProfiles> mcHolbPorts;
    std::array<U32, kEgqProfiles> ucHolbPorts;
    std::array<U32, kEgqProfiles> reservedMcPd;
    mcHolbPorts.fill(16);
    ucHolbPorts.fill(16);
    reservedMcPd.fill(0);
    fillFrontPanelPortThresholds(p, mcHolbPorts.data(), ucHolbPorts.data(), reservedMcPd.data());

    // The special profiles' port counts come from fixed speeds, whatever the
    // speed map says.
    const auto uc = [p](Interface::EthSpeed s) -> U32 {
      return EgressBufferConstants::maxPortsWithoutUcHolb(s, p);
    };
    const auto mc = [p](Interface::EthSpeed s) -> U32 {
      return EgressBufferParameters::maxPortsWithoutMcHolb(s, p);
    };
    ucHolbPorts[slot(kFixed40gProfile)] = uc(Interface::speed40Gbps);
    ucHolbPorts[slot(kNoMcProfile)] = uc(Interface::speed10Gbps);
    ucHolbPorts[slot(kFixed10gProfile)] = uc(Interface::speed10Gbps);
    mcHolbPorts[slot(kFixed40gProfile)] = mc(Interface::speed40Gbps);
    mcHolbPorts[slot(kNoMcProfile)] = mc(Interface::speed10Gbps);
    mcHolbPorts[slot(kFixed10gProfile)] = mc(Interface::speed10Gbps);
    reservedMcPd[slot(kNoMcProfile)] = 0;

    EgressBufThresholds::Ptr thr = ebStatus_->egressBufThresholds(p);
    MOX_TRACE(trace(), 3, "Calculating per profile and per queue thresholds in EGQ");
    const U32 maxDescPerQueue = minForFapRevMajorsPerEgrThreshProf(
        p, sysStatus_, fapTypeUnknown_,
        &EgressBufferConstantsByFapRev::maxDescriptorsPerQueueByFapRevMajor);
    const EgressResource globalUc = thr->globalUcThresholds();
    const EgressResource globalMc = thr->globalMcThresholds();

    for (U32 value = EgqProfile::kFirst; value <= EgqProfile::kLast; ++value) {
      const EgqProfile prof(value);
      const std::size_t i = slot(prof);
      const bool zero = prof == kZeroProfile;
      const bool noMc = zero || prof == kNoMcProfile;
      EgqThresholds egqTh;

      MOX_TRACE(trace(), 3, "Calculating per OTM port thresholds for profile", prof);
      const float portRatio = getPortFlowControlToDiscardRatio(prof);
      egqTh.portUnicastBufferIs(zero ? 0 : globalUc.db / ucHolbPorts[i]);
      egqTh.portUnicastBufferFlowControlIs(scaled(egqTh.portUnicastBuffer(), portRatio));
      egqTh.portMulticastBufferIs(noMc ? 0 : (globalMc.db - reservedMcPerPort) / mcHolbPorts[i]);
      egqTh.portUnicastDescriptorIs(zero ? 0 : globalUc.pd / ucHolbPorts[i]);
      egqTh.portUnicastDescriptorFlowControlIs(scaled(egqTh.portUnicastDescriptor(), portRatio));
      egqTh.portMulticastDescriptorIs(noMc ? 0
                                           : (globalMc.pd - reservedMcPerPort) / mcHolbPorts[i]);

      MOX_TRACE(trace(), 3, "Calculating per egress queue thresholds for profile", prof);
      const float queueRatio = getQueueFlowControlToDiscardRatio(prof, p);
      egqTh.queueUnicastDescriptorIs(egqTh.portUnicastDescriptor() / kQueuesPerPort);
      egqTh.queueUnicastDescriptorFlowControlIs(scaled(egqTh.queueUnicastDescriptor(), queueRatio));
      egqTh.queueMulticastReservedDescriptorIs(reservedMcPd[i]);
      egqTh.queueUnicastBufferIs(egqTh.portUnicastBuffer() / kQueuesPerPort);
      egqTh.queueUnicastBufferFlowControlIs(scaled(egqTh.queueUnicastBuffer(), queueRatio));
      MOX_TRACE(trace(), 3, "prof ", prof, " queue drop ", egqTh.queueUnicastBuffer(),
                " port flow control ", egqTh.portUnicastBufferFlowControl());
      MOX_TRACE(trace(), 3, "prof ", prof, " queue drop ", egqTh.queueUnicastDescriptor(),
                " port flow control ", egqTh.portUnicastDescriptorFlowControl());

      // One queue's drop threshold lies below its port's flow-control one.
      if (!zero) {
        MOX_ASSERT_AT(egqTh.queueUnicastBuffer() < egqTh.portUnicastBufferFlowControl(),
                      "egqTh.queueUnicastBuffer() < egqTh.portUnicastBufferFlowControl()",
                      kSourceFile, 365,
                      "void Hardware::Vorn::EgressBufferingSm::generateEgqConfigurations()");
        MOX_ASSERT_AT(egqTh.queueUnicastDescriptor() < egqTh.portUnicastDescriptorFlowControl(),
                      "egqTh.queueUnicastDescriptor() < egqTh.portUnicastDescriptorFlowControl()",
                      kSourceFile, 367,
                      "void Hardware::Vorn::EgressBufferingSm::generateEgqConfigurations()");
      }

      // Only the descriptor side is clamped to what one queue can hold.
      U32 sharedDescriptors = 0;
      U32 sharedBuffers = 0;
      if (prof != kNoMcProfile) {
        if (egqTh.portMulticastDescriptor() > reservedMcPerQueue)
          sharedDescriptors =
              std::min((egqTh.portMulticastDescriptor() - reservedMcPerQueue) / maxQueuesFull,
                       maxDescPerQueue);
        if (egqTh.portMulticastBuffer() > reservedMcPerQueue)
          sharedBuffers = (egqTh.portMulticastBuffer() - reservedMcPerQueue) / maxQueuesFull;
      }
      MOX_TRACE(trace(), 3, "Calculating per egress queue per DP shared thresholds for profile",
                prof);
      for (U8 dp = 0; dp < std::size(lowerDpMultiple); ++dp) {
        egqTh.queueMulticastDpSharedDescriptorIs(DropPrecedence(dp),
                                                 scaled(sharedDescriptors, lowerDpMultiple[dp]));
        egqTh.queueMulticastDpBufferIs(DropPrecedence(dp),
                                       scaled(sharedBuffers, lowerDpMultiple[dp]));
      }

      MOX_TRACE(trace(), 3, "Setting egress profile for prof ", prof);
      thr->egressProfilesIs(prof, egqTh);
      MOX_TRACE(trace(), 3, "Done setting the egress threshold profile for ", prof);
      thr->maxQueuesFullPerPortMcAppliedIs(static_cast<U8>(maxQueuesFull));
    }
  }
}

float getPortFlowControlToDiscardRatio(EgqProfile) {
  return 0.5f;
}

float getQueueFlowControlToDiscardRatio(EgqProfile prof, EgressBufThresholdsProfile p) {
  if (prof == EgqProfile::frontPanel100g(p) || prof == EgqProfile::frontPanel200g(p) ||
      prof == EgqProfile::frontPanel400g(p))
    return 0.55f;
  return 0.34f;
}

}  // namespace Hardware::Vorn
