// Each exported name is either exercised by a test registered with
// CATALOGUE_TEST or takes nothing from outside, and not both.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "Vorn/BadInputCatalogue.h"

namespace {

const std::set<std::string> kExported = {
#include "Vorn/ExportedNames.inc"
};

bool takesNoOutsideInput(const std::string& name) {
  static const std::set<std::string> kNamed = {
      "vornDmaProcVornDmaPresent", "vornDmaDevFabricPresent", "vornDmaDump", "getPtpClockQuality",
      "tcMaxRatioSp", "lowerDpMultiple",
      // Run on the constructor's inputs, which are catalogued there.
      "EgressBufferingSm::ebParams", "EgressBufferingSm::generateCgmConfigurations",
      "EgressBufferingSm::generateEgqConfigurations", "EgressBufferingSm::moxFwkActivity",
      "EgressBufferingSm::moxDoZombieReactors", "EgressBufferingSm::hasNotificationActiveIs"};
  auto endsWith = [&](std::string_view tail) { return std::string_view(name).ends_with(tail); };
  const bool entityMember =
      name.starts_with("ShapeRateSmState::") || name.starts_with("EgressBufferingSm::");
  return kNamed.count(name) || name.starts_with("vtable for ") || name.starts_with("typeinfo ") ||
         name.find("::~") != std::string::npos || endsWith("::fwkType") ||
         endsWith("::moxAllocTrackTypeInfo_") ||
         (entityMember && (endsWith("Ready") || endsWith("ReadyIs") || endsWith("::initialized") ||
                           endsWith("::initializedIs")));
}

std::set<std::string> registeredTests() {
  std::set<std::string> tests;
  const testing::UnitTest& unit = *testing::UnitTest::GetInstance();
  for (int i = 0; i < unit.total_test_suite_count(); ++i) {
    const testing::TestSuite& suite = *unit.GetTestSuite(i);
    for (int j = 0; j < suite.total_test_count(); ++j)
      tests.insert(std::string(suite.name()) + "." + suite.GetTestInfo(j)->name());
  }
  return tests;
}

TEST(BadInputCatalogue, EveryExportedNameIsCataloguedOrTakesNoOutsideInput) {
  const auto& covered = VornTest::catalogueCoverage();
  for (const std::string& name : kExported) {
    const bool isCovered = covered.count(name) != 0;
    const bool isExcluded = takesNoOutsideInput(name);
    EXPECT_TRUE(isCovered || isExcluded) << "no catalogue entry for " << name;
    EXPECT_FALSE(isCovered && isExcluded) << name << " is catalogued and also excluded";
  }
}

TEST(BadInputCatalogue, EveryCataloguedNameIsExportedAndItsTestsExist) {
  const std::set<std::string> tests = registeredTests();
  for (const auto& [name, byTests] : VornTest::catalogueCoverage()) {
    EXPECT_TRUE(kExported.count(name)) << "catalogued but not exported: " << name;
    for (const std::string& test : byTests)
      EXPECT_TRUE(tests.count(test)) << name << " is claimed by a test that is not there: " << test;
  }
}

}  // namespace
