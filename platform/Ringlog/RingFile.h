// Ringlog::RingFile: a post-mortem trace, one fixed-size memory-mapped file per
// process.
//
// Messages are binary records (time, message id, arguments) in a ring of
// fixed-size slots; the descriptor text of every message id used is stored in
// the file once, so `vornctl trace FILE` renders the file without the process
// that wrote it. The mapping is shared with the file, so a process that
// aborts (syserr, a failed assertion) leaves a readable file whose newest
// record is the last message it wrote. A block timer is one record: its end
// writes the elapsed time into the record that opened it, so a block that
// never ended (the process died inside it) reads as still open. The message
// its thread writes right after opening it (a command function's driver
// command) is stored in that record too, when it fits there whole.
//
// A record costs a time-stamp counter read, one atomic increment and the
// copy of its arguments: no system call, no lock. A message stored in its
// block's record costs only the copy.
//
//   Ringlog::RingFile* f = Ringlog::openDefaultRingFile("agent");  // default file
//   for (auto& r : Ringlog::readRingFile(path)) puts(r.text.c_str());
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Ringlog/RingWriter.h"
#include "Ringlog/Ringlog.h"

namespace Ringlog {

class RingFile : public TraceFile, public RingWriter {
 public:
  // Creates (or truncates) `path` with room for `bytes` (at least 64 KiB) and
  // maps it. The ring holds the largest power of two of 256-byte records that
  // fits (2048 in 1 MiB). Check ok() afterwards.
  RingFile(const std::string& path, std::size_t bytes);
  ~RingFile() override;
  RingFile(const RingFile&) = delete;
  RingFile& operator=(const RingFile&) = delete;

  bool ok() const noexcept { return base_ != nullptr; }
  const std::string& path() const noexcept { return path_; }
  std::uint32_t slotCount() const noexcept {
    return base_ ? static_cast<std::uint32_t>(mask_ + 1) : 0;
  }

  // The argument-array forms of the writers (RingWriter has the inline ones).
  void write(MsgId id, const Arg* args, unsigned count) noexcept override;
  BlockMark openBlock(MsgId id, const Arg* args, unsigned count) noexcept override;
  void closeBlock(const BlockMark& mark) noexcept override;
  // Stamps the message with the opening time of the block this thread opened
  // last, when no message was written since; otherwise reads the clock.
  void writeAtBlockStart(MsgId id, const Arg* args, unsigned count) noexcept override;

 private:
  // Writes one record of `kind` at `ticks` and returns its slot.
  format::Slot* writeRecord(MsgId id, std::uint8_t kind, const Arg* args, unsigned count,
                            std::uint64_t ticks, std::uint64_t& sequence) noexcept;

  std::string path_;
  std::size_t size_ = 0;
};

// Where default ring files go: $VORN_RINGLOG_DIR, else /tmp/vorn-ringlog.
std::string defaultRingDirectory();
// Creates "<dir>/<name>-<pid>.rlog" ($VORN_RINGLOG_SIZE bytes, default 1 MiB)
// and makes it the default trace file for the rest of the process. Null when
// the file cannot be made.
RingFile* openDefaultRingFile(const char* name);

// One record of a ring file, decoded.
struct DecodedRecord {
  enum class Block : std::uint8_t { kNone, kOpen, kClosed };
  std::uint64_t sequence;
  std::int64_t wallNs;          // nanoseconds since the epoch
  std::string text;             // the rendered message
  Block block = Block::kNone;   // a block timer's record: still open, or closed
  std::uint64_t elapsedNs = 0;  // a closed block's length
};

// Reads a ring file, oldest record first. False (with `error` set) when the
// file is not a ring file.
bool readRingFile(const std::string& path, std::vector<DecodedRecord>& out, std::string& error);

// "2026-11-23 11:40:01.123456789" for a wall-clock time.
std::string formatWallTime(std::int64_t wallNs);

// A record as `vornctl trace` prints it: the wall time, the text, and for a
// block "[took N ns]" or "[still open]".
std::string formatRecord(const DecodedRecord& record);

}  // namespace Ringlog
