// LAG commands against the emulated driver: the member add's retries, the
// traces of refusals, bad input, the guards, and a round trip through the
// listing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

#include "Kernel/Kernel.h"
#include "Ringlog/MemoryFile.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/LagTestSupport.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::IsEmpty;
using VornTest::lagDevice;
using VornTest::lagTable;
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

// The ring messages that begin with `prefix` (the channel's own "fab_ioctl"
// messages are left out that way).
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
  // Installed over the recording table, to which it passes the sleeps.
  Emu::FabricDriver driver;
};

TEST_F(LagCommands, MemberAddGivesUpAfterTenRetries) {
  driver.lags().absentMembers["et5"] = 11;
  Ringlog::ScopedMemoryFile ring;
  TraceCapture trace;
  EXPECT_EQ(vornDmaLagMemberAdd("PortChannel3", "et5", 2), ENODEV);
  EXPECT_EQ(sleeps(), std::vector<unsigned>(10, 10000));
  EXPECT_EQ(driver.commands(), std::vector<std::string>(11, "lagmember_add PortChannel3 et5 2"));
  EXPECT_THAT(ringMessages(ring, "vornDmaLagMemberAdd"),
              ElementsAre("vornDmaLagMemberAdd ifname=PortChannel3, membername=et5, memberId=2",
                          "vornDmaLagMemberAdd ifname=PortChannel3, membername=et5returned 19 "
                          "after 10 retries"));
  ASSERT_EQ(trace.lines().size(), 1u);
  EXPECT_EQ(trace.lines()[0].text,
            "vornDmaLagMemberAdd cmd: lagmember_add PortChannel3 et5 2 error No such device");
  EXPECT_EQ(trace.lines()[0].level, 0);
  EXPECT_EQ(trace.lines()[0].file, "/src/Vorn/VornDma");
}

TEST_F(LagCommands, MemberAddWaitsForTheMemberNetdevice) {
  driver.lags().absentMembers["et5"] = 3;
  Ringlog::ScopedMemoryFile ring;
  TraceCapture trace;
  EXPECT_EQ(vornDmaLagMemberAdd("PortChannel3", "et5", 2), 0);
  EXPECT_EQ(sleeps(), std::vector<unsigned>(3, 10000));
  // The retry message is written on success too; no error trace.
  EXPECT_THAT(ringMessages(ring, "vornDmaLagMemberAdd"),
              ElementsAre("vornDmaLagMemberAdd ifname=PortChannel3, membername=et5, memberId=2",
                          "vornDmaLagMemberAdd ifname=PortChannel3, membername=et5returned 0 "
                          "after 3 retries"));
  EXPECT_THAT(trace.lines(), IsEmpty());
  EXPECT_EQ(driver.lags().lags.at(3).members.at(2), "et5");
}

TEST_F(LagCommands, MemberAddWithoutRetryWritesTheResultOnlyOnRefusal) {
  Ringlog::ScopedMemoryFile ring;
  TraceCapture trace;
  // At once: no result line.
  EXPECT_EQ(vornDmaLagMemberAdd("PortChannel3", "et1", 0), 0);
  // Already a member: refused at the first send, not retried, result line.
  EXPECT_EQ(vornDmaLagMemberAdd("PortChannel3", "et1", 0), EEXIST);
  EXPECT_THAT(sleeps(), IsEmpty());
  EXPECT_THAT(ringMessages(ring, "vornDmaLagMemberAdd"),
              ElementsAre("vornDmaLagMemberAdd ifname=PortChannel3, membername=et1, memberId=0",
                          "vornDmaLagMemberAdd ifname=PortChannel3, membername=et1, memberId=0",
                          "vornDmaLagMemberAdd ifname=PortChannel3, membername=et1returned 17 "
                          "after 0 retries"));
  EXPECT_THAT(trace.texts(), ElementsAre("vornDmaLagMemberAdd cmd: lagmember_add PortChannel3 et1 "
                                         "0 error File exists"));
}

