// A process that uses the library against the fabric daemon named by
// VORN_FABRIC, for the tests that need several real processes on one switch.
//
//   vorn_fabric_client build N   ports etN_1..4, PortChannelN with members
//                                etN_1 and etN_2 and config members etN_3 and
//                                etN_4; exit status 0 when every call
//                                succeeded
//   vorn_fabric_client watch     one command every 5 ms, forever; prints the
//                                answer each time it changes ("answer 0")
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "Vorn/VornDma.h"

using namespace Hardware::Vorn;

namespace {

int build(int n) {
  int failures = 0;
  auto check = [&failures](const std::string& what, int rc) {
    if (rc != 0) std::printf("%s: %d\n", what.c_str(), rc), ++failures;
  };
  const std::string pc = "PortChannel" + std::to_string(n);
  for (int k = 1; k <= 4; ++k) {
    const std::string port = "et" + std::to_string(n) + "_" + std::to_string(k);
    char mac[18];
    std::snprintf(mac, sizeof mac, "02:00:00:00:%02x:%02x", n & 0xff, k);
    check("ifadd " + port,
          vornDmaIfadd(port.c_str(), 100 * n + k, 0, Mox::String(), false, false, mac));
    if (k <= 2)
      check("lagmember_add " + port, vornDmaLagMemberAdd(pc.c_str(), port.c_str(), k - 1));
    else
      check("lagmemberconfig_add " + port, vornDmaLagMemberConfigAdd(pc.c_str(), port.c_str()));
  }
  return failures == 0 ? 0 : 1;
}

[[noreturn]] void watch() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  int last = -1;
  for (;;) {
    // A command whose refusal the library returns rather than ending on.
    int rc = static_cast<int>(vornDmaSetPtpDropEventTxPkts(false));
    if (rc != last) std::printf("answer %d\n", last = rc);
    ::usleep(5000);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "build") == 0) return build(std::atoi(argv[2]));
  if (argc == 2 && std::strcmp(argv[1], "watch") == 0) watch();
  std::fprintf(stderr, "usage: vorn_fabric_client build N | watch\n");
  return 2;
}
