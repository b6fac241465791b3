// Helpers the test suites share.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Kernel/Kernel.h"
#include "Mox/Trace.h"

// The end of an aborted child's error output; qemu's user-mode emulator (32-bit
// runs) writes one line of its own after the abort.
#define VORN_ABORT_END "\n(qemu: uncaught target signal 6 \\(Aborted\\) - core dumped\n)?$"

namespace VornTest {

// Sets (or, with nullopt, unsets) an environment variable for a scope.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, std::optional<std::string> value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    if (value)
      ::setenv(name, value->c_str(), 1);
    else
      ::unsetenv(name);
  }
  ~ScopedEnv() {
    if (old_)
      ::setenv(name_.c_str(), old_->c_str(), 1);
    else
      ::unsetenv(name_.c_str());
  }

 private:
  std::string name_;
  std::optional<std::string> old_;
};

// Linux, except that nothing can be opened: no driver is loaded.
inline Kernel::Ops noDriverOps() {
  Kernel::Ops ops = Kernel::linuxOps();
  ops.open = [](const char*, int) {
    errno = ENOENT;
    return -1;
  };
  return ops;
}

// Captures the trace lines of every handle for a scope, enabling all levels of
// the handles named at construction.
class TraceCapture {
 public:
  explicit TraceCapture(std::initializer_list<const char*> handles = {"VornDma"}) {
    for (const char* h : handles) {
      Mox::TraceHandle& handle = Mox::traceHandle(h);
      handle.allLevelsIs(true);
      enabled_.push_back(&handle);
    }
    Mox::traceSinkIs(&TraceCapture::sink, this);
  }
  ~TraceCapture() {
    Mox::traceSinkIs(nullptr, nullptr);
    for (Mox::TraceHandle* h : enabled_) h->allLevelsIs(false);
  }
  struct Line {
    std::string handle;
    int level;
    std::string text;
  };
  std::vector<Line> lines() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> out;
    for (const Line& l : lines()) out.push_back(l.text);
    return out;
  }

 private:
  static void sink(const Mox::TraceRecord& r, void* self) {
    auto* me = static_cast<TraceCapture*>(self);
    std::lock_guard<std::mutex> lock(me->mutex_);
    me->lines_.push_back({r.handle, r.level, std::string(r.text)});
  }
  mutable std::mutex mutex_;
  std::vector<Line> lines_;
  std::vector<Mox::TraceHandle*> enabled_;
};

}  // namespace VornTest
