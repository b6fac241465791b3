// One emulated switch shared by real processes through vorn-fabricd: what one
// process builds, another reads; many build at once; clients die, the daemon
// goes away and comes back.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

using testing::HasSubstr;
using testing::Not;

namespace {

// A program started with its standard output and error on one pipe; killed
// and reaped when it goes out of scope.
class Process {
 public:
  explicit Process(std::vector<std::string> args, const std::string& fabric = "") {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDERR_FILENO);
    std::vector<std::string> env;
    for (char** e = environ; *e; ++e)
      if (std::string(*e).rfind("VORN_FABRIC=", 0) != 0) env.emplace_back(*e);
    if (!fabric.empty()) env.push_back("VORN_FABRIC=" + fabric);
    std::vector<char*> argv, envp;
    for (std::string& a : args) argv.push_back(a.data());
    for (std::string& e : env) envp.push_back(e.data());
    argv.push_back(nullptr);
    envp.push_back(nullptr);
    if (posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), envp.data()) != 0) pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    ::close(fds[1]);
    out_ = fds[0];
  }
  ~Process() {
    if (pid_ > 0) signal(SIGKILL), wait();
    if (out_ >= 0) ::close(out_);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // Reads output until it holds `text` (true) or 10 s pass.
  bool waitFor(const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (output_.find(text, seen_) == std::string::npos) {
      auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
          end - std::chrono::steady_clock::now());
      if (left.count() <= 0 || !readSome(static_cast<int>(left.count()))) return false;
    }
    seen_ = output_.find(text, seen_) + text.size();
    return true;
  }
  void signal(int sig) const {
    if (pid_ > 0) ::kill(pid_, sig);
  }
  // The exit status (128 + the signal for a killed process), with all output.
  int wait() {
    if (pid_ <= 0) return status_;
    while (readSome(-1)) {
    }
    int raw = 0;
    ::waitpid(pid_, &raw, 0);
    pid_ = -1;
    return status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
  }
  const std::string& output() const { return output_; }

 private:
  bool readSome(int timeoutMs) {
    pollfd p{out_, POLLIN, 0};
    if (::poll(&p, 1, timeoutMs) <= 0) return false;
    char buf[4096];
    ssize_t n = ::read(out_, buf, sizeof buf);
    if (n <= 0) return false;
    output_.append(buf, static_cast<std::size_t>(n));
    return true;
  }

  pid_t pid_ = -1;
  int status_ = -1;
  int out_ = -1;
  std::string output_;
  std::size_t seen_ = 0;
};

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

// A client process that builds port-channel `n`; expects it to succeed.
void client(const std::string& n) {
  Process p({VORN_FABRIC_CLIENT_PATH, "build", n}, socketPath());
  EXPECT_EQ(p.wait(), 0) << "client " << n << ": " << p.output();
}

// The text of `text` between `from` and `to`.
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

  // The in-process emulator is another switch: it has none of it.
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
  client("9");
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
  client("4");  // another port-channel: not matched

  EXPECT_EQ(vornctl({"fault", "clear"}).status, 0);
  EXPECT_THAT(vornctl({"fault", "list"}).out, HasSubstr("no scripted answers"));
  EXPECT_EQ(vornctl({"fault", "add", "lagmember_add", "5", "x0"}).status, 2);
}

}  // namespace
