// The emulator's command parsing, on well-formed and hostile buffers.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include "emu/Command.h"
#include "emu/FabricDriver.h"

namespace {

// The library's own commands, an empty last token among them, reach the
// emulator through its tests; here what the library never sends.
TEST(CommandParser, RefusesWhatIsNotACommand) {
  Emu::Command c;
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
}

TEST(FabricDriver, UnknownKeywordsAndArgumentsAreRefused) {
  Emu::FabricDriver driver;
  char a[256] = "nosuchcommand 1", b[256] = "mpcmode maybe";
  EXPECT_EQ(driver.command(a, 256), EINVAL);
  EXPECT_EQ(driver.command(b, 256), EINVAL);
  EXPECT_EQ(driver.answers(), (std::vector<int>{EINVAL, EINVAL}));
}

TEST(FabricDriver, ScriptedAnswersCountDownPerPrefix) {
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
  // A prefix matches whole tokens, and the longest matching one answers.
  driver.answerNext("devstate", EBUSY, 2);
  driver.answerNext("devstate fap1", EPERM);
  char fap10[256] = "devstate fap10 up", fap1[256] = "devstate fap1 up";
  EXPECT_EQ(driver.command(fap10, 256), EBUSY);
  EXPECT_EQ(driver.command(fap1, 256), EPERM);
  auto left = driver.scriptedAnswers();
  ASSERT_EQ(left.size(), 1u);
  EXPECT_EQ(left[0].prefix + " " + std::to_string(left[0].remaining), "devstate 1");
  driver.clearScriptedAnswers();
  EXPECT_EQ(driver.command(fap1, 256), ENODEV);
}

// Two devices cannot share a PCI function; an absent one cannot be named.
TEST(FabricDriver, NamesAreUniquePerDeviceAndFunction) {
  Emu::FabricDriver driver;
  driver.pciDevicePresentIs("0000:03:00.0");
  char n1[256] = "devname fap0 0000:03:00.0", n2[256] = "devname fap1 0000:03:00.0",
       n3[256] = "devname fap2 0000:09:00.0";
  EXPECT_EQ(driver.command(n1, 256), 0);
  EXPECT_EQ(driver.command(n2, 256), EEXIST);
  EXPECT_EQ(driver.command(n3, 256), ENODEV);
}

}  // namespace
