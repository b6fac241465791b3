// LAG commands against the emulated driver.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <string>
#include <vector>

#include "Kernel/Kernel.h"
#include "Ringlog/MemoryFile.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"
#include "tests/Vorn/HostTestSupport.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::IsEmpty;
using VornTest::ScopedEnv;
using VornTest::TraceCapture;

namespace {

// The pauses the library asked for; nothing sleeps.
std::vector<unsigned>& sleeps() {
  static std::vector<unsigned> recorded;
  return recorded;
}

Kernel::Ops recordingSleeps() {
  Kernel::Ops ops = Kernel::linuxOps();
  ops.usleep = [](unsigned usec) {
    sleeps().push_back(usec);
    return 0;
  };
  return ops;
}

std::vector<std::string> ringMessages(const Ringlog::ScopedMemoryFile& ring, const char* prefix) {
  std::vector<std::string> out;
  for (const std::string& m : ring.messages())
    if (m.rfind(prefix, 0) == 0) out.push_back(m);
  return out;
}

class LagCommands : public testing::Test {
 protected:
  void SetUp() override { sleeps().clear(); }

  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Kernel::Ops ops = recordingSleeps();
  Kernel::ScopedOps scoped{&ops};
  Emu::FabricDriver driver;  // over the recording table
};

// A member whose netdevice is late (19) is retried ten times, 10 ms apart;
// only a refusal is traced.
TEST_F(LagCommands, MemberAddRetriesWhileTheMemberNetdeviceIsLate) {
  const struct {
    int late, want;
    unsigned retries;
    const char* trace;
  } cases[] = {
      {11, ENODEV, 10,
       "vornDmaLagMemberAdd cmd: lagmember_add PortChannel3 et5 2 error No such device"},
      {3, 0, 3, nullptr},
      {0, 0, 0, nullptr},
      {0, EEXIST, 0, "vornDmaLagMemberAdd cmd: lagmember_add PortChannel3 et5 2 error File exists"},
  };
  for (const auto& c : cases) {
    const std::string name = std::to_string(c.late) + " late, want " + std::to_string(c.want);
    driver.lags().absentMembers["et5"] = c.late;
    if (c.want != EEXIST) driver.lags().lags.clear();
    sleeps().clear();
    driver.clearLog();
    Ringlog::ScopedMemoryFile ring;
    TraceCapture trace;
    EXPECT_EQ(vornDmaLagMemberAdd("PortChannel3", "et5", 2), c.want) << name;
    EXPECT_EQ(sleeps(), std::vector<unsigned>(c.retries, 10000)) << name;
    EXPECT_EQ(driver.commands().size(), c.retries + 1) << name;
    std::vector<std::string> ringWant = {
        "vornDmaLagMemberAdd ifname=PortChannel3, membername=et5, memberId=2"};
    if (c.retries || c.want)
      ringWant.push_back("vornDmaLagMemberAdd ifname=PortChannel3, membername=et5returned " +
                         std::to_string(c.want) + " after " + std::to_string(c.retries) +
                         " retries");
    EXPECT_EQ(ringMessages(ring, "vornDmaLagMemberAdd"), ringWant) << name;
    if (c.trace)
      EXPECT_THAT(trace.texts(), ElementsAre(c.trace)) << name;
    else
      EXPECT_THAT(trace.texts(), IsEmpty()) << name;
  }
  EXPECT_EQ(driver.lags().lags.at(3).members.at(2), "et5");
}

TEST_F(LagCommands, RefusalsOfTheOtherCommands) {
  ASSERT_EQ(vornDmaLagMemberConfigAdd("PortChannel3", "Ethernet7"), 0);
  Ringlog::ScopedMemoryFile ring;
  TraceCapture trace;
  EXPECT_EQ(vornDmaLagMemberDel("PortChannel8", 1), ENODEV);
  EXPECT_EQ(vornDmaLagMemberConfigAdd("PortChannel3", "Ethernet7"), EEXIST);
  EXPECT_EQ(vornDmaLagMemberConfigDel("PortChannel3", "Ethernet9"), ENOENT);
  EXPECT_EQ(vornDmaLagConfigMapDel("PortChannel8"), ENODEV);
  EXPECT_THAT(
      trace.texts(),
      ElementsAre("vornDmaLagMemberDel cmd: lagmember_del PortChannel8 1 error No such device",
                  "vornDmaLagMemberConfigAdd ifname=PortChannel3, membername=Ethernet7 returned 17",
                  "vornDmaLagMemberConfigDelifname=PortChannel3 membername=Ethernet9 returned 2",
                  "vornDmaLagConfigMapDel lagname=PortChannel8 returned 19"));
  EXPECT_THAT(
      ringMessages(ring, "vornDmaLag"),
      ElementsAre("vornDmaLagMemberDel ifname=PortChannel8, memberId=1",
                  "vornDmaLagMemberConfigAdd ifname=PortChannel3, membername=Ethernet7",
                  "vornDmaLagMemberConfigAdd ifname=PortChannel3, membername=Ethernet7returned 17",
                  "vornDmaLagMemberConfigDel ifname=PortChannel3, membername=Ethernet9",
                  "vornDmaLagMemberConfigDel ifname=PortChannel3, membername=Ethernet9returned 2",
                  "vornDmaLagConfigDel lagname=PortChannel8",
                  "vornDmaLagConfigMapDel lagname=PortChannel8 returned 19"));
  EXPECT_EQ(driver.commands().size(), 5u);  // no retries
}

// Unsigned arguments go out as "%d": mode, parameter, FAP type.
CATALOGUE_TEST_F(LagCommands, LagModeIsPassedThroughAsSignedDecimal, "vornDmaSetLagMode") {
  TraceCapture trace;
  EXPECT_EQ(vornDmaSetLagMode(5, 4000000000u, fapTypeJericho), 0);
  EXPECT_EQ(vornDmaSetLagMode(UINT_MAX, 0, static_cast<FapType>(UINT_MAX)), EINVAL);
  EXPECT_THAT(driver.commands(), ElementsAre("drvparams 5 -294967296 3", "drvparams -1 0 -1"));
  EXPECT_THAT(trace.texts(),
              ElementsAre("vornDmaSetLagMode cmd: drvparams -1 0 -1 error Invalid argument"));
}

CATALOGUE_TEST_F(LagCommands, MemberCommandsWithEmptyOverlongAndNegative, "vornDmaLagMemberAdd",
                 "vornDmaLagMemberDel", "vornDmaLagMemberConfigAdd", "vornDmaLagMemberConfigDel",
                 "vornDmaLagConfigMapDel") {
  const std::string overlong(300, 'n');
  const char* longest = overlong.c_str();
  EXPECT_EQ(vornDmaLagMemberAdd("po1", "et1", -1), EINVAL);
  EXPECT_EQ(vornDmaLagMemberAdd(longest, "et1", INT_MAX), EINVAL);
  EXPECT_EQ(vornDmaLagMemberDel("", INT_MIN), EINVAL);
  EXPECT_EQ(vornDmaLagMemberConfigAdd("", ""), EINVAL);
  EXPECT_EQ(vornDmaLagMemberConfigDel(longest, longest), EINVAL);
  EXPECT_EQ(vornDmaLagConfigMapDel(""), EINVAL);
  const auto sent = driver.commands();
  ASSERT_EQ(sent.size(), 6u);  // no retries: none was answered 19
  EXPECT_EQ(sent[0], "lagmember_add po1 et1 -1");
  EXPECT_EQ(sent[1].size(), kCommandSize - 1);
  EXPECT_EQ(sent[2], "lagmember_del  -2147483648");
  EXPECT_EQ(sent[3], "lagmemberconfig_add  ");
  EXPECT_EQ(sent[4].size(), kCommandSize - 1);
  EXPECT_EQ(sent[5], "lagconfigmap_del ");
}

// In SAI mode the member commands send nothing, whatever their input; the
// LAG mode is still sent.
CATALOGUE_TEST_F(LagCommands, SaiModeSkipsTheMemberCommandsButNotTheLagMode, "vornDmaLagMemberAdd",
                 "vornDmaLagMemberDel", "vornDmaLagMemberConfigAdd", "vornDmaLagMemberConfigDel",
                 "vornDmaLagConfigMapDel") {
  EXPECT_IN_SAI_MODE([&] {
    driver.lags().absentMembers["et1"] = 11;
    bool ok = vornDmaLagMemberAdd("PortChannel3", "et1", -1) == 0 &&
              vornDmaLagMemberDel("", INT_MIN) == 0 && vornDmaLagMemberConfigAdd("", "") == 0 &&
              vornDmaLagMemberConfigDel("PortChannel3", "Ethernet1") == 0 &&
              vornDmaLagConfigMapDel("PortChannel3") == 0;
    ok = ok && driver.commands().empty() && sleeps().empty();
    return ok && vornDmaSetLagMode(1, 0, fapTypeArad) == 0 &&
           driver.commands() == std::vector<std::string>{"drvparams 1 0 2"};
  });
}

}  // namespace
