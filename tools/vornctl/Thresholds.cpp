// vornctl thresholds [--revisions LIST]: the egress thresholds that the
// library's state machine computes and publishes for a system of the given
// FAP revisions, both threshold profiles.
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "Vorn/EgressBufferSm.h"
#include "vornctl/Commands.h"
#include "vornctl/Table.h"

using namespace Hardware::Vorn;

namespace vornctl {
namespace {

// The chip family of a revision: 1 and 2 Petra, 3 to 5 Arad, 6 to 9 Jericho.
FapType familyOf(unsigned rev) {
  return rev <= 2 ? fapTypePetra : rev <= 5 ? fapTypeArad : fapTypeJericho;
}

std::vector<unsigned> parseRevisions(const std::string& list) {
  std::vector<unsigned> revs;
  std::stringstream in(list);
  std::string item;
  while (std::getline(in, item, ',')) {
    char* end = nullptr;
    unsigned long v = std::strtoul(item.c_str(), &end, 10);
    if (item.empty() || *end || v < 1 || v > 9)
      throw BadInput("--revisions",
                     "a comma-separated list of FAP major revisions 1 to 9 (\"3,6\")");
    revs.push_back(static_cast<unsigned>(v));
  }
  if (revs.empty()) throw BadInput("--revisions", "at least one FAP major revision 1 to 9");
  return revs;
}

std::string n(U32 v) {
  return std::to_string(v);
}

// The revisions of `revs` that use threshold profile `p`. The library
// publishes every profile; one that no revision uses holds the minimums over
// no revision (4294967295 before the generator's arithmetic), not figures of
// any chip, so the output says so rather than let them pass for real ones.
std::vector<unsigned> revisionsUsing(EgressBufThresholdsProfile p,
                                     const std::vector<unsigned>& revs) {
  std::vector<unsigned> users;
  for (unsigned r : revs)
    if (EgqProfile::egrBufThresholdProfileForFapRevMajor(static_cast<FapRevMajor>(r)) == p)
      users.push_back(r);
  return users;
}

void printProfile(EgressBufThresholdsProfile p, const EgressBufThresholds& t,
                  const std::vector<unsigned>& usedBy) {
  std::string revs;
  for (unsigned r : usedBy) revs += (revs.empty() ? "" : ",") + std::to_string(r);
  if (usedBy.empty())
    std::printf("threshold profile %u (no revision uses it: its figures are not a chip's)\n",
                static_cast<unsigned>(p));
  else
    std::printf("threshold profile %u (revisions %s)\n", static_cast<unsigned>(p), revs.c_str());
  Table global({"limit", "buffers", "descriptors"});
  global.row({"global unicast", n(t.globalUcThresholds().db), n(t.globalUcThresholds().pd)});
  global.row({"global multicast", n(t.globalMcThresholds().db), n(t.globalMcThresholds().pd)});
  global.row(
      {"SP0 max reserved", n(t.sp0MaxReservedThresholds().db), n(t.sp0MaxReservedThresholds().pd)});
  std::printf("%s\n", global.render().c_str());
  Table tcs(
      {"traffic class", "SP0 multicast buffers", "SP0 multicast descriptors", "reserved buffers"});
  for (const auto& [tc, r] : t.sp0McPerTcThresholds()) {
    const U32* reserved = t.sp0McReservedBuffersPerTc().find(tc);
    tcs.row({n(tc.value()), n(r.db), n(r.pd), reserved ? n(*reserved) : "-"});
  }
  std::printf("%s\n", tcs.render().c_str());
  Table egq({"EGQ profile", "port uc buf", "port uc buf fc", "port mc buf", "port uc desc",
             "port uc desc fc", "port mc desc", "queue uc buf", "queue uc buf fc", "queue uc desc",
             "queue uc desc fc", "queue mc rsvd desc", "mc shared desc dp0-3", "mc buf dp0-3"});
  for (const auto& [prof, e] : t.egressProfiles()) {
    std::string desc, buf;
    for (U8 dp = 0; dp < 4; ++dp) {
      desc += (dp ? "/" : "") + n(e.queueMulticastDpSharedDescriptor(DropPrecedence(dp)));
      buf += (dp ? "/" : "") + n(e.queueMulticastDpBuffer(DropPrecedence(dp)));
    }
    egq.row({n(prof.value()), n(e.portUnicastBuffer()), n(e.portUnicastBufferFlowControl()),
             n(e.portMulticastBuffer()), n(e.portUnicastDescriptor()),
             n(e.portUnicastDescriptorFlowControl()), n(e.portMulticastDescriptor()),
             n(e.queueUnicastBuffer()), n(e.queueUnicastBufferFlowControl()),
             n(e.queueUnicastDescriptor()), n(e.queueUnicastDescriptorFlowControl()),
             n(e.queueMulticastReservedDescriptor()), desc, buf});
  }
  std::printf("%s", egq.render().c_str());
  std::printf("multicast queues full per port applied: %u\n\n",
              static_cast<unsigned>(t.maxQueuesFullPerPortMcApplied()));
}

nlohmann::json profileJson(const EgressBufThresholds& t) {
  auto res = [](EgressResource r) { return nlohmann::json{{"db", r.db}, {"pd", r.pd}}; };
  nlohmann::json doc{{"globalUc", res(t.globalUcThresholds())},
                     {"globalMc", res(t.globalMcThresholds())},
                     {"sp0MaxReserved", res(t.sp0MaxReservedThresholds())},
                     {"maxQueuesFullPerPortMcApplied", t.maxQueuesFullPerPortMcApplied()}};
  for (const auto& [tc, r] : t.sp0McPerTcThresholds()) {
    const U32* reserved = t.sp0McReservedBuffersPerTc().find(tc);
    doc["sp0McPerTc"].push_back({{"tc", tc.value()},
                                 {"db", r.db},
                                 {"pd", r.pd},
                                 {"reservedBuffers", reserved ? *reserved : 0}});
  }
  for (const auto& [prof, e] : t.egressProfiles()) {
    nlohmann::json p{{"profile", prof.value()},
                     {"portUnicastBuffer", e.portUnicastBuffer()},
                     {"portUnicastBufferFlowControl", e.portUnicastBufferFlowControl()},
                     {"portMulticastBuffer", e.portMulticastBuffer()},
                     {"portUnicastDescriptor", e.portUnicastDescriptor()},
                     {"portUnicastDescriptorFlowControl", e.portUnicastDescriptorFlowControl()},
                     {"portMulticastDescriptor", e.portMulticastDescriptor()},
                     {"queueUnicastBuffer", e.queueUnicastBuffer()},
                     {"queueUnicastBufferFlowControl", e.queueUnicastBufferFlowControl()},
                     {"queueUnicastDescriptor", e.queueUnicastDescriptor()},
                     {"queueUnicastDescriptorFlowControl", e.queueUnicastDescriptorFlowControl()},
                     {"queueMulticastReservedDescriptor", e.queueMulticastReservedDescriptor()}};
    for (U8 dp = 0; dp < 4; ++dp) {
      p["queueMulticastDpSharedDescriptor"].push_back(
          e.queueMulticastDpSharedDescriptor(DropPrecedence(dp)));
      p["queueMulticastDpBuffer"].push_back(e.queueMulticastDpBuffer(DropPrecedence(dp)));
    }
    doc["egressProfiles"].push_back(p);
  }
  return doc;
}

int runThresholds(Context& ctx, const std::string& list) {
  std::vector<unsigned> revs = parseRevisions(list);
  Status::Ptr chips(new Status());
  for (unsigned r : revs)
    chips->supportedFapRevMajors().is(static_cast<FapRevMajor>(r), familyOf(r));
  EgressBufferStatus::Ptr status(new EgressBufferStatus());
  Redundancy::RedundancyStatus::Ptr redundancy(new Redundancy::RedundancyStatus());
  redundancy->modeIs(Redundancy::redundancyModeActive);
  EgressBufferingSm::Ptr sm = egressBufferingSmFactory(CliConfig::Ptr(), status, redundancy, chips);
  if (ctx.json()) {
    nlohmann::json doc{{"revisions", revs}, {"version", status->version()}};
    for (const auto& [p, t] : status->records()) {
      nlohmann::json& profile = doc["profiles"][std::to_string(static_cast<unsigned>(p))];
      profile = profileJson(*t);
      profile["usedByRevisions"] = revisionsUsing(p, revs);
    }
    ctx.printJson(doc);
  } else {
    std::printf("FAP revisions %s; status version %u\n\n", list.c_str(), status->version());
    for (const auto& [p, t] : status->records()) printProfile(p, *t, revisionsUsing(p, revs));
  }
  return kOk;
}

}  // namespace

void addThresholds(CLI::App& app, Action& action) {
  auto* cmd =
      app.add_subcommand("thresholds", "egress buffer thresholds of both threshold profiles");
  static std::string revisions = "3,6";
  cmd->add_option("--revisions", revisions, "FAP major revisions present, comma-separated")
      ->capture_default_str();
  cmd->callback([&action] { action = [](Context& ctx) { return runThresholds(ctx, revisions); }; });
}

}  // namespace vornctl