TEST_F(LagCommands, RefusalsOfTheOtherCommands) {
  ASSERT_EQ(vornDmaLagMemberConfigAdd("PortChannel3", "Ethernet7"), 0);
  Ringlog::ScopedMemoryFile ring;
  TraceCapture trace;
  EXPECT_EQ(vornDmaLagMemberDel("PortChannel8", 1), ENODEV);
  EXPECT_EQ(vornDmaLagMemberConfigAdd("PortChannel3", "Ethernet7"), EEXIST);
  EXPECT_EQ(vornDmaLagMemberConfigDel("PortChannel3", "Ethernet9"), ENOENT);
  EXPECT_EQ(vornDmaLagConfigMapDel("PortChannel8"), ENODEV);
  EXPECT_EQ(vornDmaSetLagMode(4294967295u, 0, fapTypeArad), EINVAL);
  EXPECT_THAT(
      trace.texts(),
      ElementsAre("vornDmaLagMemberDel cmd: lagmember_del PortChannel8 1 error No such device",
                  "vornDmaLagMemberConfigAdd ifname=PortChannel3, membername=Ethernet7 returned 17",
                  "vornDmaLagMemberConfigDelifname=PortChannel3 membername=Ethernet9 returned 2",
                  "vornDmaLagConfigMapDel lagname=PortChannel8 returned 19",
                  "vornDmaSetLagMode cmd: drvparams -1 0 2 error Invalid argument"));
  std::vector<std::string> messages = ring.messages();
  std::erase_if(messages, [](const std::string& m) { return m.rfind("fab_ioctl", 0) == 0; });
  EXPECT_THAT(
      messages,
      ElementsAre("vornDmaLagMemberDel ifname=PortChannel8, memberId=1",
                  "vornDmaLagMemberConfigAdd ifname=PortChannel3, membername=Ethernet7",
                  "vornDmaLagMemberConfigAdd ifname=PortChannel3, membername=Ethernet7returned 17",
                  "vornDmaLagMemberConfigDel ifname=PortChannel3, membername=Ethernet9",
                  "vornDmaLagMemberConfigDel ifname=PortChannel3, membername=Ethernet9returned 2",
                  "vornDmaLagConfigDel lagname=PortChannel8",
                  "vornDmaLagConfigMapDel lagname=PortChannel8 returned 19"));
  // One send each: only the member add retries.
  EXPECT_EQ(driver.commands().size(), 6u);
}

// The arguments are unsigned but go out as "%d", in the order mode,
// parameter, FAP type.
CATALOGUE_TEST_F(LagCommands, LagModeIsPassedThroughAsSignedDecimal, "vornDmaSetLagMode") {
  EXPECT_EQ(vornDmaSetLagMode(5, 4000000000u, fapTypeJericho), 0);
  EXPECT_EQ(driver.lags().lagMode, 5);
  EXPECT_EQ(driver.lags().fapType, 3);
  EXPECT_EQ(vornDmaSetLagMode(UINT_MAX, UINT_MAX, static_cast<FapType>(UINT_MAX)), EINVAL);
  EXPECT_EQ(vornDmaSetLagMode(0x80000000u, 0, fapTypeUnknown_), EINVAL);
  EXPECT_THAT(driver.commands(), ElementsAre("drvparams 5 -294967296 3", "drvparams -1 -1 -1",
                                             "drvparams -2147483648 0 0"));
}

// Empty names, names beyond the buffer and member ids at the ends of an int
// are sent as they are (cut at the buffer) and answered by the driver.
CATALOGUE_TEST_F(LagCommands, MemberCommandsWithEmptyOverlongAndNegative, "vornDmaLagMemberAdd",
                 "vornDmaLagMemberDel", "vornDmaLagMemberConfigAdd", "vornDmaLagMemberConfigDel",
                 "vornDmaLagConfigMapDel") {
  const std::string overlong(300, 'n');
  const char* longest = overlong.c_str();
  EXPECT_EQ(vornDmaLagMemberAdd("", "", 0), EINVAL);
  EXPECT_EQ(vornDmaLagMemberAdd("po1", "et1", -1), EINVAL);
  EXPECT_EQ(vornDmaLagMemberAdd(longest, "et1", INT_MAX), EINVAL);
  EXPECT_EQ(vornDmaLagMemberDel("", INT_MIN), EINVAL);
  EXPECT_EQ(vornDmaLagMemberDel(longest, 0), EINVAL);
  EXPECT_EQ(vornDmaLagMemberConfigAdd("", ""), EINVAL);
  EXPECT_EQ(vornDmaLagMemberConfigAdd(longest, longest), EINVAL);
  EXPECT_EQ(vornDmaLagMemberConfigDel(longest, longest), EINVAL);
  EXPECT_EQ(vornDmaLagConfigMapDel(""), EINVAL);
  EXPECT_EQ(vornDmaLagConfigMapDel(longest), EINVAL);
  const auto sent = driver.commands();
  ASSERT_EQ(sent.size(), 10u);  // no retries: none was answered 19
  EXPECT_EQ(sent[0], "lagmember_add   0");
  EXPECT_EQ(sent[1], "lagmember_add po1 et1 -1");
  EXPECT_EQ(sent[3], "lagmember_del  -2147483648");
  EXPECT_EQ(sent[8], "lagconfigmap_del ");
  for (std::size_t i : {2u, 4u, 6u, 7u, 9u}) EXPECT_EQ(sent[i].size(), kCommandSize - 1) << sent[i];
}

