// Serves a fixed text as "/proc/vorn-dma" for a scope, a few bytes per read
// if asked, and counts opens and closes. One at a time.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include "Kernel/Kernel.h"

namespace VornTest {

class ProcListing {
 public:
  static constexpr int kFd = 1 << 22;

  explicit ProcListing(std::string text, std::size_t bytesPerRead = 1 << 30)
      : text_(std::move(text)), bytesPerRead_(bytesPerRead), previous_(&Kernel::ops()) {
    active_ = this;
    ops_ = *previous_;
    ops_.open = &ProcListing::open;
    ops_.read = &ProcListing::read;
    ops_.close = &ProcListing::close;
    Kernel::opsIs(&ops_);
  }
  ~ProcListing() {
    Kernel::opsIs(previous_);
    active_ = nullptr;
  }
  ProcListing(const ProcListing&) = delete;
  ProcListing& operator=(const ProcListing&) = delete;

  int opens = 0;
  int closes = 0;

 private:
  static int open(const char* path, int flags) {
    if (std::strcmp(path, "/proc/vorn-dma") != 0) return active_->previous_->open(path, flags);
    ++active_->opens;
    active_->pos_ = 0;
    return kFd;
  }
  static ssize_t read(int fd, void* buf, std::size_t count) {
    if (fd != kFd) return active_->previous_->read(fd, buf, count);
    ProcListing& me = *active_;
    std::size_t n = std::min({count, me.bytesPerRead_, me.text_.size() - me.pos_});
    std::memcpy(buf, me.text_.data() + me.pos_, n);
    me.pos_ += n;
    return static_cast<ssize_t>(n);
  }
  static int close(int fd) {
    if (fd != kFd) return active_->previous_->close(fd);
    ++active_->closes;
    return 0;
  }

  static inline ProcListing* active_ = nullptr;
  std::string text_;
  std::size_t bytesPerRead_;
  std::size_t pos_ = 0;
  const Kernel::Ops* previous_;
  Kernel::Ops ops_{};
};

}  // namespace VornTest
