// The L3 miscellany trace opens through the forwarding layer's handle.
#include <gtest/gtest.h>

#include <string>

#include "Pelo/L3Rlog.h"
#include "Vorn/BadInputCatalogue.h"
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

// The agent's name is taken as text whatever it holds: empty, with format
// characters, long.
CATALOGUE_TEST_F(PeloL3Rltrace, OpensTheAgentsFileWithTheFacilitySize,
                 "Vorn::setupPeloL3MiscRltrace") {
  Pelo::miscL3SizeSpec = {128, 64};
  Vorn::setupPeloL3MiscRltrace("Pelo");
  const Pelo::RlogHandle& h = Pelo::peloL3MiscRlogHandle;
  EXPECT_EQ(h.fileName, "PeloL3Misc-Pelo.rlog");
  EXPECT_EQ(h.sizeSpec.messages, 128u);
  EXPECT_EQ(h.sizeSpec.messageBytes, 64u);
  EXPECT_FALSE(h.keepExisting);
  EXPECT_EQ(h.opens, 1u);
  for (const std::string& name : {std::string(), std::string("100%s-%d"), std::string(5000, 'x')}) {
    Vorn::setupPeloL3MiscRltrace(Mox::String(name.c_str()));
    EXPECT_EQ(h.fileName.stdString(), "PeloL3Misc-" + name + ".rlog");
  }
  EXPECT_EQ(h.opens, 4u);
}

}  // namespace
