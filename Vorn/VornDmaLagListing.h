// The grammar of the LAG sections of the driver's listing "/proc/vorn-dma",
// apart from what happens when a line breaks it: the parser reports a broken
// line as a value (the range exception's text, or the failed assertion's
// condition) and never throws or ends the process, so that it can be tested
// and fuzzed on any bytes. vornDmaListLags turns those values into the
// exception or the abort. Internal: not exported.
//
// The listing:
//
//   lags:                      a header opens a section ("lags:", "ilags:",
//   po3 5 et1 0 et2 1            "lagconfigmap:" alike); a LAG line: po<N>,
//                                an optional LAG id, member name/id pairs
//                              an empty line closes the section
//   lagconfigmap:
//   et7 sys_port 40: po3       a config line: a config member of po3
//
// Lines outside a section are ignored. The numbers are read with sscanf's and
// strtol's rules exactly (leading white space, signs, partial matches,
// saturation at the range of long, then narrowing to int), without reading
// past the line, which need not be NUL-terminated.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "HardwareVorn/VornDmaLags.h"

namespace Hardware::Vorn::dma {

// How long an interface name of a config line may be: "%s" reads into a
// 64-byte buffer, so the scan is "%63s". The platform's names are far shorter.
inline constexpr std::size_t kConfigNameMax = 63;

// sscanf(line, "po%d %d", &number, &lagId) over `line`: the number of fields
// assigned, or -1 (EOF) when the line ends before the first one. Fields not
// reached are left alone.
int scanLagHead(std::string_view line, int& number, int& lagId) noexcept;

// sscanf(line, "%63s sys_port %d: po%d", ...) over `line`; `intfName` views
// the characters that "%63s" stored.
int scanConfigLine(std::string_view line, std::string_view& intfName, int& sysPort,
                   int& number) noexcept;

// strtol(text, nullptr, 10) over `text`: 0 when it holds no number.
long textToLong(std::string_view text) noexcept;

// What one line of the listing was.
enum class LineKind {
  kIgnored,          // outside a section, or the empty line that closes one
  kHeader,           // "lags:", "ilags:" or "lagconfigmap:"
  kLag,              // a LAG line, stored
  kConfig,           // a config line, added to its LAG
  kRangeError,       // `text` is the range exception's text
  kAssertionFailed,  // `text` is the failed assertion's condition
};

struct LineOutcome {
  LineKind kind = LineKind::kIgnored;
  const char* text = nullptr;
  bool failed() const noexcept {
    return kind == LineKind::kRangeError || kind == LineKind::kAssertionFailed;
  }
};

// Reads the listing, line by line or chunk by chunk, into `table`. After the
// first failure it reads nothing more and keeps reporting that failure; what
// it stored before stays in the table. `table` must outlive the parser, and
// nothing else may change it while the parser reads into it.
class LagListingParser {
 public:
  explicit LagListingParser(VornDmaLags& table) noexcept : table_(table) {}

  // Reads one line, without its newline.
  LineOutcome line(std::string_view text);
  // Reads a piece of the file; a line may be split across pieces. Returns
  // the first failure, or an outcome that has not failed.
  LineOutcome feed(std::string_view chunk);
  // Reads the last line when the file does not end with a newline.
  LineOutcome finish();

 private:
  LineOutcome dataLine(std::string_view text);
  LineOutcome lagLine(std::string_view text, int number, bool hasLagId, int lagId);
  LineOutcome configLine(std::string_view text);
  // Makes the stored LAG po<number> the one config lines add to; false when
  // there is none. A config line adds to its LAG in place: the same table as
  // copying the entry, adding to the copy and storing it back, without
  // copying all the LAG's config members per line. The config lines of one
  // LAG come together, so the LAG of the previous line is kept at hand.
  bool toConfigLag(int number) {
    return (configLag_ != nullptr && number == configLagNumber_) || switchConfigLag(number);
  }
  bool switchConfigLag(int number);
  // Adds config member `intfName` to the stored LAG po<number>.
  LineOutcome addConfig(std::string_view intfName, int number);
  // The same for a name of up to 15 characters given as Mox::String::Bytes
  // holds it; false when there is no such LAG.
  bool addShortConfig(std::uint64_t first, std::uint64_t rest, std::size_t length, int number);
  // Reads a config line the driver's way ("<name> sys_port <S>: po<N>" and
  // its newline) from the start of `chunk` inside a section, without finding
  // the line's end first. Returns the characters used, newline included; 0
  // when the start of `chunk` is not such a line, which the exact reading
  // then reads.
  std::size_t usualConfigLine(std::string_view chunk);
  // The stored LAG po<number>, or null.
  LagDevice* storedLag(int number);
  // The members of the LAG line gathered in `members_`, as the collection.
  LagDevice::LagMemberDeviceMap memberMap(std::string_view text, bool keyed);

  VornDmaLags& table_;
  // The LAG the last config line added to, and its number; null after a LAG
  // line, which may replace it.
  LagDevice* configLag_ = nullptr;
  int configLagNumber_ = 0;
  // The order key (as of a member name) of the last config member of that
  // LAG, when it is known; then a name past it is added at the end without
  // a search.
  bool lastConfigKnown_ = false;
  std::uint64_t lastConfigKey0_ = 0;
  std::uint64_t lastConfigKey1_ = 0;
  bool inSection_ = false;
  LineOutcome failure_;
  std::string partial_;  // the start of a line split across pieces
  // The LAGs that LAG lines stored, by number, in listing order; the next
  // one to look at. The driver lists config lines in the order of the LAG
  // lines, so the LAG of a config line is usually the next one here and needs
  // no search of the table. Emptied when a LAG line replaces an entry, as
  // the pointer to that entry would dangle.
  std::vector<std::pair<int, LagDevice*>> stored_;
  std::size_t nextStored_ = 0;
  // A member of the LAG line being read: where its name is in the line, its
  // id, and for a name of up to 15 characters its order as two numbers (the
  // name's bytes zero-padded, big-endian, then its length).
  struct MemberText {
    std::uint64_t key0 = 0;
    std::uint64_t key1 = 0;
    std::size_t at = 0;
    std::size_t length = 0;
    U16 id = 0;
  };
  // The scratch of LAG lines, kept from line to line so that reading one
  // allocates nothing but the collection: the members in listing order,
  // their positions there in name order (and room to merge them), where the
  // ascending runs end, and the entries of names too long for a key.
  std::vector<MemberText> members_;
  std::vector<std::uint32_t> order_;
  std::vector<std::uint32_t> runEnds_;
  std::vector<std::pair<Mox::String, LagMemberDevice>> longMembers_;
};

}  // namespace Hardware::Vorn::dma