TEST_F(LagCommands, SimulationSendsNothing) {
  ScopedEnv simulation("SIMULATION_VMID", "");
  driver.lags().absentMembers["et1"] = 11;
  Ringlog::ScopedMemoryFile ring;
  EXPECT_EQ(vornDmaSetLagMode(1, 0, fapTypeArad), 0);
  EXPECT_EQ(vornDmaLagMemberAdd("PortChannel3", "et1", 0), 0);
  EXPECT_EQ(vornDmaLagMemberDel("PortChannel3", 0), 0);
  EXPECT_EQ(vornDmaLagMemberConfigAdd("PortChannel3", "Ethernet1"), 0);
  EXPECT_EQ(vornDmaLagMemberConfigDel("PortChannel3", "Ethernet1"), 0);
  EXPECT_EQ(vornDmaLagConfigMapDel("PortChannel3"), 0);
  EXPECT_THAT(vornDmaListLags()->lagDevices(), IsEmpty());
  EXPECT_THAT(driver.commands(), IsEmpty());
  EXPECT_THAT(sleeps(), IsEmpty());
  // The entry message comes before the guard.
  EXPECT_THAT(ringMessages(ring, "vornDmaLagMemberAdd"),
              ElementsAre("vornDmaLagMemberAdd ifname=PortChannel3, membername=et1, memberId=0"));
}

// In SAI mode the member commands send nothing, whatever their input; the
// LAG mode is still sent. saimode() is fixed at its first call: a child.
CATALOGUE_TEST_F(LagCommands, SaiModeSkipsTheMemberCommandsButNotTheLagMode,
                 "vornDmaLagMemberAdd", "vornDmaLagMemberDel", "vornDmaLagMemberConfigAdd",
                 "vornDmaLagMemberConfigDel", "vornDmaLagConfigMapDel") {
  EXPECT_EXIT(
      {
        ::setenv("KRIX_MODE", "sai", 1);
        driver.lags().absentMembers["et1"] = 11;
        const std::string overlong(300, 'n');
        bool ok = vornDmaLagMemberAdd("PortChannel3", "et1", 0) == 0 &&
                  vornDmaLagMemberAdd("", overlong.c_str(), -1) == 0 &&
                  vornDmaLagMemberDel(overlong.c_str(), INT_MIN) == 0 &&
                  vornDmaLagMemberConfigAdd("", "") == 0 &&
                  vornDmaLagMemberConfigDel("PortChannel3", "Ethernet1") == 0 &&
                  vornDmaLagConfigMapDel("PortChannel3") == 0;
        ok = ok && driver.commands().empty() && sleeps().empty();
        ok = ok && vornDmaSetLagMode(1, 0, fapTypeArad) == 0 &&
             driver.commands() == std::vector<std::string>{"drvparams 1 0 2"};
        std::_Exit(ok ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(LagCommands, RoundTripThroughTheDriversListing) {
  ASSERT_EQ(vornDmaSetLagMode(0, 0, fapTypeArad), 0);
  // LAG ids are handed out smallest free first, with a LAG's first member.
  ASSERT_EQ(vornDmaLagMemberAdd("PortChannel3", "et1_1", 0), 0);  // id 0
  ASSERT_EQ(vornDmaLagMemberAdd("PortChannel3", "et2_1", 1), 0);
  ASSERT_EQ(vornDmaLagMemberAdd("PortChannel7", "et3_1", 0), 0);  // id 1
  ASSERT_EQ(vornDmaLagMemberAdd("PortChannel20", "et4_1", 3), 0);  // id 2
  ASSERT_EQ(vornDmaLagMemberDel("PortChannel7", 0), 0);  // po7 goes, id 1 is free
  ASSERT_EQ(vornDmaLagMemberAdd("po30", "et5_1", 2), 0);  // id 1
  ASSERT_EQ(vornDmaLagMemberConfigAdd("PortChannel3", "Ethernet1/1"), 0);
  ASSERT_EQ(vornDmaLagMemberConfigAdd("PortChannel3", "Ethernet2/1"), 0);
  ASSERT_EQ(vornDmaLagMemberConfigAdd("PortChannel3", "Ethernet9/1"), 0);
  ASSERT_EQ(vornDmaLagMemberConfigDel("PortChannel3", "Ethernet9/1"), 0);
  ASSERT_EQ(vornDmaLagMemberConfigAdd("PortChannel12", "Ethernet5/1"), 0);  // no members: no id
  ASSERT_EQ(vornDmaLagMemberConfigAdd("PortChannel20", "Ethernet4/1"), 0);
  ASSERT_EQ(vornDmaLagConfigMapDel("PortChannel20"), 0);
  driver.lags().sysPorts["Ethernet1/1"] = 40;

  VornDmaLags::Ptr lags = vornDmaListLags();
  EXPECT_EQ(lags->lagDevices(),
            lagTable({lagDevice("po3", LagId(0), {{"et1_1", 0}, {"et2_1", 1}},
                                {"Ethernet1/1", "Ethernet2/1"}),
                      lagDevice("po12", LagId(), {}, {"Ethernet5/1"}),
                      lagDevice("po20", LagId(2), {{"et4_1", 3}}),
                      lagDevice("po30", LagId(1), {{"et5_1", 2}})}))
      << driver.procListing();
}

}  // namespace
