#include "fabricd/FabricServer.h"

#include <unistd.h>

#include <asio.hpp>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>
#include <vector>

#include "fabricd/Requests.h"

namespace fabricd {
namespace {

using asio::local::stream_protocol;
using Kernel::fabric::Frame;

void logError(unsigned id, const std::string& why) {
  std::fprintf(stderr, "vorn-fabricd: connection %u: %s\n", id, why.c_str());
}

// One client: reads a frame, checks its header before any payload, reads the
// payload, serves it and writes the answer, then reads the next frame. The
// pending operation's handler owns the session, so a session that stops
// reading or writing is gone, its socket closed and its emulated socket given
// back.
class Session : public std::enable_shared_from_this<Session> {
 public:
  Session(stream_protocol::socket socket, Emu::FabricDriver& driver, unsigned id)
      : socket_(std::move(socket)), connection_(driver), id_(id) {}

  void readFrame() {
    asio::async_read(
        socket_, asio::buffer(&frame_, sizeof frame_),
        [self = shared_from_this()](std::error_code ec, std::size_t n) { self->onFrame(ec, n); });
  }

 private:
  void onFrame(std::error_code ec, std::size_t n) {
    if (ec) return ended(ec, n > 0);
    if (const char* why = Kernel::fabric::requestHeaderError(frame_)) return logError(id_, why);
    payload_.resize(frame_.length);
    if (payload_.empty()) return onPayload({});
    asio::async_read(
        socket_, asio::buffer(payload_),
        [self = shared_from_this()](std::error_code ec, std::size_t) { self->onPayload(ec); });
  }

  // Only a whole request reaches the driver: a client gone before its
  // payload arrived changes nothing.
  void onPayload(std::error_code ec) {
    if (ec) return ended(ec, true);
    Answer answer = connection_.serve(frame_, {payload_.data(), payload_.size()});
    if (answer.malformed) return logError(id_, answer.malformed);
    answer_ = std::move(answer.bytes);
    last_ = answer.last;
    asio::async_write(
        socket_, asio::buffer(answer_),
        [self = shared_from_this()](std::error_code ec, std::size_t) { self->onWritten(ec); });
  }

  void onWritten(std::error_code ec) {
    if (ec) return logError(id_, "writing an answer: " + ec.message());
    if (!last_) return readFrame();
    std::error_code ignored;
    socket_.shutdown(stream_protocol::socket::shutdown_both, ignored);
  }

  // A client that closes between requests ends its connection quietly.
  void ended(std::error_code ec, bool midRequest) {
    if (ec == asio::error::eof && !midRequest) return;
    logError(id_, ec == asio::error::eof ? "closed in the middle of a request" : ec.message());
  }

  stream_protocol::socket socket_;
  Connection connection_;
  const unsigned id_;
  Frame frame_{};
  std::vector<char> payload_;
  std::string answer_;
  bool last_ = false;
};

class Listener {
 public:
  Listener(asio::io_context& io, const std::string& path, Emu::FabricDriver& driver)
      : acceptor_(io, stream_protocol::endpoint(path)), retry_(io), driver_(driver) {}

  void accept() {
    acceptor_.async_accept([this](std::error_code ec, stream_protocol::socket socket) {
      if (ec == asio::error::operation_aborted) return;
      if (!ec) {
        std::make_shared<Session>(std::move(socket), driver_, ++connections_)->readFrame();
        return accept();
      }
      // Out of descriptors, say: wait a little rather than spin on the error.
      std::fprintf(stderr, "vorn-fabricd: accepting a connection: %s\n", ec.message().c_str());
      retry_.expires_after(std::chrono::milliseconds(100));
      retry_.async_wait([this](std::error_code waited) {
        if (!waited) accept();
      });
    });
  }

 private:
  stream_protocol::acceptor acceptor_;
  asio::steady_timer retry_;
  Emu::FabricDriver& driver_;
  unsigned connections_ = 0;
};

// Removes the socket file when serving ends, however it ends.
struct SocketFile {
  const std::string& path;
  ~SocketFile() { ::unlink(path.c_str()); }
};

}  // namespace

void serve(Emu::FabricDriver& driver, const std::string& path) {
  // Destroyed last, the io_context destroys the handlers still pending, and
  // with them every session.
  asio::io_context io;
  asio::signal_set signals(io, SIGINT, SIGTERM);
  signals.async_wait([&io](std::error_code, int) { io.stop(); });
  Listener listener(io, path, driver);
  SocketFile file{path};
  listener.accept();
  std::printf("vorn-fabricd: serving %s\n", path.c_str());
  std::fflush(stdout);
  io.run();
}

}  // namespace fabricd
