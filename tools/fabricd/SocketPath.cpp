#include "fabricd/SocketPath.h"

#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Kernel/RemoteFabric.h"

namespace fabricd {

std::string defaultSocketPath(std::string& error) {
  const std::string path = Kernel::fabric::defaultSocketPath();
  if (path.empty()) {
    error = "XDG_RUNTIME_DIR is not set: name the socket with --socket";
    return path;
  }
  const std::string dir = std::filesystem::path(path).parent_path();
  if (::mkdir(dir.c_str(), 0700) != 0 && errno != EEXIST) {
    error = dir + ": " + std::strerror(errno);
    return std::string();
  }
  return path;
}

std::string socketPathProblem(const std::string& path) {
  if (path.empty() || path.size() >= sizeof(sockaddr_un::sun_path))
    return path + ": a socket path has 1 to " + std::to_string(sizeof(sockaddr_un::sun_path) - 1) +
           " bytes";
  // A path without a directory is in the working directory.
  const std::string parent = std::filesystem::path(path).parent_path();
  const std::string dir = parent.empty() ? std::string(".") : parent;
  struct stat st;
  if (::stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return dir + ": no such directory";
  if (::access(dir.c_str(), W_OK | X_OK) != 0) return dir + ": not writable";
  if (::lstat(path.c_str(), &st) != 0) return {};
  if (!S_ISSOCK(st.st_mode)) return path + ": exists and is not a socket";
  if (const int fd = Kernel::fabric::connectTo(path.c_str()); fd >= 0) {
    ::close(fd);
    return path + ": a daemon already answers there";
  }
  if (::unlink(path.c_str()) != 0) return path + ": " + std::strerror(errno);
  return {};
}

}  // namespace fabricd
