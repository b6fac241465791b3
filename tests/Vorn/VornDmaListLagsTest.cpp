// vornDmaListLags: reading "/proc/vorn-dma" and its failures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Vorn/BadInputCatalogue.h"
#include "Vorn/LagTestSupport.h"
#include "Vorn/VornDma.h"
#include "support/ProcListing.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::IsEmpty;
using VornTest::lagDevice;
using VornTest::lagTable;
using VornTest::ProcListing;
using VornTest::ScopedEnv;

namespace {

// The last line has no newline.
constexpr const char kExample[] = "lags:\npo3 5 et1 0 et2 1\n\nlagconfigmap:\net7 sys_port 40: po3";

class ListLags : public testing::Test {
 protected:
  ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
};

TEST_F(ListLags, ReadsTheFileWhateverSizeItsReadsHave) {
  const auto expected = lagTable({lagDevice("po3", LagId(5), {{"et1", 0}, {"et2", 1}}, {"et7"})});
  for (std::size_t perRead : {1u, 2u, 7u, 1u << 20}) {
    ProcListing file(kExample, perRead);
    EXPECT_EQ(vornDmaListLags()->lagDevices(), expected) << perRead;
    EXPECT_EQ(file.opens, 1);
    EXPECT_EQ(file.closes, 1);
  }
}

TEST_F(ListLags, UnopenableFileOrSimulationGivesAnEmptyTable) {
  ProcListing file(kExample);
  {
    ScopedEnv simulation("SIMULATION_VMID", "");
    EXPECT_THAT(vornDmaListLags()->lagDevices(), IsEmpty());
    EXPECT_EQ(file.opens, 0);
  }
  static const Kernel::Ops ops = VornTest::noDriverOps();
  Kernel::ScopedOps scoped(&ops);
  EXPECT_THAT(vornDmaListLags()->lagDevices(), IsEmpty());
}

TEST_F(ListLags, IdsOutOfRangeThrowAndCloseTheFile) {
  ProcListing file("lags:\npo1 2\npo7 1025\n", 3);
  VornTest::expectRangeText([] { vornDmaListLags(); },
                            "LagId::value < LagId::min or > LagId::null not allowed");
  EXPECT_EQ(file.closes, 1);
}

CATALOGUE_TEST_F(ListLags, MalformedListingsEndTheProcess, "vornDmaListLags") {
  const std::pair<std::string, const char*> cases[] = {
      {"lags:\npo3 5\nlags: \n", "matches == 3"},
      {"lags:\npo3 5\nlags: ", "matches == 3"},  // the last line, without its newline
      {"lagconfigmap:\net7 sys_port 40: po3\n\nlags:\npo3 5\n", "!!lagDevice"},
  };
  for (const auto& [text, condition] : cases)
    EXPECT_DEATH(
        {
          ProcListing file(text);
          vornDmaListLags();
        },
        VornTest::assertionPattern(
            "Hardware::Vorn::VornDmaLags::Ptr Hardware::Vorn::vornDmaListLags()", condition))
        << text;
}

}  // namespace
