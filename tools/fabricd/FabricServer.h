// vorn-fabricd's socket side: one thread that accepts clients on a Unix
// stream socket and serves each connection's requests in turn, so that every
// request is applied whole against the one driver.
#pragma once

#include <string>

#include "emu/FabricDriver.h"

namespace fabricd {

// Listens on `path` (which the caller has checked; see SocketPath.h), prints
// "vorn-fabricd: serving PATH" on standard output once clients can connect,
// and serves `driver` until SIGINT or SIGTERM; then closes every connection
// and removes the socket file. Throws std::system_error when it cannot listen.
void serve(Emu::FabricDriver& driver, const std::string& path);

}  // namespace fabricd
