// Bad input to the LAG commands and the LAG table: vornDmaSetLagMode,
// vornDmaLagMemberAdd, vornDmaLagMemberDel, vornDmaLagMemberConfigAdd,
// vornDmaLagMemberConfigDel, vornDmaLagConfigMapDel, vornDmaListLags (whose
// outside input is the driver's listing text) and LagDevice::operator=.
// The listing's rules are tested at length in the listing suites; here each
// boundary has one row.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <string>
#include <variant>

#include "Mox/RangeException.h"
#include "Vorn/BadInputCatalogue.h"
#include "Vorn/LagTestSupport.h"
#include "Vorn/VornDma.h"
#include "emu/FabricDriver.h"
#include "support/ProcListing.h"
#include "support/Support.h"

using namespace Hardware::Vorn;
using testing::ElementsAre;
using testing::IsEmpty;
using VornTest::lagDevice;
using VornTest::lagTable;

namespace {

const std::string kOverlong(300, 'n');

class BadInputLags : public testing::Test {
 protected:
  VornTest::ScopedEnv sim{"SIMULATION_VMID", std::nullopt};
  Emu::FabricDriver driver;
};

// The arguments are unsigned but go out as "%d": the largest values read -1.
CATALOGUE_TEST_F(BadInputLags, LagModeNumbersPrintSigned, "vornDmaSetLagMode") {
  EXPECT_EQ(vornDmaSetLagMode(UINT_MAX, UINT_MAX, static_cast<FapType>(UINT_MAX)), EINVAL);
  EXPECT_EQ(vornDmaSetLagMode(0x80000000u, 0, fapTypeUnknown_), EINVAL);
  EXPECT_THAT(driver.commands(), ElementsAre("drvparams -1 -1 -1", "drvparams -2147483648 0 0"));
}

// Empty names, names beyond the buffer and member ids at the ends of an int
// are sent as they are (cut at the buffer) and answered by the driver.
CATALOGUE_TEST_F(BadInputLags, MemberCommandsWithEmptyOverlongAndNegative, "vornDmaLagMemberAdd",
                 "vornDmaLagMemberDel", "vornDmaLagMemberConfigAdd", "vornDmaLagMemberConfigDel",
                 "vornDmaLagConfigMapDel") {
  const char* longest = kOverlong.c_str();
  EXPECT_EQ(vornDmaLagMemberAdd("", "", 0), EINVAL);
  EXPECT_EQ(vornDmaLagMemberAdd("po1", "et1", -1), EINVAL);
  EXPECT_EQ(vornDmaLagMemberAdd(longest, "et1", INT_MAX), EINVAL);
  EXPECT_EQ(vornDmaLagMemberDel("", INT_MIN), EINVAL);
  EXPECT_EQ(vornDmaLagMemberDel(longest, 0), EINVAL);
  EXPECT_EQ(vornDmaLagMemberConfigAdd("", ""), EINVAL);
  EXPECT_EQ(vornDmaLagMemberConfigAdd(longest, longest), EINVAL);
  EXPECT_EQ(vornDmaLagMemberConfigDel(longest, longest), EINVAL);
  EXPECT_EQ(vornDmaLagConfigMapDel(""), EINVAL);
  EXPECT_EQ(vornDmaLagConfigMapDel(longest), EINVAL);
  const auto sent = driver.commands();
  ASSERT_EQ(sent.size(), 10u);  // no retries: none was answered 19
  EXPECT_EQ(sent[0], "lagmember_add   0");
  EXPECT_EQ(sent[1], "lagmember_add po1 et1 -1");
  EXPECT_EQ(sent[3], "lagmember_del  -2147483648");
  EXPECT_EQ(sent[8], "lagconfigmap_del ");
  for (std::size_t i : {2u, 4u, 6u, 7u, 9u}) EXPECT_EQ(sent[i].size(), kCommandSize - 1) << sent[i];
}

// In SAI mode the member commands send nothing, whatever their input.
CATALOGUE_TEST_F(BadInputLags, SaiModeIgnoresTheInput, "vornDmaLagMemberAdd", "vornDmaLagMemberDel",
                 "vornDmaLagMemberConfigAdd", "vornDmaLagMemberConfigDel",
                 "vornDmaLagConfigMapDel") {
  EXPECT_EXIT(
      {
        ::setenv("KRIX_MODE", "sai", 1);
        const char* longest = kOverlong.c_str();
        const bool zero =
            vornDmaLagMemberAdd("", longest, -1) == 0 &&
            vornDmaLagMemberDel(longest, INT_MIN) == 0 && vornDmaLagMemberConfigAdd("", "") == 0 &&
            vornDmaLagMemberConfigDel(longest, "") == 0 && vornDmaLagConfigMapDel("") == 0;
        std::_Exit(zero && driver.commands().empty() ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

// One row per boundary of the listing: a table, or the range exception.
CATALOGUE_TEST_F(BadInputLags, ListingBoundaries, "vornDmaListLags") {
  using Outcome = std::variant<VornDmaLags::LagDeviceMap, const char*>;
  constexpr const char* kLagRange = "LagId::value < LagId::min or > LagId::null not allowed";
  constexpr const char* kMemberRange =
      "LagMemberId::value < LagMemberId::min or > LagMemberId::null not allowed";
  const std::string name63(63, 'x');
  const std::pair<std::string, Outcome> rows[] = {
      {"", lagTable({})},
      {"lags:\n", lagTable({})},
      {"lags:\n\n\n", lagTable({})},
      {"po7 1\n", lagTable({})},  // outside a section
      {"lags:\npo7\n", lagTable({lagDevice("po7", LagId())})},
      {"lags:\npo7 1024\n", lagTable({lagDevice("po7", LagId(1024))})},
      {"lags:\npo7 1025\n", kLagRange},
      {"lags:\npo7 -1\n", kLagRange},  // 4294967295 as unsigned
      {"lags:\npo-1\n", lagTable({lagDevice("po-1", LagId())})},
      {"lags:\npo7 3 et1 256\n", lagTable({lagDevice("po7", LagId(3), {{"et1", 256}})})},
      {"lags:\npo7 3 et1 257\n", kMemberRange},
      {"lags:\npo7 3 et1 65792\n", lagTable({lagDevice("po7", LagId(3), {{"et1", 256}})})},
      {"lags:\npo7 3 et1\n", lagTable({lagDevice("po7", LagId(3), {{"et1", 0}})})},
      {"lags:\npo7 3 et1 x\n", lagTable({lagDevice("po7", LagId(3), {{"et1", 0}})})},
      {"lags:\npo7 3 et1 -65280\n", lagTable({lagDevice("po7", LagId(3), {{"et1", 256}})})},
      {"lags:\npo1\n" + name63 + " sys_port 1: po1\n",
       lagTable({lagDevice("po1", LagId(), {}, {name63.c_str()})})},
  };
  for (const auto& [text, want] : rows) {
    VornTest::ProcListing file(text);
    if (const auto* table = std::get_if<VornDmaLags::LagDeviceMap>(&want)) {
      EXPECT_EQ(vornDmaListLags()->lagDevices(), *table) << text;
    } else {
      try {
        vornDmaListLags();
        ADD_FAILURE() << "no exception for " << text;
      } catch (const Mox::RangeException& e) {
        EXPECT_STREQ(e.what(), std::get<const char*>(want)) << text;
      }
    }
  }
}

// Lines inside a section that are neither kind, and config lines whose name
// is one character past its bound, end the process.
CATALOGUE_TEST_F(BadInputLags, ListingLinesThatEndTheProcess, "vornDmaListLags") {
  const std::string pattern = "vornDmaListLags\\(\\): Assertion `matches == 3' failed";
  for (const std::string& text :
       {std::string("lags:\n \n"), std::string("lags:\npo\n"),
        std::string("lags:\npo1\n") + std::string(64, 'x') + " sys_port 1: po1\n"}) {
    EXPECT_DEATH(
        {
          VornTest::ProcListing file(text);
          vornDmaListLags();
        },
        pattern)
        << text;
  }
}

// Assignment from itself, directly and through an alias whose name lives
// only in the record, keeps the record whole.
CATALOGUE_TEST(BadInputLagDevice, SelfAndAliasedAssignment, "LagDevice::operator=") {
  LagDevice lag = lagDevice("po3", LagId(5), {{"et1", 0}}, {"et7"});
  const LagDevice copy = lag;
  LagDevice& alias = lag;
  lag = alias;
  EXPECT_EQ(lag, copy);
  // The largest and empty records.
  const LagDevice empty{Mox::String(), LagId()};
  lag = empty;
  EXPECT_EQ(lag, empty);
  LagDevice big(Mox::String(std::string(1000, 'p').c_str()), LagId(LagId::null()));
  lag = big;
  EXPECT_EQ(lag.name(), big.name());
}

}  // namespace
