// Keeps the bad-input catalogue complete: every exported name is either
// exercised by a catalogue test or listed below as taking nothing from
// outside, and no name is both. The catalogue files register their names
// with CATALOGUE_TEST (BadInputCatalogue.h).
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "Vorn/BadInputCatalogue.h"

namespace {

const std::set<std::string> kExported = {
#include "Vorn/ExportedNames.inc"
};

// Exported names that take no text, name, pointer or number from outside,
// each with the reason.
const std::map<std::string, const char*> kTakesNoOutsideInput = {
    {"vornDmaProcVornDmaPresent", "no argument; a yes/no probe of a path"},
    {"vornDmaDevFabricPresent", "no argument; a yes/no probe of a path"},
    {"vornDmaDump", "no argument; copies the driver's file unread"},
    {"getPtpClockQuality", "no argument; a constant"},
    {"tcMaxRatioSp", "data: the library's own constant table"},
    {"lowerDpMultiple", "data: the library's own constant table"},
    {"ShapeRateSmState::~ShapeRateSmState", "destructor"},
    {"ShapeRateSmState::isShapeRateSmReady", "getter"},
    {"ShapeRateSmState::isAnchorIntfSmReady", "getter"},
    {"ShapeRateSmState::isVornSubIntfSmReady", "getter"},
    {"ShapeRateSmState::isVornTmSubIntfSmReady", "getter"},
    {"ShapeRateSmState::isShapeRateSmReadyIs", "takes a bool only"},
    {"ShapeRateSmState::isAnchorIntfSmReadyIs", "takes a bool only"},
    {"ShapeRateSmState::isVornSubIntfSmReadyIs", "takes a bool only"},
    {"ShapeRateSmState::isVornTmSubIntfSmReadyIs", "takes a bool only"},
    {"ShapeRateSmState::fwkType", "no argument; the type record"},
    {"ShapeRateSmState::moxAllocTrackTypeInfo_", "data: the allocation record"},
    {"vtable for ShapeRateSmState", "compiler-made"},
    {"typeinfo for ShapeRateSmState", "compiler-made"},
    {"typeinfo name for ShapeRateSmState", "compiler-made"},
    {"EgressBufferingSm::~EgressBufferingSm", "destructor"},
    {"EgressBufferingSm::ebParams", "no argument; derived from the constructor's inputs"},
    {"EgressBufferingSm::initialized", "getter"},
    {"EgressBufferingSm::initializedIs", "takes a bool only"},
    {"EgressBufferingSm::generateCgmConfigurations",
     "no argument; runs on the constructor's inputs, catalogued there"},
    {"EgressBufferingSm::generateEgqConfigurations",
     "no argument; runs on the constructor's inputs, catalogued there"},
    {"EgressBufferingSm::fwkType", "no argument; the type record"},
    {"EgressBufferingSm::moxFwkActivity", "no argument; always null"},
    {"EgressBufferingSm::moxDoZombieReactors", "takes a bool only, handed to the base"},
    {"EgressBufferingSm::hasNotificationActiveIs", "takes a bool only, handed to the base"},
    {"EgressBufferingSm::moxAllocTrackTypeInfo_", "data: the allocation record"},
    {"vtable for EgressBufferingSm", "compiler-made"},
    {"typeinfo for EgressBufferingSm", "compiler-made"},
    {"typeinfo name for EgressBufferingSm", "compiler-made"},
};

// Every test named in the registry, as "Suite.Name".
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
    const bool isExcluded = kTakesNoOutsideInput.count(name) != 0;
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
  for (const auto& [name, reason] : kTakesNoOutsideInput)
    EXPECT_TRUE(kExported.count(name))
        << "excluded but not exported: " << name << " (" << reason << ")";
}

}  // namespace
