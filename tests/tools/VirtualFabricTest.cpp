// One emulated switch shared by real processes through vorn-fabricd: what one
// process builds, another reads; many build at once; clients die, the daemon
// goes away and comes back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/Process.h"

using testing::HasSubstr;
using testing::Not;
using VornTest::Process;

namespace {

std::string socketPath() {
  return testing::TempDir() + "fabric.sock";
}

// A daemon serving at socketPath(); stopped at the end of the scope.
struct Daemon : Process {
  Daemon() : Process({VORN_FABRICD_PATH, "--socket", socketPath()}) {
    EXPECT_TRUE(waitFor("serving")) << output();
  }
  ~Daemon() {
    signal(SIGTERM);
    wait();
  }
};

struct Outcome {
  int status;
  std::string out;
};

// vornctl with VORN_FABRIC naming `fabric`.
Outcome vornctl(std::vector<std::string> args, const std::string& fabric = socketPath()) {
  args.insert(args.begin(), VORNCTL_PATH);
  Process p(args, fabric);
  int status = p.wait();
  return {status, p.output()};
}

std::string between(const std::string& text, const std::string& from, const std::string& to) {
  std::size_t at = text.find(from);
  if (at == std::string::npos) return "";
  at += from.size();
  return text.substr(at, text.find(to, at) - at);
}

TEST(VirtualFabric, TwoProcessesSeeOneSwitch) {
  Daemon daemon;
  Outcome up = vornctl({"--driver", "remote=" + socketPath(), "bringup"});
  ASSERT_EQ(up.status, 0) << up.out;
  EXPECT_THAT(up.out, HasSubstr("LAG table check: passed"));

  // auto picks the daemon VORN_FABRIC names.
  Outcome lags = vornctl({"lags"});
  ASSERT_EQ(lags.status, 0) << lags.out;
  EXPECT_THAT(lags.out, HasSubstr("driver: remote"));
  const std::string table = between(up.out, "LAG table read back:\n", "LAG table check");
  ASSERT_THAT(table, HasSubstr("po1"));
  EXPECT_THAT(lags.out, HasSubstr(table));

  Outcome devices = vornctl({"devices", "--driver", "remote"});
  ASSERT_EQ(devices.status, 0) << devices.out;
  const std::string upDevices = between(up.out, "up devices:\n", "LAG table");
  ASSERT_THAT(upDevices, HasSubstr("fap1"));
  EXPECT_EQ(between(devices.out, "up devices:\n", "device parameters"), upDevices);

  // The in-process emulator answers the same bring-up alike, and is another
  // switch: it has none of this one.
  EXPECT_EQ(between(vornctl({"bringup", "--driver", "emulated"}).out, "system:", "commands in"),
            between(up.out, "system:", "commands in"));
  EXPECT_THAT(vornctl({"lags", "--driver", "emulated"}).out, Not(HasSubstr("po1")));
}

TEST(VirtualFabric, ConcurrentClientsBuildOneListing) {
  Daemon daemon;
  constexpr int kClients = 8;
  {
    std::vector<std::unique_ptr<Process>> clients;
    for (int n = 1; n <= kClients; ++n)
      clients.push_back(std::make_unique<Process>(
          std::vector<std::string>{VORN_FABRIC_CLIENT_PATH, "build", std::to_string(n)},
          socketPath()));
    for (int n = 1; n <= kClients; ++n)
      EXPECT_EQ(clients[n - 1]->wait(), 0) << "client " << n << ": " << clients[n - 1]->output();
  }
  Outcome lags = vornctl({"lags", "--json"});
  ASSERT_EQ(lags.status, 0) << lags.out;
  auto doc = nlohmann::json::parse(lags.out.substr(lags.out.find('{')));
  ASSERT_EQ(doc["lags"].size(), static_cast<std::size_t>(kClients)) << lags.out;
  for (const auto& lag : doc["lags"]) {
    std::string n = lag["name"].get<std::string>().substr(2);
    SCOPED_TRACE("po" + n);
    EXPECT_EQ(lag["members"], nlohmann::json({{"et" + n + "_1", 0}, {"et" + n + "_2", 1}}));
    EXPECT_EQ(lag["configMembers"], nlohmann::json({"et" + n + "_3", "et" + n + "_4"}));
  }
}

TEST(VirtualFabric, ClientsKilledMidRunLeaveTheDaemonServingOneConsistentState) {
  Daemon daemon;
  for (int n = 1; n <= 4; ++n) {
    Process doomed({VORN_FABRIC_CLIENT_PATH, "build", std::to_string(n)}, socketPath());
    ::usleep(static_cast<useconds_t>(500 * n));
    doomed.signal(SIGKILL);
  }
  // Whatever a killed client got done stays; the state still takes commands
  // and reads back whole.
  Process survivor({VORN_FABRIC_CLIENT_PATH, "build", "9"}, socketPath());
  EXPECT_EQ(survivor.wait(), 0) << survivor.output();
  Outcome lags = vornctl({"lags"});
  EXPECT_EQ(lags.status, 0) << lags.out;
  EXPECT_THAT(lags.out, HasSubstr("et9_1:0 et9_2:1"));
}

TEST(VirtualFabric, ADaemonThatGoesAwayIsAVanishedDeviceUntilItComesBack) {
  auto daemon = std::make_unique<Daemon>();
  Process watch({VORN_FABRIC_CLIENT_PATH, "watch"}, socketPath());
  ASSERT_TRUE(watch.waitFor("answer 0")) << watch.output();
  daemon->signal(SIGTERM);
  EXPECT_EQ(daemon->wait(), 0) << daemon->output();
  EXPECT_TRUE(watch.waitFor("answer 19")) << watch.output();
  daemon = std::make_unique<Daemon>();
  EXPECT_TRUE(watch.waitFor("answer 0")) << watch.output();
}

TEST(VirtualFabric, NoDaemonIsAnAbsentDeviceNeverAHang) {
  const std::string nowhere = testing::TempDir() + "no-daemon.sock";
  Outcome ctl = vornctl({"devices"}, nowhere);
  EXPECT_EQ(ctl.status, 2);
  EXPECT_THAT(ctl.out, HasSubstr(nowhere + ": no fabric daemon answers there"));
  // The library itself takes its path for a missing "/dev/fabric".
  Process lib({VORN_FABRIC_CLIENT_PATH, "build", "1"}, nowhere);
  EXPECT_EQ(lib.wait(), 128 + SIGABRT);
  EXPECT_THAT(lib.output(), HasSubstr("fab_ioctl: open /dev/fabric: No such file or directory"));
}

TEST(VirtualFabric, ScriptedFaultsReachEveryClient) {
  Daemon daemon;
  ASSERT_EQ(vornctl({"fault", "add", "lagmember_add PortChannel3", "16", "x3"}).status, 0);
  Outcome list = vornctl({"fault", "list"});
  EXPECT_THAT(list.out, HasSubstr("lagmember_add PortChannel3 16 3\n"));

  Process refused({VORN_FABRIC_CLIENT_PATH, "build", "3"}, socketPath());
  EXPECT_EQ(refused.wait(), 1);
  EXPECT_THAT(refused.output(), HasSubstr("lagmember_add et3_1: 16"));
  EXPECT_THAT(refused.output(), HasSubstr("lagmember_add et3_2: 16"));
  EXPECT_THAT(vornctl({"fault", "list"}).out, HasSubstr("lagmember_add PortChannel3 16 1\n"));
  Process other({VORN_FABRIC_CLIENT_PATH, "build", "4"}, socketPath());
  EXPECT_EQ(other.wait(), 0) << other.output();  // another port-channel: not matched

  EXPECT_EQ(vornctl({"fault", "clear"}).status, 0);
  EXPECT_THAT(vornctl({"fault", "list"}).out, HasSubstr("no scripted answers"));
  EXPECT_EQ(vornctl({"fault", "add", "lagmember_add", "5", "x0"}).status, 2);
}

}  // namespace
