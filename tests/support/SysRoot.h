// A stand-in for the kernel's "/sys" and "/proc/irq" trees: a temporary
// directory reached through the kernel seam while the SysRoot lives, with a
// chosen CPU count. One at a time.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Kernel/Kernel.h"

namespace VornTest {

class SysRoot {
 public:
  SysRoot() {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/vorn-sysroot-XXXXXX";
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp " + pattern);
    root_ = pattern;
    active_ = this;
    ops_ = Kernel::ops();
    ops_.open = &SysRoot::open;
    ops_.opendir = &SysRoot::opendir;
    ops_.sysconf = &SysRoot::sysconf;
    next_ = &Kernel::ops();
    previous_ = Kernel::opsIs(&ops_);
  }
  ~SysRoot() {
    Kernel::opsIs(previous_);
    active_ = nullptr;
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }
  SysRoot(const SysRoot&) = delete;
  SysRoot& operator=(const SysRoot&) = delete;

  std::string path(std::string_view kernelPath) const { return root_ + std::string(kernelPath); }

  // What sysconf(_SC_NPROCESSORS_ONLN) answers; unset, the machine's count.
  void onlineCpusIs(long cpus) { onlineCpus_ = cpus; }

  void fileIs(std::string_view kernelPath, std::string_view content) const {
    std::filesystem::path p = path(kernelPath);
    std::filesystem::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary | std::ios::trunc) << content;
  }
  void dirIs(std::string_view kernelPath) const {
    std::filesystem::create_directories(path(kernelPath));
  }
  // `target` is a real path, "/dev/full" for a file whose writes fail.
  void symlinkIs(std::string_view kernelPath, const std::string& target) const {
    std::filesystem::path p = path(kernelPath);
    std::filesystem::create_directories(p.parent_path());
    std::filesystem::create_symlink(target, p);
  }
  std::optional<std::string> file(std::string_view kernelPath) const {
    std::ifstream in(path(kernelPath), std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
  }

  // Paths that open/opendir were asked for, rewritten or not, in order.
  const std::vector<std::string>& opened() const { return opened_; }

 private:
  static bool rewritten(const char* p) {
    std::string_view v(p);
    return v.starts_with("/sys/") || v.starts_with("/proc/irq/");
  }
  static std::string mapped(const char* p) {
    active_->opened_.emplace_back(p);
    return rewritten(p) ? active_->path(p) : std::string(p);
  }
  static int open(const char* p, int flags) {
    return active_->next_->open(mapped(p).c_str(), flags);
  }
  static DIR* opendir(const char* p) { return active_->next_->opendir(mapped(p).c_str()); }
  static long sysconf(int name) {
    if (name == _SC_NPROCESSORS_ONLN && active_->onlineCpus_) return *active_->onlineCpus_;
    return active_->next_->sysconf(name);
  }

  static inline SysRoot* active_ = nullptr;
  std::string root_;
  std::optional<long> onlineCpus_;
  std::vector<std::string> opened_;
  Kernel::Ops ops_;
  const Kernel::Ops* next_ = nullptr;
  const Kernel::Ops* previous_ = nullptr;
};

}  // namespace VornTest
