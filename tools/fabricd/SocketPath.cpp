#include "fabricd/SocketPath.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace fabricd {
namespace {

// True when something accepts connections at `path`.
bool answers(const std::string& path) {
  sockaddr_un addr{};
  addr.sun_family = AF_UNIX;
  std::memcpy(addr.sun_path, path.c_str(), path.size() + 1);  // length checked by the caller
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  const bool connected = ::connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0;
  ::close(fd);
  return connected;
}

}  // namespace

std::string defaultSocketPath(std::string& error) {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  std::string dir;
  if (::geteuid() == 0)
    dir = "/run/vorn";
  else if (runtime && *runtime)
    dir = std::string(runtime) + "/vorn";
  else
    error = "XDG_RUNTIME_DIR is not set: name the socket with --socket";
  if (!dir.empty() && ::mkdir(dir.c_str(), 0700) != 0 && errno != EEXIST)
    error = dir + ": " + std::strerror(errno);
  return error.empty() ? dir + "/fabric.sock" : std::string();
}

std::string socketPathProblem(const std::string& path) {
  if (path.empty() || path.size() >= sizeof(sockaddr_un::sun_path))
    return path + ": a socket path has 1 to " + std::to_string(sizeof(sockaddr_un::sun_path) - 1) +
           " bytes";
  std::string dir = std::filesystem::path(path).parent_path();
  if (dir.empty()) dir = ".";
  struct stat st;
  if (::stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return dir + ": no such directory";
  if (::access(dir.c_str(), W_OK | X_OK) != 0) return dir + ": not writable";
  if (::lstat(path.c_str(), &st) != 0) return {};
  if (!S_ISSOCK(st.st_mode)) return path + ": exists and is not a socket";
  if (answers(path)) return path + ": a daemon already answers there";
  if (::unlink(path.c_str()) != 0) return path + ": " + std::strerror(errno);
  return {};
}

}  // namespace fabricd
