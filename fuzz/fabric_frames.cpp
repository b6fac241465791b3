// vorn-fabricd's request handling on arbitrary bytes, cut into frames as the
// daemon reads them: a malformed frame ends its connection (the rest of the
// bytes start a new one), a frame cut short ends the input. Every answer is a
// frame of the request's type whose length is what follows it (a listing's
// text aside) and within the type's bound.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "fabricd/Requests.h"

using namespace Kernel::fabric;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Emu::FabricDriver* driver = [] {
    auto* d = new Emu::FabricDriver();
    d->pciDevicePresentIs("0000:03:00.0");
    d->hostNetdevIs("et1");
    return d;
  }();
  std::string_view in(reinterpret_cast<const char*>(data), size);
  auto connection = std::make_unique<fabricd::Connection>(*driver);
  while (in.size() >= sizeof(Frame)) {
    Frame frame;
    std::memcpy(&frame, in.data(), sizeof frame);
    in.remove_prefix(sizeof frame);
    const bool wellFormed = !requestHeaderError(frame);
    if (wellFormed && frame.length > in.size()) break;
    const std::string_view payload = in.substr(0, wellFormed ? frame.length : 0);
    in.remove_prefix(payload.size());
    const fabricd::Answer a = connection->serve(frame, payload);
    if (a.malformed) {
      connection = std::make_unique<fabricd::Connection>(*driver);
      continue;
    }
    Frame answer;
    if (a.bytes.size() < sizeof answer + sizeof(Status)) __builtin_trap();
    std::memcpy(&answer, a.bytes.data(), sizeof answer);
    const std::size_t framed = a.last ? sizeof answer + sizeof(Status) : a.bytes.size();
    if (answer.type != frame.type || answer.length != framed - sizeof answer ||
        answer.length > maxAnswerPayload(answer.type))
      __builtin_trap();
  }
  driver->clearLog();
  return 0;
}
