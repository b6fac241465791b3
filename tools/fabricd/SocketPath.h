// Where vorn-fabricd listens, and whether it may listen there.
#pragma once

#include <string>

namespace fabricd {

// The default socket: /run/vorn/fabric.sock for root, else
// $XDG_RUNTIME_DIR/vorn/fabric.sock. Makes its directory (0700) when it is
// missing. Empty, with `error` set, when there is no default or the
// directory cannot be made.
std::string defaultSocketPath(std::string& error);

// Why the daemon cannot listen at `path`: a name too long for a Unix socket,
// a directory that is missing or not writable, a file there that is not a
// socket, or a daemon that already answers there. Empty when it can; a socket
// file that nothing answers on is a dead daemon's and is removed.
std::string socketPathProblem(const std::string& path);

}  // namespace fabricd
