// A program run by a test: started with its standard output and error on one
// pipe, its output read as it comes, killed and reaped at the end of its
// scope.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

namespace VornTest {

// Starts args[0] with `args`, in this process's environment with VORN_FABRIC
// set to `fabric` (unset when empty).
class Process {
 public:
  explicit Process(std::vector<std::string> args, const std::string& fabric = "") {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDERR_FILENO);
    std::vector<std::string> env;
    for (char** e = environ; *e; ++e)
      if (std::string(*e).rfind("VORN_FABRIC=", 0) != 0) env.emplace_back(*e);
    if (!fabric.empty()) env.push_back("VORN_FABRIC=" + fabric);
    std::vector<char*> argv, envp;
    for (std::string& a : args) argv.push_back(a.data());
    for (std::string& e : env) envp.push_back(e.data());
    argv.push_back(nullptr);
    envp.push_back(nullptr);
    if (posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), envp.data()) != 0) pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    ::close(fds[1]);
    out_ = fds[0];
  }
  ~Process() {
    if (pid_ > 0) signal(SIGKILL), wait();
    if (out_ >= 0) ::close(out_);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // Reads output until it holds `text` (true) or 10 s pass.
  bool waitFor(const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (output_.find(text, seen_) == std::string::npos) {
      auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
          end - std::chrono::steady_clock::now());
      if (left.count() <= 0 || !readSome(static_cast<int>(left.count()))) return false;
    }
    seen_ = output_.find(text, seen_) + text.size();
    return true;
  }
  void signal(int sig) const {
    if (pid_ > 0) ::kill(pid_, sig);
  }
  // The exit status (128 + the signal for a killed process), with all output.
  int wait() {
    if (pid_ <= 0) return status_;
    while (readSome(-1)) {
    }
    int raw = 0;
    ::waitpid(pid_, &raw, 0);
    pid_ = -1;
    return status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
  }
  const std::string& output() const { return output_; }

 private:
  bool readSome(int timeoutMs) {
    pollfd p{out_, POLLIN, 0};
    if (::poll(&p, 1, timeoutMs) <= 0) return false;
    char buf[4096];
    ssize_t n = ::read(out_, buf, sizeof buf);
    if (n <= 0) return false;
    output_.append(buf, static_cast<std::size_t>(n));
    return true;
  }

  pid_t pid_ = -1;
  int status_ = -1;
  int out_ = -1;
  std::string output_;
  std::size_t seen_ = 0;
};

}  // namespace VornTest
