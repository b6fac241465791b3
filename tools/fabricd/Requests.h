// What vorn-fabricd does with one request, apart from any socket: a decoded
// frame and its payload in, the bytes to send back out, so that the daemon's
// answers can be tested and fuzzed without a connection.
#pragma once

#include <string>
#include <string_view>

#include "Kernel/FabricProtocol.h"
#include "emu/FabricDriver.h"

namespace fabricd {

// The outcome of one request.
struct Answer {
  // The frame and payload to send (for kListing, the listing's text follows).
  std::string bytes;
  // The connection ends once `bytes` are sent.
  bool last = false;
  // Why the request is malformed (nothing is sent and the connection closes),
  // or null.
  const char* malformed = nullptr;
};

// One client connection's requests against the daemon's driver. It holds
// what the connection opened (an emulated datagram socket) and gives it back
// when it is destroyed.
class Connection {
 public:
  // A connection served by `driver`, which must outlive it.
  explicit Connection(Emu::FabricDriver& driver) : driver_(driver) {}
  // Gives back the emulated socket the connection holds, if any.
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Serves one request whose header is `frame` and whose payload is
  // `payload`; checks the header and every length itself.
  Answer serve(const Kernel::fabric::Frame& frame, std::string_view payload);

 private:
  // The requests that carry a payload or use the connection's state.
  Answer command(std::string_view payload);
  Answer hostOpen();
  Answer hostRequest(std::string_view payload);
  Answer tc(std::string_view payload);
  Answer faultAdd(std::string_view payload);
  Answer faultList();

  Emu::FabricDriver& driver_;
  int hostFd_ = -1;
};

}  // namespace fabricd
