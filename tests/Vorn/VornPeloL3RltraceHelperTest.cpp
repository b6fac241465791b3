// The L3 miscellany trace opens through the forwarding layer's handle.
#include <gtest/gtest.h>

#include "Pelo/L3Rlog.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/VornPeloL3RltraceHelper.h"

namespace {

CATALOGUE_TEST(PeloL3Rltrace, OpensTheAgentsFileWithTheFacilitySize,
               "Vorn::setupPeloL3MiscRltrace") {
  const Pelo::RlogSizeSpec saved = Pelo::miscL3SizeSpec;
  Pelo::peloL3MiscRlogHandle = Pelo::RlogHandle();
  Pelo::miscL3SizeSpec = {128, 64};
  Vorn::setupPeloL3MiscRltrace("Pelo%s-%d");
  const Pelo::RlogHandle h = Pelo::peloL3MiscRlogHandle;
  Pelo::peloL3MiscRlogHandle = Pelo::RlogHandle();
  Pelo::miscL3SizeSpec = saved;
  EXPECT_EQ(h.fileName, "PeloL3Misc-Pelo%s-%d.rlog");
  EXPECT_TRUE(h.sizeSpec.messages == 128u && h.sizeSpec.messageBytes == 64u);
  EXPECT_FALSE(h.keepExisting);
  EXPECT_EQ(h.opens, 1u);
}

}  // namespace
