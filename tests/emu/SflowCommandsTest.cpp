// The emulated driver's sFlow commands: what it accepts and what it answers.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "emu/FabricDriver.h"

namespace {

int send(Emu::FabricDriver& d, const char* text, unsigned size, std::string* reply = nullptr) {
  std::string buf(size, '\0');
  std::strncpy(buf.data(), text, size - 1);
  int rc = d.command(buf.data(), size);
  if (reply) *reply = std::string(buf.c_str());
  return rc;
}

TEST(SflowCommands, ThresholdKeepsValueAndChipFamily) {
  Emu::FabricDriver d;
  EXPECT_EQ(send(d, "sflow_drop_threshold 4294967295 3", 256), 0);
  for (const char* bad : {"sflow_drop_threshold 4294967296 3", "sflow_drop_threshold 5",
                          "sflow_drop_threshold 0x5 2"})
    EXPECT_EQ(send(d, bad, 256), EINVAL) << bad;
  EXPECT_EQ(d.sflow().dropThreshold, 4294967295u);
}

TEST(SflowCommands, CountersAnswerInDecimalOrTheScriptedReply) {
  Emu::FabricDriver d;
  d.sflow().samples = 18446744073709551615ull;
  std::string reply;
  EXPECT_EQ(send(d, "rxsflow", 128, &reply), 0);
  EXPECT_EQ(reply, "18446744073709551615");
  d.sflow().dropsReply = std::string(300, 'x');
  EXPECT_EQ(send(d, "rxsflow_drop", 128, &reply), 0);
  EXPECT_EQ(reply, std::string(127, 'x'));  // cut to the buffer
  EXPECT_EQ(send(d, "rxsflow", 256), EINVAL);
  EXPECT_EQ(send(d, "rxsflow now", 128), EINVAL);
}

}  // namespace
