#include "Vorn/FhrpAradCompatibilityUtils.h"

#include "Mox/Types.h"

namespace Hardware::Vorn {
namespace {

// The bits of each byte that an Arad chip compares.
constexpr U8 kAradRouterMacMask[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xF8};

}  // namespace

bool routerMacMsbsAreEqual(Wirl::EthAddr const& a, Wirl::EthAddr const& b) {
  for (unsigned i = 0; i < 6; ++i) {
    if ((a.byte(i) & kAradRouterMacMask[i]) != (b.byte(i) & kAradRouterMacMask[i])) return false;
  }
  return true;
}

Wirl::EthAddr maskAwayAradLsbOfMac(Wirl::EthAddr const& mac) {
  Wirl::EthAddr masked;
  for (unsigned i = 0; i < 6; ++i) masked.byteIs(i, mac.byte(i) & kAradRouterMacMask[i]);
  return masked;
}

}  // namespace Hardware::Vorn
