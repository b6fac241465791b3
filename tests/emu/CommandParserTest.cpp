// The emulator's command parsing, on well-formed and hostile buffers.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include "emu/Command.h"
#include "emu/FabricDriver.h"

namespace {

TEST(CommandParser, SplitsAtSingleBlanksAndRefusesWhatIsNotACommand) {
  const char buf[] = "ifadd et1 5 0 ";
  Emu::Command c;
  ASSERT_TRUE(Emu::parseCommand(buf, sizeof buf, c));
  EXPECT_EQ(c.keyword, "ifadd");
  ASSERT_EQ(c.argc, 4u);
  EXPECT_EQ(c.args[0], "et1");
  EXPECT_EQ(c.args[3], "");  // an empty last token

  const char unterminated[4] = {'a', 'b', 'c', 'd'};
  EXPECT_FALSE(Emu::parseCommand(unterminated, sizeof unterminated, c));
  EXPECT_FALSE(Emu::parseCommand("", 1, c));
  EXPECT_FALSE(Emu::parseCommand(" lead", 6, c));
  EXPECT_FALSE(Emu::parseCommand(nullptr, 10, c));
  std::string many = "k";
  for (int i = 0; i < 17; ++i) many += " a";
  EXPECT_FALSE(Emu::parseCommand(many.c_str(), many.size() + 1, c));
}

TEST(CommandParser, NumbersMustBeWholeTokens) {
  unsigned long long u;
  for (const char* bad : {"12x", "", "-1"}) EXPECT_FALSE(Emu::parseUnsigned(bad, u)) << bad;
  EXPECT_TRUE(Emu::parseUnsigned("88b5", u, 16));
  EXPECT_EQ(u, 0x88b5u);
}

TEST(FabricDriver, UnknownKeywordsAndWrongSizesAreRefused) {
  Emu::FabricDriver driver;
  char a[256] = "nosuchcommand 1", b[256] = "mpcmode maybe", c[96] = "mpcmode on";
  EXPECT_EQ(driver.command(a, 256), EINVAL);
  EXPECT_EQ(driver.command(b, 256), EINVAL);
  EXPECT_EQ(driver.command(c, 96), EINVAL);
  EXPECT_EQ(driver.answers(), (std::vector<int>{EINVAL, EINVAL, EINVAL}));
}

TEST(FabricDriver, ScriptedAnswersCountDownPerKeyword) {
  Emu::FabricDriver driver;
  driver.answerNext("mpcmode", EIO, 2);
  char on[256] = "mpcmode on";
  EXPECT_EQ(driver.command(on, 256), EIO);
  EXPECT_FALSE(driver.devices().mpcMode);  // an answered command has no effect
  char state[256] = "devstate fap0 up";
  EXPECT_EQ(driver.command(state, 256), ENODEV);  // other keywords unaffected
  EXPECT_EQ(driver.command(on, 256), EIO);
  EXPECT_EQ(driver.command(on, 256), 0);
  EXPECT_TRUE(driver.devices().mpcMode);
}

// A prefix matches whole tokens, and the longest matching prefix answers.
TEST(FabricDriver, ScriptedPrefixesMatchWholeTokensLongestFirst) {
  Emu::FabricDriver driver;
  driver.answerNext("devstate", EIO, 9);
  driver.answerNext("devstate fap1", EPERM, 9);
  driver.answerNext("devstate fap1 up", EBUSY);
  const std::pair<std::string, int> cases[] = {
      {"devstate fap1 up", EBUSY}, {"devstate fap1 up", EPERM}, {"devstate fap1", EPERM},
      {"devstate fap10 up", EIO},  {"devstatex fap1", EINVAL},
  };
  for (const auto& [text, error] : cases) {
    std::string buf = text;
    buf.resize(256);
    EXPECT_EQ(driver.command(buf.data(), 256), error) << text;
  }
  std::string left;
  for (const auto& a : driver.scriptedAnswers())
    left += a.prefix + "=" + std::to_string(a.error) + ":" + std::to_string(a.remaining) + " ";
  EXPECT_EQ(left, "devstate=5:8 devstate fap1=1:7 ");
  driver.clearScriptedAnswers();
  EXPECT_TRUE(driver.scriptedAnswers().empty());
}

TEST(FabricDriver, NamesAreUniqueAndParametersSetOnce) {
  Emu::FabricDriver driver;
  driver.pciDevicePresentIs("0000:03:00.0");
  char n1[256] = "devname fap0 0000:03:00.0", n2[256] = "devname fap1 0000:03:00.0",
       n3[256] = "devname fap2 0000:09:00.0";
  EXPECT_EQ(driver.command(n1, 256), 0);
  EXPECT_EQ(driver.command(n1, 256), EEXIST);
  EXPECT_EQ(driver.command(n2, 256), EEXIST);
  EXPECT_EQ(driver.command(n3, 256), ENODEV);
  char p[256] = "devparams fap0 2 1 1 2 3 4 5 6";
  EXPECT_EQ(driver.command(p, 256), 0);
  EXPECT_EQ(driver.command(p, 256), EBUSY);
}

}  // namespace
