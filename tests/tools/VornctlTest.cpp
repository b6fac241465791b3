// vornctl as people and scripts run it: the built binary, its text and JSON
// output for a fixed emulated system against expected files, its exit
// statuses for bad input (2) and driver refusals (1).
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

using testing::HasSubstr;

namespace {

struct Outcome {
  int status;
  std::string out, err;
};

std::string contents(const std::string& path) {
  std::stringstream ss;
  ss << std::ifstream(path).rdbuf();
  return ss.str();
}

// Runs vornctl with `args` (shell words) as they are.
Outcome run(const std::string& args) {
  // ctest runs tests in parallel processes: each run gets a file of its own.
  static int runs = 0;
  std::string errFile = testing::TempDir() + "vornctl-stderr-" + std::to_string(::getpid()) + "-" +
                        std::to_string(++runs) + ".txt";
  std::string cmd = std::string(VORNCTL_PATH) + " " + args + " 2>" + errFile;
  Outcome r;
  FILE* p = popen(cmd.c_str(), "r");
  char buf[4096];
  std::size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0) r.out.append(buf, n);
  int raw = pclose(p);
  r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
  r.err = contents(errFile);
  std::remove(errFile.c_str());
  return r;
}

Outcome vornctl(const std::string& args) {
  return run("--driver emulated " + args);
}

std::string expected(const std::string& name) {
  return contents(std::string(VORN_SOURCE_DIR) + "/tests/tools/expected/" + name);
}

std::string fixture(const std::string& name) {
  return std::string(VORN_SOURCE_DIR) + "/tests/tools/fixtures/" + name;
}

// The figures of a run that change from run to run.
std::string withoutTimes(const std::string& text) {
  return std::regex_replace(text,
                            std::regex(R"([0-9]+ commands in [0-9.]+ s \([0-9]+ commands/s\))"),
                            "N commands in T s (R commands/s)");
}

// The global options given after the command here, before it elsewhere.
TEST(Vornctl, TextAndJsonOutputsMatchTheExpectedFiles) {
  const std::pair<std::string, const char*> cases[] = {
      {"copp --port 18", "copp-port18.txt"},
      {"id cpu-tm", "id-cpu-tm.txt"},
      {"thresholds --revisions 3,7", "thresholds-3-7.txt"},
      {"devices", "devices.txt"},
      {"lags --file " + fixture("listing.txt"), "lags-file.txt"},
      {"id lag --family 2 --mode 5 --lag 7 --json", "id-lag-2-5-7.json"},
      {"lags --file " + fixture("listing.txt") + " --json", "lags-file.json"},
  };
  for (const auto& [args, file] : cases) {
    Outcome r = run(args + " --driver emulated");
    EXPECT_EQ(r.status, 0) << args << "\n" << r.err;
    if (!std::string_view(file).ends_with(".json")) {
      EXPECT_EQ(r.out, expected(file)) << args;
      continue;
    }
    nlohmann::json got = nlohmann::json::parse(r.out, nullptr, false);
    nlohmann::json want = nlohmann::json::parse(expected(file));
    got.erase("source");  // the listing file's path depends on the checkout
    want.erase("source");
    EXPECT_EQ(got, want) << args;
  }
}

// A system whose revisions all use profile 1: profile 0 is still published,
// from minimums over no revision, and the output says its figures are no chip's.
TEST(Vornctl, ThresholdsMarkAProfileNoRevisionUses) {
  Outcome text = vornctl("thresholds --revisions 7");
  EXPECT_THAT(text.out, HasSubstr("threshold profile 0 (no revision uses it: its figures are "
                                  "not a chip's)\n"));
  EXPECT_THAT(text.out, HasSubstr("threshold profile 1 (revisions 7)\n"));
  nlohmann::json doc = nlohmann::json::parse(vornctl("--json thresholds --revisions 7,3").out);
  EXPECT_EQ(doc["profiles"]["0"]["usedByRevisions"], nlohmann::json::array({3}));
  EXPECT_EQ(doc["profiles"]["1"]["usedByRevisions"], nlohmann::json::array({7}));
}

