// The bad-input catalogue: each test registers the exported names whose
// bad input it exercises; BadInputCatalogueTest compares the registry with
// the library's exported names.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <set>
#include <string>

#include "Vorn/CommonUtilsTestSupport.h"

namespace VornTest {

// The C library's assert line for `cond`, whatever the function and line.
inline std::string failedAssertion(const std::string& cond) {
  return "Assertion `" + regexQuoted(cond) + "' failed";
}

// Exported name -> the tests ("Suite.Name") that exercise it.
inline std::map<std::string, std::set<std::string>>& catalogueCoverage() {
  static std::map<std::string, std::set<std::string>> coverage;
  return coverage;
}

// Registers, at start-up, that the test `test` exercises `names`.
struct CatalogueEntry {
  CatalogueEntry(const char* test, std::initializer_list<const char*> names) {
    for (const char* name : names) catalogueCoverage()[name].insert(test);
  }
};

}  // namespace VornTest

#define CATALOGUE_ENTRY_(suite, name, ...)                                                  \
  static const ::VornTest::CatalogueEntry suite##_##name##_catalogueEntry(#suite "." #name, \
                                                                          {__VA_ARGS__})

// A test that exercises the exported names given after its name.
#define CATALOGUE_TEST(suite, name, ...)      \
  CATALOGUE_ENTRY_(suite, name, __VA_ARGS__); \
  TEST(suite, name)

// The same with a fixture.
#define CATALOGUE_TEST_F(fixture, name, ...)    \
  CATALOGUE_ENTRY_(fixture, name, __VA_ARGS__); \
  TEST_F(fixture, name)
