// The client of the fabric daemon (vorn-fabricd), which serves one emulated
// driver to every process on the machine.
//
// When VORN_FABRIC=PATH is set at the seam's first use, the seam's default
// table sends the driver's requests to the daemon listening at PATH and
// everything else to Linux: "/dev/fabric" and "/proc/vorn-dma" become
// connections to it, and so do the AF_INET datagram sockets of the host-device
// requests and the tc command lines while the daemon emulates the host side.
// A process needs no code change to run against the daemon.
//
// Failure looks like the hardware's: with nothing listening at PATH, opening
// "/dev/fabric" or "/proc/vorn-dma" fails with ENOENT, as for an absent
// device; a request on a connection the daemon dropped (it stopped, or it
// stopped answering for 10 s) is tried once more on a new connection, and
// fails with ENODEV, as on a vanished device, when none can be made. A daemon
// started again at PATH is found by the next request. A process's requests
// are sent one at a time. A child made by fork() shares its parent's
// connections: it must not use the library until it has exec'd.
#pragma once

#include <sys/uio.h>

#include <cstddef>
#include <string>

#include "Kernel/FabricProtocol.h"
#include "Kernel/Kernel.h"

namespace Kernel::fabric {

// Where a daemon listens unless told otherwise: /run/vorn/fabric.sock for
// root, else $XDG_RUNTIME_DIR/vorn/fabric.sock; empty when XDG_RUNTIME_DIR is
// not set.
std::string defaultSocketPath();

// A new connection to the daemon at `path`, or -1 with errno: ENOENT when no
// daemon listens there (also for a refused connection), ENAMETOOLONG for a
// path longer than a socket address holds.
int connectTo(const char* path) noexcept;

// Sends a request of `type` whose payload is `parts`, then reads the answer's
// header and status, and `answerSize` more bytes of it into `answer`. The
// status (0 or the errno the daemon answered), or -1 with errno set when the
// connection failed (ECONNRESET when it ended) or the answer is not the one
// asked for (EPROTO).
int exchange(int fd, Type type, const iovec* parts, int count, void* answer,
             std::size_t answerSize) noexcept;

// One request on a connection of its own (the control requests: scripted
// answers). The status, or -1 with errno; `text` gets the answer's payload
// after the status.
int control(const char* path, Type type, const iovec* parts, int count, std::string& text);

namespace detail {
// The table that sends the driver's requests to the daemon at `path`, or null
// when `path` cannot be a socket address. Made once: later calls return it.
const Ops* remoteOps(const char* path) noexcept;
// The path the table was made for.
const char* remotePath() noexcept;
}  // namespace detail

}  // namespace Kernel::fabric