TEST(Vornctl, BringupBuildsAndChecksTheLagTable) {
  Outcome r = vornctl("bringup --system chassis --linecards 2");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(withoutTimes(r.out), expected("bringup-chassis-2.txt"));
  EXPECT_THAT(r.err, HasSubstr("driver: emulated"));

  Outcome json = vornctl("--json bringup");
  ASSERT_EQ(json.status, 0);
  nlohmann::json doc = nlohmann::json::parse(json.out);
  EXPECT_EQ(doc["lagCheck"], "passed");
  EXPECT_EQ(doc["driver"], "emulated");
  EXPECT_EQ(doc["answers"]["0"], doc["commands"]);
}

// A driver that loses a member, and one that refuses a command.
TEST(Vornctl, DriverFailuresAreExitOneWithTheirText) {
  const std::pair<const char*, const char*> cases[] = {
      {"--emu-answer lagmember_add=0:1 bringup", "LAG table check: po1 lacks member et1 with id 0"},
      {"--emu-answer devstate=5 bringup",
       "refused: devstate fap0 up: driver answered 5 (Input/output error)"},
  };
  for (const auto& [args, text] : cases) {
    Outcome r = vornctl(args);
    EXPECT_EQ(r.status, 1) << args;
    EXPECT_THAT(r.out, HasSubstr(text)) << args;
  }
}

TEST(Vornctl, BadInputIsExitTwoNamingTheArgument) {
  // A check of the tool's, one that keeps the library from ending the process,
  // the library's bounds, a word that is no number, an option's own check, a
  // command that is none, and the ring file reader's answer.
  const std::pair<std::string, const char*> cases[] = {
      {"copp --port 23", "--port"},
      {"id linecard", "id linecard"},
      {"id linecard --fap-name Xyz1/0", "--fap-name"},
      {"id lag --lag 1025", "--lag"},
      {"tx --dest 1 --payload " + std::string(184 * 2, 'a'), "at most 183 bytes"},
      {"thresholds --revisions 3,x", "--revisions"},
      {"bringup --linecards 17", "--linecards"},
      {"nosuchcommand", "nosuchcommand"},
      {"trace " + fixture("listing.txt"), "not a ring trace file"},
  };
  for (const auto& [args, argument] : cases) {
    Outcome r = vornctl(args);
    EXPECT_EQ(r.status, 2) << args << "\n" << r.err;
    EXPECT_THAT(r.err, HasSubstr(argument)) << args;
  }
}

TEST(Vornctl, HelpAndVersion) {
  for (const char* cmd : {"bringup", "id", "trace"}) {
    Outcome r = vornctl(std::string(cmd) + " --help");
    EXPECT_EQ(r.status, 0) << cmd;
    EXPECT_THAT(r.out, HasSubstr("Usage")) << cmd;
  }
  Outcome version = run("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_TRUE(std::regex_match(version.out, std::regex("vornctl [0-9]+\\.[0-9]+\\.[0-9]+\n")))
      << version.out;
}

TEST(Vornctl, TraceDecodesTheRingFileABringupKept) {
  std::string dir = testing::TempDir() + "vornctl-ring-XXXXXX";
  ASSERT_NE(::mkdtemp(dir.data()), nullptr);
  Outcome bringup = vornctl("bringup --ring-trace " + dir);
  std::smatch kept;
  std::regex_search(bringup.out, kept, std::regex("ring trace: (.*)\n"));
  Outcome trace = vornctl("trace " + kept.str(1));
  std::remove(kept.str(1).c_str());
  ::rmdir(dir.c_str());
  EXPECT_EQ(bringup.status, 0) << bringup.err;
  EXPECT_EQ(trace.status, 0) << trace.err;
  EXPECT_THAT(trace.out, HasSubstr("vornDmaLagMemberAdd ifname=PortChannel1, membername=et1"));
  EXPECT_THAT(trace.out, HasSubstr("fab_ioctl buf=lagmember_add PortChannel1 et1 0"));
}

}  // namespace
