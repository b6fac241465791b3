// A trace file kept in memory: every message rendered to text, in order.
// Tests install one as the default file to read back what was written.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "Ringlog/Ringlog.h"

namespace Ringlog {

class MemoryFile : public TraceFile {
 public:
  void write(MsgId id, const Arg* args, unsigned count) noexcept override;

  // The rendered messages (a block timer's message is listed, its end not).
  std::vector<std::string> messages() const;
  void clear();

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> messages_;
};

// Installs a MemoryFile as the default trace file for a scope.
class ScopedMemoryFile {
 public:
  ScopedMemoryFile() : previous_(defaultFile()) { defaultFileIs(&file_); }
  ~ScopedMemoryFile() { defaultFileIs(previous_); }
  MemoryFile& file() { return file_; }
  std::vector<std::string> messages() const { return file_.messages(); }

 private:
  MemoryFile file_;
  TraceFile* previous_;
};

}  // namespace Ringlog
