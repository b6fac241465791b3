// The L3 miscellany trace opens through the forwarding layer's handle.
#include <gtest/gtest.h>

#include <string>

#include "Pelo/L3Rlog.h"
#include "Vorn/VornPeloL3RltraceHelper.h"

namespace {

class PeloL3Rltrace : public testing::Test {
 protected:
  void SetUp() override { Pelo::peloL3MiscRlogHandle = Pelo::RlogHandle(); }
  void TearDown() override {
    Pelo::peloL3MiscRlogHandle = Pelo::RlogHandle();
    Pelo::miscL3SizeSpec = savedSpec_;
  }
  const Pelo::RlogSizeSpec savedSpec_ = Pelo::miscL3SizeSpec;
};

TEST_F(PeloL3Rltrace, OpensTheAgentsFileWithTheFacilitySize) {
  Pelo::miscL3SizeSpec = {128, 64};
  Vorn::setupPeloL3MiscRltrace("Pelo");
  const Pelo::RlogHandle& h = Pelo::peloL3MiscRlogHandle;
  EXPECT_EQ(h.fileName, "PeloL3Misc-Pelo.rlog");
  EXPECT_EQ(h.sizeSpec.messages, 128u);
  EXPECT_EQ(h.sizeSpec.messageBytes, 64u);
  EXPECT_FALSE(h.keepExisting);
  EXPECT_EQ(h.opens, 1u);
}

TEST_F(PeloL3Rltrace, NameIsTakenAsTextWhateverItHolds) {
  Vorn::setupPeloL3MiscRltrace("100%s-%d");
  EXPECT_EQ(Pelo::peloL3MiscRlogHandle.fileName, "PeloL3Misc-100%s-%d.rlog");
  Vorn::setupPeloL3MiscRltrace("");
  EXPECT_EQ(Pelo::peloL3MiscRlogHandle.fileName, "PeloL3Misc-.rlog");
  const std::string longName(1000, 'x');
  Vorn::setupPeloL3MiscRltrace(Mox::String(longName));
  EXPECT_EQ(Pelo::peloL3MiscRlogHandle.fileName.stdString(), "PeloL3Misc-" + longName + ".rlog");
  EXPECT_EQ(Pelo::peloL3MiscRlogHandle.opens, 3u);
}

}  // namespace
