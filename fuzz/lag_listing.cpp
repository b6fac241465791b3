// First byte even: the LAG listing parser on arbitrary bytes, fed in pieces.
// First byte odd: the rest describes LAGs, which the emulator renders and the
// parser must read back to the same table.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "Vorn/VornDmaLagListing.h"
#include "emu/LagState.h"

using namespace Hardware::Vorn;

namespace {

struct Bytes {
  const std::uint8_t* p;
  std::size_t n;
  std::uint8_t next() {
    if (!n) return 0;
    --n;
    return *p++;
  }
};

void parseArbitrary(Bytes in) {
  VornDmaLags table("vornDmaLags");
  dma::LagListingParser parser(table);
  std::size_t piece = in.next() % 64 + 1;
  std::string text(reinterpret_cast<const char*>(in.p), in.n);
  for (std::size_t at = 0; at < text.size(); at += piece) {
    if (parser.feed(std::string_view(text).substr(at, piece)).failed()) return;
  }
  parser.finish();
}

void roundTrip(Bytes in) {
  Emu::LagState state;
  VornDmaLags expected("vornDmaLags");
  unsigned lags = in.next() % 8 + 1;
  for (unsigned l = 0; l < lags; ++l) {
    int number = in.next() * 4 + in.next() % 4 + 1;
    if (state.lags.count(number)) continue;
    Emu::Lag& lag = state.lags[number];
    bool listed = in.next() % 4 != 0;  // else an idle LAG without an id
    lag.lagId = listed ? (in.next() * 4 + in.next() % 4) % 1024 : -1;
    LagDevice device(Mox::format("po%d", number),
                     listed ? LagId(static_cast<U32>(lag.lagId)) : LagId());
    if (listed) {
      unsigned members = in.next() % 5;
      for (unsigned m = 0; m < members; ++m) {
        int id = in.next() % 257;
        std::string name = "et" + std::to_string(in.next()) + "_" + std::to_string(m);
        if (lag.members.count(id)) continue;
        lag.members[id] = name;
        device.lagMemberDeviceIs(
            LagMemberDevice(Mox::String(name.c_str()), LagMemberId(static_cast<U16>(id))));
      }
    }
    unsigned configs = in.next() % 4;
    for (unsigned c = 0; c < configs; ++c) {
      std::string name = "Ethernet" + std::to_string(in.next()) + "/" + std::to_string(c);
      lag.configMembers.insert(name);
      device.lagMemberConfigIs(Mox::String(name.c_str()), true);
    }
    expected.lagDeviceIs(device);
  }
  VornDmaLags table("vornDmaLags");
  dma::LagListingParser parser(table);
  std::string listing = Emu::lagListing(state);
  if (parser.feed(listing).failed() || parser.finish().failed()) std::abort();
  if (!(table.lagDevices() == expected.lagDevices())) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  Bytes in{data + 1, size - 1};
  if (data[0] % 2 == 0)
    parseArbitrary(in);
  else
    roundTrip(in);
  return 0;
}
